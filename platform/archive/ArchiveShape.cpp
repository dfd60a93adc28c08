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

uint32_t ArchiveShape::find(const String& key) const {
  return static_cast<uint32_t>(std::ranges::find(keys_, key) - keys_.begin());
}

}  // namespace ns
