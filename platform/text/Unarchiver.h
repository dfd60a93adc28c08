#pragma once

#include "platform/foundation/Data.h"
#include "platform/foundation/Value.h"

namespace ns {

/// Reads the platform's older archives, which have no keys: a font, a colour or a string, as
/// preferences hold them.
///
/// The data begins with the bytes 4 and 11 and the text "streamtyped", or "typedstream" where
/// numbers have their high byte first.  What comes back is as if it had come from a keyed
/// archive: the same records.
class Unarchiver {
 public:
  /// Whether data begins like such an archive.
  static bool isArchive(const Data& data);

  /// +unarchiveObjectWithData:  The root object; none for nil.  What follows it does not count.
  /// Raises ArchiveException, with the byte offset, for malformed data and objects of other
  /// classes.
  static Value unarchiveObjectWithData(const Data& data);
};

}  // namespace ns
