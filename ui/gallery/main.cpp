// Draws every drawing helper into one picture, to be looked at.
// Usage: drawing_gallery <file.png>

#include <cstdio>
#include <exception>

#include "ui/gallery/Sheet.h"

#if defined(__SANITIZE_ADDRESS__)
extern "C" const char* __lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier)

/// Cairo keeps the fonts that it used, and with them patterns of Fontconfig, whose pointers to
/// their own parts are written as distances: a leak checker does not see them.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
  return "leak:libfontconfig";
}
#endif

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: drawing_gallery <file.png>\n");
    return 2;
  }
  try {
    tavlin::gallery::Sheet sheet(2810);
    sheet.title("Drawing helpers", "Everything on this sheet is drawn with the library itself.");
    tavlin::gallery::drawPathPanels(sheet);
    tavlin::gallery::drawGradientPanels(sheet);
    tavlin::gallery::drawViewPanels(sheet);
    tavlin::gallery::drawMaskPanels(sheet);
    // The sheet is opaque all over.
    sheet.image().representations().front()->setAlpha(false);
    sheet.image().writeToFile(argv[1]);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "drawing_gallery: %s\n", exception.what());
    return 1;
  }
  return 0;
}
