#include "ArchiveTesting.h"

#include <sys/resource.h>

#include <bit>
#include <unordered_map>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/archive/Record.h"

namespace testing_archives {

std::string bigEndian(uint64_t number, unsigned width) {
  std::string bytes;
  for (unsigned i = width; i-- > 0;) {
    bytes.push_back(static_cast<char>(i >= 8 ? 0 : static_cast<uint8_t>(number >> (8 * i))));
  }
  return bytes;
}

ns::Data RawList::data() const {
  std::string file = header;
  std::vector<uint64_t> places;
  for (const std::string& object : objects) {
    places.push_back(file.size());
    file += object;
  }
  const uint64_t tableAt = file.size();
  for (const uint64_t offset : offsets.empty() ? places : offsets) {
    file += bigEndian(offset, offsetSize);
  }
  file += behindTable + std::string(6, '\0') + bigEndian(offsetSize, 1) +
          bigEndian(referenceSize, 1) + bigEndian(count.value_or(objects.size()), 8) +
          bigEndian(top.value_or(0), 8) + bigEndian(table.value_or(tableAt), 8) + behindTrailer;
  return ns::Data(file);
}

// Property lists.

struct P::Node {
  std::string bytes;  // of a scalar
  char type = 0;      // 'a' or 'd' for containers
  std::vector<P> elements;
};

namespace {

std::string counted(int type, uint64_t count) {
  if (count < 15) return bigEndian(static_cast<uint64_t>(type) | count, 1);
  const unsigned power = count < 0x100 ? 0 : count < 0x10000 ? 1 : 2;
  return bigEndian(static_cast<uint64_t>(type) | 15, 1) + bigEndian(0x10 | power, 1) +
         bigEndian(count, 1U << power);
}

}  // namespace

P P::raw(const std::string& bytes) {
  auto node = std::make_shared<Node>();
  node->bytes = bytes;
  return P(std::move(node));
}

P::P(const char* text) : P(string(text)) {}
P::P(int64_t number)
    : P(number < 0 || number > 0xFFFFFFFF ? integer(static_cast<uint64_t>(number), 8)
        : number < 0x100                  ? integer(static_cast<uint64_t>(number), 1)
        : number < 0x10000                ? integer(static_cast<uint64_t>(number), 2)
                                          : integer(static_cast<uint64_t>(number), 4)) {}
P P::string(const std::string& ascii) { return raw(counted(0x50, ascii.size()) + ascii); }
P P::wide(std::u16string_view text) {
  std::string bytes = counted(0x60, text.size());
  for (const char16_t unit : text) bytes += bigEndian(unit, 2);
  return raw(bytes);
}
P P::boolean(bool value) { return raw(value ? "\x09" : "\x08"); }
P P::integer(uint64_t bits, unsigned width) {
  const auto power = static_cast<uint64_t>(std::countr_zero(width));
  return raw(bigEndian(0x10 | power, 1) + bigEndian(bits, width));
}
P P::real(double value) { return raw("\x23" + bigEndian(std::bit_cast<uint64_t>(value), 8)); }
P P::real4(float value) { return raw("\x22" + bigEndian(std::bit_cast<uint32_t>(value), 4)); }
P P::date(double seconds) { return raw("\x33" + bigEndian(std::bit_cast<uint64_t>(seconds), 8)); }
P P::data(const std::string& bytes) { return raw(counted(0x40, bytes.size()) + bytes); }
P P::uid(uint64_t number, unsigned width) {
  return raw(bigEndian(0x80 | (width - 1), 1) + bigEndian(number, width));
}
P P::uid(uint64_t number) {
  return uid(number, number < 0x100 ? 1 : number < 0x10000 ? 2 : number <= 0xFFFFFFFF ? 4 : 8);
}
P P::array(std::vector<P> elements) {
  auto node = std::make_shared<Node>();
  node->type = 'a';
  node->elements = std::move(elements);
  return P(std::move(node));
}
P P::dictionary(std::vector<std::pair<P, P>> pairs) {
  auto node = std::make_shared<Node>();
  node->type = 'd';
  for (const auto& pair : pairs) node->elements.push_back(pair.first);
  for (const auto& pair : pairs) node->elements.push_back(pair.second);
  return P(std::move(node));
}
void P::add(const P& element) const { node_->elements.push_back(element); }

void P::clear() const { node_->elements.clear(); }

ns::Data P::binary() const {
  std::vector<Node*> order{node_.get()};
  std::unordered_map<Node*, uint64_t> places{{node_.get(), 0}};
  for (size_t i = 0; i < order.size(); ++i) {
    for (const P& element : order[i]->elements) {
      if (places.emplace(element.node_.get(), order.size()).second) {
        order.push_back(element.node_.get());
      }
    }
  }
  RawList list;
  list.offsetSize = 4;
  list.referenceSize = order.size() < 0x100 ? 1 : order.size() < 0x10000 ? 2 : 4;
  for (Node* node : order) {
    std::string bytes = node->bytes;
    if (node->type != 0) {
      const bool isArray = node->type == 'a';
      bytes = counted(isArray ? 0xA0 : 0xD0, node->elements.size() / (isArray ? 1 : 2));
      for (const P& element : node->elements) {
        bytes += bigEndian(places.at(element.node_.get()), list.referenceSize);
      }
    }
    list.objects.push_back(std::move(bytes));
  }
  return list.data();
}

// Archives.

P references(const std::vector<uint64_t>& numbers) {
  std::vector<P> elements;
  for (const uint64_t number : numbers) elements.push_back(P::uid(number));
  return P::array(std::move(elements));
}

P instance(uint64_t classNumber, Fields fields) {
  fields.emplace_back("$class", P::uid(classNumber));
  return P::dictionary(std::move(fields));
}

P classRecord(const std::vector<std::string>& chain) {
  std::vector<P> names;
  for (const std::string& name : chain) names.push_back(P::string(name));
  return P::dictionary({{"$classname", names.front()}, {"$classes", P::array(names)}});
}

P archiveOf(std::vector<P> entries) {
  return P::dictionary({{"$version", 100000},
                        {"$archiver", "NSKeyedArchiver"},
                        {"$top", P::dictionary({{"root", P::uid(1)}})},
                        {"$objects", P::array(std::move(entries))}});
}

ns::Data archive(std::vector<P> entries) { return archiveOf(std::move(entries)).binary(); }

std::string faultOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ns::ArchiveException& exception) {
    return exception.what();
  }
  return "no fault";
}

