#include "model/scan/WalkGuard.h"

#include "tests/model/ModelTesting.h"

namespace tavlin {
namespace {

OLNodeList nodes(size_t count) {
  OLNodeList list(count);
  for (auto& node : list) node = OLNode::create();
  return list;
}

TEST(WalkGuard, LetsAWalkThroughNewNodesPass) {
  WalkGuard guard;
  for (const auto& node : nodes(10000)) EXPECT_NO_THROW(guard.pass(node.get()));
}

TEST(WalkGuard, LetsAFewMeetingsPass) {
  WalkGuard guard;
  const auto list = nodes(100);
  for (int lap = 0; lap < 3; ++lap) {
    for (const auto& node : list) EXPECT_NO_THROW(guard.pass(node.get()));
  }
}

TEST(WalkGuard, EndsACircleOfAnyLengthSoonAfterAnyWayToIt) {
  for (const size_t length : {1U, 2U, 3U, 7U, 64U, 1000U}) {
    for (const size_t way : {0U, 1U, 5U, 300U}) {
      WalkGuard guard;
      const auto list = nodes(way + length);
      size_t steps = 0;
      try {
        for (size_t at = 0;; at = at + 1 < list.size() ? at + 1 : way) {
          ASSERT_LT(steps, 4 * (way + length) + 20 * length) << length << " after " << way;
          ++steps;
          guard.pass(list[at].get());
        }
      } catch (const OLException& exception) {
        EXPECT_EQ(exception.reason(), "It is not expected that control reach here.");
      }
      EXPECT_GT(steps, way + length);
    }
  }
}

}  // namespace
}  // namespace tavlin
