// Writes a large, plausible outline for measurements; the same arguments give the same bytes.
//
//     outline-make FILE ITEMS [flat|deep|mixed]
//
// flat: all in one list; deep: each the only child of the one before, 200,000 levels at most, then
// again from the top; mixed, the usual: like an outline that somebody wrote.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/File.h"
#include "platform/text/Font.h"
#include "platform/text/MutableAttributedString.h"

namespace {

using Item = std::shared_ptr<tavlin::OLNode>;

constexpr size_t kDeepest = 200000;

/// A small generator with a fixed start (splitmix64).
class Dice {
 public:
  size_t roll(size_t sides) {
    state_ += 0x9E3779B97F4A7C15U;
    uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
    return static_cast<size_t>((mixed ^ (mixed >> 31)) % sides);
  }

 private:
  uint64_t state_ = 2027;
};

const char* const kWords[] = {"alpha",  "outline", "garden", "kitchen", "plan", "note",
                              "server", "release", "budget", "travel",  "日本", "naïve"};

std::string words(Dice& dice, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) text += ' ';
    text += kWords[dice.roll(std::size(kWords))];
  }
  return text;
}

/// A third of the titles is rich text; fonts are shared as an application would share them.
ns::Value title(Dice& dice, size_t number, const std::vector<ns::Dictionary>& looks) {
  const ns::String text(words(dice, 3 + dice.roll(6)) + " " + std::to_string(number));
  if (dice.roll(3) != 0) return ns::Value(text);
  ns::MutableAttributedString rich(ns::AttributedString(text, looks[dice.roll(looks.size())]));
  if (dice.roll(3) == 0) {
    rich.setAttributesRange(looks[dice.roll(looks.size())], {0, text.length() / 2});
  }
  return rich.copy().asValue();
}

}  // namespace

int main(int argc, char** argv) {
  const size_t count = argc >= 3 ? std::strtoull(argv[2], nullptr, 10) : 0;
  const char* shape = argc == 4 ? argv[3] : "mixed";
  if (argc < 3 || count == 0) {
    std::fputs("usage: outline-make FILE ITEMS [flat|deep|mixed]\n", stderr);
    return 1;
  }
  std::vector<ns::Dictionary> looks;
  for (const double size : {11.0, 13.0, 18.0}) {
    for (const char* name : {"Helvetica", "Helvetica-Bold", "Times-Roman"}) {
      looks.push_back({{ns::kFontAttributeName, ns::Font::named(name, size).asValue()}});
    }
  }
  Dice dice;
  const auto document = tavlin::OLDataManager::create();
  document->setObjectValueForKey(ns::Dictionary{{"keywords", ns::Array{"a,b", "c"}}},
                                 "documentProperties");
  std::vector<Item> path{document->treeController()->tree()->rootNode()};
  for (size_t number = 0; number < count; ++number) {
    const Item item = tavlin::OLNode::create();
    item->setDataForKey(title(dice, number, looks), "title");
    if (dice.roll(3) == 0) {
      item->setDataForKey(words(dice, 10 + dice.roll(50)).c_str(), "note");
    }
    if (dice.roll(3) == 0) item->setDataForKey(dice.roll(2) == 0, "checkStatus");
    path.back()->addChild(item);
    if (std::strcmp(shape, "deep") == 0) {
      const bool isDeepest = (number + 1) % kDeepest == 0;
      path = {isDeepest ? document->rootItem() : item};
    } else if (std::strcmp(shape, "mixed") == 0) {
      const size_t turn = dice.roll(100);
      if (turn < 25 && path.size() < 12) path.push_back(item);
      if (turn > 71 && path.size() > 1) path.pop_back();
    }
  }
  try {
    ns::writeFileAtomically(argv[1], *document->dataRepresentation());
  } catch (const ns::Exception& exception) {
    std::fprintf(stderr, "outline-make: %s\n", exception.what());
    return 1;
  }
  return 0;
}
