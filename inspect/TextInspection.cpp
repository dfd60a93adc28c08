#include "inspect/TextInspection.h"

#include <algorithm>
#include <map>
#include <utility>

#include "platform/text/AttributeRuns.h"
#include "platform/text/Font.h"
#include "platform/text/MutableAttributedString.h"
#include "text/AttributedStringFonts.h"

namespace tavlin {

using Type = ns::KeyedArchive::Type;

TextInspection::TextInspection(const InspectedArchive& archive, FindingList& findings, Mends& mends)
    : archive_(archive),
      findings_(findings),
      mends_(mends),
      states_(archive->objectCount()),
      budget_(4 * archive->fileLength() + 1000000) {}

bool TextInspection::spend(uint64_t units) {
  if (units > budget_) return false;
  budget_ -= units;
  return true;
}

void TextInspection::inspect(uint32_t number, const InspectedArchive::Record& record,
                             bool isMendable, const Context& context) {
  const bool isNew = (states_[number] & kSeen) == 0;
  const bool hasNewFonts = isMendable && (states_[number] & kFontsSeen) == 0;
  if (!isNew && (!hasNewFonts || (states_[number] & kMalformed) != 0)) return;
  states_[number] |= static_cast<uint8_t>(kSeen | (isMendable ? kFontsSeen : 0));
  Form form;
  try {
    form = formOf(number, record);
  } catch (const ns::ArchiveException& exception) {
    states_[number] |= kMalformed;
    findings_.add({context.place, FindingCode::archive, exception.what(), {}});
    return;
  }
  if (!form.length) return;
  if (isNew && form.runs != 0) inspectRuns(number, form, context);
  if (hasNewFonts && form.attributes != 0) inspectFonts(number, form, context);
}

TextInspection::Form TextInspection::formOf(uint32_t number,
                                            const InspectedArchive::Record& record) {
  Form form;
  form.text = archive_.reference(record, "NSString");
  const auto stored = form.text != 0 ? archive_->storedText(form.text) : std::nullopt;
  if (!stored) {
    // its text is in UTF-8, an old form in which its runs cannot be checked against its units
    if (form.text != 0 && archive_->kind(form.text) == ns::Kind::string) return form;
    archive_->fail(number, "an attributed string without text");
  }
  if (!stored->isString()) archive_->fail(number, "the text of an attributed string is no string");
  form.length = stored->count;
  const bool hasRuns = archive_->fieldForKey(record, "NSAttributeInfo").has_value();
  form.attributes = archive_.reference(record, "NSAttributes");
  if (form.attributes == 0) {
    if (hasRuns) {
      archive_->fail(number, "an attributed string with runs but without attributes");
    }
    return form;
  }
  const ns::Kind kind = archive_->kind(form.attributes);
  if (kind == ns::Kind::dictionary && !hasRuns) return form;
  if (kind != ns::Kind::array) {
    archive_->fail(number, "the attributes of a text are no dictionary");
  }
  form.isList = true;
  const Attributes& attributes = attributesOf(form.attributes);
  if (attributes.fault) archive_->fail(number, *attributes.fault);
  if (!hasRuns) return form;
  form.runs = archive_.reference(record, "NSAttributeInfo");
  if (form.runs == 0 || !ns::archivedRunList(*archive_, form.runs)) {
    archive_->fail(number, "the runs of an attributed string are no data");
  }
  const Runs& runs = runsOf(form.runs);
  if (runs.attributesEnd > attributes.dictionaries.size()) {
    archive_->fail(number, "a run with attributes " + std::to_string(runs.attributesEnd - 1) +
                               " of " + std::to_string(attributes.dictionaries.size()));
  }
  return form;
}

const TextInspection::Runs& TextInspection::runsOf(uint32_t number) {
  const auto [found, isNew] = runs_.try_emplace(number);
  Runs& runs = found->second;
  if (!isNew) return runs;
  const std::string_view bytes = *ns::archivedRunList(*archive_, number);
  for (size_t at = 0; at < bytes.size();) {
    const auto length = ns::readRunNumber(bytes, at);
    const auto attributes = length ? ns::readRunNumber(bytes, at) : std::nullopt;
    runs.isWhole = attributes.has_value();
    if (!attributes) break;
    runs.length = *length > UINT64_MAX - runs.length ? UINT64_MAX : runs.length + *length;
    runs.attributesEnd = std::max(runs.attributesEnd, *attributes + 1);
  }
  return runs;
}

const TextInspection::Attributes& TextInspection::attributesOf(uint32_t number) {
  const auto [found, isNew] = attributes_.try_emplace(number);
  Attributes& attributes = found->second;
  if (!isNew) return attributes;
  const auto list = archive_->fieldForKey(archive_->record(number), "NS.objects");
  if (!list || list->type != Type::array) {
    attributes.fault = "the attributes of a text are no list";
    return attributes;
  }
  for (uint64_t i = 0; i < list->count && !attributes.fault; ++i) {
    const uint32_t each = archive_->elementTarget(*list, i);
    if (archive_->kind(each) != ns::Kind::dictionary) {
      attributes.fault = "the attributes of a run are no dictionary";
    } else {
      attributes.dictionaries.push_back(each);
      attributes.hasPrivateFont = attributes.hasPrivateFont || privateFontIn(each) != 0;
    }
  }
  return attributes;
}

uint32_t TextInspection::privateFontIn(uint32_t dictionary) {
  const auto [found, isNew] = privateFonts_.try_emplace(dictionary, 0);
  if (!isNew) return found->second;
  const auto font = archive_.find(archive_->record(dictionary), ns::kFontAttributeName);
  const bool isOne =
      font && archive_->kind(font->value) == ns::Kind::font && isPrivate(font->value);
  return privateFonts_[dictionary] = isOne ? font->value : 0;
}

bool TextInspection::isPrivate(uint32_t number) {
  const auto font = ns::Font::fromValue(archive_->value(number));
  if (!font) return false;
  // the family of an uncommon font has to be looked for among those of the machine
  const auto [found, isNew] = privateNames_.try_emplace(font->fontName(), false);
  if (isNew) found->second = !isFamilyNameSuitableForUserDocuments(font->familyName());
  return found->second;
}

std::optional<std::vector<MendedRun>> TextInspection::coveringRuns(const Form& form) {
  std::vector<MendedRun> runs;
  uint64_t left = *form.length;
  if (form.runs != 0) {
    const std::string_view bytes = *ns::archivedRunList(*archive_, form.runs);
    if (!spend(bytes.size())) return std::nullopt;
    for (size_t at = 0; at < bytes.size() && left > 0;) {
      const auto length = ns::readRunNumber(bytes, at);
      const auto attributes = length ? ns::readRunNumber(bytes, at) : std::nullopt;
      if (!attributes) break;
      runs.push_back({std::min(*length, left), *attributes, std::nullopt});
      left -= runs.back().length;
    }
  }
  if (runs.empty() && left > 0) runs.push_back({0, 0, std::nullopt});
  if (!runs.empty()) runs.back().length += left;
  return runs;
}

void TextInspection::inspectRuns(uint32_t number, const Form& form, const Context& context) {
  const Runs& runs = runsOf(form.runs);
  if (runs.isWhole && runs.length == *form.length) return;
  std::string text = "the runs of " + archive_.quoted(context.key);
  if (!runs.isWhole) text += " break off and";
  text +=
      " cover " + std::to_string(runs.length) + " of " + std::to_string(*form.length) + " units";
  auto covering = coveringRuns(form);
  const char* remedy = !covering                     ? ""
                       : runs.length >= *form.length ? "cuts them"
                                                     : "continues the last one";
  if (covering) mends_.texts[number] = std::move(*covering);
  findings_.add({context.place, FindingCode::runs, std::move(text), remedy});
}

uint32_t TextInspection::privateFontOf(const Form& form, const MendedRun& run) {
  if (run.length == 0) return 0;
  if (!form.isList) return privateFontIn(form.attributes);
  const std::vector<uint32_t>& dictionaries = attributesOf(form.attributes).dictionaries;
  return run.attributes < dictionaries.size() ? privateFontIn(dictionaries[run.attributes]) : 0;
}

std::string TextInspection::fontName(uint32_t font) const {
  return archive_.quoted(archive_.reference(archive_->record(font), "NSName"));
}

void TextInspection::inspectFonts(uint32_t number, const Form& form, const Context& context) {
  const bool hasPrivateFont = form.isList ? attributesOf(form.attributes).hasPrivateFont
                                          : privateFontIn(form.attributes) != 0;
  if (!hasPrivateFont) return;
  const auto mended = mends_.texts.find(number);
  auto runs = mended == mends_.texts.end() ? coveringRuns(form) : std::optional(mended->second);
  if (!runs) {
    findings_.add({context.place,
                   FindingCode::font,
                   archive_.quoted(context.key) + " names private fonts",
                   {}});
    return;
  }
  if (std::ranges::none_of(*runs, [&](const auto& run) { return privateFontOf(form, run) != 0; })) {
    return;
  }
  if (spend(*form.length + runs->size())) replaceFonts(form, *runs);
  // one finding for each font, in their order, and one where only some of its runs have another
  std::vector<std::pair<std::string, std::optional<ns::String>>> told;
  bool isMended = false;
  for (const MendedRun& run : *runs) {
    const uint32_t font = privateFontOf(form, run);
    if (font == 0) continue;
    isMended = isMended || run.fontName.has_value();
    std::pair<std::string, std::optional<ns::String>> fact(fontName(font), run.fontName);
    if (std::ranges::count(told, fact) > 0) continue;
    findings_.add({context.place, FindingCode::font,
                   archive_.quoted(context.key) + " is in the private font " + fact.first,
                   run.fontName ? "replaces it by " + run.fontName->utf8() : std::string()});
    told.push_back(std::move(fact));
  }
  if (isMended) mends_.texts[number] = std::move(*runs);
}

void TextInspection::replaceFonts(const Form& form, std::vector<MendedRun>& runs) {
  std::vector<std::pair<ns::Range, ns::Dictionary>> stretches;
  uint64_t start = 0;
  for (const MendedRun& run : runs) {
    if (const uint32_t font = privateFontOf(form, run)) {
      stretches.emplace_back(ns::Range{start, run.length},
                             ns::Dictionary{{ns::kFontAttributeName, archive_->value(font)}});
    }
    start += run.length;
  }
  ns::MutableAttributedString text(ns::AttributedString(archive_->value(form.text).string()));
  text.setAttributesInRanges(stretches);
  fixFontAttributes_suitableForDocumentInRange(text, {0, text.length()});
  start = 0;
  for (MendedRun& run : runs) {
    if (const uint32_t font = privateFontOf(form, run)) {
      const ns::Value before = archive_->value(font);
      const ns::Value after =
          text.attributedString().attributeAtIndex(ns::kFontAttributeName, start);
      const auto now = ns::Font::fromValue(after);
      if (now && !(now->fontName() == ns::Font::fromValue(before)->fontName())) {
        run.fontName = now->fontName();
      }
    }
    start += run.length;
  }
}

}  // namespace tavlin
