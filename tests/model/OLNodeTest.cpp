#include "model/OLNode.h"

#include <limits>

#include "platform/foundation/Exception.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::named;
using testing::PostLog;
using testing::printChildren;

TEST(OLNode, StartsDetachedAndEmpty) {
  const auto node = OLNode::create();
  EXPECT_EQ(node->parent(), nullptr);
  EXPECT_TRUE(node->hasChildrenArray());
  EXPECT_TRUE(node->children().empty());
  ASSERT_TRUE(node->data().has_value());
  EXPECT_TRUE(node->data()->empty());
  EXPECT_TRUE(node->runtimeAttributes().empty());
  EXPECT_FALSE(node->isExpanded());
  EXPECT_FALSE(node->isOutlineStyle());
  EXPECT_EQ(node->cacheIndexOfChild(), 0);
}

TEST(OLNode, PropertiesReadBackWhatWasStored) {
  const auto node = OLNode::create();
  const auto other = OLNode::create();
  node->setParent(other);
  node->setIsOutlineStyle(true);
  node->setCacheIndexOfChild(-7);
  node->setHashNumber(uint64_t{12});
  node->setData(ns::Dictionary({{"label", 3}}));
  node->setRuntimeAttributes(ns::Dictionary({{"level", 2}}));
  EXPECT_EQ(node->parent(), other);
  EXPECT_TRUE(node->isOutlineStyle());
  EXPECT_EQ(node->cacheIndexOfChild(), -7);
  EXPECT_EQ(node->hashNumber(), ns::Value(12));
  EXPECT_EQ(node->data(), ns::Dictionary({{"label", 3}}));
  EXPECT_EQ(node->runtimeAttributes(), ns::Dictionary({{"level", 2}}));
  node->setParent(nullptr);
  EXPECT_EQ(node->parent(), nullptr);
}

TEST(OLNode, SettingChildrenLinksNothingAndPostsNothing) {
  PostLog posts;
  const auto node = named("P");
  const auto a = named("A");
  const auto b = named("B");
  node->setChildren(OLNodeList{a, b});
  EXPECT_EQ(printChildren(*node), "A B");
  EXPECT_EQ(a->parent(), nullptr);
  EXPECT_EQ(posts.take(), "");
  node->setChildren(OLNodeList{b});
  EXPECT_EQ(printChildren(*node), "B");
  EXPECT_EQ(posts.take(), "");
}

TEST(OLNode, ChildrenMayBeNone) {
  const auto node = OLNode::create();
  node->setChildren(std::nullopt);
  EXPECT_FALSE(node->hasChildrenArray());
  EXPECT_TRUE(node->children().empty());
  EXPECT_EQ(node->countChildren(), 0U);
  EXPECT_EQ(node->countLeaves(), 1U);
  EXPECT_EQ(node->childAtIndex(0), nullptr);
  EXPECT_EQ(node->indexOfChild(OLNode::create().get()), -1);
  EXPECT_FALSE(node->copy()->hasChildrenArray());
  node->removeChildAtIndex(0);
  EXPECT_FALSE(node->hasChildrenArray());
  node->addChild(OLNode::create());
  EXPECT_TRUE(node->hasChildrenArray());
  EXPECT_EQ(node->countChildren(), 1U);
}

TEST(OLNode, SettingChildrenRefusesNoneAmongThem) {
  const auto node = OLNode::create();
  const auto a = OLNode::create();
  node->setChildren(OLNodeList{a});
  EXPECT_EQ(testing::raisedAs<ns::InvalidArgumentException>([&] {
              node->setChildren(OLNodeList{a, a, nullptr});
            }),
            "OLNode setChildren: element 2 is none");
  EXPECT_EQ(node->children(), OLNodeList{a});
}

TEST(OLNode, IsExpandedOnlyWithChildren) {
  const auto node = OLNode::create();
  node->setIsExpanded(true);
  EXPECT_FALSE(node->isExpanded());
  const auto child = OLNode::create();
  node->addChild(child);
  EXPECT_TRUE(node->isExpanded());
  node->removeChild(child.get());
  EXPECT_FALSE(node->isExpanded());
  node->addChild(child);
  node->setIsExpanded(false);
  EXPECT_FALSE(node->isExpanded());
}

TEST(OLNode, OutlineStyleDoesNotDependOnChildren) {
  const auto node = OLNode::create();
  EXPECT_FALSE(node->isExpandWithOutlineStyle());
  node->setExpandWithOutlineStyle(true);
  EXPECT_TRUE(node->isExpandWithOutlineStyle());
  EXPECT_TRUE(node->isOutlineStyle());
  node->setIsOutlineStyle(false);
  EXPECT_FALSE(node->isExpandWithOutlineStyle());
}

