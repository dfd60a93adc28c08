#pragma once

#include <memory>
#include <optional>

#include "platform/drawing/AffineTransform.h"
#include "platform/drawing/CompositingOperation.h"
#include "platform/drawing/DrawingColor.h"
#include "platform/drawing/Geometry.h"
#include "platform/drawing/Shadow.h"

namespace ns {

class BezierPath;
class Image;

/// Where drawing goes, and the state that it goes there with.
///
/// Each thread has a stack of contexts.  `Image::lockFocus` puts one for the image on top, which
/// makes it the current one; `unlockFocus` takes it off.  Paths, gradients, images and colours
/// all use the current context.
///
/// A context's graphics state is: the colours for filling and stroking (black), the compositing
/// operation (SourceOver), the shadow (none), the transform (identity) and the clip (the whole
/// image).  In brackets is what a new context begins with.  saveGraphicsState puts a copy aside
/// and restoreGraphicsState brings the last one back.
///
/// Coordinates are points, one to a pixel; the origin is the lower left corner of the image.
class GraphicsContext {
 public:
  /// The current context of this thread; none when no image has the focus.
  static std::shared_ptr<GraphicsContext> currentContext();
  /// The same; raises DrawingException when there is none.
  static std::shared_ptr<GraphicsContext> requireCurrentContext();

  struct Impl;
  explicit GraphicsContext(std::unique_ptr<Impl> impl);
  ~GraphicsContext();
  GraphicsContext(const GraphicsContext&) = delete;
  GraphicsContext& operator=(const GraphicsContext&) = delete;

  void saveGraphicsState();
  /// Raises DrawingException when no state was saved that was not restored yet.
  void restoreGraphicsState();

  [[nodiscard]] const DrawingColor& fillColor() const;
  void setFillColor(const DrawingColor& color);
  [[nodiscard]] const DrawingColor& strokeColor() const;
  void setStrokeColor(const DrawingColor& color);
  [[nodiscard]] CompositingOperation compositingOperation() const;
  void setCompositingOperation(CompositingOperation operation);
  /// The current shadow as it was when it was set; none before the first one is.
  [[nodiscard]] const std::optional<Shadow>& shadow() const;
  void setShadow(const Shadow& shadow);
  /// What coordinates go through before they are places in the image.
  [[nodiscard]] const AffineTransform& transform() const;
  /// Puts a transform before the current one.  Raises InvalidArgumentException, and changes
  /// nothing, when the result has no inverse.
  void concat(const AffineTransform& transform);
  /// Keeps drawing inside a path; see BezierPath::addClip.
  void addClip(const BezierPath& path);

  /// For the drawing classes.
  [[nodiscard]] Impl& impl() { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

/// Saves the current context's state, and restores it, and what was saved and not restored
/// meanwhile, at the end of a block.  Raises DrawingException when there is no current context.
class GraphicsStateScope {
 public:
  GraphicsStateScope();
  ~GraphicsStateScope();
  GraphicsStateScope(const GraphicsStateScope&) = delete;
  GraphicsStateScope& operator=(const GraphicsStateScope&) = delete;

 private:
  std::shared_ptr<GraphicsContext> context_;
  size_t depth_;
};

/// Fills a rectangle with the current colour for filling.  The colour replaces what is there
/// (Copy), so that a transparent one erases; the context's compositing operation plays no part.
/// An empty or negative rectangle draws nothing; one that is not finite raises
/// InvalidArgumentException.  Raises DrawingException when there is no current context.
void rectFill(const Rect& rect);
/// The same with a compositing operation.
void rectFillUsingOperation(const Rect& rect, CompositingOperation operation);
/// Keeps drawing inside a rectangle; an empty or negative one lets nothing through.
void rectClip(const Rect& rect);

}  // namespace ns
