// A document saved by copying its file, compared with the same document archived anew.

#include "document/DocumentRevision.h"

#include <algorithm>

#include "document/DocumentClasses.h"
#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "model/OLTreeController.h"
#include "platform/archive/ArchiveCheck.h"
#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"
#include "tests/archive/ArchiveTesting.h"
#include "tests/archive/FileGraph.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::Random;
using testing_archives::archiveOf;
using testing_archives::classRecord;
using testing_archives::instance;
using testing_archives::P;
using testing_archives::references;

/// A document read from a file, and what saves it.
struct Opened {
  explicit Opened(const ns::Data& data)
      : archive(ns::KeyedArchive::open(data, documentClasses())),
        controller(ns::KeyedUnarchiver::unarchiveObject(archive, archive->root())
                       .objectAs<OLTreeController>()),
        revision(archive, controller) {}
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  /// Data that names its own item, or one above, owns it: a circle that somebody has to open.
  ~Opened() {
    if (controller && controller->tree() && root()) root()->setData(std::nullopt);
  }

  [[nodiscard]] Item root() const { return controller->tree()->rootNode(); }
  /// By copying; none where that is not done.
  [[nodiscard]] std::optional<ns::Data> revised() const {
    const std::optional<ns::DataPieces> pieces = revision.data(*controller);
    return pieces ? std::optional(pieces->joined()) : std::nullopt;
  }
  /// As any other objects are written.
  [[nodiscard]] ns::Data plain() const {
    ns::Fields others;
    for (const auto& [key, entry, index] : archive->otherTopEntries()) {
      others.emplace_back(key, ns::archivedField(archive, entry));
    }
    return ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(controller), others);
  }

  std::shared_ptr<ns::KeyedArchive> archive;
  std::shared_ptr<OLTreeController> controller;
  DocumentRevision revision;
};

/// All that the root of a file leads to, record for record.
std::string graphOf(const ns::Data& data) {
  static const ns::ClassRegistry foundation;
  const auto archive = ns::KeyedArchive::open(data, foundation);
  return testing_archives::describeGraph(archive->value(archive->root()));
}

bool holds(const ns::Data& data, std::string_view text) {
  return data.view().find(text) != std::string_view::npos;
}

ns::Data fileOf(const Item& root) {
  return ns::KeyedArchiver::archivedDataWithRootObject(
      ns::Value(OLTreeController::initWithRootItem(root)));
}

Item smallTree() {
  const auto root = OLNode::create();
  for (const char* name : {"one", "two", "three"}) {
    const Item item = testing::named(name);
    root->addChild(item);
    item->addChild(testing::named("below"));
  }
  return root;
}

/// In a file of which a few objects that are left over do not matter.
Item longTree() {
  const auto root = smallTree();
  for (int i = 0; i < 50; ++i) {
    const std::string name = "item " + std::to_string(i / 2);
    root->childAtIndex(i % 3)->addChild(testing::named(name.c_str()));
  }
  root->setDataForKey(ns::String(std::string(100000, 'x')), "notes");
  return root;
}

ns::Array arrayOf(std::initializer_list<const char*> texts) {
  ns::Array array;
  for (const char* text : texts) array.append(text);
  return array;
}

/// Saves with a value under a key of the root, and checks the file against the plain one.
ns::Data savedWith(const ns::Data& file, const ns::Value& value, const char* key = "keywords") {
  const Opened document(file);
  document.root()->setDataForKey(value, key);
  const auto revised = document.revised();
  const ns::Data plain = document.plain();
  if (!revised) {
    ADD_FAILURE() << "not written by copying";
    return plain;
  }
  EXPECT_EQ(graphOf(*revised), graphOf(plain));
  EXPECT_EQ(testing_archives::unusedEntries(*revised), 0U);
  return *revised;
}

