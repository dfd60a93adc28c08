#include "text/ItemLinks.h"

#include <gtest/gtest.h>

#include "../platform_text/TextTesting.h"
#include "platform/archive/Record.h"
#include "platform/text/LinkDetector.h"
#include "platform/text/URL.h"

namespace tavlin {
namespace {

using ns::AttributedString;
using ns::MutableAttributedString;

ns::Value url(const char* text) { return ns::URL::URLWithString(text)->asValue(); }

std::string linkAt(const AttributedString& text, size_t index) {
  const auto link = ns::URL::fromValue(text.attributeAtIndex(ns::kLinkAttributeName, index));
  return link ? link->relativeString().utf8() : "";
}

/// A detector with an answer of its own.
class Answering : public ns::LinkDetector {
 public:
  explicit Answering(std::vector<ns::Link> links) : links_(std::move(links)) {}
  [[nodiscard]] std::vector<ns::Link> linksInText(std::u16string_view /*text*/) const override {
    return links_;
  }

 private:
  std::vector<ns::Link> links_;
};

TEST(ItemLinks, LinksAreMarked) {
  MutableAttributedString text(AttributedString(ns::String("see http://a.example and me@b.org.")));
  text.addAttributeValueRange("NSFont", "f", {0, 10});
  EXPECT_TRUE(appendLinkForMe(text));
  const AttributedString marked = text.copy();
  EXPECT_EQ(linkAt(marked, 3), "");
  EXPECT_EQ(linkAt(marked, 4), "http://a.example");
  EXPECT_EQ(linkAt(marked, 19), "http://a.example");
  EXPECT_EQ(linkAt(marked, 20), "");
  EXPECT_EQ(linkAt(marked, 25), "mailto:me@b.org");
  EXPECT_EQ(linkAt(marked, 33), "");
  EXPECT_EQ(marked.attributeAtIndex("NSFont", 5), ns::Value("f"));
  EXPECT_TRUE(ns::coversExactly(marked));
}

TEST(ItemLinks, NoLinksNoChange) {
  MutableAttributedString text(AttributedString(ns::String("nothing here")));
  EXPECT_FALSE(appendLinkForMe(text));
  EXPECT_EQ(ns::printed(text.copy()), "[nothing here|]");
  MutableAttributedString empty;
  EXPECT_FALSE(appendLinkForMe(empty));
}

TEST(ItemLinks, OldLinksStayUntilTheyAreRemoved) {
  MutableAttributedString text(AttributedString(ns::String("old http://a.example"), {{"a", 1}}));
  text.addAttributeValueRange(ns::kLinkAttributeName, url("x:old"), {0, 3});
  appendLinkForMe(text);
  EXPECT_EQ(linkAt(text.copy(), 0), "x:old");
  removeLinkAttributesForMe(text);
  EXPECT_EQ(ns::printed(text.copy()), "[old http://a.example|a=1]");
  EXPECT_TRUE(appendLinkForMe(text));
  EXPECT_EQ(linkAt(text.copy(), 0), "");
  EXPECT_EQ(linkAt(text.copy(), 4), "http://a.example");
}

TEST(ItemLinks, UselessResultsAreSkipped) {
  const Answering detector({{{ns::kNotFound, 0}, "http://a"},
                            {{0, 0}, "http://b"},
                            {{0, 1}, "relative/path"},
                            {{1, 1}, ""},
                            {{2, 1}, "x-any:thing"}});
  const ns::LinkDetector::ScopedReplacement scope(detector);
  MutableAttributedString text(AttributedString(ns::String("abc")));
  EXPECT_TRUE(appendLinkForMe(text));
  EXPECT_EQ(linkAt(text.copy(), 0), "");
  EXPECT_EQ(linkAt(text.copy(), 1), "");
  EXPECT_EQ(linkAt(text.copy(), 2), "x-any:thing");
  const Answering useless({{{0, 1}, "relative"}});
  const ns::LinkDetector::ScopedReplacement other(useless);
  EXPECT_FALSE(appendLinkForMe(text));
}

TEST(ItemLinks, LawsOfMarking) {
  std::mt19937 random(8);
  constexpr std::u16string_view kPieces[] = {
      u"a.example ", u"http://b.org/(x) ", u"me@c.org,", u"\n", u"\xD83C",
      u"\x0301",     u"plan.md ",          u"x"};
  for (int round = 0; round < 200; ++round) {
    std::u16string units;
    for (size_t pieces = random() % 6; pieces > 0; --pieces) units += kPieces[random() % 8];
    MutableAttributedString text{ns::textOf(units)};
    for (int i = 0; i < 4 && !units.empty(); ++i) {
      const size_t start = random() % units.size();
      text.addAttributeValueRange("untouched", static_cast<int64_t>(random() % 3),
                                  {start, random() % (units.size() - start + 1)});
    }
    const AttributedString before = text.copy();
    const bool isMarked = appendLinkForMe(text);
    const AttributedString once = text.copy();
    ASSERT_EQ(once.string(), before.string());
    ASSERT_TRUE(ns::coversExactly(once));
    ASSERT_EQ(isMarked, !(once == before));
    ASSERT_EQ(appendLinkForMe(text), isMarked);
    ASSERT_EQ(text.copy(), once);
    removeLinkAttributesForMe(text);
    ASSERT_EQ(text.copy(), before);
  }
}

TEST(ItemLinks, ACallerMayMarkLinksItsOwnWay) {
  MutableAttributedString text(AttributedString(ns::String("http://a.example")));
  EXPECT_TRUE(appendLinkForMe(text, [](const ns::Value&) {
    return ns::Dictionary({{"mine", "yes"}});
  }));
  EXPECT_EQ(ns::printed(text.copy()), "[http://a.example|mine=yes]");
}

TEST(ItemLinks, TheAttributesOfALinkAreItsUrlAlone) {
  const ns::Dictionary attributes = linkAttributesForMeWithURL(url("http://a.b"));
  EXPECT_EQ(attributes.count(), 1U);
  EXPECT_EQ(attributes.objectForKey("NSLink"), url("http://a.b"));
}

TEST(ItemLinks, TheSchemeOfARelativeUrlIsThatOfItsBase) {
  const auto relative = [](const ns::Value& base) {
    return ns::Record(ns::makeClass({"NSURL", "NSObject"}),
                      {{"NS.base", ns::Field::reference(base)},
                       {"NS.relative", ns::Field::reference("page.html")}})
        .asValue();
  };
  EXPECT_FALSE(checkURLForMe(relative(nullptr)));
  EXPECT_FALSE(checkURLForMe(relative(url("folder/"))));
  EXPECT_TRUE(checkURLForMe(relative(url("http://a.b/"))));
  EXPECT_TRUE(checkURLForMe(relative(relative(url("http://a.b/")))));
}

TEST(ItemLinks, AUrlNeedsAScheme) {
  EXPECT_FALSE(checkURLForMe(nullptr));
  EXPECT_FALSE(checkURLForMe(url("path/page.html")));
  EXPECT_FALSE(checkURLForMe("http://text.is.no.url"));
  EXPECT_TRUE(checkURLForMe(url("http://a.b")));
  EXPECT_TRUE(checkURLForMe(url("anything-else:1")));
}

}  // namespace
}  // namespace tavlin
