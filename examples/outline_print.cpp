// Prints a document as an indented outline.
//
//     outline-print FILE

#include <cstdio>
#include <string>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/foundation/File.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: outline-print FILE\n", stderr);
    return 1;
  }
  try {
    const auto document = tavlin::OLDataManager::create();
    if (!document->loadDataRepresentationOfType(ns::readFile(argv[1]))) return 1;
    const auto& tree = document->treeController()->tree();
    for (auto item = tree->firstItem(); item; item = tree->nextItemByItem(item)) {
      const bool isChecked = item->dataForKey("checkStatus").boolValue();
      const ns::String title = tavlin::OLTree::stringForKeyByItem("title", item);
      const ns::String note = tavlin::OLTree::stringForKeyByItem("note", item);
      const std::string indent(2 * tree->levelForItem(item), ' ');
      std::printf("%s%s %s\n", indent.c_str(), isChecked ? "✓" : "•", title.utf8().c_str());
      if (!note.empty()) std::printf("%s    %s\n", indent.c_str(), note.utf8().c_str());
    }
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "outline-print: %s\n", exception.what());
    return 1;
  }
  return 0;
}
