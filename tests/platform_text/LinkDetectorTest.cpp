#include "platform/text/LinkDetector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/Log.h"
#include "platform/text/LinkNames.h"
#include "platform/text/LinkScanner.h"
#include "platform/text/LinkTables.h"
#include "platform/text/LinkUtf16.h"

namespace {

using ns::Link;
using ns::LinkDetector;
using ns::Range;

std::vector<Link> linksIn(std::u16string_view text) {
  return LinkDetector::shared().linksInText(text);
}

void appendUnits(std::u16string& out, char32_t codePoint) {
  if (codePoint >= 0x10000) {
    out.push_back(static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF)));
  } else {
    out.push_back(static_cast<char16_t>(codePoint));
  }
}

// Well-formed UTF-8 as UTF-16, with \u{...} for a code point in hexadecimal.
std::u16string unitsOf(std::string_view utf8) {
  std::u16string units;
  for (size_t index = 0; index < utf8.size();) {
    if (utf8.substr(index, 3) == "\\u{") {
      const size_t end = utf8.find('}', index);
      const std::string digits(utf8.substr(index + 3, end - index - 3));
      appendUnits(units, static_cast<char32_t>(std::stoul(digits, nullptr, 16)));
      index = end + 1;
      continue;
    }
    const auto byte = static_cast<unsigned char>(utf8[index]);
    const size_t length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    char32_t codePoint = length == 1 ? byte : byte & (0x7FU >> length);
    for (size_t next = 1; next < length; ++next) {
      codePoint = codePoint << 6 | (static_cast<unsigned char>(utf8[index + next]) & 0x3FU);
    }
    appendUnits(units, codePoint);
    index += length;
  }
  return units;
}

std::string utf8Of(std::u16string_view units) {
  std::string utf8;
  for (size_t index = 0; index < units.size();) {
    const ns::Utf16Character character = ns::utf16At(units, index);
    ns::appendUtf8(utf8, character.value);
    index += character.length;
  }
  return utf8;
}

constexpr char16_t kLinkStart = u'⸠';
constexpr char16_t kLinkEnd = u'⸡';

std::u16string marked(std::u16string_view text, const std::vector<Link>& links) {
  std::u16string result;
  size_t done = 0;
  for (const Link& link : links) {
    result += text.substr(done, link.range.location - done);
    result += kLinkStart;
    result += text.substr(link.range.location, link.range.length);
    result += kLinkEnd;
    done = link.range.end();
  }
  return result += text.substr(done);
}

std::u16string withoutMarks(std::u16string text) {
  std::erase_if(text, [](char16_t unit) { return unit == kLinkStart || unit == kLinkEnd; });
  return text;
}

// The cases of links.txt with their line numbers.
std::vector<std::pair<size_t, std::u16string>> casesFromFile() {
  std::ifstream file(TAVLIN_SOURCE_DIR "/tests/platform_text/links.txt");
  std::vector<std::pair<size_t, std::u16string>> cases;
  std::string line;
  for (size_t number = 1; std::getline(file, line); ++number) {
    if (!line.empty() && line.front() != '#') {
      cases.emplace_back(number, unitsOf(line));
    }
  }
  return cases;
}

TEST(LinkDetectorTest, FindsTheLinksMarkedInTheTable) {
  const auto cases = casesFromFile();
  ASSERT_GE(cases.size(), 400U);
  for (const auto& [number, expected] : cases) {
    const std::u16string text = withoutMarks(expected);
    EXPECT_EQ(utf8Of(marked(text, linksIn(text))), utf8Of(expected)) << "links.txt:" << number;
  }
}

TEST(LinkDetectorTest, LinesOfATextDoNotAffectEachOther) {
  const auto cases = casesFromFile();
  std::u16string text;
  for (const auto& [number, line] : cases) {
    text += withoutMarks(line) + u'\n';
  }
  const std::u16string found = marked(text, linksIn(text));
  size_t begin = 0;
  for (const auto& [number, line] : cases) {
    const size_t end = found.find(u'\n', begin);
    EXPECT_EQ(utf8Of(found.substr(begin, end - begin)), utf8Of(line)) << "links.txt:" << number;
    begin = end + 1;
  }
  EXPECT_EQ(begin, found.size());
}

