#include <stdexcept>

#include "platform/foundation/Log.h"
#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

using testing::Item;
using testing::named;
using testing::PostLog;
using testing::printChildren;

TEST(OLNodeLifetime, AParentOwnsItsChildrenAndNotTheOtherWayRound) {
  auto parent = named("P");
  auto child = named("C");
  const std::weak_ptr<OLNode> weakChild = child;
  const std::weak_ptr<OLNode> weakParent = parent;
  parent->addChild(child);
  child.reset();
  EXPECT_FALSE(weakChild.expired());
  parent.reset();
  EXPECT_TRUE(weakParent.expired());
  EXPECT_TRUE(weakChild.expired());
}

TEST(OLNodeLifetime, AParentThatGoesLeavesItsChildrenWithoutParent) {
  PostLog posts;
  auto parent = named("P");
  const auto child = named("C");
  parent->addChild(child);
  posts.take();
  parent.reset();
  EXPECT_EQ(child->parent(), nullptr);
  EXPECT_EQ(posts.take(), "");
}

TEST(OLNodeLifetime, AStaleLinkNeverDangles) {
  auto parent = named("P");
  const auto child = named("C");
  parent->addChild(child);
  parent->removeChild(child.get());
  EXPECT_EQ(child->parent(), parent);
  parent.reset();
  EXPECT_EQ(child->parent(), nullptr);
}

TEST(OLNodeLifetime, ANodeThatGoesWithAStaleLinkMakesThatParentPost) {
  PostLog posts;
  const auto parent = named("P");
  auto child = named("C");
  parent->addChild(child);
  parent->addChild(named("D"));
  parent->removeChild(child.get());
  posts.take();
  child.reset();
  EXPECT_EQ(posts.take(), "P:1");
}

TEST(OLNodeLifetime, ANodeThatGoesAfterRemoveFromParentPostsNothing) {
  PostLog posts;
  const auto parent = named("P");
  auto child = named("C");
  parent->addChild(child);
  child->removeFromParent();
  posts.take();
  child.reset();
  EXPECT_EQ(posts.take(), "");
}

TEST(OLNodeLifetime, RemovingANodeThatOnlyTheListOwnsPostsForTheRemovalAndForItsEnd) {
  PostLog posts;
  const auto parent = named("P");
  parent->addChild(named("A"));
  parent->addChild(named("B"));
  posts.take();
  std::string seen;
  const PostLog::Watch watch(posts,
                             [&](OLNode& sender) { seen += '[' + printChildren(sender) + ']'; });
  parent->removeChild(parent->children()[0].get());
  EXPECT_EQ(seen, "[B][B]");
  parent->removeChildAtIndex(0);
  EXPECT_EQ(seen, "[B][B][][]");
}

TEST(OLNodeLifetime, RemoveFromParentMayEndTheNode) {
  PostLog posts;
  const auto parent = named("P");
  parent->addChild(named("A"));
  const std::weak_ptr<OLNode> child = parent->children()[0];
  posts.take();
  child.lock().get()->removeFromParent();
  EXPECT_TRUE(child.expired());
  EXPECT_EQ(posts.take(), "P:0");
}

TEST(OLNodeLifetime, ReplacingTheListEndsItsNodesWithTheNewListInPlace) {
  PostLog posts;
  const auto parent = named("P");
  parent->addChild(named("A"));
  posts.take();
  parent->setChildren(OLNodeList{named("B"), named("C")});
  EXPECT_EQ(posts.take(), "P:2");
}

TEST(OLNodeLifetime, TheSubtreeGoesWithTheNode) {
  auto top = named("T");
  auto middle = named("M");
  const auto leaf = named("L");
  top->addChild(middle);
  middle->addChild(leaf);
  const std::weak_ptr<OLNode> weakMiddle = middle;
  middle.reset();
  top.reset();
  EXPECT_TRUE(weakMiddle.expired());
  EXPECT_EQ(leaf->parent(), nullptr);
  EXPECT_EQ(leaf.use_count(), 1);
}

TEST(OLNodeLifetime, ANodeOfTheSubtreeThatSomebodyOwnsKeepsItsOwnSubtree) {
  auto top = named("T");
  auto middle = named("M");
  middle->addChild(named("A"));
  middle->addChild(named("B"));
  top->addChild(middle);
  top.reset();
  EXPECT_EQ(middle->parent(), nullptr);
  EXPECT_EQ(printChildren(*middle), "A B");
  EXPECT_EQ(middle->childAtIndex(0)->parent(), middle);
}

TEST(OLNodeLifetime, ACopyThatGoesUnlinksTheChildrenThatItShares) {
  const auto node = named("N");
  const auto child = named("C");
  node->addChild(child);
  auto copy = node->copy();
  copy.reset();
  EXPECT_EQ(child->parent(), nullptr);
  EXPECT_EQ(printChildren(*node), "C");
}

TEST(OLNodeLifetime, ACopyKeepsTheChildrenWhenTheSourceGoes) {
  auto node = named("N");
  node->addChild(named("C"));
  const auto copy = node->copy();
  node.reset();
  EXPECT_EQ(printChildren(*copy), "C");
}

TEST(OLNodeLifetime, AnObserverMayReleaseTheLastOwnerOfTheSender) {
  PostLog posts;
  auto parent = named("P");
  const std::weak_ptr<OLNode> weak = parent;
  auto* plain = parent.get();
  bool livedOn = false;
  const PostLog::Watch watch(posts, [&](OLNode&) {
    parent.reset();
    livedOn = !weak.expired();
  });
  plain->addChild(named("A"));
  EXPECT_TRUE(livedOn) << "for the observers that come after this one";
  EXPECT_TRUE(weak.expired());
}

TEST(OLNodeLifetime, ANodeThatGoesUnlinksChildrenOfOtherParentsAtAnyDepth) {
  const auto other = named("O");
  const auto near = named("N");
  const auto far = named("F");
  auto top = named("T");
  top->addChild(named("M"));
  top->addChild(near);
  top->childAtIndex(0)->addChild(far);
  other->addChild(near);
  other->addChild(far);
  top.reset();
  EXPECT_EQ(near->parent(), nullptr);
  EXPECT_EQ(far->parent(), nullptr);
  EXPECT_EQ(printChildren(*other), "N F");
}

TEST(OLNodeLifetime, WhatAnObserverRaisesDuringANodesEndIsLogged) {
  PostLog posts;
  std::string logged;
  const auto previous = ns::setLogHandler([&](std::string_view text) { logged += text; });
  const auto parent = named("P");
  auto child = named("C");
  parent->addChild(child);
  parent->removeChild(child.get());
  const PostLog::Watch watch(posts, [](OLNode&) { throw std::runtime_error("no more"); });
  child.reset();
  EXPECT_EQ(logged, "an observer failed while a node was destroyed: no more");
  ns::setLogHandler(previous);
}

TEST(OLNodeLifetime, WhatAnObserverRaisesDuringAnEditComesThrough) {
  PostLog posts;
  const auto parent = named("P");
  const PostLog::Watch watch(posts, [](OLNode&) { throw std::runtime_error("no more"); });
  EXPECT_THROW(parent->addChild(named("C")), std::runtime_error);
  EXPECT_EQ(printChildren(*parent), "C");
}

}  // namespace
}  // namespace tavlin
