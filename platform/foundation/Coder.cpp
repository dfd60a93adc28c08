#include "platform/foundation/Coder.h"

#include <string>

#include "platform/foundation/Exception.h"

namespace ns {

namespace {

[[noreturn]] void refuse(const char* direction, const char* key) {
  throw InvalidArgumentException(std::string("this coder does not ") + direction + " \"" + key +
                                 "\"");
}

}  // namespace

void Coder::encodeObjectForKey(const Value& /*value*/, const char* key) { refuse("encode", key); }
void Coder::encodeConditionalObjectForKey(const std::shared_ptr<Object>& /*object*/,
                                          const char* key) {
  refuse("encode", key);
}
void Coder::encodeBoolForKey(bool /*value*/, const char* key) { refuse("encode", key); }
void Coder::encodeIntegerForKey(int64_t /*value*/, const char* key) { refuse("encode", key); }
bool Coder::containsValueForKey(const char* key) { refuse("decode", key); }
Value Coder::decodeObjectForKey(const char* key) { refuse("decode", key); }
std::shared_ptr<Object> Coder::decodeReferenceForKey(const char* key) { refuse("decode", key); }
bool Coder::decodeBoolForKey(const char* key) { refuse("decode", key); }
int64_t Coder::decodeIntegerForKey(const char* key) { refuse("decode", key); }

}  // namespace ns
