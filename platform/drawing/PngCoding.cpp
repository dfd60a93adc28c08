#include "platform/drawing/PngCoding.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "platform/drawing/DrawingException.h"

namespace ns {
namespace {

// A PNG file begins with eight fixed bytes.  The first chunk follows: its length, its type
// "IHDR", width and height as 32-bit numbers, highest byte first.
constexpr std::string_view kSignature("\x89PNG\r\n\x1a\n", 8);
constexpr size_t kTypeOffset = 12;
constexpr size_t kWidthOffset = 16;
constexpr size_t kHeightOffset = 20;
constexpr size_t kHeaderEnd = 24;

uint32_t numberAt(std::string_view bytes, size_t offset) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; ++i) number = number << 8 | static_cast<uint8_t>(bytes[offset + i]);
  return number;
}

void checkHeader(std::string_view bytes, const std::string& what) {
  if (bytes.size() < kHeaderEnd || bytes.substr(0, kSignature.size()) != kSignature ||
      bytes.substr(kTypeOffset, 4) != "IHDR") {
    throw DrawingException(what + " is no PNG image");
  }
  const uint32_t width = numberAt(bytes, kWidthOffset);
  const uint32_t height = numberAt(bytes, kHeightOffset);
  if (width > BitmapImageRep::kMaximumSide || height > BitmapImageRep::kMaximumSide ||
      int64_t{width} * height > BitmapImageRep::kMaximumPixels) {
    throw DrawingException(what + " is too large: " + std::to_string(width) + " by " +
                           std::to_string(height) + " pixels");
  }
}

cairo_status_t readBytes(void* closure, unsigned char* out, unsigned int length) {
  auto& rest = *static_cast<std::string_view*>(closure);
  if (length > rest.size()) return CAIRO_STATUS_READ_ERROR;
  std::memcpy(out, rest.data(), length);
  rest.remove_prefix(length);
  return CAIRO_STATUS_SUCCESS;
}

cairo_status_t writeBytes(void* closure, const unsigned char* bytes, unsigned int length) {
  try {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(bytes), length);
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;  // An exception may not pass through C code.
  }
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

SurfacePtr surfaceFromPng(std::string_view bytes, const std::string& what) {
  checkHeader(bytes, what);
  std::string_view rest = bytes;
  SurfacePtr surface(cairo_image_surface_create_from_png_stream(readBytes, &rest));
  const cairo_status_t status = cairo_surface_status(surface.get());
  if (status == CAIRO_STATUS_NO_MEMORY) check(status);
  if (status != CAIRO_STATUS_SUCCESS) {
    throw DrawingException(what + " is a damaged PNG image: " + cairo_status_to_string(status));
  }
  return surface;
}

std::string pngFromSurface(cairo_surface_t* surface) {
  std::string bytes;
  check(cairo_surface_write_to_png_stream(surface, writeBytes, &bytes));
  return bytes;
}

}  // namespace ns
