#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "inspect/FindingList.h"
#include "inspect/InspectedArchive.h"
#include "inspect/Mends.h"
#include "platform/foundation/Zeros.h"

namespace tavlin {

/// Looks at attributed strings: their form, whether their runs cover them, and their fonts.
///
/// What texts share (run lists, attributes, fonts) is looked at once.  Where texts in private fonts
/// share their characters, these are gone through for each of them, up to a limit; then no other
/// fonts are looked for.
class TextInspection {
 public:
  TextInspection(const InspectedArchive& archive, FindingList& findings, Mends& mends);

  /// Where a text was met: the finding's place, and the key in the item's data; 0: elsewhere.
  struct Context {
    FindingPlace place;
    uint32_t key = 0;
  };
  /// Looks at an attributed string; at its fonts only where loading mends them.  The second time
  /// only what was not looked at the first time.
  void inspect(uint32_t number, const InspectedArchive::Record& record, bool isMendable,
               const Context& context);

 private:
  /// What a text is made of.
  struct Form {
    uint32_t text = 0;               // its entry
    std::optional<uint64_t> length;  // none where the units cannot be told
    uint32_t attributes = 0;         // a dictionary or, with `isList`, an array of them; 0: none
    bool isList = false;
    uint32_t runs = 0;  // the entry of the run list; 0: none
  };
  /// A run list, however many texts have it.
  struct Runs {
    bool isWhole = true;         // does not break off in the middle of a run
    uint64_t length = 0;         // of all of them
    uint64_t attributesEnd = 0;  // one above the highest number of attributes
  };
  /// A list of attributes.
  struct Attributes {
    std::optional<std::string> fault;
    std::vector<uint32_t> dictionaries;
    bool hasPrivateFont = false;
  };

  /// Raises ns::ArchiveException with what the reader says of one that it refuses.
  [[nodiscard]] Form formOf(uint32_t number, const InspectedArchive::Record& record);
  [[nodiscard]] const Runs& runsOf(uint32_t number);
  [[nodiscard]] const Attributes& attributesOf(uint32_t number);
  /// The font among attributes; 0 where there is none that loading would replace.
  [[nodiscard]] uint32_t privateFontIn(uint32_t dictionary);
  [[nodiscard]] bool isPrivate(uint32_t font);
  /// Runs that cover the text; none where that would take too long.
  [[nodiscard]] std::optional<std::vector<MendedRun>> coveringRuns(const Form& form);
  [[nodiscard]] uint32_t privateFontOf(const Form& form, const MendedRun& run);
  void inspectRuns(uint32_t number, const Form& form, const Context& context);
  void inspectFonts(uint32_t number, const Form& form, const Context& context);
  /// Names the fonts that loading puts in place of private ones.
  void replaceFonts(const Form& form, std::vector<MendedRun>& runs);
  [[nodiscard]] std::string fontName(uint32_t font) const;
  bool spend(uint64_t units);

  const InspectedArchive& archive_;
  FindingList& findings_;
  Mends& mends_;
  static constexpr uint8_t kSeen = 1;
  static constexpr uint8_t kFontsSeen = 2;
  static constexpr uint8_t kMalformed = 4;
  ns::Zeros<uint8_t> states_;  // by number
  std::unordered_map<uint32_t, Runs> runs_;
  std::unordered_map<uint32_t, Attributes> attributes_;
  std::unordered_map<uint32_t, uint32_t> privateFonts_;  // by dictionary
  std::unordered_map<ns::String, bool> privateNames_;    // of fonts
  uint64_t budget_;  // units of text and runs to go through for fonts
};

}  // namespace tavlin
