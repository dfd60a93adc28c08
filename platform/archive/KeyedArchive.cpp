#include "platform/archive/KeyedArchive.h"

#include "platform/archive/ArchiveCheck.h"
#include "platform/archive/Record.h"
#include "platform/archive/XmlPropertyList.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/ContainerAccess.h"

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
  return Value(
      decoded_.longText(TextKey(object), object.text().size(), [&] { return string(object); }));
}

const ArchiveOrigin* archiveOriginOf(const Value& value) {
  switch (value.kind()) {
    case Kind::array:
      return dynamic_cast<const ArchiveOrigin*>(ArrayAccess::origin(value.array()));
    case Kind::dictionary:
      return dynamic_cast<const ArchiveOrigin*>(DictionaryAccess::origin(value.dictionary()));
    case Kind::string:
    case Kind::data:
    case Kind::date:
      return static_cast<const ArchiveOrigin*>(ClassedAccess::origin(value));
    case Kind::attributedString:
    case Kind::font:
    case Kind::color:
    case Kind::paragraphStyle:
    case Kind::record:
      return static_cast<const ArchivableBody&>(*value.body()).origin();
    default:
      return nullptr;
  }
}

Value withArchiveOrigin(const Value& value, const std::shared_ptr<const KeyedArchive>& archive,
                        uint32_t number, const ValueTransform* transform) {
  const auto origin = [&] {
    return Ref<const Origin>(new ArchiveOrigin(archive, number, transform));
  };
  switch (value.kind()) {
    case Kind::array:
      return Value(ArrayAccess::make(value.array().values(), value.archivedClass(), origin()));
    case Kind::dictionary:
      return Value(
          DictionaryAccess::make(value.dictionary().entries(), value.archivedClass(), origin()));
    case Kind::string:
      if (!value.archivedClass()) return value;
      return ClassedAccess::string(value.string(), value.archivedClass(), origin());
    case Kind::attributedString:
      return static_cast<const ArchivableBody&>(*value.body())
          .withOrigin(Ref<const ArchiveOrigin>(new ArchiveOrigin(archive, number, transform)));
    default:
      return value;
  }
}

}  // namespace ns
