#include "platform/archive/ArchivedClasses.h"

namespace ns {

// Values belong to one thread, and so does what they share.

const ClassRef& arrayClass() {
  static thread_local const ClassRef info = makeClass({"NSArray", "NSObject"});
  return info;
}

const ClassRef& mutableArrayClass() {
  static thread_local const ClassRef info = makeClass({"NSMutableArray", "NSArray", "NSObject"});
  return info;
}

const ClassRef& mutableStringClass() {
  static thread_local const ClassRef info = makeClass({"NSMutableString", "NSString", "NSObject"});
  return info;
}

const ClassRef& dictionaryClass() {
  static thread_local const ClassRef info = makeClass({"NSDictionary", "NSObject"});
  return info;
}

const ClassRef& mutableDictionaryClass() {
  static thread_local const ClassRef info =
      makeClass({"NSMutableDictionary", "NSDictionary", "NSObject"});
  return info;
}

const ClassRef& dateClass() {
  static thread_local const ClassRef info = makeClass({"NSDate", "NSObject"});
  return info;
}

std::string contentOf(const ClassInfo& info) {
  std::string content = info.hasChain ? "+" : "-";
  const auto add = [&](const std::string& name) {
    content.append(std::to_string(name.size())).append(":").append(name);
  };
  add(info.name);
  for (const std::string& name : info.chain) add(name);
  content.push_back('?');
  for (const std::string& name : info.hints) add(name);
  return content;
}

}  // namespace ns
