#include <algorithm>

#include "tests/model/runtime/RuntimeTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::label;
using testing::named;
using testing::Outline;
using testing::PlainFormat;
using testing::RecordingController;

using Controller = OLTreeRuntimeAttributesController;

class NumberLabels : public ::testing::Test {
 protected:
  void SetUp() override { controller->setNumberLabelFormat(std::make_shared<PlainFormat>()); }
  [[nodiscard]] std::string labels() const {
    return outline.print([](const Item& item) { return label(item); });
  }
  /// The calls that the last ones made in turn.
  std::string calls() { return controller->take(); }

  Outline outline{"A(B(C D) E) F(G) H"};
  std::shared_ptr<RecordingController> controller =
      std::make_shared<RecordingController>(outline.root);
};

TEST(NumberLabelKey, IsTheOneThatViewsRead) {
  EXPECT_STREQ(SNRuntimeAttributeNumberLabel, "SNRuntimeAttributeNumberLabel");
}

TEST_F(NumberLabels, AreStoredUnderTheirKeyAsTheyAre) {
  const Item a = outline["A"];
  controller->setNumberLabelByItem(12, a);
  EXPECT_EQ(a->runtimeAttributeValueForKey("SNRuntimeAttributeNumberLabel"), ns::Value(12));
  EXPECT_EQ(Controller::numberLabelByItem(a), ns::Value(12));
  controller->setNumberLabelByItem(nullptr, a);
  EXPECT_TRUE(a->runtimeAttributes().empty());
  controller->setNumberLabelByItem(12, nullptr);
}

TEST_F(NumberLabels, AreNoneForWhatIsNoNode) {
  EXPECT_TRUE(Controller::numberLabelByItem(nullptr).isNone());
  EXPECT_TRUE(Controller::numberLabelByItem(controller).isNone());
  EXPECT_TRUE(Controller::numberLabelByItem(OLNode::create()).isNone());
}

TEST_F(NumberLabels, OfTheWholeTree) {
  controller->buildRuntimeNumberLabel();
  EXPECT_EQ(labels(),
            "A/0@0 B/0@0/0@1 C/0@0/0@1/0@2 D/0@0/0@1/1@2 E/0@0/1@1 F/1@0 G/1@0/0@1 H/2@0");
  EXPECT_EQ(label(outline.root), "-");
}

TEST_F(NumberLabels, ATopLevelItemIsMadeWithoutAParentLabel) {
  controller->setNumberLabelByItem("root", outline.root);
  controller->buildRuntimeNumberLabelByItem(outline["F"]);
  EXPECT_EQ(label(outline["F"]), "/1@0");
}

TEST_F(NumberLabels, WithoutFormatAreRemoved) {
  controller->buildRuntimeNumberLabel();
  controller->setNumberLabelFormat(nullptr);
  EXPECT_EQ(label(outline["H"]), "/2@0");
  controller->buildRuntimeNumberLabel();
  EXPECT_EQ(labels(), "A- B- C- D- E- F- G- H-");
  EXPECT_TRUE(controller->generateNumberLabelByItem(outline["A"]).isNone());
}

class PrefixFormat : public OLNumberLabelFormat {
 public:
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override {
    return std::make_shared<PrefixFormat>(*this);
  }
  [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value&, uint64_t itemIndex, int64_t) const override {
    return (prefix + std::to_string(itemIndex)).c_str();
  }
  std::string prefix = "old";
};

TEST_F(NumberLabels, TheFormatIsCopiedAndRelabelsNothing) {
  const auto format = std::make_shared<PrefixFormat>();
  controller->setNumberLabelFormat(format);
  EXPECT_NE(controller->numberLabelFormat(), format);
  EXPECT_NE(controller->numberLabelFormat(), nullptr);
  EXPECT_EQ(labels(), "A- B- C- D- E- F- G- H-");
  controller->buildRuntimeNumberLabel();
  format->prefix = "new";
  controller->buildRuntimeNumberLabelByItem(outline["H"]);
  EXPECT_EQ(label(outline["H"]), "old2");
  controller->setNumberLabelFormat(format);
  EXPECT_EQ(labels(), "Aold0 Bold0 Cold0 Dold1 Eold1 Fold1 Gold0 Hold2");
  controller->buildRuntimeNumberLabelFromItem(outline["F"]);
  EXPECT_EQ(labels(), "Aold0 Bold0 Cold0 Dold1 Eold1 Fnew1 Gnew0 Hnew2");
  controller->setNumberLabelFormat(nullptr);
  EXPECT_EQ(controller->numberLabelFormat(), nullptr);
}

// One label.

