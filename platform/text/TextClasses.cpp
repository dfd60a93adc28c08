#include "platform/text/TextClasses.h"

#include "platform/text/AttributedStringBody.h"

namespace ns {

void addTextClasses(ClassRegistry& registry) {
  for (const char* name : {"NSAttributedString", "NSMutableAttributedString", "NSTextStorage"}) {
    registry.add(
        name, {Kind::attributedString, AttributedStringBody::check, AttributedStringBody::decode});
  }
  registry.add("NSFont", {Kind::font});
  registry.add("NSColor", {Kind::color});
  for (const char* name : {"NSParagraphStyle", "NSMutableParagraphStyle"}) {
    registry.add(name, {Kind::paragraphStyle});
  }
}

}  // namespace ns
