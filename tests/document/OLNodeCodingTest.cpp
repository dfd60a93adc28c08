#include <gtest/gtest.h>

#include <random>
#include <string>

#include "document/DocumentClasses.h"
#include "document/OLDataManager.h"
#include "model/OLException.h"
#include "model/OLTree.h"
#include "model/undo/OLTreeUndoController.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/text/Font.h"
#include "platform/text/FontSource.h"
#include "platform/text/MutableAttributedString.h"

namespace tavlin {
namespace {

/// A coder from before keys.
class UnkeyedCoder : public ns::Coder {
 public:
  [[nodiscard]] bool allowsKeyedCoding() const override { return false; }
};

template <class Action>
std::string reasonOf(Action action) {
  try {
    action();
  } catch (const OLException& exception) {
    return exception.what();
  }
  return "nothing raised";
}

std::shared_ptr<OLDataManager> loaded(const ns::Data& data) {
  auto document = OLDataManager::create();
  EXPECT_TRUE(document->loadDataRepresentationOfType(data));
  return document;
}

std::shared_ptr<OLDataManager> reloaded(const OLDataManager& document) {
  return loaded(*document.dataRepresentation());
}

std::shared_ptr<OLNode> firstItem(const OLDataManager& document) {
  return document.treeController()->tree()->firstItem();
}

/// A node as records without escaping hold it: what a writer of version 1 did.
class OldNode : public ns::Object {
 public:
  explicit OldNode(ns::Dictionary data, std::optional<int64_t> version = std::nullopt)
      : data_(std::move(data)), version_(version) {}
  [[nodiscard]] ns::ClassRef classForCoder() const override {
    return ns::makeClass({"OLNode", "NSObject"});
  }
  void encodeWithCoder(ns::Coder& coder) const override {
    coder.encodeObjectForKey(data_, "data");
    if (version_) coder.encodeIntegerForKey(*version_, "encoding_version");
  }

