#include "platform/foundation/ClassInfo.h"

#include <gtest/gtest.h>

namespace ns {
namespace {

TEST(ClassInfo, IsNamedAfterTheFirstOfItsChain) {
  const ClassRef info = makeClass({"NSMutableArray", "NSArray", "NSObject"});
  EXPECT_EQ(info->name, "NSMutableArray");
  EXPECT_EQ(info->chain, (std::vector<std::string>{"NSMutableArray", "NSArray", "NSObject"}));
  EXPECT_TRUE(info->hints.empty());
  EXPECT_TRUE(info->hasChain);
}

TEST(ClassInfo, InheritsFromItselfAndItsAncestors) {
  const ClassRef info = makeClass({"NSMutableArray", "NSArray", "NSObject"});
  EXPECT_TRUE(info->inheritsFrom("NSMutableArray"));
  EXPECT_TRUE(info->inheritsFrom("NSArray"));
  EXPECT_TRUE(info->inheritsFrom("NSObject"));
  EXPECT_FALSE(info->inheritsFrom("NSDictionary"));
  EXPECT_FALSE(info->inheritsFrom("NSArr"));
  EXPECT_FALSE(info->inheritsFrom(""));
}

TEST(ClassInfo, WithoutChainIsStillItself) {
  ClassInfo info;
  info.name = "Lonely";
  info.hasChain = false;
  EXPECT_TRUE(info.inheritsFrom("Lonely"));
  EXPECT_FALSE(info.inheritsFrom("NSObject"));
}

TEST(ClassInfo, ComparesByContent) {
  const ClassRef one = makeClass({"A", "B"});
  EXPECT_EQ(*one, *makeClass({"A", "B"}));
  EXPECT_FALSE(*one == *makeClass({"A"}));
  ClassInfo hinted = *one;
  hinted.hints = {"C"};
  EXPECT_FALSE(*one == hinted);
  ClassInfo bare = *one;
  bare.hasChain = false;
  EXPECT_FALSE(*one == bare);
}

TEST(ClassInfo, AnEmptyChainHasNoName) { EXPECT_EQ(makeClass({})->name, ""); }

}  // namespace
}  // namespace ns
