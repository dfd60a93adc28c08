#include "platform/drawing/GraphicsContext.h"

#include <utility>

#include "platform/drawing/Drawing.h"
#include "platform/drawing/DrawingException.h"
#include "platform/foundation/Exception.h"

namespace ns {

std::vector<std::shared_ptr<GraphicsContext>>& focusStack() {
  static thread_local std::vector<std::shared_ptr<GraphicsContext>> stack;
  return stack;
}

void dropDeadContexts() {
  auto& stack = focusStack();
  while (!stack.empty() && stack.back()->impl().image.expired()) stack.pop_back();
}

std::shared_ptr<GraphicsContext> GraphicsContext::currentContext() {
  dropDeadContexts();
  return focusStack().empty() ? nullptr : focusStack().back();
}

std::shared_ptr<GraphicsContext> GraphicsContext::requireCurrentContext() {
  std::shared_ptr<GraphicsContext> context = currentContext();
  if (!context) throw DrawingException("no graphics context: no image has the focus");
  return context;
}

GraphicsContext::GraphicsContext(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

GraphicsContext::~GraphicsContext() = default;

void GraphicsContext::saveGraphicsState() { impl_->saved.push_back(impl_->state); }

void GraphicsContext::restoreGraphicsState() {
  if (impl_->saved.empty()) throw DrawingException("no graphics state was saved");
  impl_->state = std::move(impl_->saved.back());
  impl_->saved.pop_back();
}

const DrawingColor& GraphicsContext::fillColor() const { return impl_->state.fillColor; }

void GraphicsContext::setFillColor(const DrawingColor& color) { impl_->state.fillColor = color; }

const DrawingColor& GraphicsContext::strokeColor() const { return impl_->state.strokeColor; }

void GraphicsContext::setStrokeColor(const DrawingColor& color) {
  impl_->state.strokeColor = color;
}

CompositingOperation GraphicsContext::compositingOperation() const {
  return impl_->state.operation;
}

void GraphicsContext::setCompositingOperation(CompositingOperation operation) {
  impl_->state.operation = operation;
}

const std::optional<Shadow>& GraphicsContext::shadow() const { return impl_->state.shadow; }

void GraphicsContext::setShadow(const Shadow& shadow) { impl_->state.shadow = shadow; }

const AffineTransform& GraphicsContext::transform() const { return impl_->state.transform; }

void GraphicsContext::concat(const AffineTransform& transform) {
  AffineTransform combined = impl_->state.transform;
  combined.prependTransform(transform);
  if (!combined.isInvertible()) {
    throw InvalidArgumentException("the transform squeezes the plane to nothing");
  }
  impl_->state.transform = combined;
}

void GraphicsContext::addClip(const BezierPath& path) {
  impl_->state.clips.push_back(std::make_shared<const ClipPath>(ClipPath{path, impl_->toDevice()}));
}

GraphicsStateScope::GraphicsStateScope()
    : context_(GraphicsContext::requireCurrentContext()), depth_(context_->impl().saved.size()) {
  context_->saveGraphicsState();
}

GraphicsStateScope::~GraphicsStateScope() {
  while (context_->impl().saved.size() > depth_) context_->restoreGraphicsState();
}

void rectFill(const Rect& rect) { rectFillUsingOperation(rect, CompositingOperation::Copy); }

void rectFillUsingOperation(const Rect& rect, CompositingOperation operation) {
  const auto context = GraphicsContext::requireCurrentContext();
  if (!isFinite(rect)) throw InvalidArgumentException("a rectangle is not finite");
  if (isEmptyRect(rect)) return;
  const DrawingColor color = context->fillColor();
  context->impl().fill(
      BezierPath::bezierPathWithRect(rect), [&](cairo_t* cairo) { setSource(cairo, color); },
      operation);
}

void rectClip(const Rect& rect) {
  const auto context = GraphicsContext::requireCurrentContext();
  if (!isFinite(rect)) throw InvalidArgumentException("a rectangle is not finite");
  context->addClip(isEmptyRect(rect) ? BezierPath() : BezierPath::bezierPathWithRect(rect));
}

}  // namespace ns
