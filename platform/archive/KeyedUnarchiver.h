#pragma once

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/archive/FieldReader.h"
#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/Coder.h"

namespace ns {

/// Rebuilds the objects of an archive that have an identity.
///
/// Each is made empty first and reads its fields with `initWithCoder` later, so references may
/// lead anywhere, in circles too, and depth costs nothing.
///
/// Of an archive whose objects are a tree, those that an object lists as its children may be left
/// for later: see isLazy().  Of any other archive all objects are made at once.
class KeyedUnarchiver final : public Coder {
 public:
  /// The root value of the data of an archive; none when the root is null.  Raises
  /// ArchiveException for malformed data.
  static Value unarchiveObject(const Data& data, const ClassRegistry& registry);
  /// The value of a number of an open archive, with all objects that it needs.  An object is the
  /// one that values of the archive refer to, as long as it lives.
  static Value unarchiveObject(const std::shared_ptr<KeyedArchive>& archive, uint32_t number);

  [[nodiscard]] bool allowsKeyedCoding() const override { return true; }
  [[nodiscard]] bool containsValueForKey(const char* key) override;
  [[nodiscard]] Value decodeObjectForKey(const char* key) override;
  [[nodiscard]] std::shared_ptr<ns::Object> decodeReferenceForKey(const char* key) override {
    const uint32_t number = fields_.target(key);
    return number == parentNumber_ ? parent_ : decodeReference(number, key);
  }
  [[nodiscard]] bool decodeBoolForKey(const char* key) override;
  [[nodiscard]] int64_t decodeIntegerForKey(const char* key) override;

  /// The fields of the object that is being read, and where it lies.
  [[nodiscard]] const FieldReader& fields() const { return fields_; }
  [[nodiscard]] const std::shared_ptr<const KeyedArchive>& archive() const { return archive_; }

  /// A list of objects under a key, made by `make` once for each list of the archive however
  /// many objects share it; nothing for a missing key, null or an empty list.
  ///
  /// `make` is given the number of elements and a function for each element, which raises
  /// ArchiveException when the element is not an object with an identity.
  using ElementAt = std::function<std::shared_ptr<ns::Object>(size_t)>;
  using MakeList = std::shared_ptr<void> (*)(size_t count, const ElementAt& at);
  [[nodiscard]] std::shared_ptr<void> decodeListForKey(const char* key, MakeList make);

  /// Whether the object that is being read may leave its children in the archive, and have them
  /// made by decodeChildren() when somebody asks for them.
  [[nodiscard]] bool isLazy() const { return archive_->isTree(); }
  /// The list of children that an object of a tree left in its archive, by the list's record.
  static std::shared_ptr<void> decodeChildren(const std::shared_ptr<const KeyedArchive>& archive,
                                              const KeyedArchive::Record& list,
                                              const std::shared_ptr<ns::Object>& object,
                                              MakeList make);

 private:
  friend class KeyedArchive;
  explicit KeyedUnarchiver(std::shared_ptr<const KeyedArchive> archive);
  void makeObjects(const std::vector<uint32_t>& numbers);
  /// Makes an object.  It reads its fields at once if it is one of the children that are asked
  /// for, which refer to nothing else that is made, and otherwise when readFields() is called.
  std::shared_ptr<ns::Object> makeObject(uint32_t number, const KeyedArchive::Record& record);
  [[nodiscard]] std::shared_ptr<ns::Object> made(uint32_t number);
  /// The object that the one being read refers to, or none.
  [[nodiscard]] std::shared_ptr<ns::Object> referenced(uint32_t number);
  [[nodiscard]] std::shared_ptr<ns::Object> decodeReference(uint32_t number, const char* key);
  /// Has all objects made so far read their fields, and those that are made on the way.
  void readFields();

  struct Made {
    std::shared_ptr<ns::Object> object;
    FieldReader fields;
  };
  const std::shared_ptr<const KeyedArchive> archive_;
  std::vector<Made> made_;
  size_t readCount_ = 0;          // of those that have read their fields
  std::vector<uint32_t> places_;  // by archive number: place in made_ plus 1; not for trees
  std::unordered_map<uint64_t, std::shared_ptr<void>> lists_;
  std::shared_ptr<ns::Object> parent_;  // the object whose children are being made
  uint32_t parentNumber_ = UINT32_MAX;  // its number, once a child has told; before, nobody's
  FieldReader fields_;
};

}  // namespace ns