TEST(DocumentRevision, SavesWhatArchivingSaves) {
  const ns::Data file = fileOf(smallTree());
  const ns::Data first = savedWith(file, arrayOf({"milk", "bread"}));
  const ns::Data second = savedWith(first, arrayOf({"milk", "Gr\u00fcn"}));
  const Opened without(second);
  without.root()->removeDataForKey("keywords");
  const ns::Data third = without.revised().value_or(without.plain());
  EXPECT_EQ(graphOf(third), graphOf(without.plain()));
  EXPECT_FALSE(holds(second, "bread"));
  EXPECT_FALSE(holds(third, "milk"));
  EXPECT_EQ(savedWith(second, arrayOf({"milk", "Gr\u00fcn"})), second);
  EXPECT_EQ(savedWith(third, ns::Value()), third);
}

TEST(DocumentRevision, WhatStaysIsSharedWithTheFileThatWasRead) {
  const auto root = smallTree();
  root->setDataForKey(ns::String(std::string(100000, 'x')), "notes");
  ns::Data file = fileOf(root);
  auto document = OLDataManager::create();
  ASSERT_TRUE(document->loadDataRepresentationOfType(file));
  document->setObjectValueForKey(ns::Value(arrayOf({"milk"})), "keywords");
  const auto pieces = document->dataRepresentationInPieces();
  ASSERT_TRUE(pieces);
  size_t shared = 0;
  for (const ns::Data& piece : *pieces) {
    const bool isShared = piece.bytes() >= file.bytes() &&
                          piece.bytes() + piece.length() <= file.bytes() + file.length();
    shared += isShared ? piece.length() : 0;
  }
  EXPECT_GT(shared, 100000U);
  EXPECT_LT(shared, pieces->length());
  const ns::Data before = *document->dataRepresentation();
  document->setTreeController(nullptr);
  EXPECT_FALSE(document->dataRepresentationInPieces());
  // the pieces hold what they are parts of
  document = nullptr;
  file = ns::Data();
  EXPECT_EQ(pieces->joined(), before);
}

// A piece for each would cost more to write than it saves.
TEST(DocumentRevision, ManyChangesMakeFewPieces) {
  const auto root = smallTree();
  ns::Array before;
  ns::Array after;
  for (int i = 0; i < 3000; ++i) {
    const std::string number = std::to_string(i);
    before.append(ns::String("before " + number));
    after.append(ns::String((i % 2 == 0 ? "before " : "after ") + number));
  }
  root->setDataForKey(before, "keywords");
  const Opened document(fileOf(root));
  document.root()->setDataForKey(after, "keywords");
  const auto pieces = document.revision.data(*document.controller);
  ASSERT_TRUE(pieces);
  EXPECT_LT(std::distance(pieces->begin(), pieces->end()), 8);
  EXPECT_EQ(graphOf(pieces->joined()), graphOf(document.plain()));
}

TEST(DocumentRevision, TextThatWasMentionedOftenGoes) {
  ns::Array often;
  for (int i = 0; i < 1000; ++i) often.append("secret");
  const ns::Data with = savedWith(fileOf(smallTree()), often);
  EXPECT_TRUE(holds(with, "secret"));
  EXPECT_FALSE(holds(savedWith(with, arrayOf({"open"})), "secret"));
}

TEST(DocumentRevision, WhatIsMentionedTwiceStaysOneObject) {
  const ns::Array list = arrayOf({"a", "b"});
  ns::Array both;
  both.append(list);
  both.append(list);
  const ns::Data shared = savedWith(fileOf(smallTree()), both);
  // equal, but two objects
  ns::Array separate;
  separate.append(arrayOf({"a", "b"}));
  separate.append(arrayOf({"a", "b"}));
  const ns::Data apart = savedWith(shared, separate);
  EXPECT_NE(graphOf(apart), graphOf(shared));
  EXPECT_EQ(savedWith(apart, separate), apart);
  // a list inside one that others hold as well
  ns::Array nested;
  nested.append(arrayOf({"c"}));
  ns::Array holder;
  holder.append(nested);
  holder.append(nested);
  const ns::Data deep = savedWith(fileOf(smallTree()), holder);
  ns::Array fresh;
  fresh.append(arrayOf({"c"}));
  const Opened document(deep);
  ns::Array changed = document.root()->dataForKey("keywords").array();
  document.root()->setDataForKey(ns::Array({changed[0], ns::Value(fresh)}), "keywords");
  const auto revised = document.revised();
  ASSERT_TRUE(revised);
  EXPECT_EQ(graphOf(*revised), graphOf(document.plain()));
}