// Items.

namespace {

std::vector<std::weak_ptr<Item>>* keptItems = nullptr;

std::shared_ptr<ns::Object> createItem(ns::Arena& arena) {
  auto item = arena.make<Item>();
  if (keptItems != nullptr) keptItems->push_back(item);
  return item;
}

std::shared_ptr<void> makeItems(size_t count, const ns::KeyedUnarchiver::ElementAt& at) {
  auto items = std::make_shared<std::vector<std::shared_ptr<Item>>>();
  for (size_t i = 0; i < count; ++i) items->push_back(std::static_pointer_cast<Item>(at(i)));
  return items;
}

}  // namespace

Item::~Item() {
  // never by recursion, however deep
  std::vector<std::shared_ptr<Item>> pending = std::move(children);
  while (!pending.empty()) {
    const std::shared_ptr<Item> item = std::move(pending.back());
    pending.pop_back();
    if (item.use_count() == 1) {
      for (std::shared_ptr<Item>& child : item->children) pending.push_back(std::move(child));
      item->children.clear();
    }
  }
}

ns::ClassRef Item::classForCoder() const { return ns::makeClass({"Item", "NSObject"}); }

void Item::encodeWithCoder(ns::Coder& coder) const {
  auto& archiver = dynamic_cast<ns::KeyedArchiver&>(coder);
  coder.encodeObjectForKey(name, "name");
  coder.encodeObjectForKey(values, "values");
  coder.encodeConditionalObjectForKey(parent.lock(), "parent");
  coder.encodeConditionalObjectForKey(conditional.lock(), "friend");
  coder.encodeBoolForKey(flag, "flag");
  coder.encodeIntegerForKey(size, "$size");
  const ns::ObjectList list{&children, children.size(),
                            [](const void* all, size_t i) -> const ns::Object* {
                              return (*static_cast<const decltype(children)*>(all))[i].get();
                            },
                            isImmutable};
  archiver.encodeListForKey(list, "children");
}

void Item::initWithCoder(ns::Coder& coder) {
  auto& unarchiver = dynamic_cast<ns::KeyedUnarchiver&>(coder);
  name = coder.decodeObjectForKey("name");
  values = coder.decodeObjectForKey("values");
  parent = std::dynamic_pointer_cast<Item>(coder.decodeReferenceForKey("parent"));
  conditional = std::dynamic_pointer_cast<Item>(coder.decodeReferenceForKey("friend"));
  flag = coder.decodeBoolForKey("flag");
  size = coder.decodeIntegerForKey("$size");
  isImmutable =
      unarchiver.fields().listKind("children") == ns::FieldReader::ListKind::immutableList;
  if (const auto list = unarchiver.decodeListForKey("children", makeItems)) {
    children = *std::static_pointer_cast<std::vector<std::shared_ptr<Item>>>(list);
  }
}

std::shared_ptr<Item> Item::make(const char* name) {
  auto item = std::make_shared<Item>();
  item->name = name;
  return item;
}

void Item::add(const std::shared_ptr<Item>& child) {
  child->parent = std::static_pointer_cast<Item>(shared_from_this());
  children.push_back(child);
}

