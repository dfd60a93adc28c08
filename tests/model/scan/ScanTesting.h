#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "model/scan/OLTreeScanner.h"
#include "tests/model/ModelTesting.h"

namespace tavlin::testing {

/// Writes down each hook that is called, with the target and its level: "<A0 B1 C2 A0>".
class TraceScanner : public OLTreeScanner {
 public:
  std::string trace;

 protected:
  void processBeforeLoop() override { trace += "<" + place(); }
  void processInLoop() override { trace += " " + place(); }
  void processAfterLoop() override { trace += " " + place() + ">"; }

 private:
  std::string place() { return nameOf(target()) + std::to_string(level()); }
};

/// What a walk from an item writes down.
inline std::string traceOf(const Item& start) {
  TraceScanner scanner;
  EXPECT_TRUE(scanner.processWithTarget(start));
  return scanner.trace;
}

/// A tree of random shape below a root: all its items, each named by its number.
inline OLNodeList randomItems(const Item& root, Random& random, size_t size) {
  OLNodeList items;
  for (size_t i = 0; i < size; ++i) {
    const size_t back = random.below(std::min<size_t>(items.size() + 1, 6));
    const Item parent = back == items.size() ? root : items[items.size() - 1 - back];
    items.push_back(named(("n" + std::to_string(i)).c_str()));
    parent->insertChildAtIndex(items.back(), random.below(parent->countChildren() + 1));
  }
  return items;
}

}  // namespace tavlin::testing
