#include "platform/propertylist/PropertyList.h"

#include <algorithm>
#include <bit>
#include <unordered_map>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/propertylist/BinaryPropertyList.h"
#include "platform/propertylist/PropertyListWriter.h"
#include "platform/propertylist/XmlPropertyList.h"

namespace ns {

namespace {

constexpr int kDeepestNesting = 512;

/// Reads values; recursion is bounded by the nesting limit of the format.  An object mentioned
/// several times is one value.
class Reader {
 public:
  using Object = BinaryPropertyList::Object;
  using Type = BinaryPropertyList::Type;

  explicit Reader(const BinaryPropertyList& list)
      : list_(list), budget_(2 * list.fileLength() + 100000) {}

  Value read(uint32_t index) { return read(index, 1).value; }

 private:
  struct Made {
    Value value;
    int height = 0;  // levels of containers
    bool isComplete = false;
  };

  const Made& read(uint32_t index, int depth) {
    const auto [found, isNew] = made_.try_emplace(index);
    Made& made = found->second;
    if (!isNew) {
      if (!made.isComplete) {
        throw ArchiveException("property list: object " + std::to_string(index) +
                               " contains itself");
      }
      checkDepth(depth + made.height - 1);
      return made;
    }
    const Object object = list_.object(index);
    if (object.type == Type::uid) {
      throw ArchiveException("property list: object " + std::to_string(index) +
                             " is a reference, which only archives hold");
    }
    // objects may overlap, but nobody writes them so
    spend(object.type == Type::dictionary ? 2 * object.count : object.text().size());
    if (object.type == Type::array || object.type == Type::dictionary) {
      checkDepth(depth);
      made.height = 1;
      made.value = object.type == Type::array ? array(object, depth, made.height)
                                              : dictionary(index, object, depth, made.height);
    } else {
      made.value = BinaryPropertyList::scalar(object);
      if (made.value.isNone()) {
        throw ArchiveException("property list: object " + std::to_string(index) +
                               " is an ASCII string with bytes above 127");
      }
    }
    made.isComplete = true;
    return made;
  }

  Value array(const Object& object, int depth, int& height) {
    std::vector<Value> values;
    for (uint64_t i = 0; i < object.count; ++i) {
      const Made& element = read(list_.reference(object.bytes, i), depth + 1);
      height = std::max(height, 1 + element.height);
      values.push_back(element.value);
    }
    return Value(Array(std::move(values)));
  }

  Value dictionary(uint32_t index, const Object& object, int depth, int& height) {
    Dictionary dictionary;
    for (uint64_t i = 0; i < object.count; ++i) {
      const Value key = read(list_.reference(object.bytes, i), depth + 1).value;
      if (!key.isString()) {
        throw ArchiveException("property list: a key of object " + std::to_string(index) + " is " +
                               describe(key.kind()) + " and not a string");
      }
      const Made& value = read(list_.reference(object.bytes, object.count + i), depth + 1);
      height = std::max(height, 1 + value.height);
      // of equal keys the first counts
      if (!dictionary.contains(key)) dictionary.setObjectForKey(value.value, key);
    }
    return Value(dictionary);
  }

  static void checkDepth(int depth) {
    if (depth > kDeepestNesting) {
      throw ArchiveException("property list: containers are nested too deeply");
    }
  }

  void spend(uint64_t length) {
    if (length > budget_) {
      throw ArchiveException(
          "property list: overlapping objects expand to far more than the file holds");
    }
    budget_ -= length;
  }

  const BinaryPropertyList& list_;
  uint64_t budget_;
  std::unordered_map<uint32_t, Made> made_;
};

/// Writes values; a container held several times is one object.
class Writer {
 public:
  using Reference = PropertyListWriter::Reference;

  Data finish(const Value& value) { return writer_.finish(write(value, 1).reference); }

 private:
  struct Written {
    Reference reference;
    int height;
  };

  Written write(const Value& value, int depth) {
    if (!value.isArray() && !value.isDictionary()) return {scalar(value), 0};
    const auto known = containers_.find(value.body().get());
    const int height = known == containers_.end() ? 1 : known->second.height;
    if (depth + height - 1 > kDeepestNesting) {
      throw InvalidArgumentException("property list: containers are nested too deeply");
    }
    if (known != containers_.end()) return known->second;
    const Written made =
        value.isArray() ? array(value.array(), depth) : dictionary(value.dictionary(), depth);
    containers_.emplace(value.body().get(), made);
    return made;
  }

  Written array(const Array& array, int depth) {
    const PropertyListWriter::Container container = writer_.array(array.count());
    int height = 1;
    for (size_t i = 0; i < array.count(); ++i) {
      const Written element = write(array[i], depth + 1);
      height = std::max(height, 1 + element.height);
      writer_.set(container, i, element.reference);
    }
    return {container.reference, height};
  }

  Written dictionary(const Dictionary& dictionary, int depth) {
    const size_t count = dictionary.count();
    const PropertyListWriter::Container container = writer_.dictionary(count);
    int height = 1;
    size_t i = 0;
    for (const auto& [key, object] : dictionary) {
      if (!key.isString()) {
        throw InvalidArgumentException("property list: a key is no string");
      }
      writer_.set(container, i, scalar(key));
      const Written written = write(object, depth + 1);
      height = std::max(height, 1 + written.height);
      writer_.set(container, count + i, written.reference);
      ++i;
    }
    return {container.reference, height};
  }

  Reference scalar(const Value& value) {
    switch (value.kind()) {
      case Kind::boolean:
        return writer_.boolean(value.boolValue());
      case Kind::integer: {
        const Integer integer = value.integer();
        if (integer.sixteenBytes || (!integer.isSigned && (integer.low >> 63) != 0)) {
          return writer_.integer16(integer.high, integer.low);
        }
        return writer_.integer(static_cast<int64_t>(integer.low));
      }
      case Kind::real:
        if (value.isFloat()) {
          return writer_.real32(std::bit_cast<uint32_t>(static_cast<float>(value.doubleValue())));
        }
        return writer_.real64(std::bit_cast<uint64_t>(value.doubleValue()));
      case Kind::date:
        return writer_.date(std::bit_cast<uint64_t>(value.date().seconds));
      case Kind::data:
        return writer_.data(value.data().view());
      case Kind::string:
        return writer_.string(value.string().units());
      default:
        throw InvalidArgumentException(std::string("property list: ") + describe(value.kind()) +
                                       " has no place in it");
    }
  }

  PropertyListWriter writer_;
  std::unordered_map<const ValueBody*, Written> containers_;
};

}  // namespace

Value propertyListFromData(const Data& data) {
  const bool isBinary = BinaryPropertyList::hasSignature(data.view());
  const BinaryPropertyList list(isBinary ? data : binaryFromXmlPropertyList(data));
  return Reader(list).read(list.topObject());
}

Data dataFromPropertyList(const Value& value) { return Writer().finish(value); }

}  // namespace ns
