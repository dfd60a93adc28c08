#include "platform/text/FontSource.h"

namespace ns {

namespace {

const FontSource*& override() {
  static const FontSource* source = nullptr;
  return source;
}

}  // namespace

FontList::FontList(std::vector<FontFace> faces) : faces_(std::move(faces)) {
  for (size_t place = 0; place < faces_.size(); ++place) {
    places_.try_emplace(faces_[place].postScriptName, place);
  }
}

const FontFace* FontList::faceNamed(const String& postScriptName) const {
  const auto found = places_.find(postScriptName);
  return found == places_.end() ? nullptr : &faces_[found->second];
}

std::optional<String> FontList::familyNameOfFont(const String& postScriptName) const {
  const FontFace* face = faceNamed(postScriptName);
  return face ? std::optional(face->familyName) : std::nullopt;
}

const FontSource& FontSource::shared() {
  if (override()) return *override();
  static const FontSource* const installed = installedFonts().release();
  return *installed;
}

FontSource::ScopedShared::ScopedShared(const FontSource& source) : previous_(override()) {
  override() = &source;
}

FontSource::ScopedShared::~ScopedShared() { override() = previous_; }

}  // namespace ns