TEST(DocumentRevision, ManyWritesDoNotAddUp) {
  ns::Data file = fileOf(smallTree());
  Random random(5);
  size_t most = 0;
  size_t copied = 0;
  for (int round = 0; round < 300; ++round) {
    ns::Array keywords;
    for (size_t i = random.below(8); i > 0; --i) {
      keywords.append(ns::String("word" + std::to_string(random.below(1000))));
    }
    const Opened document(file);
    document.root()->setDataForKey(keywords, "keywords");
    const auto revised = document.revised();
    const ns::Data plain = document.plain();
    file = revised.value_or(plain);
    ASSERT_EQ(graphOf(file), graphOf(plain));
    ASSERT_EQ(testing_archives::unusedEntries(file), 0U);
    copied += revised ? 1 : 0;
    most = std::max(most, file.length() > plain.length() ? file.length() - plain.length() : 0);
  }
  EXPECT_LT(most, 100U);
  EXPECT_GT(copied, 100U);
}

TEST(DocumentRevision, ManyNewTextsTakeLinearTime) {
  const auto root = OLNode::create();
  for (int i = 0; i < 30000; ++i) {
    root->addChild(testing::named(("t" + std::to_string(100000 + i)).c_str()));
  }
  ns::Array keywords;
  for (int i = 0; i < 30000; ++i) {
    keywords.append(ns::String("k" + std::to_string(100000 + i)));
  }
  const Opened document(fileOf(root));
  document.root()->setDataForKey(keywords, "keywords");
  const auto revised = document.revised();
  EXPECT_EQ(graphOf(revised.value_or(document.plain())), graphOf(document.plain()));
}

// Files of other writers, and of nobody.

/// 1 controller, 2 tree, 3 root, 4 list, 5 data, 6 item, 7 null, 8 to 12 classes, 13 on: others
std::vector<P> entriesOf(const P& rootData, const std::vector<P>& others,
                         std::vector<uint64_t> children = {6}) {
  const P yes = P::boolean(true);
  const P no = P::boolean(false);
  const P two = 2;
  const auto node = [&](uint64_t parent, uint64_t list, uint64_t data) {
    return P::dictionary({{"parent", P::uid(parent)},
                          {"children", P::uid(list)},
                          {"data", P::uid(data)},
                          {"expanded", yes},
                          {"outlineStyle", no},
                          {"encoding_version", two},
                          {"$class", P::uid(10)}});
  };
  std::vector<P> entries{"$null",
                         instance(8, {{"tree", P::uid(2)}}),
                         instance(9, {{"root", P::uid(3)}}),
                         node(0, 4, 5),
                         instance(11, {{"NS.objects", references(children)}}),
                         rootData,
                         node(3, 0, 0),
                         "$null",
                         classRecord({"OLTreeController", "NSObject"}),
                         classRecord({"OLTree", "NSObject"}),
                         classRecord({"OLNode", "NSObject"}),
                         classRecord({"NSMutableArray", "NSArray", "NSObject"}),
                         classRecord({"NSMutableDictionary", "NSDictionary", "NSObject"})};
  entries.insert(entries.end(), others.begin(), others.end());
  return entries;
}

P dictionaryEntry(const std::vector<uint64_t>& keys, const std::vector<uint64_t>& values) {
  return instance(12, {{"NS.keys", references(keys)}, {"NS.objects", references(values)}});
}

// The last entries take the numbers that are free.
TEST(DocumentRevision, FewerKeywordsLeaveNoGaps) {
  const auto root = longTree();
  root->setDataForKey(arrayOf({"milk", "bread", "soap", "salt"}), "keywords");
  ns::Data file = fileOf(root);
  for (const auto& keywords :
       {arrayOf({"bread", "salt"}), arrayOf({"three"}), arrayOf({"a", "b", "c", "d", "e"}),
        arrayOf({"c"}), arrayOf({}), arrayOf({"one"})}) {
    file = savedWith(file, keywords);
  }
  // gaps of files that were saved before are closed, too
  std::vector<P> entries =
      entriesOf(dictionaryEntry({13, 18, 20}, {14, 19, 21}),
                {"notes", P::string(std::string(9999, 'x')), "", "", "", "a", "b", "c", "d"});
  for (const size_t gap : {7, 15, 16, 17}) entries[gap] = entries[0];
  const ns::Data gappy = archiveOf(entries).binary();
  EXPECT_EQ(testing_archives::unusedEntries(gappy), 4U);
  EXPECT_EQ(testing_archives::unusedEntries(savedWith(gappy, "new")), 0U);
}

