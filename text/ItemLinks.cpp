#include "text/ItemLinks.h"

#include "platform/text/LinkDetector.h"
#include "platform/text/URL.h"

namespace tavlin {

void removeLinkAttributesForMe(ns::MutableAttributedString& text) {
  text.removeAttributeRange(ns::kLinkAttributeName, {0, text.length()});
}

ns::Dictionary linkAttributesForMeWithURL(const ns::Value& url) {
  return {{ns::kLinkAttributeName, url}};
}

bool checkURLForMe(const ns::Value& value) {
  const auto url = ns::URL::fromValue(value);
  return url && url->scheme().has_value();
}

bool appendLinkForMe(ns::MutableAttributedString& text,
                     ns::Dictionary (*linkAttributes)(const ns::Value& url)) {
  std::vector<std::pair<ns::Range, ns::Dictionary>> marked;
  for (const ns::Link& link : ns::LinkDetector::shared().linksInText(text.string().units())) {
    if (link.range.location == ns::kNotFound || link.range.length == 0) continue;
    const auto url = ns::URL::URLWithString(ns::String(std::string_view(link.url)));
    if (!url || !checkURLForMe(url->asValue())) continue;
    marked.emplace_back(link.range, linkAttributes(url->asValue()));
  }
  text.addAttributesInRanges(marked);
  return !marked.empty();
}

}  // namespace tavlin
