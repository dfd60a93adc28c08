#pragma once

#include <string>
#include <string_view>

#include "platform/drawing/CairoSupport.h"

namespace ns {

/// The pixels of a PNG file: ARGB32 when it has transparency, else RGB24.  `what` names the file
/// in messages.  Size limits are checked before memory is taken.  Raises DrawingException.
SurfacePtr surfaceFromPng(std::string_view bytes, const std::string& what);

/// A PNG file of an image surface.
std::string pngFromSurface(cairo_surface_t* surface);

}  // namespace ns
