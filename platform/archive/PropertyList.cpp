#include "platform/archive/PropertyList.h"

#include <bit>

#include "platform/archive/BinaryPropertyList.h"
#include "platform/archive/KeyedArchive.h"
#include "platform/archive/PropertyListWriter.h"
#include "platform/archive/XmlPropertyList.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

namespace {

constexpr int kDeepestNesting = 512;

/// Reads values; recursion is bounded by the nesting limit of the format.
class Reader {
 public:
  explicit Reader(const BinaryPropertyList& list)
      : list_(list), budget_(2 * list.fileLength() + 100000) {}

  Value read(uint32_t index, int depth = 0) {
    using Type = BinaryPropertyList::Type;
    const BinaryPropertyList::Object object = list_.object(index);
    if (object.type == Type::uid) {
      throw ArchiveException("property list: object " + std::to_string(index) +
                             " is a reference, which only archives hold");
    }
    if (object.type != Type::array && object.type != Type::dictionary) {
      return KeyedArchive::scalar(object);
    }
    if (depth >= kDeepestNesting) {
      throw ArchiveException("property list: containers are nested too deeply or hold themselves");
    }
    if (object.count > budget_) {
      throw ArchiveException(
          "property list: shared containers expand to far more than the file holds");
    }
    budget_ -= object.count;
    if (object.type == Type::array) {
      std::vector<Value> values;
      for (uint64_t i = 0; i < object.count; ++i) {
        values.push_back(read(list_.reference(object.bytes, i), depth + 1));
      }
      return Value(Array(std::move(values)));
    }
    Dictionary dictionary;
    for (uint64_t i = 0; i < object.count; ++i) {
      const Value key = read(list_.reference(object.bytes, i), depth + 1);
      if (!key.isString()) {
        throw ArchiveException("property list: a key of object " + std::to_string(index) + " is " +
                               describe(key.kind()) + " and not a string");
      }
      // of equal keys the first counts
      if (dictionary.contains(key)) continue;
      dictionary.setObjectForKey(read(list_.reference(object.bytes, object.count + i), depth + 1),
                                 key);
    }
    return Value(dictionary);
  }

 private:
  const BinaryPropertyList& list_;
  uint64_t budget_;
};

PropertyListWriter::Reference write(PropertyListWriter& writer, const Value& value, int depth) {
  if (depth > kDeepestNesting) {
    throw InvalidArgumentException("property list: containers are nested too deeply");
  }
  switch (value.kind()) {
    case Kind::boolean:
      return writer.boolean(value.boolValue());
    case Kind::integer: {
      const Integer integer = value.integer();
      if (integer.sixteenBytes || (!integer.isSigned && (integer.low >> 63) != 0)) {
        return writer.integer16(integer.high, integer.low);
      }
      return writer.integer(static_cast<int64_t>(integer.low));
    }
    case Kind::real:
      if (value.isFloat()) {
        return writer.real32(std::bit_cast<uint32_t>(static_cast<float>(value.doubleValue())));
      }
      return writer.real64(std::bit_cast<uint64_t>(value.doubleValue()));
    case Kind::date:
      return writer.date(std::bit_cast<uint64_t>(value.date().seconds));
    case Kind::data:
      return writer.data(value.data().view());
    case Kind::string:
      return writer.string(value.string().units());
    case Kind::array: {
      const Array array = value.array();
      const PropertyListWriter::Container container = writer.array(array.count());
      for (size_t i = 0; i < array.count(); ++i) {
        writer.set(container, i, write(writer, array[i], depth + 1));
      }
      return container.reference;
    }
    case Kind::dictionary: {
      const Dictionary dictionary = value.dictionary();
      const PropertyListWriter::Container container = writer.dictionary(dictionary.count());
      size_t i = 0;
      for (const auto& [key, object] : dictionary) {
        if (!key.isString()) {
          throw InvalidArgumentException("property list: a key is no string");
        }
        writer.set(container, i, write(writer, key, depth + 1));
        writer.set(container, dictionary.count() + i, write(writer, object, depth + 1));
        ++i;
      }
      return container.reference;
    }
    default:
      throw InvalidArgumentException(std::string("property list: ") + describe(value.kind()) +
                                     " has no place in it");
  }
}

}  // namespace

Value propertyListFromData(const Data& data) {
  const bool isBinary = BinaryPropertyList::hasSignature(data.view());
  const BinaryPropertyList list(isBinary ? data : binaryFromXmlPropertyList(data));
  return Reader(list).read(list.topObject());
}

Data dataFromPropertyList(const Value& value) {
  PropertyListWriter writer;
  return writer.finish(write(writer, value, 0));
}

}  // namespace ns