TEST(LinkDetectorTest, UrlOfALinkIsAbsoluteAndAscii) {
  const std::pair<const char*, const char*> cases[] = {
      {"http://example.com", "http://example.com"},
      {"HTTP://Example.com/A", "HTTP://Example.com/A"},
      {"example.com", "http://example.com"},
      {"www.example.com:8080/a?b#c", "http://www.example.com:8080/a?b#c"},
      {"example.com./a", "http://example.com./a"},
      {"me@example.com", "mailto:me@example.com"},
      {"mailto:me@example.com", "mailto:me@example.com"},
      {"MAILTO:me@example.com", "MAILTO:me@example.com"},
      {"tel:+1(201)555-0123", "tel:+1(201)555-0123"},
      {"tel:#31#123", "tel:%2331%23123"},
      {"sms:123?body=a%20b", "sms:123?body=a%20b"},
      {"file:///tmp/a.txt", "file:///tmp/a.txt"},
      // Beyond ASCII: percent-encoded UTF-8, in the host as well.
      {"http://example.com/é?ü#🌿", "http://example.com/%C3%A9?%C3%BC#%F0%9F%8C%BF"},
      {"bücher.de", "http://b%C3%BCcher.de"},
      {"http://l·l.cat/·", "http://l%C2%B7l.cat/%C2%B7"},
      {"用户@例子。中国", "mailto:%E7%94%A8%E6%88%B7@%E4%BE%8B%E5%AD%90.%E4%B8%AD%E5%9B%BD"},
      {"http://例子。中国。/。", "http://%E4%BE%8B%E5%AD%90.%E4%B8%AD%E5%9B%BD./"},
      {"http://example.com/。a", "http://example.com/%E3%80%82a"},
      // Escapes stay, a percent sign alone is escaped.
      {"http://example.com/%C3%A9%20", "http://example.com/%C3%A9%20"},
      {"http://example.com/100%", "http://example.com/100%25"},
      {"http://example.com/100%2", "http://example.com/100%252"},
      {"http://example.com/%zz", "http://example.com/%25zz"},
      // What a URL does not hold.
      {"http://example.com/a[b]{c}<d>|e\\f^g`h\"i",
       "http://example.com/a%5Bb%5D%7Bc%7D%3Cd%3E%7Ce%5Cf%5Eg%60h%22i"},
      {"http://example.com/#a#b", "http://example.com/#a%23b"},
      {"http://example.com/a?b?c#d?e/f", "http://example.com/a?b?c#d?e/f"},
      {"http://[2001:DB8::1]:80/[a]", "http://[2001:DB8::1]:80/%5Ba%5D"},
      {"http://[fe80::1%25eth0]/", "http://[fe80::1%25eth0]/"},
      {"custom://[a]b", "custom://%5Ba%5Db"},
      // In an address the delimiters of "mailto" are escaped, and so is a percent sign.
      {"a/b?c=d&e@example.com", "mailto:a%2Fb%3Fc%3Dd%26e@example.com"},
      {"100%@example.com", "mailto:100%25@example.com"},
      {"a%20b@example.com", "mailto:a%2520b@example.com"},
      {"mailto:a%20b@example.com", "mailto:a%20b@example.com"},
      {"{a|b}@example.com", "mailto:%7Ba%7Cb%7D@example.com"},
      {"o'neill+a!b$c*d~e@example.com", "mailto:o'neill+a!b$c*d~e@example.com"},
  };
  for (const auto& [text, url] : cases) {
    const std::vector<Link> links = linksIn(unitsOf(text));
    ASSERT_EQ(links.size(), 1U) << text;
    EXPECT_EQ(links[0].url, url) << text;
  }
}

TEST(LinkDetectorTest, RangesCountCodeUnits) {
  const std::vector<Link> expected = {{{3, 11}, "http://example.com"},
                                      {{18, 10}, "http://a.com/%F0%9D%92%B3%F0%9D%92%B3"}};
  EXPECT_EQ(linksIn(u"🌿 example.com, 🌿a.com/𝒳𝒳"), expected);
}