// One of the new keywords is the text of the last item, which is moved.
TEST(DocumentRevision, AMovedTextThatIsAKeywordToo) {
  const auto root = longTree();
  root->setDataForKey(arrayOf({"milk", "bread", "soap", "salt"}), "keywords");
  root->addChild(testing::named("last of all"));
  const ns::Data saved = savedWith(fileOf(root), arrayOf({"last of all"}));
  EXPECT_EQ(Opened(saved).root()->children().back()->dataForKey("title"), ns::Value("last of all"));
}

// What comes last may be many things.
TEST(DocumentRevision, WhatTakesAFreeNumberStaysWhatItIs) {
  int copied = 0;
  for (int last = 0; last < 8; ++last) {
    const auto root = longTree();
    root->setDataForKey(arrayOf({"milk", "bread", "soap", "salt"}), "keywords");
    const Item item = OLNode::create();
    switch (last) {
      case 0:
        item->setDataForKey(arrayOf({"only here"}), "title list");
        break;
      case 1:
        item->setDataForKey(ns::Dictionary({{"k", "only here"}, {"l", ns::Dictionary()}}), "map");
        break;
      case 2:
        item->setDataForKey(ns::AttributedString(ns::String("rich")).asValue(), "title");
        break;
      case 3:
        item->setDataForKey(ns::Date{5}, "date");
        break;
      case 4:
        item->setDataForKey(ns::String("t").withArchivedClass(ns::mutableStringClass()), "title");
        break;
      case 5:
        item->setData(std::nullopt);
        break;
      case 6:
        item->setChildren(std::nullopt);
        break;
      default:
        item->setDataForKey("milk", "title");
        break;
    }
    root->addChild(item);
    const Opened document(fileOf(root));
    document.root()->setDataForKey(arrayOf({"one"}), "keywords");
    const auto revised = document.revised();
    const ns::Data saved = revised.value_or(document.plain());
    copied += revised ? 1 : 0;
    EXPECT_EQ(graphOf(saved), graphOf(document.plain())) << last;
    EXPECT_EQ(testing_archives::unusedEntries(saved), 0U) << last;
    EXPECT_TRUE(Opened(saved).archive->isTree()) << last;
  }
  // where a class comes last, all is archived anew
  EXPECT_GE(copied, 5);
}

TEST(DocumentRevision, OldTextInACircleDoesNotStay) {
  // the value under "keywords" holds itself
  const ns::Data file =
      archiveOf(
          entriesOf(dictionaryEntry({13}, {14}),
                    {"keywords", instance(11, {{"NS.objects", references({14, 15})}}), "secret"}))
          .binary();
  const Opened document(file);
  document.root()->setDataForKey(arrayOf({"open"}), "keywords");
  const ns::Data saved = document.revised().value_or(document.plain());
  EXPECT_FALSE(holds(saved, "secret"));
  EXPECT_EQ(graphOf(saved), graphOf(document.plain()));
}

/// The objects of a file, as they stand there.
testing_archives::RawList takenApart(const ns::Data& data) {
  const ns::BinaryPropertyList list(data);
  testing_archives::RawList raw;
  for (uint32_t i = 0; i < list.objectCount(); ++i) {
    const uint64_t end = i + 1 < list.objectCount() ? list.offsetOf(i + 1) : list.tableOffset();
    raw.objects.emplace_back(data.view().substr(list.offsetOf(i), end - list.offsetOf(i)));
  }
  raw.referenceSize = list.referenceSize();
  raw.offsetSize = 4;
  raw.top = list.topObject();
  return raw;
}

