#include "platform/foundation/Data.h"

#include <gtest/gtest.h>

namespace ns {
namespace {

TEST(Data, IsEmptyAtFirst) {
  const Data data;
  EXPECT_TRUE(data.empty());
  EXPECT_EQ(data.length(), 0U);
  EXPECT_EQ(data.view(), "");
  EXPECT_EQ(data, Data(std::string()));
}

TEST(Data, TakesOverTheBytesOfAString) {
  std::string bytes(1000, 'x');
  bytes[500] = '\0';
  const void* const where = bytes.data();
  const std::string copy = bytes;
  const Data data(std::move(bytes));
  EXPECT_EQ(data.bytes(), where);
  EXPECT_EQ(data.view(), copy);
}

// A short string keeps its bytes in itself, so that they move with it.
TEST(Data, HoldsShortBytes) {
  Data data;
  {
    const Data made(std::string("ab\0c", 4));
    data = made;
  }
  EXPECT_EQ(data.view(), std::string_view("ab\0c", 4));
}

TEST(Data, SharesBytesAndKeepsTheirOwnerAlive) {
  auto owner = std::make_shared<std::string>("0123456789");
  const std::weak_ptr<std::string> watch = owner;
  {
    const Data part(owner, owner->data() + 2, 3);
    owner.reset();
    const Data copy = part;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.bytes(), part.bytes());
    EXPECT_EQ(copy.view(), "234");
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

TEST(Data, ComparesByBytes) {
  EXPECT_EQ(Data(std::string("ab")), Data(std::string("ab")));
  EXPECT_FALSE(Data(std::string("ab")) == Data(std::string("abc")));
  EXPECT_FALSE(Data(std::string("ab")) == Data(std::string("ac")));
}

}  // namespace
}  // namespace ns