TEST(LinkDetectorTest, TextWithoutCharactersOrLinksHasNone) {
  EXPECT_TRUE(linksIn(u"").empty());
  EXPECT_TRUE(linksIn(u" ").empty());
  EXPECT_TRUE(linksIn(std::u16string(1, u'\0')).empty());
  for (char16_t unit = 1; unit < 0x80; ++unit) {
    EXPECT_TRUE(linksIn(std::u16string(1, unit)).empty()) << static_cast<int>(unit);
    EXPECT_TRUE(linksIn(std::u16string(3, unit)).empty()) << static_cast<int>(unit);
  }
}

TEST(LinkDetectorTest, UnpairedSurrogatesEndALinkAndAreNoLetters) {
  const std::u16string high(1, u'\xD83C');
  const std::u16string low(1, u'\xDF3F');
  const auto between = [](const std::u16string& half, std::u16string_view first,
                          std::u16string_view second) {
    std::u16string text = half;
    text.append(first).append(half).append(second).append(half);
    return text;
  };
  for (const std::u16string& half : {high, low, low + high}) {
    const std::u16string text = between(half, u"example.com/a", u"b@example.org");
    EXPECT_EQ(marked(text, linksIn(text)), between(half, u"⸠example.com/a⸡", u"⸠b@example.org⸡"));
  }
  const std::u16string inside = u"http://exam" + high + u"ple.com";
  EXPECT_EQ(marked(inside, linksIn(inside)), u"⸠http://exam⸡" + high + u"⸠ple.com⸡");
}

TEST(LinkDetectorTest, HostHas253CharactersAtMost) {
  std::u16string host;
  for (int label = 0; label < 124; ++label) {
    host += u"a.";
  }
  // 248 characters so far.
  EXPECT_EQ(linksIn(host + u"aa.de").size(), 1U);
  EXPECT_EQ(linksIn(host + u"aa.de./").size(), 1U);
  EXPECT_EQ(linksIn(host + u"aaa.de").size(), 0U);
  EXPECT_EQ(linksIn(u"http://" + host + u"aa.de").size(), 1U);
  EXPECT_EQ(linksIn(u"http://" + host + u"aaa.de").size(), 0U);
  EXPECT_EQ(linksIn(u"a@" + host + u"aaa.de").size(), 0U);
}

class NoLinks : public LinkDetector {
 public:
  [[nodiscard]] std::vector<Link> linksInText(std::u16string_view /*text*/) const override {
    return {};
  }
};

TEST(LinkDetectorTest, SharedDetectorCanBeReplacedForATime) {
  const LinkDetector& usual = LinkDetector::shared();
  const NoLinks outer;
  const NoLinks inner;
  {
    const LinkDetector::ScopedReplacement replaced(outer);
    EXPECT_EQ(&LinkDetector::shared(), &outer);
    {
      const LinkDetector::ScopedReplacement again(inner);
      EXPECT_EQ(&LinkDetector::shared(), &inner);
    }
    EXPECT_EQ(&LinkDetector::shared(), &outer);
    EXPECT_TRUE(linksIn(u"example.com").empty());
  }
  EXPECT_EQ(&LinkDetector::shared(), &usual);
  EXPECT_EQ(linksIn(u"example.com").size(), 1U);
}

// -- Cost ---------------------------------------------------------------------------------------

std::u16string repeated(std::u16string_view piece, size_t length) {
  std::u16string text;
  text.reserve(length + piece.size());
  while (text.size() < length) {
    text += piece;
  }
  return text;
}

size_t readsOf(std::u16string_view text) {
  ns::LinkScanner scanner(text);
  scanner.scan();
  return scanner.reads();
}