/// With every reference of so many bytes.
testing_archives::RawList widened(testing_archives::RawList raw, unsigned size) {
  for (std::string& object : raw.objects) {
    const auto type = static_cast<uint8_t>(static_cast<uint8_t>(object[0]) & 0xF0U);
    if (type != 0xA0 && type != 0xD0) continue;
    const size_t head = (static_cast<uint8_t>(object[0]) & 15U) == 15 ? 3 : 1;
    std::string made = object.substr(0, head);
    for (size_t at = head; at < object.size(); ++at) {
      made += testing_archives::bigEndian(static_cast<uint8_t>(object[at]), size);
    }
    object = made;
  }
  raw.referenceSize = size;
  return raw;
}

/// What holds for every file that can be opened: both ways of saving give the same document, and
/// saving what was saved changes nothing.  Answers whether copying was possible.
bool checkBothWays(const ns::Data& file, const ns::Value& value) {
  const Opened document(file);
  if (!document.controller || !document.controller->tree() || !document.root()) return false;
  document.root()->setDataForKey(value, "keywords");
  const auto revised = document.revised();
  const ns::Data plain = document.plain();
  const std::string graph = graphOf(plain);
  if (!revised) return false;
  // fields that are missing stay so; archiving fills them in
  EXPECT_EQ(graphOf(Opened(*revised).plain()), graph);
  const Opened again(*revised);
  again.root()->setDataForKey(value, "keywords");
  const auto second = again.revised();
  if (second) {
    EXPECT_EQ(*second, *revised);
  }
  EXPECT_EQ(graphOf(again.plain()), graph);
  return true;
}

TEST(DocumentRevision, WideReferencesStayWide) {
  const ns::Data file = fileOf(smallTree());
  const auto raw = takenApart(file);
  ASSERT_EQ(raw.referenceSize, 1U);
  for (const unsigned size : {2U, 3U, 5U, 8U}) {
    const ns::Data wide = widened(raw, size).data();
    EXPECT_EQ(graphOf(wide), graphOf(file));
    EXPECT_TRUE(checkBothWays(wide, arrayOf({"x", "two", "y"}))) << size;
  }
}

TEST(DocumentRevision, ObjectsThatOverlapAreNotTakenForEachOther) {
  // "expanded" of an item is the last byte of a text that others use
  const ns::Data file = fileOf(smallTree());
  auto raw = takenApart(file);
  std::vector<uint64_t> offsets;
  uint64_t at = 8;
  for (const std::string& object : raw.objects) {
    offsets.push_back(at);
    at += object.size();
  }
  for (size_t i = 1; i < raw.objects.size(); ++i) {
    // each text in turn grows over what follows it
    const auto marker = static_cast<uint8_t>(raw.objects[i][0]);
    if (marker < 0x51 || marker > 0x5D) continue;
    auto hostile = raw;
    ++hostile.objects[i][0];
    hostile.offsets = offsets;
    try {
      (void)checkBothWays(hostile.data(), arrayOf({"x"}));
    } catch (const ns::ArchiveException&) {
      continue;  // not opened
    }
  }
}

TEST(DocumentRevision, WhatNobodyUsesMayBeAnything) {
  const ns::Data file = fileOf(smallTree());
  const auto raw = takenApart(file);
  for (const std::string& unused :
       {std::string("\xA1\xFF"), std::string("\xFF"), std::string("\x5F\x13\x7F\xFF"),
        std::string("\x80\xFF"), std::string("\xD1\x00\x01", 3), std::string("\xA1\x00", 2)}) {
    auto hostile = raw;
    hostile.objects.push_back(unused);
    const Opened document(hostile.data());
    document.root()->setDataForKey(arrayOf({"x"}), "keywords");
    std::optional<ns::Data> revised;
    ASSERT_NO_THROW(revised = document.revised());
    const ns::Data plain = document.plain();
    EXPECT_EQ(graphOf(revised.value_or(plain)), graphOf(plain));
  }
}

// Documents at random.

