#pragma once

#include <memory>
#include <vector>

#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/String.h"

namespace ns {

/// One installed face.
struct FontFace {
  String postScriptName;
  String familyName;
  String faceName;        ///< "Bold Italic"
  CharacterSet coverage;  ///< the characters it has
};

/// The fonts of the machine.  Asked only when a font really has to be looked up: what is behind
/// it takes a while to start.
class FontSource {
 public:
  virtual ~FontSource() = default;

  /// The face of a PostScript name, or none; valid while the source lives.
  [[nodiscard]] virtual const FontFace* faceNamed(const String& postScriptName) const = 0;
  /// All faces, the ones that suit general text best first, always in the same order.
  [[nodiscard]] virtual const std::vector<FontFace>& faces() const = 0;

  /// The machine's fonts, or what a test put in their place.
  static const FontSource& shared();

  /// Makes another source the shared one while it lives.
  class ScopedShared {
   public:
    explicit ScopedShared(const FontSource& source);
    ~ScopedShared();
    ScopedShared(const ScopedShared&) = delete;
    ScopedShared& operator=(const ScopedShared&) = delete;

   private:
    const FontSource* previous_;
  };
};

/// A source over a list of faces, for tests and for machines without a font service.
class FontList : public FontSource {
 public:
  explicit FontList(std::vector<FontFace> faces) : faces_(std::move(faces)) {}
  [[nodiscard]] const FontFace* faceNamed(const String& postScriptName) const override;
  [[nodiscard]] const std::vector<FontFace>& faces() const override { return faces_; }

 private:
  std::vector<FontFace> faces_;
};

/// The fonts that Fontconfig knows, asked now.  Without Fontconfig, or without fonts, none.
std::vector<FontFace> installedFontFaces();

}  // namespace ns
