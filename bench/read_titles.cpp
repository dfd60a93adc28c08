// Loads a document and reads the title of every item as UTF-8, as an indexer would.
//
//     read-titles [-r] FILE
//
// Prints how many items there are and how many bytes their titles have.  With -r the document is
// released before the program ends; without, it lives as long as the process.

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "document/OLDataManager.h"
#include "model/OLTree.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/File.h"

int main(int argc, char** argv) {
  const bool isReleasing = argc == 3 && std::strcmp(argv[1], "-r") == 0;
  if (argc != (isReleasing ? 3 : 2)) {
    std::fputs("usage: read-titles [-r] FILE\n", stderr);
    return 1;
  }
  try {
    std::shared_ptr<tavlin::OLDataManager> document = tavlin::OLDataManager::create();
    if (!document->loadDataRepresentationOfType(ns::readFile(argv[argc - 1]))) return 1;
    const ns::Value key = "title";
    size_t items = 0, bytes = 0;
    std::string title;
    for (auto item = document->firstItem(); item; item = document->nextItemByItem(item)) {
      title.clear();
      tavlin::OLTree::stringForKeyByItem(key, item).appendUtf8To(title);
      bytes += title.size();
      ++items;
    }
    std::printf("%zu items, %zu bytes of titles\n", items, bytes);
    if (!isReleasing) {
      static auto* const kept = new std::shared_ptr<tavlin::OLDataManager>();
      *kept = std::move(document);
    }
  } catch (const ns::Exception& exception) {
    std::fprintf(stderr, "read-titles: %s\n", exception.what());
    return 1;
  }
  return 0;
}
