#pragma once

#include <cstdint>
#include <memory>

#include "model/runtime/OLNumberLabelFormat.h"
#include "model/runtime/OLNumberLabelKeys.h"
#include "platform/foundation/String.h"

namespace tavlin {

class OLTree;

// Two ready formats.  They are defaults: an embedder that wants other labels derives its own
// format from OLNumberLabelFormat.
//
//     controller->setNumberLabelFormat(numberLabelFormatOfDocument(*controller->tree()));
//     controller->buildRuntimeNumberLabel();
//
//     level   legal     Harvard
//     0       1         I.
//     1       1.2       B.
//     2       1.2.3     3.
//     3       1.2.3.4   d.

/// How a number is written.  The values are what documents hold under
/// "documentNumberLabelFormatNumberType".
enum class OLNumberType : uint8_t {
  decimal = 0,       ///< 1 2 3
  upperRoman = 1,    ///< I II III
  lowerRoman = 2,    ///< i ii iii
  upperLetters = 3,  ///< A B C
  lowerLetters = 4,  ///< a b c
};

/// The number as text.  Roman numerals reach from 1 to 3999.  Letters go on from Z with AA, AB
/// and from ZZ with AAA.  Numbers that a type cannot write are written in decimal digits.
[[nodiscard]] ns::String numberText(uint64_t number, OLNumberType type);

/// How a label is put together: the prefix, the numbers of the ancestors where they are shown,
/// each followed by the separator, the item's own number, the suffix.
struct OLNumberLabelOptions {
  OLNumberType numberType = OLNumberType::decimal;
  ns::String prefix;
  ns::String suffix;
  ns::String separator = ".";
  bool showsAncestorNumber = true;

  /// These options, replaced where the document holds a value of the right kind under the key of
  /// one: a number that is an OLNumberType, strings, and anything with a truth value for
  /// "documentNumberLabelFormatShowAncestorNumber".
  [[nodiscard]] OLNumberLabelOptions replacedByDocument(const OLTree& tree) const;
};

/// What the ready formats share: labels that are strings, put together by options.
///
/// The ancestors' numbers are the parent's label without prefix and suffix, the whole of it where
/// it was made with others, and nothing where it is no string.  Where they take more than 256
/// code units, which no view can show, "…" stands for them, so that all the labels of a document
/// together stay proportional to its items, however deep it is.
class OLNumberLabelTextFormat : public OLNumberLabelFormat {
 public:
  [[nodiscard]] ns::Value numberLabelWithParentNumberLabelItemIndexItemLevel(
      const ns::Value& parentNumberLabel, uint64_t itemIndex, int64_t itemLevel) const override;

  [[nodiscard]] const OLNumberLabelOptions& options() const { return options_; }

 protected:
  explicit OLNumberLabelTextFormat(OLNumberLabelOptions options) : options_(std::move(options)) {}
  /// How the numbers of a level are written.  Levels count from 0; 0 stands also for the level of
  /// an item without parent.
  [[nodiscard]] virtual OLNumberType numberTypeOfLevel(uint64_t level) const = 0;

 private:
  OLNumberLabelOptions options_;
};

/// Every level numbered alike, below the numbers of its ancestors: 1, 1.2, 1.2.3.
class OLNumberLabelFormatLegal final : public OLNumberLabelTextFormat {
 public:
  static OLNumberLabelOptions defaultOptions() { return {}; }
  explicit OLNumberLabelFormatLegal(OLNumberLabelOptions options = defaultOptions())
      : OLNumberLabelTextFormat(std::move(options)) {}
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override;

 protected:
  [[nodiscard]] OLNumberType numberTypeOfLevel(uint64_t level) const override;
};

/// Each level numbered in its own way: I. A. 1. a. i., and from the sixth level on the same five
/// again.  The levels decide how numbers are written, so the options' number type is not used.
class OLNumberLabelFormatHarvard final : public OLNumberLabelTextFormat {
 public:
  /// The suffix "." and no ancestors.
  static OLNumberLabelOptions defaultOptions();
  explicit OLNumberLabelFormatHarvard(OLNumberLabelOptions options = defaultOptions())
      : OLNumberLabelTextFormat(std::move(options)) {}
  [[nodiscard]] std::shared_ptr<OLNumberLabelFormat> copy() const override;

 protected:
  [[nodiscard]] OLNumberType numberTypeOfLevel(uint64_t level) const override;
};

/// The ready format that the document names under "selectedNumberLabelFormat", the legal one
/// where it names none of them, with the options of the document.
[[nodiscard]] std::shared_ptr<OLNumberLabelFormat> numberLabelFormatOfDocument(const OLTree& tree);

}  // namespace tavlin
