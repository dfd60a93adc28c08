#include "platform/drawing/BitmapImageRep.h"

#include <cstring>
#include <string>
#include <utility>

#include "platform/drawing/CairoSupport.h"
#include "platform/drawing/DrawingException.h"
#include "platform/foundation/Exception.h"

namespace ns {

BitmapImageRep::BitmapImageRep(int pixelsWide, int pixelsHigh) {
  const std::string size =
      std::to_string(pixelsWide) + " by " + std::to_string(pixelsHigh) + " pixels";
  if (pixelsWide < 1 || pixelsHigh < 1) throw DrawingException("no image can have " + size);
  if (pixelsWide > kMaximumSide || pixelsHigh > kMaximumSide ||
      int64_t{pixelsWide} * pixelsHigh > kMaximumPixels) {
    throw DrawingException("an image of " + size + " is too large");
  }
  impl_ = std::make_unique<Impl>(Impl{makeSurface(CAIRO_FORMAT_ARGB32, pixelsWide, pixelsHigh)});
}

BitmapImageRep::BitmapImageRep(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

BitmapImageRep::~BitmapImageRep() = default;

int BitmapImageRep::pixelsWide() const {
  return cairo_image_surface_get_width(impl_->surface.get());
}

int BitmapImageRep::pixelsHigh() const {
  return cairo_image_surface_get_height(impl_->surface.get());
}

bool BitmapImageRep::hasAlpha() const {
  return cairo_image_surface_get_format(impl_->surface.get()) == CAIRO_FORMAT_ARGB32;
}

void BitmapImageRep::setAlpha(bool alpha) {
  if (alpha == hasAlpha()) return;
  impl_->surface =
      convertedSurface(impl_->surface.get(), alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24);
}

void BitmapImageRep::Impl::repairSurface() {
  cairo_surface_t* old = surface.get();
  if (cairo_surface_status(old) == CAIRO_STATUS_SUCCESS) return;
  const int height = cairo_image_surface_get_height(old);
  SurfacePtr repaired =
      makeSurface(cairo_image_surface_get_format(old), cairo_image_surface_get_width(old), height);
  const unsigned char* from = cairo_image_surface_get_data(old);
  const ptrdiff_t stride = cairo_image_surface_get_stride(old);
  std::memcpy(cairo_image_surface_get_data(repaired.get()), from,
              static_cast<size_t>(stride * height));
  cairo_surface_mark_dirty(repaired.get());
  surface = std::move(repaired);
}

Pixel BitmapImageRep::pixelAtXY(int x, int y) const {
  const int height = pixelsHigh();
  if (x < 0 || y < 0 || x >= pixelsWide() || y >= height) {
    throw RangeException("pixel " + std::to_string(x) + ", " + std::to_string(y) +
                         " is outside the image");
  }
  cairo_surface_t* surface = impl_->surface.get();
  cairo_surface_flush(surface);
  // A row is an array of 32-bit numbers in the machine's order, alpha highest; rows run down.
  const unsigned char* row =
      cairo_image_surface_get_data(surface) +
      static_cast<ptrdiff_t>(height - 1 - y) * cairo_image_surface_get_stride(surface);
  const uint32_t number = reinterpret_cast<const uint32_t*>(row)[x];
  return {static_cast<uint8_t>(number >> 16), static_cast<uint8_t>(number >> 8),
          static_cast<uint8_t>(number),
          hasAlpha() ? static_cast<uint8_t>(number >> 24) : uint8_t{255}};
}

DrawingColor BitmapImageRep::colorAtXY(int x, int y) const {
  const Pixel pixel = pixelAtXY(x, y);
  if (pixel.alpha == 0) return DrawingColor::colorWithCalibratedRedGreenBlueAlpha(0, 0, 0, 0);
  const double alpha = pixel.alpha;
  return DrawingColor::colorWithCalibratedRedGreenBlueAlpha(pixel.red / alpha, pixel.green / alpha,
                                                            pixel.blue / alpha, alpha / 255);
}

}  // namespace ns
