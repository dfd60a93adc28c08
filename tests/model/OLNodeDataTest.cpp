#include "platform/foundation/Array.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

// Stands for an attributed string, of which the model looks at nothing but the kind.
class SomeRichText : public ns::ValueBody {
 public:
  SomeRichText() : ns::ValueBody(ns::Kind::attributedString) {}
  [[nodiscard]] bool isEqual(const ns::ValueBody& other) const override { return this == &other; }
  [[nodiscard]] size_t hash() const override { return 0; }
};

ns::Value richText() { return ns::Value(ns::Ref<const ns::ValueBody>(new SomeRichText)); }

TEST(OLNodeData, StoresAndReadsByKey) {
  const auto node = OLNode::create();
  EXPECT_TRUE(node->setDataForKey("Milk", "title"));
  EXPECT_TRUE(node->setDataForKey(2, ns::String("label")));
  EXPECT_EQ(node->dataForKey("title"), ns::Value("Milk"));
  EXPECT_EQ(node->dataForKey(ns::Value("title")), ns::Value("Milk"));
  EXPECT_EQ(node->dataForKey(ns::String("label")), ns::Value(2));
  EXPECT_TRUE(node->dataForKey("missing").isNone());
  EXPECT_TRUE(node->dataForKey(ns::Value("missing")).isNone());
  EXPECT_TRUE(node->setDataForKey("Bread", "title"));
  EXPECT_EQ(node->dataForKey("title"), ns::Value("Bread"));
}

TEST(OLNodeData, ANoneKeyReadsNoneAndIsRefused) {
  const auto node = OLNode::create();
  EXPECT_FALSE(node->setDataForKey("x", nullptr));
  EXPECT_FALSE(node->setDataForKey(nullptr, nullptr));
  node->removeDataForKey(nullptr);
  EXPECT_TRUE(node->dataForKey(nullptr).isNone());
  EXPECT_TRUE(node->dataForKey(ns::Value()).isNone());
  EXPECT_TRUE(node->data()->empty());
}

TEST(OLNodeData, ANoneValueRemovesTheKey) {
  const auto node = testing::named("Milk");
  EXPECT_TRUE(node->setDataForKey(nullptr, "title"));
  EXPECT_TRUE(node->data()->empty());
  EXPECT_TRUE(node->setDataForKey(nullptr, "title")) << "also when it is not there";
}

TEST(OLNodeData, RemovesByKey) {
  const auto node = testing::named("Milk");
  node->removeDataForKey("note");
  EXPECT_EQ(node->data()->count(), 1U);
  node->removeDataForKey("title");
  EXPECT_TRUE(node->data()->empty());
}

TEST(OLNodeData, ATitleOrNoteOfAnotherKindRaises) {
  for (const char* key : {"title", "note"}) {
    for (const ns::Value& value : {ns::Value(1), ns::Value(true), ns::Value(ns::Array()),
                                   ns::Value(ns::Dictionary()), ns::Value(ns::Data())}) {
      const auto node = OLNode::create();
      EXPECT_TRUE(node->setDataForKey(value, key)) << "storing does not look at the kind";
      EXPECT_EQ(testing::raisedBy([&] { (void)node->dataForKey(key); }), "invocation");
      EXPECT_EQ(testing::raisedBy([&] { (void)node->dataForKey(ns::Value(key)); }), "invocation");
    }
  }
}

TEST(OLNodeData, ATitleOrNoteMayBeAttributed) {
  const auto node = OLNode::create();
  const ns::Value text = richText();
  node->setDataForKey(text, "title");
  node->setDataForKey(text, "note");
  EXPECT_EQ(node->dataForKey("title"), text);
  EXPECT_EQ(node->dataForKey(ns::Value("note")), text);
}

TEST(OLNodeData, OtherKeysHoldAnyKind) {
  const auto node = OLNode::create();
  for (const char* key : {"checkStatus", "Title", "titles", "notes", ""}) {
    node->setDataForKey(7, key);
    EXPECT_EQ(node->dataForKey(key), ns::Value(7)) << key;
    EXPECT_EQ(node->dataForKey(ns::Value(key)), ns::Value(7)) << key;
  }
}

TEST(OLNodeData, NoDictionaryReadsAsEmptyAndIsMadeWhenNeeded) {
  const auto node = OLNode::create();
  node->setData(std::nullopt);
  EXPECT_FALSE(node->data().has_value());
  EXPECT_TRUE(node->dataForKey("title").isNone());
  node->removeDataForKey("title");
  EXPECT_TRUE(node->setDataForKey(nullptr, "title"));
  EXPECT_FALSE(node->data().has_value()) << "removing makes no dictionary";
  EXPECT_TRUE(node->setDataForKey("x", "title"));
  EXPECT_EQ(node->data(), ns::Dictionary({{"title", "x"}}));
}

TEST(OLNodeData, AHandedOutDictionaryDoesNotChangeWithTheNode) {
  const auto node = testing::named("Milk");
  const auto before = node->data();
  node->setDataForKey("Bread", "title");
  EXPECT_EQ(before, ns::Dictionary({{"title", "Milk"}}));
}

