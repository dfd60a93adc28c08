#include "platform/text/FontSource.h"

namespace ns {

namespace {

const FontSource*& override() {
  static const FontSource* source = nullptr;
  return source;
}

}  // namespace

const FontFace* FontList::faceNamed(const String& postScriptName) const {
  for (const FontFace& face : faces_) {
    if (face.postScriptName == postScriptName) return &face;
  }
  return nullptr;
}

const FontSource& FontSource::shared() {
  if (override()) return *override();
  static const FontSource* const installed = new FontList(installedFontFaces());
  return *installed;
}

FontSource::ScopedShared::ScopedShared(const FontSource& source) : previous_(override()) {
  override() = &source;
}

FontSource::ScopedShared::~ScopedShared() { override() = previous_; }

}  // namespace ns
