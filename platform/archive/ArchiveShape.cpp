#include "platform/archive/ArchiveShape.h"

#include <algorithm>

namespace ns {

void ArchiveShape::addKey(const String& key) {
  const auto position = static_cast<uint32_t>(keys_.size());
  if (key == "$class") class_ = position;
  if (key == "$classname") className_ = position;
  keys_.push_back(key);
}

uint32_t ArchiveShape::findNew(const char* literal) const {
  uint32_t position = 0;
  while (position < count() && !(keys_[position] == literal)) ++position;
  (position < count() ? literals_[position] : absent_) = literal;
  return position;
}

bool ArchiveShape::findOthers(std::span<const char* const> keys) const {
  uint32_t known = class_ == count() ? 0 : 1;
  for (const char* key : keys) {
    if (std::ranges::find(keys_, String(key)) != keys_.end()) ++known;
  }
  if (known != count()) return false;
  whole_ = keys.data();
  return true;
}

uint32_t ArchiveShape::find(const String& key) const {
  return static_cast<uint32_t>(std::ranges::find(keys_, key) - keys_.begin());
}

}  // namespace ns