 private:
  ns::Dictionary data_;
  std::optional<int64_t> version_;
};

std::shared_ptr<OLNode> unarchivedOldNode(const ns::Dictionary& data,
                                          std::optional<int64_t> version) {
  const ns::Data archive = ns::KeyedArchiver::archivedDataWithRootObject(
      ns::Value(std::make_shared<OldNode>(data, version)));
  return ns::KeyedUnarchiver::unarchiveObject(archive, documentClasses()).objectAs<OLNode>();
}

TEST(Coding, CodersWithoutKeysAreRefused) {
  UnkeyedCoder coder;
  const auto node = OLNode::create();
  const auto tree = OLTree::create();
  const auto controller = OLTreeController::create();
  EXPECT_EQ(reasonOf([&] { controller->encodeWithCoder(coder); }), "coder not allow keyed coding");
  EXPECT_EQ(reasonOf([&] { controller->initWithCoder(coder); }), "coder not allow keyed coding");
  EXPECT_EQ(reasonOf([&] { tree->encodeWithCoder(coder); }),
            "It is not expected that control reach here.");
  EXPECT_EQ(reasonOf([&] { tree->initWithCoder(coder); }), "coder does not allow keyed coding");
  EXPECT_EQ(reasonOf([&] { node->encodeWithCoder(coder); }), "coder not allow keyed coding");
  EXPECT_EQ(reasonOf([&] { node->initWithCoder(coder); }), "coder not allow keyed coding");
}

TEST(Coding, MarkersInTextSurvive) {
  for (const char* title : {"$null", "\\$null", "a$nullb", "\\\\$null", "$null$null", "$nul"}) {
    const auto document = OLDataManager::create();
    const auto item = document->treeController()->addItemWithSelected(nullptr);
    item->setDataForKey(title, "title");
    item->setDataForKey(ns::Dictionary{{"deep", ns::Array{title, ns::Dictionary{{"x", title}}}}},
                        "nested");
    auto again = reloaded(*document);
    for (int round = 0; round < 3; ++round) {
      // once with the data decoded in between, once without
      if (round == 1) {
        EXPECT_EQ(firstItem(*again)->dataForKey("title"), ns::Value(title));
      }
      again = reloaded(*again);
    }
    const auto read = firstItem(*again);
    EXPECT_EQ(read->dataForKey("title"), ns::Value(title));
    EXPECT_EQ(read->dataForKey("nested"), item->dataForKey("nested"));
  }
}

TEST(Coding, OldRecordsHoldTextAsItIs) {
  const ns::Dictionary data{{"title", "\\$null"}, {"list", ns::Array{"x \\$null"}}};
  for (const std::optional<int64_t> version :
       {std::optional<int64_t>(), std::optional<int64_t>(0), std::optional<int64_t>(1)}) {
    const auto node = unarchivedOldNode(data, version);
    EXPECT_EQ(node->dataForKey("title"), ns::Value("\\$null"));
    EXPECT_EQ(node->dataForKey("list"), ns::Value(ns::Array{"x \\$null"}));
  }
  for (const int64_t version : {2, 3}) {
    const auto node = unarchivedOldNode(data, version);
    EXPECT_EQ(node->dataForKey("title"), ns::Value("$null"));
    EXPECT_EQ(node->dataForKey("list"), ns::Value(ns::Array{"x $null"}));
  }
}

TEST(Coding, AttributedTextIsNotEscaped) {
  const auto document = OLDataManager::create();
  const auto item = document->treeController()->addItemWithSelected(nullptr);
  const ns::Value title = ns::AttributedString(ns::String("a $null b")).asValue();
  item->setDataForKey(title, "title");
  const auto read = firstItem(*reloaded(*document));
  EXPECT_EQ(ns::AttributedString(read->dataForKey("title")).string(), "a $null b");
}

TEST(Coding, EncodingLeavesTheNodesDataAlone) {
  const auto node = OLNode::create();
  const ns::Dictionary data{{"title", "$null"}, {"list", ns::Array{"$null"}}};
  node->setData(data);
  (void)ns::KeyedArchiver::archivedDataWithRootObject(ns::Value(node));
  EXPECT_EQ(*node->data(), data);
}

TEST(Coding, FlagsChildrenAndParentsComeBack) {
  const auto document = OLDataManager::create();
  OLTreeController& controller = *document->treeController();
  const auto outer = controller.addItemWithSelected(nullptr);
  const auto inner = controller.insertChildToItemAtIndex(outer, 0);
  outer->setIsExpanded(true);
  outer->setIsOutlineStyle(true);
  inner->setIsExpanded(true);  // waits for children
  inner->setRuntimeAttributeValueForKey(true, "derived");
  (void)outer->indexOfChild(inner.get());

  const auto read = reloaded(*document);
  const auto root = read->treeController()->tree()->rootNode();
  const auto first = root->childAtIndex(0);
  EXPECT_EQ(first->parent(), root);
  EXPECT_EQ(first->childAtIndex(0)->parent(), first);
  EXPECT_EQ(root->parent(), nullptr);
  EXPECT_TRUE(first->isExpanded());
  EXPECT_TRUE(first->isOutlineStyle());
  const auto second = first->childAtIndex(0);
  EXPECT_FALSE(second->isExpanded());
  EXPECT_TRUE(second->runtimeAttributes().empty());
  EXPECT_EQ(second->cacheIndexOfChild(), 0);
  second->addChild(OLNode::create());
  EXPECT_TRUE(second->isExpanded());
}

TEST(Coding, AParentThatNothingElseHoldsIsGone) {
  const auto document = OLDataManager::create();
  const auto item = document->treeController()->addItemWithSelected(nullptr);
  const auto outside = OLNode::create();
  outside->setDataForKey("outside", "title");
  item->setParent(outside);
  const auto read = firstItem(*reloaded(*document));
  EXPECT_EQ(read->parent(), nullptr);
}

TEST(Coding, MissingKeysReadAsNothing) {
  const auto node = unarchivedOldNode(ns::Dictionary(), std::nullopt);
  EXPECT_EQ(node->parent(), nullptr);
  EXPECT_EQ(node->countChildren(), 0U);
  EXPECT_FALSE(node->hasChildrenArray());
  EXPECT_FALSE(node->isExpanded());
  EXPECT_FALSE(node->isOutlineStyle());
  EXPECT_TRUE(node->runtimeAttributes().empty());
}

TEST(Coding, PrivateFontsLeaveTitlesWhenLoaded) {
  ns::CharacterSet latin;
  latin.addInterval({U' ', U'~'});
  const ns::FontList fonts({{"HelveticaNeue-Bold", "Helvetica Neue", "Bold", latin},
                            {"Plain-Regular", "Plain", "Regular", latin},
                            {"Ordinary-Regular", ".Private Family", "Regular", latin}});
  const ns::FontSource::ScopedShared scope(fonts);
  const auto titleIn = [](const char* font) {
    return ns::AttributedString("Title", ns::Dictionary{{ns::kFontAttributeName,
                                                         ns::Font::named(font, 12).asValue()}})
        .asValue();
  };
  const auto document = OLDataManager::create();
  const auto item = document->treeController()->addItemWithSelected(nullptr);
  item->setDataForKey(titleIn(".HelveticaNeueDeskUI-Bold"), "title");
  item->setDataForKey(ns::Array{ns::Dictionary{{"deep", titleIn(".SFNSText")}}}, "list");
  item->setDataForKey(titleIn("Times-Roman"), "note");
  item->setDataForKey(titleIn("Ordinary-Regular"), "ordinary");

  const auto fontOf = [](const ns::Value& text) {
    return *ns::Font::fromValue(
        ns::AttributedString(text).attributeAtIndex(ns::kFontAttributeName, 0));
  };
  // decoded, and copied from archive to archive without being decoded
  for (const auto& read : {reloaded(*document), reloaded(*reloaded(*document))}) {
    const auto node = firstItem(*read);
    EXPECT_EQ(fontOf(node->dataForKey("title")).fontName(), "HelveticaNeue-Bold");
    EXPECT_EQ(fontOf(node->dataForKey("title")).pointSize(), 12);
    const ns::Value deep = node->dataForKey("list").array()[0].dictionary().objectForKey("deep");
    EXPECT_EQ(fontOf(deep).fontName(), "Plain-Regular");
    EXPECT_EQ(fontOf(node->dataForKey("note")).fontName(), "Times-Roman");
    EXPECT_EQ(fontOf(node->dataForKey("ordinary")).fontName(), "Plain-Regular");
  }
}

// A value that somebody asks for may be read alone, out of data that stays in the archive.  Nobody
// can tell.
TEST(Coding, AValueReadAloneIsTheOneInTheData) {
  ns::CharacterSet latin;
  latin.addInterval({U' ', U'~'});
  const ns::FontList fonts({{"HelveticaNeue-Bold", "Helvetica Neue", "Bold", latin}});
  const ns::FontSource::ScopedShared scope(fonts);
  const auto textIn = [](const char* font) {
    return ns::AttributedString("Text", ns::Dictionary{{ns::kFontAttributeName,
                                                        ns::Font::named(font, 12).asValue()}})
        .asValue();
  };
  const ns::Value mutableText(ns::String("a $null").withArchivedClass(
      ns::makeClass({"NSMutableString", "NSString", "NSObject"})));
  const std::vector<std::pair<ns::Value, ns::Value>> stored = {
      {"title", "a \\$null and $null"},
      {"note", textIn(".HelveticaNeueDeskUI-Bold")},
      {"other", textIn("Times-Roman")},
      {"wide", "日本"},
      {"Schlüssel", "key"},
      {"mutable", mutableText},
      {"flag", false},
      {"number", -7},
      {"real", 2.5},
      {"list", ns::Array{"$null", 1}},
      {"dictionary", ns::Dictionary{{"$null", "$null"}}},
      {"long", ns::String(std::string(1000, 'x'))},
      {ns::Value(3), "under a number"}};
  for (const bool hasNumberedKey : {false, true}) {
    const auto document = OLDataManager::create();
    const auto item = document->treeController()->addItemWithSelected(nullptr);
    for (const auto& [key, value] : stored) {
      if (key.isString() || hasNumberedKey) item->setDataForKey(value, key);
    }
    const ns::Data data = *document->dataRepresentation();
    const ns::Dictionary whole = *firstItem(*loaded(data))->data();
    EXPECT_EQ(whole.count(), stored.size() - (hasNumberedKey ? 0 : 1));
    const auto inOrder = loaded(data);
    for (const auto& [key, value] : stored) {
      const auto fresh = loaded(data);
      for (int read = 0; read < 6; ++read) {
        const ns::Value alone = firstItem(*fresh)->dataForKey(key);
        EXPECT_EQ(alone.kind(), whole.objectForKey(key).kind());
        EXPECT_EQ(alone, whole.objectForKey(key));
      }
      EXPECT_EQ(firstItem(*inOrder)->dataForKey(key), whole.objectForKey(key));
      EXPECT_TRUE(firstItem(*fresh)->dataForKey("nothing").isNone());
      EXPECT_EQ(*firstItem(*fresh)->data(), whole);
    }
    EXPECT_EQ(firstItem(*loaded(data))->dataForKey("title"), stored[0].second);
    // reading changes nothing in what is saved, and an edit after it only what it edits
    const auto unread = loaded(data);
    const auto read = loaded(data);
    const ns::Value note = firstItem(*read)->dataForKey("note");
    EXPECT_EQ(*read->dataRepresentation(), *unread->dataRepresentation());
    firstItem(*unread)->setDataForKey("new", "title");
    firstItem(*read)->setDataForKey("new", "title");
    EXPECT_EQ(*read->dataRepresentation(), *unread->dataRepresentation());
    firstItem(*read)->setDataForKey(note, "note");
    EXPECT_EQ(*firstItem(*reloaded(*read))->data(), *firstItem(*reloaded(*unread))->data());
  }
}

TEST(Coding, DuplicateIsADeepCopy) {
  const auto document = OLDataManager::create();
  OLTreeController& controller = *document->treeController();
  const auto outer = controller.addItemWithSelected(nullptr);
  const auto inner = controller.insertChildToItemAtIndex(outer, 0);
  inner->setDataForKey("$null inside", "title");
  const auto copy = controller.tree()->duplicatePartOfTreeByRootItem(outer);
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy, outer);
  EXPECT_EQ(copy->parent(), nullptr);
  EXPECT_NE(copy->childAtIndex(0), inner);
  EXPECT_EQ(copy->childAtIndex(0)->parent(), copy);
  EXPECT_EQ(copy->childAtIndex(0)->dataForKey("title"), ns::Value("$null inside"));
  EXPECT_EQ(controller.tree()->duplicatePartOfTreeByRootItem(nullptr), nullptr);
}

// What nobody decoded is copied from archive to archive; what was decoded is written anew.  The
// two must not differ.
TEST(Coding, CopiedAndRewrittenDataAreTheSame) {
  std::mt19937 random(7);
  const auto pick = [&](unsigned sides) { return random() % sides; };
  for (int round = 0; round < 20; ++round) {
    const auto document = OLDataManager::create();
    std::vector<std::shared_ptr<OLNode>> items{document->treeController()->tree()->rootNode()};
    for (int i = 0; i < 60; ++i) {
      const auto item = OLNode::create();
      const char* const texts[] = {"plain", "$null", "a \\$null", "日本", ""};
      item->setDataForKey(texts[pick(5)], "title");
      if (pick(2) == 0) item->setDataForKey(ns::Array{texts[pick(5)], 1, 2.5, true}, "list");
      if (pick(3) == 0) {
        item->setDataForKey(ns::AttributedString(ns::String(texts[pick(5)])).asValue(), "note");
      }
      items[pick(static_cast<unsigned>(items.size()))]->addChild(item);
      items.push_back(item);
    }
    const ns::Data data = *document->dataRepresentation();
    const auto untouched = loaded(data);
    const auto touched = loaded(data);
    const auto& tree = touched->treeController()->tree();
    for (auto item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
      item->setDataForKey("x", "touched");
      item->removeDataForKey("touched");
    }
    const auto a = reloaded(*untouched);
    const auto b = reloaded(*touched);
    auto left = a->treeController()->tree()->firstItem();
    auto right = b->treeController()->tree()->firstItem();
    for (; left && right; left = a->treeController()->tree()->nextItemByItem(left),
                          right = b->treeController()->tree()->nextItemByItem(right)) {
      EXPECT_EQ(*left->data(), *right->data());
      EXPECT_EQ(left->countChildren(), right->countChildren());
    }
    EXPECT_EQ(left, nullptr);
    EXPECT_EQ(right, nullptr);
    EXPECT_EQ(data, *untouched->dataRepresentation());
  }
}

TEST(Coding, TwoHundredThousandLevelsNeedNoStack) {
  const auto document = OLDataManager::create();
  auto node = document->treeController()->tree()->rootNode();
  constexpr int kLevels = 200000;
  for (int i = 0; i < kLevels; ++i) {
    const auto child = OLNode::create();
    node->addChild(child);
    node = child;
  }
  const auto read = reloaded(*document);
  int levels = 0;
  for (auto item = firstItem(*read); item; item = item->childAtIndex(0)) ++levels;
  EXPECT_EQ(levels, kLevels);
}

}  // namespace
}  // namespace tavlin
