#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/String.h"
#include "platform/text/FontStyle.h"

namespace ns {

/// One installed face.
struct FontFace {
  String postScriptName;
  String familyName;
  String faceName;        ///< "Bold Italic"
  CharacterSet coverage;  ///< the characters it has
  FontStyle style = FontStyle::ofFaceName(faceName);
};

/// The fonts of the machine.  Asked only when a font really has to be looked up: what is behind
/// it takes a while to start.
class FontSource {
 public:
  virtual ~FontSource() = default;

  /// The family of a PostScript name, or none.  Costs no look at what characters fonts have.
  [[nodiscard]] virtual std::optional<String> familyNameOfFont(
      const String& postScriptName) const = 0;
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

/// A source over a list of faces, for tests and for machines without a font service.  Of faces
/// with the same PostScript name the first counts.
class FontList : public FontSource {
 public:
  explicit FontList(std::vector<FontFace> faces);
  [[nodiscard]] std::optional<String> familyNameOfFont(const String& postScriptName) const override;
  [[nodiscard]] const FontFace* faceNamed(const String& postScriptName) const override;
  [[nodiscard]] const std::vector<FontFace>& faces() const override { return faces_; }

 private:
  std::vector<FontFace> faces_;
  std::unordered_map<String, size_t> places_;
};

/// The fonts that Fontconfig knows now.  Where it is not installed, or has no fonts, there are
/// none, and the first who asks for a face is told so in the log, once.  Faces come in the order of
/// its preference.  Characters that draw nothing (controls, joiners, marks of direction, ends of
/// lines, the place of an attachment) and unpaired surrogates count as covered by every face.
std::unique_ptr<FontSource> installedFonts();

}  // namespace ns
