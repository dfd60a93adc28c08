// Random value graphs through the archive.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "ArchiveTesting.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace {

using ns::Value;
using testing_archives::describeGraph;
using testing_archives::P;

/// Values and archives by chance, the same for the same number.
class Chance {
 public:
  explicit Chance(unsigned number) : engine_(number) {}

  size_t below(size_t limit) { return engine_() % limit; }

  Value scalar() {
    switch (below(12)) {
      case 0:
        return below(2) == 0;
      case 1:
        return int64_t{1} << below(63);
      case 2:
        return -static_cast<int64_t>(engine_());
      case 3:
        return static_cast<double>(engine_()) / 3;
      case 4:
        return static_cast<float>(below(100)) / 7;
      case 5:
        return ns::Data(std::string(below(3) * 200, 'd'));
      case 6:
        return ns::Date{static_cast<double>(below(1000))};
      case 7:
        return ns::String(std::u16string(below(400), static_cast<char16_t>(0x3B1 + below(20))));
      case 8:
        return ns::String(std::string_view("mutable"))
            .withArchivedClass(ns::makeClass({"NSMutableString", "NSString", "NSObject"}));
      case 9:
        return ns::Integer{engine_(), engine_(), false, true};
      default:
        return ns::String(std::string_view("text " + std::to_string(below(30))));
    }
  }

  Value any() { return below(3) == 0 || made_.empty() ? scalar() : made_[below(made_.size())]; }

  ns::Field field(int depth) {
    if (depth < 3 && below(6) == 0) {
      ns::Field list;
      list.form = below(2) == 0 ? ns::Field::Form::list : ns::Field::Form::map;
      for (size_t i = below(4); i > 0; --i) {
        list.fields.push_back(field(depth + 1));
        if (list.form == ns::Field::Form::map) {
          list.keys.emplace_back(std::string_view("k" + std::to_string(i)));
        }
      }
      return list;
    }
    if (below(8) == 0) return ns::Field::reference(Value());
    return below(2) == 0 ? ns::Field::reference(any()) : ns::Field::primitive(primitive());
  }

  Value primitive() {
    for (;;) {
      Value value = scalar();
      if (!value.archivedClass()) return value;
    }
  }

  Value container() {
    const size_t count = below(20);
    if (below(3) == 0) {
      std::vector<std::pair<ns::String, ns::Field>> fields;
      for (size_t i = 0; i < count; ++i) {
        fields.emplace_back(ns::String(std::string_view("key" + std::to_string(i))), field(0));
      }
      auto info = std::make_shared<ns::ClassInfo>();
      info->name = "Thing" + std::to_string(below(3));
      info->chain = {info->name, "NSObject"};
      info->hasChain = below(4) != 0;
      if (!info->hasChain) info->chain.clear();
      if (below(4) == 0) info->hints = {"NSString"};
      return ns::Record(info, std::move(fields)).asValue();
    }
    if (below(2) == 0) {
      std::vector<Value> values;
      for (size_t i = 0; i < count; ++i) values.push_back(any());
      ns::Array array(std::move(values));
      array.setArchivedClass(below(2) == 0
                                 ? ns::makeClass({"NSArray", "NSObject"})
                                 : ns::makeClass({"NSMutableArray", "NSArray", "NSObject"}));
      return array;
    }
    ns::Dictionary dictionary;
    for (size_t i = 0; i < count; ++i) {
      dictionary.setObjectForKey(
          any(), Value(ns::String(std::string_view("key " + std::to_string(below(50))))));
    }
    dictionary.setArchivedClass(ns::makeClass({"NSDictionary", "NSObject"}));
    return dictionary;
  }

  Value graph(size_t size) {
    for (size_t i = 0; i < size; ++i) made_.push_back(container());
    ns::Array root(made_);
    root.setArchivedClass(ns::makeClass({"NSArray", "NSObject"}));
    return root;
  }

  /// An archive whose records refer to each other at random, in circles too.
  ns::Data archive(size_t size) {
    using testing_archives::instance;
    const uint64_t classes = size + 1;
    std::vector<P> entries{"$null"};
    for (size_t i = 0; i < size; ++i) entries.push_back(entry(classes));
    entries[1] = instance(classes + 1, {{"NS.objects", list(classes)}});
    entries.push_back(testing_archives::classRecord({"NSDictionary", "NSObject"}));
    entries.push_back(testing_archives::classRecord({"NSArray", "NSObject"}));
    entries.push_back(P::dictionary({{"$classname", "Thing"}}));
    entries.push_back(testing_archives::classRecord({"NSMutableString", "NSString", "NSObject"}));
    return testing_archives::archive(std::move(entries));
  }

 private:
  P list(uint64_t end) {
    std::vector<uint64_t> numbers;
    for (size_t i = below(12); i > 0; --i) numbers.push_back(below(end));
    return testing_archives::references(numbers);
  }

