#include "platform/archive/KeyedArchive.h"

#include "platform/archive/ArchiveCheck.h"
#include "platform/propertylist/XmlPropertyList.h"

namespace ns {

KeyedArchive::KeyedArchive(const Data& data, const ClassRegistry& registry, Root root)
    : StoredArchive(data, registry, root), findings_(checkArchive(*this)) {}

KeyedArchive::~KeyedArchive() = default;

std::shared_ptr<KeyedArchive> KeyedArchive::open(const Data& data, const ClassRegistry& registry,
                                                 Root root) {
  const bool isBinary = BinaryPropertyList::hasSignature(data.view());
  return std::shared_ptr<KeyedArchive>(
      new KeyedArchive(isBinary ? data : binaryFromXmlPropertyList(data), registry, root));
}

Value KeyedArchive::sharedScalar(const Object& object) const {
  if (object.type == Type::data && object.count >= kLongText) {
    return Value(Data(shared_from_this(), object.bytes, object.count));
  }
  if (!object.isString() || object.text().size() < kLongText) return scalar(object);
  return Value(decoded_.longText(TextKey(object), nullptr, [&] { return string(object); }));
}

String KeyedArchive::sharedText(const Object& data) const {
  if (data.text().size() < kLongText) return String(data.text());
  return decoded_.longText(TextKey(data), nullptr, [&] { return String(data.text()); });
}

String KeyedArchive::rewrittenText(const ValueTransform& transform, const Object& text) const {
  if (text.text().size() < kLongText) return transform.string(string(text));
  return decoded_.longText(TextKey(text), &transform,
                           [&] { return transform.string(sharedScalar(text).string()); });
}

}  // namespace ns
