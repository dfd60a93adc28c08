#include "platform/text/TextClasses.h"

#include "platform/text/AttributedStringBody.h"

namespace ns {

void addTextClasses(ClassRegistry& registry) {
  ClassCoding text = {Kind::attributedString, AttributedStringBody::check,
                      AttributedStringBody::decode};
  // one set of attributes for the whole text
  text.fields = {{"NSString", FieldForm::Form::text},
                 {"NSAttributes", FieldForm::Form::dictionary}};
  for (const char* name : {"NSAttributedString", "NSMutableAttributedString", "NSTextStorage"}) {
    registry.add(name, text);
  }
  registry.add("NSFont", {Kind::font});
  registry.add("NSColor", {Kind::color});
  for (const char* name : {"NSParagraphStyle", "NSMutableParagraphStyle"}) {
    registry.add(name, {Kind::paragraphStyle});
  }
}

}  // namespace ns
