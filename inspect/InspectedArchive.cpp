#include "inspect/InspectedArchive.h"

#include <algorithm>
#include <iterator>

#include "document/DocumentClasses.h"
#include "document/NodeArchiving.h"

namespace tavlin {

namespace {

constexpr const char* kControllers[] = {"OLTreeController", "OLTreeRuntimeAttributesController",
                                        "OLTreeUndoController"};
constexpr const char* kTexts[] = {"NSAttributedString", "NSMutableAttributedString",
                                  "NSTextStorage"};

const ns::ClassRegistry& inspectedClasses() {
  static const ns::ClassRegistry* const classes = [] {
    auto* registry = new ns::ClassRegistry(documentClasses());
    for (const char* name : kTexts) registry->add(name, {});
    return registry;
  }();
  return *classes;
}

}  // namespace

InspectedArchive::InspectedArchive(const ns::Data& file)
    : archive_(ns::KeyedArchive::open(file, inspectedClasses())),
      node_(inspectedClasses().find("OLNode")),
      tree_(inspectedClasses().find("OLTree")) {
  const auto find = [](const char* name) { return inspectedClasses().find(name); };
  std::ranges::transform(kControllers, controllers_, find);
  std::ranges::transform(kTexts, texts_, find);
}

bool InspectedArchive::isTreeController(const Record& record) const {
  const ns::ClassCoding* coding = record.archivedClass->coding;
  return coding && std::ranges::count(controllers_, coding) > 0;
}

bool InspectedArchive::isAttributedString(const Record& record) const {
  const ns::ClassCoding* coding = record.archivedClass->coding;
  return coding && std::ranges::count(texts_, coding) > 0;
}

std::optional<InspectedArchive::Record> InspectedArchive::instance(uint32_t number) const {
  const ns::KeyedArchive::Entry entry = archive_->entry(number);
  if (entry.kind != ns::KeyedArchive::EntryKind::instance) return std::nullopt;
  return archive_->record(number, entry.object);
}

std::optional<InspectedArchive::Record> InspectedArchive::node(uint32_t number) const {
  const std::optional<Record> found = instance(number);
  return found && isNode(*found) ? found : std::nullopt;
}

uint32_t InspectedArchive::reference(const Record& record, const char* key) const {
  const uint32_t position = record.shape->find(key);
  if (position == record.shape->count()) return 0;
  const uint32_t number = archive_->fieldTarget(record, position).value_or(0);
  return archive_->isNull(number) ? 0 : number;
}

uint32_t InspectedArchive::childrenOf(const Record& node) const {
  return reference(node, kChildrenKey);
}

std::optional<InspectedArchive::Found> InspectedArchive::find(const Record& dictionary,
                                                              std::string_view key) const {
  const ArchivedList keys = ArchivedList::keysOf(*archive_, dictionary);
  const ArchivedList values(*archive_, dictionary);
  for (uint64_t i = 0; i < keys.count() && i < values.count(); ++i) {
    const auto text = archive_->storedText(keys.at(*archive_, i));
    if (!text || text->count != key.size()) continue;
    if (text->type == ns::KeyedArchive::Type::ascii ? text->text() == key
                                                    : ns::KeyedArchive::string(*text) == key) {
      return Found{i, values.at(*archive_, i)};
    }
  }
  return std::nullopt;
}

std::string InspectedArchive::quoted(uint32_t number) const {
  constexpr size_t kLongest = 60;
  const auto text = archive_->storedText(number);
  if (!text) return "a value";
  const ns::String whole = ns::KeyedArchive::string(*text);
  const bool isLong = whole.length() > kLongest;
  std::string line = isLong ? whole.substring({0, kLongest}).utf8() + "..." : whole.utf8();
  const auto isControl = [](char each) { return static_cast<unsigned char>(each) < ' '; };
  std::ranges::replace_if(line, isControl, ' ');
  return "\"" + line + "\"";
}

ArchivedList::ArchivedList(const ns::KeyedArchive& archive,
                           const ns::KeyedArchive::Record& container, const char* key,
                           const char* numbered) {
  const auto elements = archive.fieldForKey(container, key);
  isInPlace_ = elements.has_value();
  if (elements) {
    inPlace_ = *elements;
  } else {
    numbers_ = archive.elementNumbers(container, key, numbered);
  }
}

}  // namespace tavlin
