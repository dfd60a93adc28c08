#include "platform/archive/ArchiveOrigin.h"

#include "platform/archive/KeyedArchive.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/ContainerAccess.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

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