TEST_F(NumberLabels, GeneratingOneStoresNothingButTheHint) {
  controller->setNumberLabelByItem("b", outline["B"]);
  controller->setCacheIndexForItem(0);
  EXPECT_EQ(controller->generateNumberLabelByItem(outline["C"]), ns::Value("b/0@2"));
  EXPECT_EQ(label(outline["C"]), "-");
  EXPECT_EQ(controller->cacheIndexForItem(), 1U);
  EXPECT_EQ(controller->generateNumberLabelByItem(outline["D"]), ns::Value("b/1@2"));
  EXPECT_EQ(controller->cacheIndexForItem(), 2U);
  EXPECT_TRUE(controller->generateNumberLabelByItem(nullptr).isNone());
  EXPECT_EQ(controller->cacheIndexForItem(), 2U);
}

TEST_F(NumberLabels, AnyHintGivesTheTruePosition) {
  for (const uint64_t hint : {UINT64_C(0), UINT64_C(1), UINT64_C(2), UINT64_C(7), UINT64_MAX}) {
    controller->setCacheIndexForItem(hint);
    EXPECT_EQ(controller->generateNumberLabelByItem(outline["F"]), ns::Value("/1@0")) << hint;
    EXPECT_EQ(controller->cacheIndexForItem(), 2U);
  }
}

TEST_F(NumberLabels, ARunOfSiblingsSearchesNothing) {
  controller->setCacheIndexForItem(0);
  for (const char* name : {"A", "F", "H"}) {
    outline.root->setCacheIndexOfChild(42);  // which a search would replace
    controller->generateNumberLabelByItem(outline[name]);
    EXPECT_EQ(outline.root->cacheIndexOfChild(), 42) << name;
  }
}

TEST_F(NumberLabels, OfItemsWithoutAPlace) {
  EXPECT_EQ(controller->generateNumberLabelByItem(named("X")), ns::Value("/0@9223372036854775807"));
  outline["A"]->removeChild(outline["B"].get());
  EXPECT_EQ(controller->generateNumberLabelByItem(outline["B"]),
            ns::Value("/18446744073709551615@1"))
      << "a parent that does not list it";
}

// Subtrees and stretches.

TEST_F(NumberLabels, OfASubtreeInDocumentOrder) {
  controller->recordDepth(1);
  controller->buildRuntimeNumberLabelByItem(outline["B"]);
  EXPECT_EQ(calls(), "generate(B) set(B) generate(C) set(C) generate(D) set(D)");
  EXPECT_EQ(labels(), "A- B/0@1 C/0@1/0@2 D/0@1/1@2 E- F- G- H-");
}

TEST_F(NumberLabels, OfNoneAndTheRootDoNothing) {
  controller->recordDepth(1);
  for (const Item& item : {Item(), outline.root}) {
    controller->buildRuntimeNumberLabelByItem(item);
    controller->buildRuntimeNumberLabelFromItem(item);
  }
  EXPECT_EQ(calls(), "");
}

TEST_F(NumberLabels, FromAnItemOnGoThroughItsLaterSiblings) {
  controller->recordDepth(1);
  controller->buildRuntimeNumberLabelFromItem(outline["F"]);
  EXPECT_EQ(calls(), "labels(F) labels(H)");
  EXPECT_EQ(labels(), "A- B- C- D- E- F/1@0 G/1@0/0@1 H/2@0");
  controller->buildRuntimeNumberLabelFromItem(outline["E"]);
  EXPECT_EQ(calls(), "labels(E)");
  controller->buildRuntimeNumberLabelFromItem(outline["B"]);
  EXPECT_EQ(calls(), "labels(B) labels(E)");
}

TEST_F(NumberLabels, OfTheWholeTreeAreBuiltTopLevelItemByTopLevelItem) {
  controller->recordDepth(1);
  controller->buildRuntimeNumberLabel();
  EXPECT_EQ(calls(), "labels(A) labels(F) labels(H)");
}

TEST_F(NumberLabels, FromAnItemThatItsParentDoesNotListAreThoseOfAllThatItLists) {
  outline["A"]->removeChild(outline["B"].get());
  controller->recordDepth(1);
  controller->buildRuntimeNumberLabelFromItem(outline["B"]);
  EXPECT_EQ(calls(), "labels(-) labels(E)") << "position -1 has no child";
  EXPECT_EQ(labels(), "A- E/0@1 F- G- H-");
  EXPECT_EQ(label(outline["B"]), "-");
}

TEST_F(NumberLabels, FromAnItemWithoutParentAreThoseOfTheWholeTree) {
  controller->recordDepth(1);
  controller->buildRuntimeNumberLabelFromItem(named("X"));
  EXPECT_EQ(calls(), "labels(A) labels(F) labels(H)");
}