// What makes a careless scanner go over the same text again and again.
constexpr std::u16string_view kRepeatedPieces[] = {
    u"a@b.com\n",
    u"a.a.a.a",
    u"((((",
    u"mailto:mailto:",
    u"http://http://",
    u"x@",
    u".@.",
    u"www.www.",
    u"[[[[",
    u"a",
    u"://://",
    u"a.com",
    u"a.com ",
    u"a.com+",
    u"a.com_",
    u"_",
    u"-",
    u".",
    u":",
    u"@",
    u"/",
    u"?",
    u"#",
    u"a:",
    u"a+",
    u"+a:",
    u"http://a,",
    u"http://a ",
    u"http://[",
    u"http://[::1]",
    u"http://a@",
    u"http://_",
    u"http://a_",
    u"http://a.com:1",
    u"a.com:1",
    u"a.com:",
    u"tel:",
    u"tel:(",
    u"tel:1",
    u"tel:1;",
    u"tel:1;a",
    u"tel:.",
    u"sms:1,",
    u"data:",
    u"data:(",
    u"javascript:.",
    u"x://",
    u"x://(",
    u"x://a.",
    u"http://a/(",
    u"http://a/).",
    u"http://a/.",
    u"a.com/(",
    u"a.com/.",
    u"a.com?",
    u"a.com.",
    u"a.com.?",
    u"a+b.com@",
    u"!@",
    u"!a.com",
    u"a!@a.com",
    u"a..b.com/",
    u"-a.com/}",
    u"访问http://",
    u"例。",
    u"例子。中国",
    u"𝒳",
    u"𝒳.com",
    u"é@",
    u"é",
    u"%20",
    u"a.com%",
    u"mailto:a@b",
    u"mailto:a@b.com,",
    u"\xD800",
    u"a.com\xDC00",
    u"a·",
    u"·",
    u"·.",
    u"l·l.cat ",
    u"a·b.com ",
    u"a\u00AD",
    u"❤",
    u"❤.",
    u"http://a❤",
    u"http://a.com❤ ",
    u"http://l·l.cat",
    u"mailto:a@b❤",
    u"@·",
};

// A text of twice the length takes twice the reads, and never many a character.
TEST(LinkDetectorTest, WorkIsLinearInTheLengthOfTheText) {
  constexpr size_t kLength = 1 << 14;
  constexpr size_t kMostReadsAUnit = 24;
  for (const std::u16string_view piece : kRepeatedPieces) {
    const size_t once = readsOf(repeated(piece, kLength));
    const size_t twice = readsOf(repeated(piece, 2 * kLength));
    EXPECT_LE(static_cast<double>(twice), 2.02 * static_cast<double>(once) + 1000) << utf8Of(piece);
    EXPECT_LE(once, kMostReadsAUnit * kLength) << utf8Of(piece);
  }
}

// The same with a run of one piece before, behind and between another.
TEST(LinkDetectorTest, WorkIsLinearForPairsOfRuns) {
  constexpr size_t kLength = 1 << 9;
  constexpr size_t kMostReadsAUnit = 24;
  for (const std::u16string_view first : kRepeatedPieces) {
    for (const std::u16string_view second : kRepeatedPieces) {
      const std::u16string text = repeated(first, kLength) + repeated(second, kLength);
      EXPECT_LE(readsOf(text), kMostReadsAUnit * text.size())
          << utf8Of(first) << " then " << utf8Of(second);
    }
  }
}

TEST(LinkDetectorTest, TenMillionUnitsAreFine) {
  const size_t length = 10'000'000;
  EXPECT_TRUE(linksIn(std::u16string(length, u'a')).empty());
  const std::u16string path = u"http://example.com/" + std::u16string(length, u'a');
  const std::vector<Link> links = linksIn(path);
  ASSERT_EQ(links.size(), 1U);
  EXPECT_EQ(links[0].range, (Range{0, path.size()}));
  EXPECT_EQ(links[0].url.size(), path.size());
}

// -- Random texts -------------------------------------------------------------------------------

TEST(LinkDetectorTest, LinksOfRandomTextsAreInOrderAndStandAlone) {
  std::mt19937 random(20260101);  // NOLINT(cert-msc51-cpp): the same texts each time
  const auto below = [&random](size_t limit) { return random() % limit; };
  for (int round = 0; round < 20'000; ++round) {
    std::u16string text;
    for (size_t pieces = 1 + below(12); pieces > 0; --pieces) {
      text += kRepeatedPieces[below(std::size(kRepeatedPieces))];
    }
    size_t done = 0;
    for (const Link& link : linksIn(text)) {
      ASSERT_GE(link.range.location, done) << utf8Of(text);
      ASSERT_GT(link.range.length, 0U) << utf8Of(text);
      done = link.range.end();
      ASSERT_LE(done, text.size()) << utf8Of(text);
      ASSERT_NE(link.url.find(':'), std::string::npos) << utf8Of(text);
      for (const char byte : link.url) {
        ASSERT_TRUE(byte > ' ' && byte < 0x7F) << utf8Of(text);
      }
      // Taken out of the text it is the same link.
      const std::u16string alone = text.substr(link.range.location, link.range.length);
      const std::vector<Link> expected = {{{0, alone.size()}, link.url}};
      ASSERT_EQ(linksIn(alone), expected) << utf8Of(alone) << " in " << utf8Of(text);
    }
  }
}