ItemKeeper::ItemKeeper() { keptItems = new std::vector<std::weak_ptr<Item>>; }

ItemKeeper::~ItemKeeper() {
  for (const std::weak_ptr<Item>& each : *keptItems) {
    if (const std::shared_ptr<Item> item = each.lock()) {
      item->children.clear();
      item->values = {};
      item->name = {};
    }
  }
  delete std::exchange(keptItems, nullptr);
}

const ns::ClassRegistry& registry() {
  static const ns::ClassRegistry* const classes = [] {
    static ns::ClassRegistry all;
    all.add("Item", {ns::Kind::object, nullptr, nullptr, createItem});
    return &all;
  }();
  return *classes;
}

ns::Value readBack(const ns::Data& data) {
  return ns::KeyedUnarchiver::unarchiveObject(data, registry());
}

std::shared_ptr<ns::KeyedArchive> opened(const ns::Data& data) {
  return ns::KeyedArchive::open(data, registry());
}

uint64_t peakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<uint64_t>(usage.ru_maxrss) * 1024;
}

// Graphs.

namespace {

class Describer {
 public:
  std::string run(const ns::Value& root) {
    visit(root);
    for (size_t i = 0; i < pending_.size(); ++i) {
      text_ += "\n#" + std::to_string(i) + " = ";
      expand(ns::Value(pending_[i]));
    }
    return text_;
  }

 private:
  void visit(const ns::Value& value) {
    switch (value.kind()) {
      case ns::Kind::array:
      case ns::Kind::dictionary:
      case ns::Kind::record:
        return visitPart(value);
      case ns::Kind::none:
        text_ += "none ";
        return;
      case ns::Kind::boolean:
        text_ += value.boolValue() ? "true " : "false ";
        return;
      case ns::Kind::integer: {
        const ns::Integer integer = value.integer();
        text_ += "i" + std::to_string(integer.low) + (integer.sixteenBytes ? "w" : "") +
                 std::to_string(integer.high) + " ";
        return;
      }
      case ns::Kind::real:
        text_ += (value.isFloat() ? "f" : "d") +
                 std::to_string(std::bit_cast<uint64_t>(value.doubleValue())) + " ";
        return;
      case ns::Kind::date:
        text_ += "date" + std::to_string(std::bit_cast<uint64_t>(value.date().seconds)) + " ";
        return;
      case ns::Kind::data:
        text_ += "<" + std::string(value.data().view()) + ">" + nameOf(value.archivedClass());
        return;
      default:
        text_ += "'" + value.string().utf8() + "'" + nameOf(value.archivedClass());
    }
  }

  static std::string nameOf(const ns::ClassRef& archivedClass) {
    if (!archivedClass) return " ";
    std::string text = "(" + archivedClass->name;
    for (const std::string& name : archivedClass->chain) text += ":" + name;
    for (const std::string& name : archivedClass->hints) text += "?" + name;
    return text + (archivedClass->hasChain ? ") " : "!) ");
  }

  /// Records of an archive are made anew for every mention; what they stand for is one.
  void visitPart(const ns::Value& value) {
    const void* identity = value.body().get();
    if (value.kind() == ns::Kind::record) {
      const auto& body = static_cast<const ns::ArchivableBody&>(*value.body());
      if (body.origin()) {
        const uint32_t number = body.origin()->number();
        identity = reinterpret_cast<const void*>(uintptr_t{number} * 2 + 1);
      }
    }
    const auto [known, isNew] = numbers_.emplace(identity, pending_.size());
    if (isNew) pending_.push_back(value.body());
    text_ += "#" + std::to_string(known->second) + " ";
  }

  void visitField(const ns::Field& field) {
    text_ += std::to_string(static_cast<int>(field.form)) + " ";
    visit(field.value);
    for (const ns::String& key : field.keys) text_ += key.utf8() + " ";
    for (const ns::Field& each : field.fields) visitField(each);
  }

  void expand(const ns::Value& value) {
    if (value.isArray()) {
      text_ += "array" + nameOf(value.array().archivedClass());
      for (const ns::Value& each : value.array()) visit(each);
    } else if (value.isDictionary()) {
      text_ += "dictionary" + nameOf(value.dictionary().archivedClass());
      for (const auto& [key, object] : value.dictionary()) {
        visit(key);
        visit(object);
      }
    } else {
      const ns::Record record(value);
      text_ += "record" + nameOf(record.archivedClass());
      for (const ns::String& key : record.keys()) {
        text_ += key.utf8() + "=";
        visitField(record.fieldForKey(key.utf8().c_str()));
      }
    }
  }

  std::string text_;
  std::unordered_map<const void*, size_t> numbers_;
  std::vector<ns::Ref<const ns::ValueBody>> pending_;
};

}  // namespace

std::string describeGraph(const ns::Value& value) { return Describer().run(value); }

}  // namespace testing_archives
