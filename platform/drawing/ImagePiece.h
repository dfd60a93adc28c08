#pragma once

#include "platform/drawing/CairoSupport.h"

namespace ns {

/// Pixels of an image on the way to be drawn.
struct Piece {
  SurfacePtr surface;
  /// The column and row of the image, from its upper left corner, that the piece begins with.
  int left = 0;
  int top = 0;
  /// From a context's points to the columns and rows of `surface`.
  AffineTransform toPixels;
};

/// The pixels that a part of an image touches, with alpha multiplied by `fraction`.  The part is
/// in points and lies inside the image.  As the piece is a copy, none from beside it gets into
/// its edges when it is scaled, and an image can be drawn into itself.
Piece copiedPiece(const BitmapImageRep& image, const Rect& part, double fraction);

/// Halves the piece, each pixel becoming the average of those it stands for, until it is drawn at
/// no less than half its size.
void makeSmaller(Piece& piece, const AffineTransform& toDevice);

/// Makes the piece the source of `cairo`.  Raises DrawingException when Cairo could not find its
/// pixels: its pixel library counts in 16 bits, and past that draws nothing without an error.
void setPieceSource(cairo_t* cairo, const Piece& piece, const AffineTransform& toDevice,
                    const Rect& deviceBounds);

}  // namespace ns
