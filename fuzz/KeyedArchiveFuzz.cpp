// Keyed archives of any bytes: an archive that opens can be decoded whole and archived again, and
// archiving what was archived gives the same bytes.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/archive/ArchiveCheck.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Exception.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextClasses.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

/// An object with an identity, with a value, a reference back and a list of its kind.
class Item final : public ns::Object {
 public:
  [[nodiscard]] ns::ClassRef classForCoder() const override {
    static const ns::ClassRef known = ns::makeClass({"Item", "NSObject"});
    return known;
  }
  void encodeWithCoder(ns::Coder& coder) const override {
    auto& archiver = dynamic_cast<ns::KeyedArchiver&>(coder);
    coder.encodeConditionalObjectForKey(parent_.lock(), "parent");
    archiver.encodeListForKey({&children_, children_.size(),
                               [](const void* list, size_t i) -> const ns::Object* {
                                 return (*static_cast<const List*>(list))[i].get();
                               },
                               false},
                              "children");
    if (archive_) archiver.encodeArchivedValueForKey(archive_, data_, nullptr, "data");
    coder.encodeIntegerForKey(size_, "size");
  }
  void initWithCoder(ns::Coder& coder) override {
    auto& unarchiver = dynamic_cast<ns::KeyedUnarchiver&>(coder);
    parent_ = coder.decodeReferenceForKey("parent");
    data_ = unarchiver.fields().reference("data");
    if (data_ != 0) archive_ = unarchiver.archive();
    size_ = coder.decodeIntegerForKey("size");
    if (auto list = unarchiver.decodeListForKey("children", makeList)) {
      children_ = *std::static_pointer_cast<List>(list);
    }
  }
  void clear() {
    children_.clear();
    archive_.reset();
  }

 private:
  using List = std::vector<std::shared_ptr<ns::Object>>;
  static std::shared_ptr<void> makeList(size_t count, const ns::KeyedUnarchiver::ElementAt& at) {
    auto list = std::make_shared<List>();
    for (size_t i = 0; i < count; ++i) list->push_back(at(i));
    return list;
  }

  std::weak_ptr<ns::Object> parent_;
  List children_;
  std::shared_ptr<const ns::KeyedArchive> archive_;  // that the data is in
  uint32_t data_ = 0;
  int64_t size_ = 0;
};

// Items of broken archives hold each other; they are emptied at the end.
std::vector<std::shared_ptr<Item>> items;

std::shared_ptr<ns::Object> createItem(ns::Arena&) {
  return items.emplace_back(std::make_shared<Item>());
}

const ns::ClassRegistry& classes() {
  static const ns::ClassRegistry all = [] {
    ns::ClassRegistry registry;
    ns::addTextClasses(registry);
    registry.add("Item", {ns::Kind::object, nullptr, nullptr, createItem});
    return registry;
  }();
  return all;
}

void decodeEverything(const ns::KeyedArchive& archive) {
  const std::vector<bool> reached = ns::reachedNumbers(archive);
  for (uint32_t number = 0; number < archive.objectCount(); ++number) {
    if (!reached[number]) continue;
    const ns::Value value = archive.value(number);
    (void)value.hash();
    (void)(archive.value(number) == value);
    if (value.kind() == ns::Kind::record) {
      const ns::Record record(value);
      for (const ns::String& key : record.keys()) (void)record.fieldForKey(key.utf8().c_str());
    }
  }
}

/// The archive of the root of an archive, and of what stands beside it.
ns::Data archivedAgain(const ns::Data& data) {
  const std::shared_ptr<ns::KeyedArchive> archive =
      ns::KeyedArchive::open(data, classes(), ns::KeyedArchive::Root::optional);
  const ns::Value root = ns::KeyedUnarchiver::unarchiveObject(archive, archive->root());
  decodeEverything(*archive);
  ns::Fields others;
  for (const auto& [key, entry, index] : archive->otherTopEntries()) {
    others.emplace_back(key, ns::archivedField(archive, entry));
  }
  return ns::KeyedArchiver::archivedDataWithRootObject(root, others);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const ns::Data first = archivedAgain(ns::Data(std::string(data, data + size)));
    // from here on nothing may fail, and nothing changes any more
    bool isSame = false;
    try {
      const ns::Data second = archivedAgain(first);
      isSame = archivedAgain(second) == second;
    } catch (const ns::ArchiveException&) {
    }
    require(isSame);
  } catch (const ns::ArchiveException&) {
  }
  for (const std::shared_ptr<Item>& item : items) item->clear();
  items.clear();
  return 0;
}
