#include "document/ContainerRewriting.h"

#include <gtest/gtest.h>

#include "model/OLNode.h"
#include "platform/archive/ArchivedClasses.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"

namespace tavlin {
namespace {

ns::Value shouted(const ns::Value& value) {
  return value.isString() && value.string() == "a" ? ns::Value("A") : value;
}

ns::Array arrayOf(const std::vector<ns::Value>& values, const ns::ClassRef& archivedClass) {
  ns::Array array(values);
  array.setArchivedClass(archivedClass);
  return array;
}

std::string classOf(const ns::Value& value) {
  return value.archivedClass() ? value.archivedClass()->name : "none";
}

TEST(ContainerRewriting, ChangedContainersKeepTheirClass) {
  for (const ns::ClassRef& array : {ns::arrayClass(), ns::mutableArrayClass(), ns::ClassRef()}) {
    const ns::Array before = arrayOf({"a", "b"}, array);
    const ns::Value now = rewritingLeaves(ns::Value(before), shouted);
    EXPECT_EQ(now, ns::Value(ns::Array({"A", "b"})));
    EXPECT_EQ(now.archivedClass(), array);
  }
  for (const ns::ClassRef& map :
       {ns::dictionaryClass(), ns::mutableDictionaryClass(), ns::ClassRef()}) {
    ns::Dictionary before({{"a", "a"}, {"list", arrayOf({"a"}, ns::mutableArrayClass())}});
    before.setArchivedClass(map);
    const ns::Value now = rewritingLeaves(ns::Value(before), shouted);
    EXPECT_EQ(now.archivedClass(), map);
    // keys stay
    EXPECT_EQ(now.dictionary().objectForKey("a"), ns::Value("A"));
    EXPECT_EQ(now.dictionary().objectForKey("list").array()[0], ns::Value("A"));
    EXPECT_EQ(classOf(now.dictionary().objectForKey("list")), "NSMutableArray");
  }
}

TEST(ContainerRewriting, WhatDoesNotChangeStaysTheSameObject) {
  const ns::Value kept(arrayOf({"b"}, ns::mutableArrayClass()));
  const ns::Value before(arrayOf({kept, "a"}, ns::arrayClass()));
  const ns::Value now = rewritingLeaves(before, shouted);
  EXPECT_EQ(now.array()[0].body(), kept.body());
  EXPECT_EQ(rewritingLeaves(kept, shouted).body(), kept.body());
}

TEST(ContainerRewriting, SharedContainersAreRewrittenOnceAndStayShared) {
  const ns::Value shared(arrayOf({"a"}, ns::mutableArrayClass()));
  const ns::Value before(ns::Array({shared, ns::Value(ns::Array({shared}))}));
  size_t count = 0;
  const ns::Value now = rewritingLeaves(before, [&](const ns::Value& value) {
    ++count;
    return shouted(value);
  });
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(now.array()[0].body(), now.array()[1].array()[0].body());
  EXPECT_EQ(now.array()[0].array()[0], ns::Value("A"));
}

TEST(ContainerRewriting, IsAskedAboutEveryPartThatIsDone) {
  const ns::Value before(ns::Array({ns::Value(ns::Array({"a"})), "b"}));
  std::string asked;
  const ns::Value now =
      rewritingLeaves(before, shouted, [&](const ns::Value& old, const ns::Value& made) {
        asked +=
            made.isString() ? made.string().utf8() : "[" + std::to_string(made.array().count());
        asked += old.body() == made.body() ? "= " : "! ";
        return made.isString() && made.string() == "b" ? ns::Value("c") : made;
      });
  EXPECT_EQ(asked, "A! [1! b= [2! ");
  EXPECT_EQ(now.array()[1], ns::Value("c"));
}

// What an item's data goes through when it is saved.
TEST(ContainerRewriting, ReplacedTextKeepsClassesAtEveryDepth) {
  const ns::Value text(ns::String("a $null").withArchivedClass(ns::mutableStringClass()));
  const ns::Array inner = arrayOf({text}, ns::mutableArrayClass());
  ns::Dictionary map({{"inner", inner}});
  map.setArchivedClass(ns::mutableDictionaryClass());
  ns::Array array = arrayOf({map, "x $null"}, ns::mutableArrayClass());
  OLNode::replaceOccurenceOfStringWithStringInArray("$null", "nil", array);
  EXPECT_EQ(classOf(ns::Value(array)), "NSMutableArray");
  const ns::Value newMap = array[0];
  EXPECT_EQ(classOf(newMap), "NSMutableDictionary");
  const ns::Value newInner = newMap.dictionary().objectForKey("inner");
  EXPECT_EQ(classOf(newInner), "NSMutableArray");
  EXPECT_EQ(newInner.array()[0], ns::Value("a nil"));
  EXPECT_EQ(classOf(newInner.array()[0]), "NSMutableString");
  EXPECT_EQ(classOf(array[1]), "none");
}

}  // namespace
}  // namespace tavlin
