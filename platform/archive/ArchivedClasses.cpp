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

}  // namespace ns
