#include "exchange/OutlineStatistics.h"

#include <algorithm>

#include "exchange/DerivedState.h"
#include "exchange/OutlineWalk.h"
#include "exchange/TextStyle.h"

namespace tavlin {

namespace {

bool isBlank(char16_t unit) {
  if (unit < 0x80)
    return unit == ' ' || (unit >= 0x09 && unit <= 0x0D) || (unit >= 0x1C && unit <= 0x1F);
  return unit == 0x85 || unit == 0xA0 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200A) ||
         unit == 0x2028 || unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}

template <class Units>
uint64_t wordsIn(const Units& units) {
  uint64_t words = 0;
  bool isInWord = false;
  for (const auto unit : units) {
    const bool isPart = !isBlank(static_cast<char16_t>(unit));
    words += isPart && !isInWord ? 1U : 0U;
    isInWord = isPart;
  }
  return words;
}

}  // namespace

uint64_t wordCount(const ns::String& text) {
  return text.isAscii() ? wordsIn(text.ascii()) : wordsIn(text.wide());
}

OutlineStatistics outlineStatistics(const OLTree& tree) {
  OutlineStatistics statistics;
  for (auto walk = OutlineWalk::below(tree.rootNode()); walk.item(); walk.next()) {
    const auto& item = walk.item();
    ++statistics.items;
    statistics.depth = std::max<uint64_t>(statistics.depth, walk.level() + 1);
    if (isShownAndChecked(item)) ++statistics.checked;
    const bool isRich = isRichText(OLTree::objectValueForKeyByItem("title", item)) ||
                        isRichText(OLTree::objectValueForKeyByItem("note", item));
    if (isRich) ++statistics.rich;
    statistics.words += wordCount(OLTree::stringForKeyByItem("title", item)) +
                        wordCount(OLTree::stringForKeyByItem("note", item));
  }
  return statistics;
}

}  // namespace tavlin