TEST_F(NumberLabels, LevelsAreCountedWhereverARelabellingStarts) {
  for (const char* name : {"A", "B", "C", "D", "E", "F", "G", "H"}) {
    const Item item = outline[name];
    controller->buildRuntimeNumberLabelByItem(item);
    const std::string level = std::to_string(controller->tree()->levelForItem(item));
    EXPECT_EQ(label(item).substr(label(item).rfind('@') + 1), level) << name;
  }
}

TEST_F(NumberLabels, OfASubtreeOutsideTheTree) {
  const Outline outside("X(Y(Z) W)");
  outside["X"]->removeFromParent();
  controller->buildRuntimeNumberLabelByItem(outside["X"]);
  EXPECT_EQ(label(outside["X"]), "/0@9223372036854775807");
  EXPECT_EQ(label(outside["Y"]), "/0@9223372036854775807/0@0");
  EXPECT_EQ(label(outside["Z"]), "/0@9223372036854775807/0@0/0@1");
  EXPECT_EQ(label(outside["W"]), "/0@9223372036854775807/1@0");
}

// A format that raises leaves the controller as good as before.
TEST_F(NumberLabels, WhatAFormatRaisesPassesThrough) {
  class Raises : public PlainFormat {
   public:
    [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override {
      return std::make_shared<Raises>(*this);
    }
    [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
        const ns::Value&, uint64_t, int64_t itemLevel) const override {
      if (itemLevel == 1) throw std::runtime_error("no such level");
      return "x";
    }
  };
  controller->setNumberLabelFormat(std::make_shared<Raises>());
  EXPECT_THROW(controller->buildRuntimeNumberLabel(), std::runtime_error);
  EXPECT_EQ(labels(), "Ax B- C- D- E- F- G- H-");
  controller->setNumberLabelFormat(std::make_shared<PlainFormat>());
  controller->buildRuntimeNumberLabel();
  EXPECT_EQ(label(outline["D"]), "/0@0/0@1/1@2");
}

// The starting points of a relabelling.

class LabelStartingPoints : public NumberLabels {
 protected:
  [[nodiscard]] OLNodeList list(const std::vector<const char*>& names) const {
    OLNodeList items;
    for (const char* name : names) items.push_back(outline[name]);
    return items;
  }
  static std::string print(const OLNodeList& items) {
    std::string out;
    for (const auto& item : items) out += testing::nameOf(item);
    return out;
  }
  [[nodiscard]] std::string filtered(const std::vector<const char*>& names) const {
    OLNodeList items = list(names);
    controller->filterItemsArrayToBuildRuntimeNumberLabel(items);
    return print(items);
  }
  [[nodiscard]] std::string noted(const OLItems& items) const {
    OLNodeList parents{outline["H"]}, nextSiblings{outline["H"]};
    controller->parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
    return print(parents) + " " + print(nextSiblings);
  }
};

TEST_F(LabelStartingPoints, AreTheFirstOfEachParent) {
  EXPECT_EQ(filtered({}), "");
  EXPECT_EQ(filtered({"F"}), "F");
  EXPECT_EQ(filtered({"F", "H"}), "F");
  EXPECT_EQ(filtered({"H", "F"}), "F");
  EXPECT_EQ(filtered({"D", "G", "C"}), "CG") << "in the order in which the parents came";
  EXPECT_EQ(filtered({"G", "D", "E", "C"}), "GCE");
}

TEST_F(LabelStartingPoints, AreNotBelowOneAnother) {
  EXPECT_EQ(filtered({"C", "A"}), "A");
  EXPECT_EQ(filtered({"C", "D", "B", "E"}), "B");
  EXPECT_EQ(filtered({"G", "A", "C"}), "GA");
}

TEST_F(LabelStartingPoints, AreWithoutItemsThatComeTwice) { EXPECT_EQ(filtered({"A", "A"}), ""); }

TEST_F(LabelStartingPoints, AreWithoutItemsThatHaveNoParent) {
  OLNodeList items{named("X"), outline["G"]};
  controller->filterItemsArrayToBuildRuntimeNumberLabel(items);
  EXPECT_EQ(print(items), "G");
  items = {outline.root};
  controller->filterItemsArrayToBuildRuntimeNumberLabel(items);
  EXPECT_EQ(print(items), "");
}

TEST_F(LabelStartingPoints, AnItemThatItsParentDoesNotListComesFirst) {
  outline["B"]->removeChild(outline["D"].get());
  EXPECT_EQ(filtered({"C", "D"}), "D");
  EXPECT_EQ(filtered({"D", "C"}), "D");
  outline["B"]->removeChild(outline["C"].get());
  EXPECT_EQ(filtered({"D", "C"}), "D") << "the same position: the first stays";
}

// What is noted before items are deleted: parents, then next siblings.
TEST_F(LabelStartingPoints, OfDeletionsAreTheNextSiblings) {
  EXPECT_EQ(noted({outline["C"]}), "B D");
  EXPECT_EQ(noted({outline["D"]}), "B ") << "a last child";
  EXPECT_EQ(noted({outline["A"]}), "R F");
  EXPECT_EQ(noted({outline["C"], outline["D"]}), "B D") << "though D is deleted too";
  EXPECT_EQ(noted({}), " ");
  EXPECT_EQ(noted(nullptr), " ");
}

TEST_F(LabelStartingPoints, OfDeletionsAreOneForEachParent) {
  EXPECT_EQ(noted({outline["F"], outline["A"]}), "R F");
  EXPECT_EQ(noted({outline["A"], outline["F"], outline["A"]}), "R F");
  EXPECT_EQ(noted({outline["G"], outline["C"]}), "FB D");
}

TEST_F(LabelStartingPoints, OfDeletionsDropParentsBelowOtherParents) {
  EXPECT_EQ(noted({outline["C"], outline["B"]}), "A DE");
  EXPECT_EQ(noted({outline["C"], outline["F"]}), "R DH");
  EXPECT_EQ(noted({outline["D"], outline["A"]}), "R F");
}

TEST_F(LabelStartingPoints, OfDeletionsIgnoreNoneAndTheRoot) {
  EXPECT_EQ(noted({nullptr, outline.root, outline["G"]}), "F ");
}

TEST_F(LabelStartingPoints, OfDeletionsWithWrongLinks) {
  outline["B"]->removeChild(outline["D"].get());
  EXPECT_EQ(noted({outline["D"]}), "B C") << "its parent does not list it";
  EXPECT_EQ(noted({named("X")}), " F") << "without parent as the root's first child would be";
}

TEST_F(LabelStartingPoints, OfDeletionsMayBeAViewOfWhatIsFilled) {
  OLNodeList parents{outline["C"]}, nextSiblings;
  controller->parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, parents);
  EXPECT_EQ(print(parents) + " " + print(nextSiblings), "B D");
}

