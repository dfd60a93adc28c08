#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Data.h"

namespace tavlin {

/// The values of a document that have no form in JSON, each under an index from 0.  They become
/// one archive, in which they are what they were: classes, fields, what they share, circles.
class JsonObjects {
 public:
  /// The index of a value; the same for the same value.  None where it leads to an object with an
  /// identity, an item or the like, which would bring the whole document with it.
  std::optional<size_t> indexOf(const ns::Value& value);

  [[nodiscard]] bool empty() const { return values_.empty(); }
  /// The archive of all of them.
  [[nodiscard]] ns::Data archive() const;

  /// The values of such an archive.  Raises ns::ArchiveException for malformed data, and for an
  /// archive of anything else.
  static ns::Array read(const ns::Data& archive);

 private:
  /// What was found out about the objects of an archive, by number.
  struct Source {
    std::shared_ptr<const ns::KeyedArchive> archive;
    std::vector<bool> isFree;  ///< of references to objects with an identity, it is known
    std::unordered_set<uint32_t> leadsToObject;
  };
  [[nodiscard]] bool leadsToObject(const ns::Value& value);
  [[nodiscard]] bool leadsToObject(Source& source, uint32_t number);
  [[nodiscard]] Source& sourceOf(const ns::ArchiveOrigin& origin);

  std::vector<ns::Value> values_;
  std::unordered_map<const ns::ValueBody*, size_t> byBody_;
  std::map<std::pair<const ns::KeyedArchive*, uint32_t>, size_t> byPlace_;
  std::map<const ns::KeyedArchive*, Source> sources_;
  uint64_t wastedSteps_ = 0;  // of searches that found an object
};

}  // namespace tavlin