TEST(OLNode, HashNumberIsMadeOnceAndKept) {
  const auto node = OLNode::create();
  const auto other = OLNode::create();
  const ns::Value number = node->hashNumber();
  EXPECT_EQ(number.kind(), ns::Kind::integer);
  EXPECT_FALSE(number.integer().isSigned);
  node->setDataForKey("changed", "title");
  node->addChild(OLNode::create());
  EXPECT_EQ(node->hashNumber().body(), number.body()) << "the same object, not an equal one";
  EXPECT_NE(other->hashNumber(), number);
}

TEST(OLNode, HashNumberIsMadeAnewAfterItWasSetToNone) {
  const auto node = OLNode::create();
  node->setHashNumber(uint64_t{5});
  EXPECT_EQ(node->hashNumber(), ns::Value(5));
  node->setHashNumber(nullptr);
  EXPECT_FALSE(node->hashNumber().isNone());
}

TEST(OLNodeCopy, SharesChildrenAndValues) {
  PostLog posts;
  const auto parent = named("P");
  const auto node = named("N");
  const auto child = named("C");
  parent->addChild(node);
  node->addChild(child);
  node->setIsExpanded(true);
  node->setIsOutlineStyle(true);
  node->setRuntimeAttributeValueForKey(true, "checked");
  node->setCacheIndexOfChild(4);
  const ns::Value number = node->hashNumber();
  posts.take();

  const auto copy = node->copy();
  EXPECT_EQ(copy->parent(), nullptr);
  EXPECT_EQ(copy->children(), OLNodeList{child});
  EXPECT_EQ(copy->data(), node->data());
  EXPECT_TRUE(copy->isExpanded());
  EXPECT_TRUE(copy->isOutlineStyle());
  EXPECT_TRUE(copy->runtimeAttributes().empty());
  EXPECT_EQ(copy->cacheIndexOfChild(), 0);
  EXPECT_NE(copy->hashNumber(), number);
  EXPECT_EQ(child->parent(), node) << "the link stays with the source";
  EXPECT_EQ(posts.take(), "");
}

TEST(OLNodeCopy, IsASnapshot) {
  const auto node = named("N");
  const auto a = named("A");
  node->addChild(a);
  const auto copy = node->copy();
  node->addChild(named("B"));
  node->setDataForKey("M", "title");
  EXPECT_EQ(printChildren(*copy), "A");
  EXPECT_EQ(copy->dataForKey("title"), ns::Value("N"));
  EXPECT_EQ(printChildren(*node), "A B");
}

TEST(OLNodeCopy, OfNoDataHasNoData) {
  const auto node = OLNode::create();
  node->setData(std::nullopt);
  EXPECT_FALSE(node->copy()->data().has_value());
}

TEST(OLNodeContainment, ClimbsToTheNode) {
  const auto root = OLNode::create();
  const auto a = OLNode::create();
  const auto b = OLNode::create();
  root->addChild(a);
  a->addChild(b);
  EXPECT_TRUE(b->isContainedBy(b.get()));
  EXPECT_TRUE(b->isContainedBy(a.get()));
  EXPECT_TRUE(b->isContainedBy(root.get()));
  EXPECT_FALSE(a->isContainedBy(b.get()));
  EXPECT_FALSE(root->isContainedBy(a.get()));
  EXPECT_FALSE(b->isContainedBy(nullptr));
  EXPECT_FALSE(b->isContainedBy(OLNode::create().get()));
}

TEST(OLNodeContainment, EndsWhereParentLinksLeadInACircle) {
  const auto other = OLNode::create();
  for (const size_t length : {1U, 2U, 3U, 7U, 100U}) {
    OLNodeList circle(length);
    for (auto& node : circle) node = OLNode::create();
    for (size_t i = 0; i < length; ++i) circle[i]->setParent(circle[(i + 1) % length]);
    const auto tail = OLNode::create();
    tail->setParent(circle[0]);
    for (const auto& node : circle) {
      EXPECT_TRUE(tail->isContainedBy(node.get()));
      EXPECT_TRUE(circle[0]->isContainedBy(node.get()));
      EXPECT_FALSE(node->isContainedBy(tail.get()));
    }
    EXPECT_FALSE(tail->isContainedBy(other.get()));
  }
}

}  // namespace
}  // namespace tavlin
