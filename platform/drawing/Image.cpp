#include "platform/drawing/Image.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "platform/drawing/Drawing.h"
#include "platform/drawing/DrawingException.h"
#include "platform/drawing/ImagePiece.h"
#include "platform/drawing/PngCoding.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/File.h"

namespace ns {
namespace {

std::string describe(Size size) {
  char text[64];
  std::snprintf(text, sizeof text, "%g by %g points", size.width, size.height);
  return text;
}

}  // namespace

Image::Image(Size size) : size_(size), alive_(std::make_shared<bool>(true)) {
  if (!isFinite(size) || size.width < 0 || size.height < 0) {
    throw InvalidArgumentException("no image can have a size of " + describe(size));
  }
  if (size.width == 0 || size.height == 0) return;
  if (std::max(size.width, size.height) > BitmapImageRep::kMaximumSide) {
    throw DrawingException("an image of " + describe(size) + " is too large");
  }
  representations_.push_back(std::make_shared<BitmapImageRep>(
      static_cast<int>(std::ceil(size.width)), static_cast<int>(std::ceil(size.height))));
}

Image::Image(Size size, std::shared_ptr<BitmapImageRep> representation)
    : size_(size),
      representations_{std::move(representation)},
      alive_(std::make_shared<bool>(true)) {}

Image::~Image() = default;

std::shared_ptr<Image> Image::imageFromPng(const Data& data, const std::string& what) {
  auto impl = std::make_unique<BitmapImageRep::Impl>();
  impl->surface = surfaceFromPng(data.view(), what);
  // Only these two have their pixels where BitmapImageRep looks for them.
  const cairo_format_t format = cairo_image_surface_get_format(impl->surface.get());
  if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24) {
    impl->surface = convertedSurface(impl->surface.get(), CAIRO_FORMAT_ARGB32);
  }
  auto pixels = std::make_shared<BitmapImageRep>(std::move(impl));
  const Size size{static_cast<double>(pixels->pixelsWide()),
                  static_cast<double>(pixels->pixelsHigh())};
  return std::shared_ptr<Image>(new Image(size, std::move(pixels)));
}

std::shared_ptr<Image> Image::imageWithContentsOfFile(const std::filesystem::path& path) {
  return imageFromPng(readFile(path.native()), "the file " + path.native());
}

std::shared_ptr<Image> Image::imageWithData(const Data& data) {
  return imageFromPng(data, "the data");
}

Pixel Image::pixelAtXY(int x, int y) const {
  if (representations_.empty()) throw RangeException("the image has no pixels");
  return representations_.front()->pixelAtXY(x, y);
}

void Image::lockFocus() {
  if (representations_.empty()) {
    throw DrawingException("an image of " + describe(size_) + " cannot take the focus");
  }
  auto impl = std::make_unique<GraphicsContext::Impl>();
  impl->target = representations_.front();
  impl->image = alive_;
  dropDeadContexts();
  focusStack().push_back(std::make_shared<GraphicsContext>(std::move(impl)));
}

void Image::unlockFocus() {
  const auto context = GraphicsContext::currentContext();
  if (!context || context->impl().image.lock() != alive_) {
    throw DrawingException("the image does not have the focus");
  }
  focusStack().pop_back();
}

void Image::drawAtPointFromRectOperationFraction(Point point, const Rect& fromRect,
                                                 CompositingOperation operation,
                                                 double fraction) const {
  const Size size = fromRect == Rect{} ? size_ : fromRect.size;
  drawInRectFromRectOperationFraction({point, size}, fromRect, operation, fraction);
}

void Image::drawInRectFromRectOperationFraction(const Rect& rect, const Rect& fromRect,
                                                CompositingOperation operation,
                                                double fraction) const {
  const auto context = GraphicsContext::requireCurrentContext();
  if (!isFinite(rect) || !isFinite(fromRect) || !std::isfinite(fraction)) {
    throw InvalidArgumentException("a number for drawing an image is not finite");
  }
  const Rect whole{{}, size_};
  const Rect from = fromRect == Rect{} ? whole : fromRect;
  const Rect part = intersectionRect(from, whole);
  if (isEmptyRect(rect) || isEmptyRect(part)) return;

  const double scaleX = rect.size.width / from.size.width;
  const double scaleY = rect.size.height / from.size.height;
  const Rect filled = makeRect(rect.minX() + (part.minX() - from.minX()) * scaleX,
                               rect.minY() + (part.minY() - from.minY()) * scaleY,
                               part.size.width * scaleX, part.size.height * scaleY);
  if (!isFinite(filled) || isEmptyRect(filled)) return;

  const BitmapImageRep& bitmap = *representations_.front();
  Piece piece = copiedPiece(bitmap, part, std::clamp(fraction, 0.0, 1.0));
  // From the context's points to the piece's columns and rows; rows run down from the top.
  const double top = bitmap.pixelsHigh() - piece.top;
  piece.toPixels = AffineTransform({1 / scaleX, 0, 0, -1 / scaleY,
                                    from.minX() - piece.left - rect.minX() / scaleX,
                                    top - from.minY() + rect.minY() / scaleY});
  const AffineTransform device = context->impl().toDevice();
  const BezierPath path = BezierPath::bezierPathWithRect(filled);
  makeSmaller(piece, device);
  const Rect bounds = deviceBoundsOfPath(path, device);
  context->impl().fill(
      path, [&](cairo_t* cairo) { setPieceSource(cairo, piece, device, bounds); }, operation);
}

Data Image::pngRepresentation() const {
  if (representations_.empty()) throw DrawingException("the image has no pixels");
  return Data(pngFromSurface(representations_.front()->impl().surface.get()));
}

void Image::writeToFile(const std::filesystem::path& path) const {
  writeFileAtomically(path.native(), pngRepresentation());
}

ImageFocus::ImageFocus(Image& image) {
  image.lockFocus();
  context_ = GraphicsContext::currentContext();
}

ImageFocus::~ImageFocus() {
  auto& stack = focusStack();
  stack.erase(std::find(stack.begin(), stack.end(), context_), stack.end());
}

}  // namespace ns
