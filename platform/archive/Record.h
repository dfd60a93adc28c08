#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/Value.h"

namespace ns {

class KeyedArchiver;

/// A field of a record: a primitive, a reference to a value, or a list or map of fields that
/// lies in the record itself.
struct Field {
  enum class Form : uint8_t { primitive, reference, list, map };

  Form form = Form::primitive;
  Value value;                ///< of a primitive or a reference; none is the null reference
  std::vector<Field> fields;  ///< elements of a list, values of a map
  std::vector<String> keys;   ///< of a map

  static Field primitive(Value value) { return {Form::primitive, std::move(value), {}, {}}; }
  static Field reference(Value value) { return {Form::reference, std::move(value), {}, {}}; }
};

/// A field as an archive holds it.
Field archivedField(const std::shared_ptr<const KeyedArchive>& archive,
                    const KeyedArchive::Object& object);

/// Fields under their names, in order.
using Fields = std::vector<std::pair<String, Field>>;

/// An object of a class with named fields, held as it is archived: its class and its keys in
/// order, with their exact kinds.  Fonts, colours and paragraph styles are read through one;
/// objects of classes that nobody here interprets are nothing but one.
///
/// A record that came from an archive stays there and is read from the archive's bytes, so that
/// records may refer to each other in circles.  Changing a field makes a new record with all the
/// other fields as they are.
class Record {
 public:
  /// A record of a class, without fields yet.
  explicit Record(ClassRef archivedClass);
  Record(ClassRef archivedClass, std::vector<std::pair<String, Field>> fields);
  /// The record behind a value of kind record, font, color or paragraphStyle; of any other
  /// value, a record without class and fields.
  explicit Record(const Value& value);

  [[nodiscard]] ClassRef archivedClass() const;
  [[nodiscard]] size_t count() const;
  /// Keys in archive order, "$class" left out.
  [[nodiscard]] std::vector<String> keys() const;
  [[nodiscard]] bool contains(const char* key) const;
  /// The value under a key, primitive or reference; none when missing, null, a list or a map.
  [[nodiscard]] Value valueForKey(const char* key) const;
  /// The field under a key in full; a null reference when missing.
  [[nodiscard]] Field fieldForKey(const char* key) const;

  /// A record that differs in one field; a new key comes last.
  [[nodiscard]] Record with(const char* key, Field field) const;
  [[nodiscard]] Record without(const char* key) const;

  /// The record as a value of a kind: record, font, color or paragraphStyle.
  [[nodiscard]] Value asValue(Kind kind = Kind::record) const;

  /// The value of a record that lies in an archive.
  static Value inArchive(const std::shared_ptr<const KeyedArchive>& archive, uint32_t number,
                         Kind kind);

 private:
  [[nodiscard]] std::vector<std::pair<String, Field>> allFields() const;
  Value value_;
};

/// A body that archives write in a way of its own.
class ArchivableBody : public ValueBody {
 public:
  using ValueBody::ValueBody;
  /// Where the unchanged value came from, or none.
  [[nodiscard]] virtual const ArchiveOrigin* origin() const = 0;
  /// The same value, rewritten and said to come from an archive; none where nothing is rewritten.
  [[nodiscard]] virtual Value withOrigin(const Ref<const ArchiveOrigin>& /*origin*/) const {
    return {};
  }
  [[nodiscard]] virtual ClassRef classForArchiver() const = 0;
  virtual void encode(KeyedArchiver& archiver) const = 0;
};

}  // namespace ns
