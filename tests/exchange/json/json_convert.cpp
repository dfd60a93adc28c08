// Documents to JSON and back, for tests that look at the text with other readers.
//
//     json-convert export FILE           to standard output
//     json-convert import JSON FILE
//     json-convert random SEED            a random document, to standard output
//     json-convert html FILE [numbers]

#include <cstdio>
#include <cstdlib>

#include "document/OLDataManager.h"
#include "exchange/HtmlFormat.h"
#include "exchange/JsonFormat.h"
#include "model/runtime/OLNumberLabelFormats.h"
#include "platform/foundation/File.h"
#include "tests/exchange/json/RandomDocument.h"

namespace {

int run(int argc, char** argv) {
  const std::string_view command = argc > 2 ? argv[1] : "";
  if (command == "import" && argc == 4) {
    const ns::Data content = ns::readFile(argv[2]);
    const tavlin::Imported imported = tavlin::importJson(content.view());
    ns::writeFileAtomically(argv[3], *imported.document->dataRepresentation());
    return 0;
  }
  const auto sink = [](std::string_view piece) {
    std::fwrite(piece.data(), 1, piece.size(), stdout);
  };
  if (command == "random" && argc == 3) {
    tavlin::testing::Random random(std::strtoull(argv[2], nullptr, 10));
    tavlin::exportJson({tavlin::testing::randomDocument(random), nullptr}, sink);
    return 0;
  }
  const auto document = tavlin::OLDataManager::create();
  if (!document->loadDataRepresentationOfType(ns::readFile(argv[2]))) return 2;
  if (command == "export" && argc == 3) {
    tavlin::exportJson({document, nullptr}, sink);
    return 0;
  }
  if (command == "html" && argc <= 4) {
    tavlin::HtmlOptions options;
    if (argc == 4) options.numbers = std::make_shared<tavlin::OLNumberLabelFormatLegal>();
    tavlin::exportHtml({document, nullptr}, options, sink);
    return 0;
  }
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const ns::Exception& exception) {
    std::fprintf(stderr, "json-convert: %s\n", exception.what());
    return 2;
  }
}
