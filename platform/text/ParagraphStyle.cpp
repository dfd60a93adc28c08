#include "platform/text/ParagraphStyle.h"

namespace ns {

namespace {

const ClassRef& styleClass() {
  static thread_local const ClassRef made = makeClass({"NSParagraphStyle", "NSObject"});
  return made;
}

}  // namespace

std::optional<ParagraphStyle> ParagraphStyle::fromValue(const Value& value) {
  if (value.kind() != Kind::paragraphStyle) return std::nullopt;
  return ParagraphStyle(value);
}

const ParagraphStyle& ParagraphStyle::defaultParagraphStyle() {
  static thread_local const ParagraphStyle style(
      Record(styleClass(),
             {{"NSTabStops", Field::reference(Value())},
              {"NSAlignment", Field::primitive(Value(static_cast<int64_t>(Alignment::natural)))}})
          .asValue(Kind::paragraphStyle));
  return style;
}

ParagraphStyle::Alignment ParagraphStyle::alignment() const {
  return static_cast<Alignment>(record_.valueForKey("NSAlignment").integerValue());
}

void ParagraphStyle::setAlignment(Alignment alignment) {
  setInteger("NSAlignment", static_cast<int64_t>(alignment));
}

ParagraphStyle::LineBreakMode ParagraphStyle::lineBreakMode() const {
  return static_cast<LineBreakMode>(record_.valueForKey("NSLineBreakMode").integerValue());
}

void ParagraphStyle::setLineBreakMode(LineBreakMode mode) {
  setInteger("NSLineBreakMode", static_cast<int64_t>(mode));
}

ParagraphStyle::WritingDirection ParagraphStyle::baseWritingDirection() const {
  return static_cast<WritingDirection>(record_.valueForKey("NSWritingDirection").integerValue() -
                                       1);
}

void ParagraphStyle::setBaseWritingDirection(WritingDirection direction) {
  setInteger("NSWritingDirection", static_cast<int64_t>(direction) + 1);
}

std::optional<Array> ParagraphStyle::tabStops() const {
  const Value stops = record_.valueForKey("NSTabStops");
  if (!stops.isArray()) return std::nullopt;
  return stops.array();
}

void ParagraphStyle::setTabStops(const std::optional<Array>& stops) {
  store(record_.with("NSTabStops", Field::reference(stops ? Value(*stops) : Value())));
}

Array ParagraphStyle::textLists() const { return record_.valueForKey("NSTextLists").array(); }

Array ParagraphStyle::textBlocks() const { return record_.valueForKey("NSTextBlocks").array(); }

double ParagraphStyle::real(const char* key) const {
  return record_.valueForKey(key).doubleValue();
}

void ParagraphStyle::setReal(const char* key, double value) {
  if (value == 0) {
    if (record_.contains(key)) store(record_.without(key));
  } else if (record_.valueForKey(key).kind() != Kind::real || real(key) != value) {
    store(record_.with(key, Field::primitive(Value(value))));
  }
}

void ParagraphStyle::setInteger(const char* key, int64_t value) {
  if (value == 0) {
    if (record_.contains(key)) store(record_.without(key));
  } else {
    store(record_.with(key, Field::primitive(Value(value))));
  }
}

void ParagraphStyle::setList(const char* key, const Array& list) {
  if (!list.empty()) {
    store(record_.with(key, Field::reference(Value(list))));
  } else if (record_.contains(key)) {
    store(record_.without(key));
  }
}

void ParagraphStyle::store(const Record& record) {
  record_ = Record(record.asValue(Kind::paragraphStyle));
}

}  // namespace ns