TEST(OLNodeRuntimeAttributes, StoreReadAndRemove) {
  const auto node = OLNode::create();
  EXPECT_TRUE(node->runtimeAttributeValueForKey("level").isNone());
  node->setRuntimeAttributeValueForKey(nullptr, "level");
  EXPECT_TRUE(node->runtimeAttributes().empty());
  node->setRuntimeAttributeValueForKey(1, "level");
  node->setRuntimeAttributeValueForKey(true, "checked");
  EXPECT_EQ(node->runtimeAttributeValueForKey("level"), ns::Value(1));
  EXPECT_EQ(node->runtimeAttributeValueForKey(ns::Value("checked")), ns::Value(true));
  node->setRuntimeAttributeValueForKey(nullptr, "level");
  EXPECT_TRUE(node->runtimeAttributeValueForKey("level").isNone());
  EXPECT_EQ(node->runtimeAttributes().count(), 1U);
}

TEST(OLNodeRuntimeAttributes, FlagsAreBooleansUnderTheirNames) {
  const std::pair<OLRuntimeFlag, const char*> flags[] = {
      {OLRuntimeFlag::checkedDescendant, "SNRuntimeAttributeCheckedDescendant"},
      {OLRuntimeFlag::checkedAllChildren, "SNRuntimeAttributeCheckedAllChildren"},
      {OLRuntimeFlag::checkedAncestor, "SNRuntimeAttributeCheckedAncestor"}};
  for (const auto& [flag, name] : flags) {
    const auto node = OLNode::create();
    node->setRuntimeAttributeValueForKey(1, "level");
    EXPECT_FALSE(node->runtimeFlag(flag));
    EXPECT_TRUE(node->runtimeAttributeValueForKey(name).isNone());
    for (const bool value : {false, true, false}) {
      node->setRuntimeFlag(flag, value);
      EXPECT_EQ(node->runtimeFlag(flag), value);
      EXPECT_EQ(node->runtimeAttributeValueForKey(name).kind(), ns::Kind::boolean);
      EXPECT_EQ(node->runtimeAttributeValueForKey(ns::Value(name)), ns::Value(value));
      EXPECT_EQ(node->runtimeAttributes(), (ns::Dictionary{{"level", 1}, {name, value}}));
      for (const auto& [other, otherName] : flags) {
        if (other == flag) continue;
        EXPECT_FALSE(node->runtimeFlag(other));
        EXPECT_TRUE(node->runtimeAttributeValueForKey(otherName).isNone());
      }
    }
    node->setRuntimeAttributeValueForKey(true, name);
    EXPECT_TRUE(node->runtimeFlag(flag));
    node->setRuntimeAttributeValueForKey(nullptr, name);
    EXPECT_FALSE(node->runtimeFlag(flag));
    EXPECT_EQ(node->runtimeAttributes(), (ns::Dictionary{{"level", 1}}));
  }
}

TEST(OLNodeRuntimeAttributes, UnderAFlagsNameMayBeAnything) {
  constexpr char kName[] = "SNRuntimeAttributeCheckedAncestor";
  const auto node = OLNode::create();
  node->setRuntimeFlag(OLRuntimeFlag::checkedAncestor, false);
  node->setRuntimeAttributeValueForKey("yes", kName);
  EXPECT_EQ(node->runtimeAttributeValueForKey(kName), ns::Value("yes"));
  EXPECT_TRUE(node->runtimeFlag(OLRuntimeFlag::checkedAncestor));
  EXPECT_EQ(node->runtimeAttributes().count(), 1U);
  node->setRuntimeFlag(OLRuntimeFlag::checkedAncestor, true);
  EXPECT_EQ(node->runtimeAttributes(), (ns::Dictionary{{kName, true}}));
  EXPECT_EQ(node->runtimeAttributes().objectForKey(kName).kind(), ns::Kind::boolean);

  node->setRuntimeAttributes(ns::Dictionary{{"level", 1}, {kName, 0}});
  EXPECT_FALSE(node->runtimeFlag(OLRuntimeFlag::checkedAncestor));
  EXPECT_EQ(node->runtimeAttributeValueForKey(kName).kind(), ns::Kind::integer);
  node->setRuntimeAttributes(ns::Dictionary{{"level", 1}, {kName, true}});
  EXPECT_TRUE(node->runtimeFlag(OLRuntimeFlag::checkedAncestor));
  EXPECT_EQ(node->runtimeAttributes(), (ns::Dictionary{{"level", 1}, {kName, true}}));
  node->setRuntimeAttributes({});
  EXPECT_FALSE(node->runtimeFlag(OLRuntimeFlag::checkedAncestor));
  EXPECT_TRUE(node->runtimeAttributes().empty());
}

TEST(OLNodeRuntimeAttributes, ANoneKeyIsIgnored) {
  const auto node = OLNode::create();
  node->setRuntimeAttributeValueForKey(1, nullptr);
  EXPECT_TRUE(node->runtimeAttributes().empty());
  node->setRuntimeAttributeValueForKey(1, "level");
  EXPECT_TRUE(node->runtimeAttributeValueForKey(nullptr).isNone());
  EXPECT_TRUE(node->runtimeAttributeValueForKey(ns::Value()).isNone());
}

TEST(OLNodeRuntimeAttributes, AreNotTheStoredData) {
  const auto node = OLNode::create();
  node->setRuntimeAttributeValueForKey(1, "title");
  EXPECT_TRUE(node->dataForKey("title").isNone());
  EXPECT_EQ(node->runtimeAttributeValueForKey("title"), ns::Value(1));
}

}  // namespace
}  // namespace tavlin
