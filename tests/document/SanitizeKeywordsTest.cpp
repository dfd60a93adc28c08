#include "document/SanitizeKeywords.h"

#include <gtest/gtest.h>

namespace tavlin {
namespace {

std::string sanitized(const char* keyword) {
  return sanitizeKeywords({ns::String(keyword)})[0].string().utf8();
}

TEST(SanitizeKeywords, ControlAndFormatCharactersBecomeSpaces) {
  EXPECT_EQ(sanitized("x\ty"), "x y");
  EXPECT_EQ(sanitized("p\nq\r\ns"), "p q  s");
  EXPECT_EQ(sanitized("a\x7f"
                      "b\u0085c"),
            "a b c");
  EXPECT_EQ(sanitized("a\u2028b\u2029c"), "a b c");
  EXPECT_EQ(sanitized("a\u200bb\u00adc\ufeff"), "a b c ");
}

TEST(SanitizeKeywords, ASurrogatePairBecomesOneSpace) {
  EXPECT_EQ(sanitized("a\U000e0001b"), "a b");
  EXPECT_EQ(sanitized("\U0001f33f"), "\U0001f33f");
}

TEST(SanitizeKeywords, SpacesStay) {
  EXPECT_EQ(sanitized("  a\u00a0b\u3000 "), "  a\u00a0b\u3000 ");
}

TEST(SanitizeKeywords, NothingIsTrimmedDroppedOrEscaped) {
  const ns::Array clean =
      sanitizeKeywords({ns::String("a,b"), ns::String(""), ns::String("a,b"), ns::String("\\")});
  EXPECT_EQ(clean, (ns::Array{"a,b", "", "a,b", "\\"}));
  EXPECT_TRUE(sanitizeKeywords({}).empty());
}

TEST(SanitizeKeywords, UnpairedSurrogatesStay) {
  const ns::String lone(std::u16string_view(u"a\xD800"));
  EXPECT_EQ(sanitizeKeywords({lone})[0].string(), lone);
}

}  // namespace
}  // namespace tavlin