// Both answer as searching every item would, whatever the items.
TEST_F(LabelStartingPoints, OfRandomItemsAreThoseOfTheNaiveRule) {
  testing::Random random(7);
  const auto tree = controller->tree();
  OLNodeList all;
  for (int i = 0; i < 200; ++i) {
    const Item parent =
        all.empty() || random.chance(10) ? outline.root : all[random.below(all.size())];
    all.push_back(named("x"));
    parent->insertChildAtIndex(all.back(), random.below(5));
  }
  for (int round = 0; round < 200; ++round) {
    OLNodeList items;
    for (size_t left = random.below(40); left > 0; --left) {
      items.push_back(all[random.below(all.size())]);
    }
    OLNodeList expectedNext, expectedParents;
    const auto addNew = [](OLNodeList& list, const Item& item) {
      if (item && std::ranges::find(list, item) == list.end()) list.push_back(item);
    };
    for (const auto& item : items) {
      addNew(expectedParents, item->parent());
      addNew(expectedNext, tree->nextSiblingByItem(item));
    }
    const auto naiveFilter = [&](OLNodeList& list) {
      OLTree::removeDescendantsFromItems(list);
      OLNodeList parents, firsts;
      for (const auto& item : list) {
        const auto known = std::ranges::find(parents, item->parent());
        if (known == parents.end()) {
          parents.push_back(item->parent());
          firsts.push_back(item);
          continue;
        }
        Item& first = firsts[static_cast<size_t>(known - parents.begin())];
        if ((*known)->indexOfChild(item.get()) < (*known)->indexOfChild(first.get())) first = item;
      }
      list = firsts;
    };
    OLTree::removeDescendantsFromItems(expectedParents);
    naiveFilter(expectedNext);
    OLNodeList parents, nextSiblings;
    controller->parentsArrayNextSiblingsArrayWithItems(parents, nextSiblings, items);
    EXPECT_EQ(parents, expectedParents);
    EXPECT_EQ(nextSiblings, expectedNext);
    OLNodeList expectedItems = items;
    naiveFilter(expectedItems);
    controller->filterItemsArrayToBuildRuntimeNumberLabel(items);
    EXPECT_EQ(items, expectedItems);
  }
}

}  // namespace
}  // namespace tavlin
