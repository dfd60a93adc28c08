#include "ui/ImageHelpers.h"

namespace tavlin {

std::shared_ptr<ns::Image> UIImageNamed(const ns::String& name) {
  std::shared_ptr<ns::Image> image = ns::Image::imageNamed(name);
  if (image && !image->representations().empty()) {
    ns::BitmapImageRep& representation = *image->representations().front();
    if (!representation.hasAlpha()) representation.setAlpha(true);
  }
  return image;
}

}  // namespace tavlin
