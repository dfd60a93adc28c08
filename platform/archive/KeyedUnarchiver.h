#pragma once

#include <functional>
#include <memory>

#include "platform/archive/ArchivedValue.h"
#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/Coder.h"

namespace ns {

/// Rebuilds the objects of an archive that have an identity.
///
/// Two passes: first every such object is made, empty; then each reads its fields with
/// `initWithCoder`.  So references may lead anywhere, in circles too, and depth costs nothing.
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
  [[nodiscard]] std::shared_ptr<ns::Object> decodeReferenceForKey(const char* key) override;
  [[nodiscard]] bool decodeBoolForKey(const char* key) override;
  [[nodiscard]] int64_t decodeIntegerForKey(const char* key) override;

  /// Where the value under a key lies; number 0 for a missing key or null.
  [[nodiscard]] ArchivedValue archivedValueForKey(const char* key);
  [[nodiscard]] Kind kindForKey(const char* key);

  /// A list of objects under a key, made by `make` once for each list of the archive however
  /// many objects share it; nothing for a missing key, null or an empty list.
  ///
  /// `make` is given the number of elements and a function for each element, which raises
  /// ArchiveException when the element is not an object with an identity.
  using ElementAt = std::function<std::shared_ptr<ns::Object>(size_t)>;
  using MakeList = std::shared_ptr<void> (*)(size_t count, const ElementAt& at);
  [[nodiscard]] std::shared_ptr<void> decodeListForKey(const char* key, MakeList make);
  /// Whether the list under a key is of an immutable class, or null.
  enum class ListKind : uint8_t { none, immutableList, mutableList };
  [[nodiscard]] ListKind listKindForKey(const char* key);

  /// Raises ArchiveException about the object that is being read.
  [[noreturn]] void fail(const std::string& what) const;

 private:
  friend class KeyedArchive;
  explicit KeyedUnarchiver(std::shared_ptr<const KeyedArchive> archive);
  void makeObjects(const std::vector<uint32_t>& numbers);
  [[nodiscard]] std::shared_ptr<ns::Object> made(uint32_t number) const;
  [[nodiscard]] std::optional<KeyedArchive::Object> field(const char* key) const;
  [[nodiscard]] Value primitive(const char* key) const;

  const std::shared_ptr<const KeyedArchive> archive_;
  std::vector<uint32_t> places_;  // by archive number: place in objects_ plus 1
  std::vector<std::shared_ptr<ns::Object>> objects_;
  std::unordered_map<uint64_t, std::shared_ptr<void>> lists_;
  uint32_t number_ = 0;
  KeyedArchive::Record record_{};
};

}  // namespace ns
