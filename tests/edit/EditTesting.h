#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "document/OLDataManager.h"
#include "edit/DocumentEditor.h"
#include "exchange/OutlineWalk.h"

namespace tavlin {

/// A document of an outline in lines, two blanks for each level: "a", "  b".
inline std::shared_ptr<OLDataManager> outlineOf(const std::string& lines) {
  auto document = OLDataManager::create();
  std::vector<std::shared_ptr<OLNode>> above = {document->rootItem()};
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const size_t level = line.find_first_not_of(' ') / 2;
    auto item = OLNode::create();
    item->setDataForKey(ns::String(line.substr(2 * level)), "title");
    above.resize(level + 1);
    above.back()->addChild(item);
    above.push_back(item);
  }
  return document;
}

/// The outline of a document in such lines.
inline std::string linesOf(const OLDataManager& document) {
  std::string lines;
  auto walk = OutlineWalk::below(document.rootItem());
  for (; walk.item(); walk.next()) {
    lines += std::string(2 * walk.level(), ' ');
    OLTree::stringForKeyByItem("title", walk.item()).appendUtf8To(lines);
    lines += '\n';
  }
  return lines;
}

/// The items that paths name.
inline OLNodeList itemsAt(const DocumentEditor& editor, const std::vector<std::string>& paths) {
  OLNodeList items;
  for (const std::string& path : paths) items.push_back(editor.itemAtPath(path));
  return items;
}

}  // namespace tavlin
