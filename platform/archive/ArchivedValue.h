#pragma once

#include <cstdint>
#include <memory>

namespace ns {

class KeyedArchive;

/// Where a value lies in an archive, still to be decoded; none when there is no archive.
struct ArchivedValue {
  std::shared_ptr<const KeyedArchive> archive;
  uint32_t number = 0;
};

}  // namespace ns
