#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/drawing/BitmapImageRep.h"
#include "platform/drawing/CompositingOperation.h"
#include "platform/drawing/Geometry.h"
#include "platform/drawing/GraphicsContext.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/String.h"

namespace ns {

/// A picture that can be drawn, and drawn into.
///
///     ns::Image badge({32, 32});
///     {
///       ns::ImageFocus focus(badge);
///       ns::DrawingColor::whiteColor().set();
///       ns::BezierPath::bezierPathWithOvalInRect(ns::makeRect(0, 0, 32, 32)).fill();
///     }
///     badge.writeToFile("badge.png");
///
/// A point is a pixel; a size that is no whole number has its last pixels covered in part.
class Image {
 public:
  /// A transparent image.  A side of 0 gives an image without pixels: it has no
  /// representations, cannot take the focus, and draws nothing.  Raises
  /// InvalidArgumentException when a side is negative or not finite, and DrawingException when
  /// the image is too large (see BitmapImageRep) or there is no memory for it.
  explicit Image(Size size);
  /// An image of the pixels of a PNG file, or of its bytes.  Raises DrawingException when they
  /// are no PNG image or one that is too large, and FileException when the file cannot be read.
  static std::shared_ptr<Image> imageWithContentsOfFile(const std::filesystem::path& path);
  static std::shared_ptr<Image> imageWithData(const Data& data);
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  /// The image of a name: "check" is the file check.png, found in the first folder that has it.
  /// None when no folder has it, when the name is empty, and when it could lead out of the
  /// folders (it contains "/" or a zero character).  The suffix ".png" may be given.
  ///
  /// Folders are those of searchPath, in order, and then "images" in the resources of the main
  /// bundle (see Bundle::mainBundle).
  ///
  /// A file is read once; everybody who asks shares the image, and sees what is done to it.
  /// Raises DrawingException when the file is there but is no PNG image.
  static std::shared_ptr<Image> imageNamed(const String& name);
  /// The program's own folders for imageNamed; none at first.
  static const std::vector<std::filesystem::path>& searchPath();
  static void setSearchPath(std::vector<std::filesystem::path> folders);

  [[nodiscard]] Size size() const { return size_; }
  /// One bitmap, or nothing when a side is 0.
  [[nodiscard]] const std::vector<std::shared_ptr<BitmapImageRep>>& representations() const {
    return representations_;
  }
  /// The pixel in column x from the left and row y from the bottom; see BitmapImageRep.
  [[nodiscard]] Pixel pixelAtXY(int x, int y) const;

  /// Makes drawing go into this image, with a new graphics state, until unlockFocus.  An image
  /// may take the focus while another has it, or it has it itself.  Raises DrawingException when
  /// the image has no pixels.
  ///
  /// An image that is destroyed gives up the focus.  A context that was kept may still be drawn
  /// into; nobody sees it.
  void lockFocus();
  /// Ends the last lockFocus; drawing goes where it went before.  Raises DrawingException when
  /// this image does not have the focus, or another took it since.
  void unlockFocus();

  /// Draws the part `fromRect` of the image, scaled into `rect`, with alpha multiplied by
  /// `fraction` (brought to 0 ... 1).  The zero rectangle stands for the whole image; a part that
  /// reaches outside draws what there is.  Draws nothing when a rectangle is empty or negative
  /// or the image has no pixels.  Raises InvalidArgumentException when a number is not finite,
  /// and DrawingException when there is no current context, or when the pixels for a place cannot
  /// be found: the context's transform makes the image nearly flat, or turns one of more than
  /// 20,000 pixels a side.
  void drawInRectFromRectOperationFraction(const Rect& rect, const Rect& fromRect,
                                           CompositingOperation operation, double fraction) const;
  /// The same without scaling, with the lower left corner of the part at `point`.
  void drawAtPointFromRectOperationFraction(Point point, const Rect& fromRect,
                                            CompositingOperation operation, double fraction) const;

  /// The pixels as a PNG file.  Raises DrawingException when there are none.
  [[nodiscard]] Data pngRepresentation() const;
  /// Writes that file, replacing one that is there.  Raises FileException when it cannot.
  void writeToFile(const std::filesystem::path& path) const;

 private:
  Image(Size size, std::shared_ptr<BitmapImageRep> representation);
  static std::shared_ptr<Image> imageFromPng(const Data& data, const std::string& what);

  Size size_;
  std::vector<std::shared_ptr<BitmapImageRep>> representations_;
  std::shared_ptr<bool> alive_;  // Seen by the contexts of this image after it is gone.
};

/// Locks focus on an image for the length of a block.  Contexts that were put above it meanwhile
/// go with it, so that an exception leaves the stack as it was.
class ImageFocus {
 public:
  explicit ImageFocus(Image& image);
  ~ImageFocus();
  ImageFocus(const ImageFocus&) = delete;
  ImageFocus& operator=(const ImageFocus&) = delete;

 private:
  std::shared_ptr<GraphicsContext> context_;
};

}  // namespace ns