ns::Value randomValue(Random& random, std::vector<ns::Value>& made, int depth = 0) {
  if (!made.empty() && random.chance(4)) return made[random.below(made.size())];
  switch (random.below(depth > 3 ? 9 : 12)) {
    case 0:
      return ns::Value(random.chance(2));
    case 1:
      return ns::Value(static_cast<int64_t>(random.below(70000)) - 300);
    case 2:
      return ns::Value(static_cast<double>(random.below(100)) / 7);
    case 3:
      return ns::Value(static_cast<float>(random.below(100)) / 7);
    case 4:
      return ns::Value(ns::Data(std::string(random.below(40), 'd')));
    case 5:
      return ns::Value(ns::String("gr\u00fcn " + std::to_string(random.below(5))));
    case 6:
      return ns::Value(random.chance(3) ? "a $null b" : "data");
    case 7:
      if (random.chance(10)) return ns::AttributedString("rich", {{"NSUnderline", 1}}).asValue();
      return ns::Value(ns::Integer{1, random.below(2), false, true});
    case 8:
      return ns::Value(ns::String("text " + std::to_string(random.below(9))));
    case 9: {
      ns::Dictionary dictionary;
      for (size_t i = random.below(5); i > 0; --i) {
        dictionary.setObjectForKey(randomValue(random, made, depth + 1),
                                   ns::String("key" + std::to_string(random.below(9))));
      }
      made.emplace_back(dictionary);
      return dictionary;
    }
    default: {
      ns::Array array;
      for (size_t i = random.below(20); i > 0; --i) {
        array.append(randomValue(random, made, depth + 1));
      }
      if (random.chance(4)) {
        array.setArchivedClass(ns::makeClass(
            {random.chance(2) ? "NSMutableArray" : "NSArray", "NSArray", "NSObject"}));
      }
      made.emplace_back(array);
      return array;
    }
  }
}

Item randomTree(Random& random) {
  const auto root = OLNode::create();
  std::vector<Item> items{root};
  std::vector<ns::Value> made;
  for (size_t i = random.below(60); i > 0; --i) {
    const Item item = OLNode::create();
    items[random.below(items.size())]->addChild(item);
    item->setIsExpanded(random.chance(2));
    if (random.chance(9)) item->setChildren(std::nullopt);
    if (random.chance(9)) item->setData(std::nullopt);
    while (random.chance(2)) {
      item->setDataForKey(randomValue(random, made), random.chance(2) ? "title" : "other");
    }
    items.push_back(item);
  }
  while (!random.chance(4)) {
    root->setDataForKey(randomValue(random, made),
                        ns::String("key" + std::to_string(random.below(9))));
  }
  return root;
}

/// A change anywhere in what the root's data holds.
ns::Value edited(Random& random, const ns::Value& value, std::vector<ns::Value>& made) {
  if (value.isArray() && random.chance(2)) {
    ns::Array array = value.array();
    if (array.count() != 0 && random.chance(2)) {
      const size_t at = random.below(array.count());
      std::vector<ns::Value> values = array.values();
      values[at] = edited(random, array[at], made);
      ns::Array changed(std::move(values));
      changed.setArchivedClass(array.archivedClass());
      return changed;
    } else {
      array.append(randomValue(random, made));
    }
    return array;
  }
  if (value.isDictionary() && random.chance(2)) {
    ns::Dictionary dictionary = value.dictionary();
    const ns::String key("key" + std::to_string(random.below(9)));
    dictionary.setObjectForKey(edited(random, dictionary.objectForKey(key), made), key);
    return dictionary;
  }
  return random.chance(3) ? ns::Value() : randomValue(random, made);
}

TEST(DocumentRevision, RandomEditsAreSavedAsArchivingSavesThem) {
  Random random(11);
  int copied = 0;
  int rounds = 0;
  for (int number = 0; number < 60; ++number) {
    ns::Data file = fileOf(randomTree(random));
    for (int write = 0; write < 8; ++write, ++rounds) {
      const Opened document(file);
      std::vector<ns::Value> made;
      for (size_t i = random.below(4); i > 0; --i) {
        const ns::String key("key" + std::to_string(random.below(9)));
        const ns::Value before = document.root()->dataForKey(ns::Value(key));
        document.root()->setDataForKey(edited(random, before, made), key);
      }
      const auto revised = document.revised();
      const ns::Data plain = document.plain();
      if (revised) {
        ++copied;
        ASSERT_EQ(graphOf(*revised), graphOf(plain)) << number << " " << write;
        const Opened again(*revised);
        ASSERT_EQ(again.revised(), revised) << number << " " << write;
      }
      file = revised.value_or(plain);
    }
  }
  EXPECT_GT(copied, rounds / 4);
}

