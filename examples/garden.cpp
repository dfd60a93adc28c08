// Writes the sample document examples/garden.tavlin: an outline of a few levels, with notes, rich
// text and check marks.
//
//     garden FILE

#include <cstdio>
#include <memory>
#include <string>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/File.h"
#include "platform/text/Font.h"
#include "platform/text/MutableAttributedString.h"

namespace {

using Item = std::shared_ptr<tavlin::OLNode>;

/// A title whose first word is set in a font of its own.
ns::Value rich(const char* firstWord, const char* rest) {
  const ns::Value plain = ns::Font::named("Helvetica", 13).asValue();
  const ns::Value bold = ns::Font::named("Helvetica-Bold", 13).asValue();
  ns::MutableAttributedString text(ns::AttributedString(
      ns::String(std::string(firstWord) + rest), ns::Dictionary{{ns::kFontAttributeName, plain}}));
  text.addAttributeValueRange(ns::kFontAttributeName, bold, {0, ns::String(firstWord).length()});
  return text.copy().asValue();
}

Item add(tavlin::OLTreeController& controller, const Item& parent, const ns::Value& title) {
  const Item item = tavlin::OLNode::create();
  controller.addChildToItem(item, parent);
  controller.setObjectValueForKeyByItem(title, "title", item);
  return item;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: garden FILE\n", stderr);
    return 1;
  }
  const auto document = tavlin::OLDataManager::create();
  document->setObjectValueForKey(ns::Dictionary{{"title", "Garden year"},
                                                {"authors", ns::Array{"Ada Moss"}},
                                                {"keywords", ns::Array{"garden", "beds, borders"}}},
                                 "documentProperties");

  tavlin::OLTreeController& controller = *document->treeController();
  const Item spring = add(controller, nullptr, rich("Spring", " – wake the beds"));
  const Item soil = add(controller, spring, "Loosen the soil");
  controller.setObjectValueForKeyByItem("Not before it crumbles in the hand.", "note", soil);
  controller.setObjectValueForKeyByItem(true, "checkStatus", soil);
  const Item sowing = add(controller, spring, "Sow under glass");
  for (const char* plant : {"Tomatoes", "Peppers", "Basil"}) add(controller, sowing, plant);
  controller.setExpandedByItem(true, sowing);
  controller.setExpandedByItem(true, spring);

  const Item summer = add(controller, nullptr, rich("Summer", " – water and wait"));
  const Item water = add(controller, summer, "Water in the evening");
  controller.setObjectValueForKeyByItem("Rain barrel first, then the tap.", "note", water);
  add(controller, summer, "Pick beans every other day");
  controller.setExpandedByItem(true, summer);

  const Item autumn = add(controller, nullptr, "Autumn");
  add(controller, autumn, "Äpfel einlagern");
  add(controller, autumn, "球根を植える");

  try {
    ns::writeFileAtomically(argv[1], *document->dataRepresentation());
  } catch (const ns::Exception& exception) {
    std::fprintf(stderr, "garden: %s\n", exception.what());
    return 1;
  }
  return 0;
}