  P entry(uint64_t classes) {
    using testing_archives::instance;
    switch (below(9)) {
      case 0:
        return "$null";
      case 1:
        return P::string("text " + std::to_string(below(20)));
      case 2:
        return P::real4(static_cast<float>(below(5)));
      case 3:
        return P::string(std::string(300, 'l'));
      case 4: {
        std::vector<uint64_t> keys;
        std::vector<uint64_t> objects;
        for (size_t i = below(6); i > 0; --i) {
          keys.push_back(below(classes));
          objects.push_back(below(classes));
        }
        return instance(classes, {{"NS.keys", testing_archives::references(keys)},
                                  {"NS.objects", testing_archives::references(objects)}});
      }
      case 5:
      case 6:
        return instance(classes + 1, {{"NS.objects", list(classes)}});
      case 7:
        return instance(classes + 3, {{"NS.string", P::wide(u"größe")}});
      default:
        return instance(classes + 2, {{"one", P::uid(below(classes))},
                                      {"many", P::array({list(classes), 1, P::boolean(false)})},
                                      {"map", P::dictionary({{"k", P::uid(below(classes))}})}});
    }
  }

  std::mt19937_64 engine_;
  std::vector<Value> made_;
};

ns::Data written(const Value& root) { return ns::KeyedArchiver::archivedDataWithRootObject(root); }

TEST(ArchiveGraph, WhatIsWrittenIsRead) {
  for (unsigned number = 0; number < 60; ++number) {
    const Value root = Chance(number).graph(1 + number);
    const ns::Data data = written(root);
    EXPECT_EQ(written(root), data) << number;
    const Value read = testing_archives::readBack(data);
    ASSERT_EQ(describeGraph(read), describeGraph(root)) << number;
    EXPECT_EQ(read, root) << number;
  }
}

TEST(ArchiveGraph, CopyingIsWritingWhatWasRead) {
  for (unsigned number = 0; number < 60; ++number) {
    const Value root = Chance(number).graph(1 + number);
    const ns::Data data = written(root);
    const ns::Data copy = written(testing_archives::readBack(data));
    EXPECT_EQ(describeGraph(testing_archives::readBack(copy)), describeGraph(root)) << number;
    EXPECT_EQ(written(testing_archives::readBack(copy)), copy) << number;
  }
}

/// Values made anew from decoded ones, field by field, so that nothing of them is copied.  What is
/// one object of the archive is made once.
class Maker {
 public:
  Value made(const Value& value) {
    if (!value.isArray() && !value.isDictionary() && value.kind() != ns::Kind::record) return value;
    Value& known = done_[identity(value)];
    if (!known.isNone()) return known;
    originals_.push_back(value);
    if (value.isArray()) {
      ns::Array array;
      for (const Value& each : value.array()) array.append(made(each));
      array.setArchivedClass(value.array().archivedClass());
      return known = array;
    }
    if (value.isDictionary()) {
      std::vector<ns::Dictionary::Entry> entries;
      for (const auto& [key, object] : value.dictionary()) {
        entries.emplace_back(made(key), made(object));
      }
      ns::Dictionary dictionary(std::move(entries));
      dictionary.setArchivedClass(value.dictionary().archivedClass());
      return known = dictionary;
    }
    const ns::Record record(value);
    std::vector<std::pair<ns::String, ns::Field>> fields;
    for (const ns::String& key : record.keys()) {
      fields.emplace_back(key, made(record.fieldForKey(key.utf8().c_str())));
    }
    return known = ns::Record(record.archivedClass(), std::move(fields)).asValue();
  }

 private:
  /// A container is one value; a record is made for every mention and known by its number.
  static std::pair<const void*, uint32_t> identity(const Value& value) {
    if (value.kind() == ns::Kind::record) {
      const auto& body = static_cast<const ns::ArchivableBody&>(*value.body());
      if (body.origin()) return {nullptr, body.origin()->number()};
    }
    return {value.body().get(), 0};
  }

  ns::Field made(ns::Field field) {
    field.value = made(field.value);
    for (ns::Field& each : field.fields) each = made(each);
    return field;
  }

  std::map<std::pair<const void*, uint32_t>, Value> done_;
  std::vector<Value> originals_;  // kept, so that no address stands for two of them
};

TEST(ArchiveGraph, CopyingEqualsDecodingAndWriting) {
  for (unsigned number = 0; number < 60; ++number) {
    const ns::Data data = written(Chance(number).graph(1 + number));
    const Value read = testing_archives::readBack(data);
    const Value decoded = Maker().made(read);
    EXPECT_EQ(describeGraph(testing_archives::readBack(written(decoded))),
              describeGraph(testing_archives::readBack(written(read))))
        << number;
  }
}

TEST(ArchiveGraph, ArchivesWithCirclesAreCopiedWhole) {
  for (unsigned number = 0; number < 200; ++number) {
    const ns::Data data = Chance(number).archive(5 + number);
    const Value read = testing_archives::readBack(data);
    const ns::Data copy = written(read);
    const Value again = testing_archives::readBack(copy);
    ASSERT_EQ(describeGraph(again), describeGraph(read)) << number;
    EXPECT_EQ(written(again), copy) << number;
  }
}

}  // namespace