/// A file that is broken somewhere.
ns::Data mutated(Random& random, const ns::Data& file) {
  std::string bytes(file.view());
  for (size_t i = 1 + random.below(3); i > 0; --i) {
    char& byte = bytes[random.below(bytes.size())];
    switch (random.below(4)) {
      case 0:
        byte = static_cast<char>(byte ^ static_cast<char>(1U << random.below(8)));
        break;
      case 1:
        byte = static_cast<char>(random.below(256));
        break;
      case 2:
        byte = bytes[random.below(bytes.size())];
        break;
      default:
        ++byte;
        break;
    }
  }
  return ns::Data(bytes);
}

/// One with a reference changed to another of the objects.
ns::Data rewired(Random& random, const ns::Data& file) {
  auto raw = takenApart(file);
  for (size_t i = 1 + random.below(3); i > 0; --i) {
    for (int attempt = 0; attempt < 50; ++attempt) {
      std::string& object = raw.objects[random.below(raw.objects.size())];
      const auto marker = static_cast<uint8_t>(object[0]);
      if ((marker & 0xF0U) == 0x80) {
        object.back() = static_cast<char>(random.below(40));
        break;
      }
      if (((marker & 0xF0U) != 0xA0 && (marker & 0xF0U) != 0xD0) || object.size() < 2) continue;
      if ((marker & 15U) == 15) continue;
      const size_t slots = (object.size() - 1) / raw.referenceSize;
      const size_t at = 1 + random.below(slots) * raw.referenceSize;
      object.replace(
          at, raw.referenceSize,
          testing_archives::bigEndian(random.below(raw.objects.size()), raw.referenceSize));
      break;
    }
  }
  return raw.data();
}

TEST(DocumentRevision, BrokenFilesAreRefusedOrReadWhole) {
  Random random(3);
  std::vector<ns::Data> files;
  files.push_back(fileOf(smallTree()));
  files.push_back(
      archiveOf(entriesOf(dictionaryEntry({13}, {14}),
                          {"keywords", instance(11, {{"NS.objects", references({15})}}), "word"}))
          .binary());
  for (int i = 0; i < 6; ++i) files.push_back(fileOf(randomTree(random)));
  int opened = 0;
  int copied = 0;
  for (int round = 0; round < 4000; ++round) {
    const ns::Data& file = files[random.below(files.size())];
    const ns::Data broken = random.chance(2) ? mutated(random, file) : rewired(random, file);
    std::shared_ptr<ns::KeyedArchive> archive;
    try {
      archive = ns::KeyedArchive::open(broken, documentClasses());
    } catch (const ns::ArchiveException&) {
      continue;
    }
    ++opened;
    std::vector<bool> reached;
    ASSERT_NO_THROW(reached = ns::reachedNumbers(*archive)) << round;
    for (uint32_t number = 0; number < archive->objectCount(); ++number) {
      // objects say themselves what they cannot take; of what is no tree all are made together
      if (!reached[number] || !archive->isTree()) continue;
      if (archive->entry(number).kind == ns::KeyedArchive::EntryKind::instance &&
          archive->kind(number) == ns::Kind::object) {
        continue;
      }
      ASSERT_NO_THROW((void)archive->value(number)) << round << " " << number;
    }
    const auto document = OLDataManager::create();
    try {
      if (!document->loadDataRepresentationOfType(broken)) continue;
    } catch (const ns::ArchiveException&) {
      continue;
    }
    try {
      (void)document->dataRepresentation();
      if (checkBothWays(broken, arrayOf({"x", "word"}))) ++copied;
    } catch (const std::exception& exception) {
      FAIL() << round << ": " << exception.what();
    }
    ASSERT_FALSE(HasFailure()) << round;
  }
  EXPECT_GT(opened, 400);
  EXPECT_GT(copied, 100);
}

}  // namespace
}  // namespace tavlin
