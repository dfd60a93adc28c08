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

  /// The same for a link back to an object that has this one among its children, which alone does
  /// not bring that object into being: one that is neither there nor made for its own sake is none.
  [[nodiscard]] std::shared_ptr<ns::Object> decodeParentForKey(const char* key);

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

  /// While the root of an archive is read: the objects that values of the archive name, but for
  /// the root itself.  Values that stay in the archive do not hold them; they are the same objects
  /// for all values as long as somebody does, and else are made anew for who asks.  None for an
  /// object other than the root.
  using Objects = std::vector<std::shared_ptr<ns::Object>>;
  [[nodiscard]] Objects company() const;

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
  /// Makes all objects of an archive that is no tree, but for those that are there.
  void makeObjects(uint32_t root);
  /// Makes an object.  It reads its fields at once if it is one of the children that are asked
  /// for, which refer to nothing else that is made, and otherwise when readFields() is called.
  std::shared_ptr<ns::Object> makeObject(uint32_t number, const KeyedArchive::Record& record);
  [[nodiscard]] std::shared_ptr<ns::Object> made(uint32_t number);
  /// Makes an object for a number, if it stands for one.
  [[nodiscard]] std::shared_ptr<ns::Object> makeNumbered(uint32_t number);
  /// The object that the one being read refers to, or none.
  [[nodiscard]] std::shared_ptr<ns::Object> referenced(uint32_t number);
  [[nodiscard]] std::shared_ptr<ns::Object> decodeReference(uint32_t number, const char* key);
  /// Has all objects made so far read their fields, and those that are made on the way.
  void readFields();

  struct Made {
    std::shared_ptr<ns::Object> object;
    FieldReader fields;
    bool isNew;  // and not known to the archive before
  };
  const std::shared_ptr<const KeyedArchive> archive_;
  std::vector<Made> made_;
  size_t readCount_ = 0;          // of those that have read their fields
  std::vector<uint32_t> places_;  // by archive number: place in made_ plus 1; when all are made
  std::unordered_map<uint32_t, std::shared_ptr<void>> lists_;  // by number; not for trees
  const ns::Object* root_ = nullptr;                           // when all are made
  const ns::Object* reading_ = nullptr;
  std::shared_ptr<ns::Object> parent_;  // the object whose children are being made
  uint32_t parentNumber_ = UINT32_MAX;  // its number, once a child has told; before, nobody's
  FieldReader fields_;
};

}  // namespace ns
