#pragma once

#include <memory>

#include "platform/drawing/Gradient.h"
#include "platform/drawing/Image.h"

namespace tavlin {

/// +UIImageNamed:  The shared image of a name, as ns::Image::imageNamed finds it; its pixels are
/// given an alpha channel when they have none.  None when there is no such image.  Raises
/// ns::DrawingException when its file is no PNG image.
std::shared_ptr<ns::Image> UIImageNamed(const ns::String& name);

/// +dragImageAlphaMaskLimitSize  257 by 257: the threshold with which only a side of more than
/// 257 points fades, so that the bands of two opposite sides never overlap.
ns::Size dragImageAlphaMaskLimitSize();

/// +dragImageAlphaMaskWithSize:withThreshold:  A new image that masks a large drag image, so
/// that it dims out towards its border: opaque white inside, running out to transparent in a
/// band of 128 points along each side that fades, with round corners where both dimensions do.
///
///     picture->lockFocus();   // what is to be dragged
///     mask->drawAtPointFromRectOperationFraction(
///         {0, 0}, {}, ns::CompositingOperation::DestinationIn, 1);
///     picture->unlockFocus();
///
/// The width fades when it is greater than the threshold's width and greater than 256; the
/// height likewise.  A size of no whole points is drawn to the fraction of a pixel; a side of 0
/// gives an image without pixels.
///
/// Raises what the constructor of ns::Image raises for the size, and
/// ns::InvalidArgumentException when the threshold is not a number.  An infinite threshold is one
/// that no side exceeds, or, below zero, that every side does.
std::shared_ptr<ns::Image> dragImageAlphaMaskWithSizeWithThreshold(ns::Size size,
                                                                   ns::Size threshold);

/// What the mask's bands are made of: white of alpha 1.0 at 0.0, 0.05 at 0.9 and 0.0 at 1.0.
/// Made on first use; always the same gradient.
const ns::Gradient& dragImageAlphaMaskFadeGradient();

/// What the mask's corners are cut from: 256 by 256, the fade gradient drawn from the centre
/// outwards to radius 128.  Made on first use; always the same image.
const ns::Image& dragImageAlphaMaskCornerImage();

}  // namespace tavlin