// -- Tables -------------------------------------------------------------------------------------

TEST(LinkTablesTest, CharactersHaveTheirProperties) {
  using ns::linkCharacter;
  using ns::LinkTerm;
  EXPECT_EQ(linkCharacter(U' ').term(), LinkTerm::hard);
  EXPECT_EQ(linkCharacter(U'a').term(), LinkTerm::include);
  EXPECT_EQ(linkCharacter(U'.').term(), LinkTerm::soft);
  EXPECT_EQ(linkCharacter(U'(').term(), LinkTerm::open);
  EXPECT_EQ(linkCharacter(U')').term(), LinkTerm::close);
  EXPECT_EQ(linkCharacter(U'。').term(), LinkTerm::soft);
  EXPECT_EQ(linkCharacter(U'「').term(), LinkTerm::open);
  EXPECT_EQ(linkCharacter(U'」').term(), LinkTerm::close);
  EXPECT_EQ(linkCharacter(0x00A0).term(), LinkTerm::hard);
  EXPECT_EQ(linkCharacter(0x1DA87).term(), LinkTerm::soft);
  EXPECT_EQ(linkCharacter(0x10FFFF).term(), LinkTerm::hard);
  EXPECT_EQ(linkCharacter(0xFFFFFFFF).bits, 0);
  for (char32_t surrogate = 0xD800; surrogate <= 0xDFFF; ++surrogate) {
    ASSERT_EQ(linkCharacter(surrogate).bits, 0);
  }
  EXPECT_TRUE(linkCharacter(U'é').isWord());
  EXPECT_TRUE(linkCharacter(U'٣').isWord());
  EXPECT_TRUE(linkCharacter(0x0301).isWord());
  EXPECT_TRUE(linkCharacter(0x0301).isMark());
  EXPECT_FALSE(linkCharacter(U'é').isMark());
  EXPECT_FALSE(linkCharacter(U'_').isWord());
  EXPECT_FALSE(linkCharacter(U'½').isWord());
  EXPECT_TRUE(linkCharacter(U'+').isEmail());
  EXPECT_FALSE(linkCharacter(U'"').isEmail());
  EXPECT_FALSE(linkCharacter(U'@').isEmail());
  for (const char32_t letter : U"漢かカ한ไລខမ") {
    EXPECT_EQ(linkCharacter(letter).isSpaceless(), letter != 0);
  }
  for (const char32_t other : U"aéяδनا、。") {
    EXPECT_FALSE(linkCharacter(other).isSpaceless());
  }
}

TEST(LinkTablesTest, ClosingBracketsHaveTheirOpeners) {
  EXPECT_EQ(ns::openingBracket(U')'), U'(');
  EXPECT_EQ(ns::openingBracket(U'｣'), U'｢');
  EXPECT_EQ(ns::openingBracket(0x298E), char32_t{0x298F});
  EXPECT_EQ(ns::openingBracket(0x2990), char32_t{0x298D});
  EXPECT_EQ(ns::openingBracket(U'('), char32_t{0});
  EXPECT_EQ(ns::openingBracket(U'a'), char32_t{0});
  EXPECT_EQ(ns::openingBracket(0x10FFFF), char32_t{0});
  // Every closing bracket has an opener that is one.
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    const bool isClose = ns::linkCharacter(codePoint).term() == ns::LinkTerm::close;
    ASSERT_EQ(ns::openingBracket(codePoint) != 0, isClose) << static_cast<uint32_t>(codePoint);
    if (isClose) {
      ASSERT_EQ(ns::linkCharacter(ns::openingBracket(codePoint)).term(), ns::LinkTerm::open);
    }
  }
}

// -- Names of hosts -----------------------------------------------------------------------------

