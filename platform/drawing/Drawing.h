#pragma once

// How something is put into the current context: shared by paths, gradients and images.

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/drawing/CairoSupport.h"
#include "platform/drawing/GraphicsContext.h"

namespace ns {

/// One thing to draw.  Both parts may be called several times, with different surfaces behind
/// them; device coordinates are the same in all.
struct Ink {
  /// Sets the source.  Called with the context's transform as the matrix.
  std::function<void(cairo_t*)> source;
  /// Fills, strokes or paints with whatever the source then is.  The matrix is unspecified.
  std::function<void(cairo_t*)> shape;
  /// A rectangle in device space that holds the shape.
  Rect deviceBounds;
};

struct ClipPath {
  BezierPath path;
  AffineTransform toDevice;
};

struct GraphicsContext::Impl {
  struct State {
    DrawingColor fillColor;
    DrawingColor strokeColor;
    CompositingOperation operation = CompositingOperation::SourceOver;
    std::optional<Shadow> shadow;
    AffineTransform transform;
    std::vector<std::shared_ptr<const ClipPath>> clips;
  };

  std::shared_ptr<BitmapImageRep> target;
  std::weak_ptr<bool> image;  // Expired when the image is destroyed.
  State state;
  std::vector<State> saved;

  /// From points to places in the surface, whose rows run downwards.
  [[nodiscard]] AffineTransform toDevice() const;
  /// A Cairo context for the target, inside the clip, with the identity as its matrix.
  [[nodiscard]] CairoPtr makeClippedCairo() const;

  void draw(const Ink& ink, CompositingOperation operation) const;
  /// Fills a path with a source.
  void fill(const BezierPath& path, const std::function<void(cairo_t*)>& source,
            CompositingOperation operation) const;

 private:
  /// Raises DrawingException when drawing with a context of makeClippedCairo failed.
  void checkDrawing(cairo_t* cairo) const;
  void castShadow(const Ink& ink) const;
  void drawBounded(const Ink& ink, CompositingOperation operation) const;
};

/// The rectangle around a path in device space.
Rect deviceBoundsOfPath(const BezierPath& path, const AffineTransform& toDevice);

/// Contexts of this thread, the current one last.
std::vector<std::shared_ptr<GraphicsContext>>& focusStack();
/// Takes the contexts of images that are gone off the top.
void dropDeadContexts();

}  // namespace ns
