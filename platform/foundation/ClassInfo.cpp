#include "platform/foundation/ClassInfo.h"

#include <algorithm>

namespace ns {

bool ClassInfo::inheritsFrom(std::string_view ancestor) const {
  return name == ancestor || std::find(chain.begin(), chain.end(), ancestor) != chain.end();
}

ClassRef makeClass(std::vector<std::string> chain) {
  auto info = std::make_shared<ClassInfo>();
  if (!chain.empty()) info->name = chain.front();
  info->chain = std::move(chain);
  return info;
}

}  // namespace ns