TEST(LinkNamesTest, DomainsOfRegistriesAreKnownInBothForms) {
  for (const char16_t* domain : {u"com",
                                 u"COM",
                                 u"aaa",
                                 u"zw",
                                 u"ck",
                                 u"xn--p1ai",
                                 u"рф",
                                 u"РФ",
                                 u"中国",
                                 u"vermögensberater",
                                 u"VERMÖGENSBERATER",
                                 u"VERMO\u0308GENSBERATER",
                                 u"xn--vermgensberatung-pwb",
                                 u"გე",
                                 u"ᲒᲔ",
                                 u"ευ",
                                 u"ΕΥ",
                                 u"co.uk",
                                 u"co.za",
                                 u"CO.ZA"}) {
    EXPECT_TRUE(ns::isPublicSuffix(domain)) << utf8Of(domain);
  }
  for (const char16_t* domain :
       {u"", u"a", u"co m", u"comx", u"aa", u"zzz", u"local", u"рфф", u"р", u"中", u"za",
        u"github.io", u"blogspot.com", u"example.com", u"17", u"\xD800"}) {
    EXPECT_FALSE(ns::isPublicSuffix(domain)) << utf8Of(domain);
  }
  EXPECT_FALSE(ns::isPublicSuffix(std::u16string(1000, u'a')));
}

TEST(LinkNamesTest, LabelsAreJudgedByTheRulesForInternationalNames) {
  for (const char16_t* label : {u"l·l", u"L·L", u"bücher", u"BÜCHER", u"bu\u0308cher", u"faß",
                                u"カ・ナ", u"・カ", u"漢・", u"α͵β", u"א׳ב", u"א״ב", u"བོད་སྐད",
                                u"ا۽", u"۾ا", u"क्\u200Cष", u"क्\u200Dष", u"نامه\u200Cای"}) {
    EXPECT_TRUE(ns::isInternationalLabel(label)) << utf8Of(label);
  }
  for (const char16_t* label : {u"a·l", u"l·", u"·l", u"foo・bar", u"α͵", u"α͵b", u"׳א",
                                u"a\u200Cb", u"a\u200Db", u"exam\u00ADple", u"a\u2060b",
                                u"a\u200Bb", u"i❤", u"a²b", u"½", u"a–b", u"©", u"\u0301a"}) {
    EXPECT_FALSE(ns::isInternationalLabel(label)) << utf8Of(label);
  }
}

TEST(LinkNamesTest, CharactersThatJoinNames) {
  for (const char32_t character : {0xB7, 0x375, 0x5F3, 0x5F4, 0x6FD, 0x6FE, 0xF0B, 0x30FB, 0x200C,
                                   0x200D, 0xAD, 0x200B, 0x2060, 0xFEFF, 0xE0041}) {
    EXPECT_TRUE(ns::joinsNames(character)) << static_cast<uint32_t>(character);
  }
  for (const char32_t character :
       {0, 0x1F, 0x20, 0x2D, 0x61, 0x7F, 0xB6, 0xB8, 0x2019, 0x2764, 0x3001, 0xD800, 0x110000}) {
    EXPECT_FALSE(ns::joinsNames(character)) << static_cast<uint32_t>(character);
  }
}

// Run on their own, with files in place of the libraries that are none.
class LinkDetectorWithoutLibraries : public ::testing::Test {
 protected:
  LinkDetectorWithoutLibraries() {
    previous_ = ns::setLogHandler([this](std::string_view each) { messages.emplace_back(each); });
  }
  ~LinkDetectorWithoutLibraries() override { ns::setLogHandler(previous_); }
  void SetUp() override {
    if (!getenv("TAVLIN_WITHOUT_LIBRARIES")) GTEST_SKIP() << "the libraries are there";
  }

  std::vector<std::string> messages;

 private:
  ns::LogHandler previous_;
};

TEST_F(LinkDetectorWithoutLibraries, WhatOnlyTheyKnowIsNoLink) {
  EXPECT_EQ(linksIn(u"see http://example.com/a, http://localhost, http://bücher.de").size(), 3U);
  EXPECT_EQ(linksIn(u"tel:112 mailto:me@example.com custom://a").size(), 3U);
  EXPECT_TRUE(messages.empty());
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(linksIn(u"example.com www.example.com/a me@example.com").empty());
    EXPECT_TRUE(linksIn(u"http://l·l.cat/ http://a\u00ADb.com").empty());
  }
  std::sort(messages.begin(), messages.end());
  EXPECT_EQ(messages,
            (std::vector<std::string>{
                "libidn2 not found: hosts with characters that only its rules allow are no links",
                "libpsl not found: hosts without a scheme and e-mail addresses are no links"}));
}

}  // namespace
