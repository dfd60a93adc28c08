#include "platform/propertylist/XmlPropertyList.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/propertylist/PropertyList.h"
#include "tests/archive/ArchiveTesting.h"

namespace {

using testing_archives::faultOf;
using testing_archives::utf8;

const std::string kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Example//DTD PLIST 1.0//EN\" \"http://example.com/list.dtd\">\n";

std::string whole(const std::string& value) {
  return kHead + "<plist version=\"1.0\">\n" + value + "\n</plist>\n";
}

ns::Value parse(const std::string& value) {
  return ns::propertyListFromData(ns::Data(whole(value)));
}

std::string faultOfXml(const std::string& xml) {
  return faultOf([&] { (void)ns::binaryFromXmlPropertyList(ns::Data(xml)); });
}

/// Why a value is refused, without the place.
std::string faultOfValue(const std::string& value) {
  const std::string fault = faultOfXml(whole(value));
  const size_t place = fault.find(", line ");
  return place == std::string::npos ? fault : fault.substr(0, place);
}

std::string refused(const std::string& why) { return "XML property list: " + why; }

TEST(XmlPropertyList, ReadsScalars) {
  EXPECT_EQ(utf8(parse("<string>a &amp; b &lt;&gt; &#233;&#x1F33F; \xC3\xBC</string>")),
            "a & b <> \xC3\xA9\xF0\x9F\x8C\xBF \xC3\xBC");
  EXPECT_EQ(utf8(parse("<string></string>")), "");
  EXPECT_EQ(utf8(parse("<string/>")), "");
  EXPECT_EQ(utf8(parse("<string><![CDATA[<a> & b]]></string>")), "<a> & b");
  EXPECT_EQ(utf8(parse("<string> a\n b </string>")), " a\n b ");
  EXPECT_EQ(parse("<true/>").kind(), ns::Kind::boolean);
  EXPECT_TRUE(parse("<true/>").boolValue());
  EXPECT_FALSE(parse("<false/>").boolValue());
  EXPECT_EQ(parse("<false/>").kind(), ns::Kind::boolean);
}

TEST(XmlPropertyList, ReadsIntegers) {
  const std::pair<const char*, int64_t> cases[] = {{"0", 0},
                                                   {"-1", -1},
                                                   {"+5", 5},
                                                   {" 42\n", 42},
                                                   {"0xFf", 255},
                                                   {"9223372036854775807", INT64_MAX},
                                                   {"-9223372036854775808", INT64_MIN}};
  for (const auto& [text, number] : cases) {
    const ns::Value value = parse("<integer>" + std::string(text) + "</integer>");
    EXPECT_EQ(value.kind(), ns::Kind::integer);
    EXPECT_EQ(value.integerValue(), number) << text;
  }
  const ns::Integer large = parse("<integer>18446744073709551615</integer>").integer();
  EXPECT_EQ(large.low, UINT64_MAX);
  EXPECT_FALSE(large.isNegative());
  for (const char* text :
       {"", "x", "1x", "--1", "-+1", "1.5", "18446744073709551616", "-9223372036854775809", "0x"}) {
    EXPECT_EQ(faultOfValue("<integer>" + std::string(text) + "</integer>"),
              refused("an integer cannot be read"))
        << text;
  }
}

TEST(XmlPropertyList, ReadsReals) {
  const std::pair<const char*, double> cases[] = {{"1000", 1000.0},
                                                  {"0.0", 0.0},
                                                  {"-100.23470306396484", -100.23470306396484},
                                                  {"+2.5", 2.5},
                                                  {" 1e300 ", 1e300}};
  for (const auto& [text, number] : cases) {
    const ns::Value value = parse("<real>" + std::string(text) + "</real>");
    EXPECT_EQ(value.kind(), ns::Kind::real);
    EXPECT_FALSE(value.isFloat());
    EXPECT_EQ(value.doubleValue(), number) << text;
  }
  EXPECT_TRUE(std::isnan(parse("<real>nan</real>").doubleValue()));
  EXPECT_TRUE(std::isinf(parse("<real>-inf</real>").doubleValue()));
  for (const char* text : {"", "x", "1,5", "1 2", "+-1"}) {
    EXPECT_EQ(faultOfValue("<real>" + std::string(text) + "</real>"),
              refused("a real cannot be read"))
        << text;
  }
}

TEST(XmlPropertyList, ReadsData) {
  const std::pair<const char*, std::string> cases[] = {{"", ""},
                                                       {"Zg==", "f"},
                                                       {"Zm8=", "fo"},
                                                       {"Zm9v", "foo"},
                                                       {"Zm\n\t9v\r\nYg==", "foob"},
                                                       {"Zm9vYg", "foob"},
                                                       {"+/+/", "\xFB\xFF\xBF"}};
  for (const auto& [text, bytes] : cases) {
    EXPECT_EQ(parse("<data>" + std::string(text) + "</data>").data().view(), bytes) << text;
  }
  EXPECT_EQ(faultOfValue("<data>Z</data>"), refused("data is cut off"));
  for (const char* text : {"Zg=v", "Z!==", "Zm9v\xC3\xBC"}) {
    EXPECT_EQ(faultOfValue("<data>" + std::string(text) + "</data>"),
              refused("data is not in base 64"))
        << text;
  }
}

TEST(XmlPropertyList, ReadsDates) {
  const std::pair<const char*, double> cases[] = {
      {"2001-01-01T00:00:00Z", 0},          {"2001-01-02T00:00:01Z", 86401},
      {"2000-12-31T23:59:59Z", -1},         {"2000-02-29T00:00:00Z", -307.0 * 86400},
      {"1970-01-01T00:00:00Z", -978307200}, {"0001-01-01T00:00:00Z", -63113904000.0}};
  for (const auto& [text, seconds] : cases) {
    const ns::Value value = parse("<date>" + std::string(text) + "</date>");
    ASSERT_EQ(value.kind(), ns::Kind::date) << text;
    EXPECT_EQ(value.date().seconds, seconds) << text;
  }
  for (const char* text :
       {"", "2001-01-01", "2001-13-01T00:00:00Z", "2001-00-01T00:00:00Z", "2001-01-01T24:00:00Z",
        "2001-01-01T00:00:00+", "x001-01-01T00:00:00Z"}) {
    EXPECT_EQ(faultOfValue("<date>" + std::string(text) + "</date>"),
              refused("a date cannot be read"))
        << text;
  }
}

TEST(XmlPropertyList, ReadsContainers) {
  const ns::Value value = parse(
      "<dict><key>a</key><array><integer>1</integer><array/></array>\n"
      "<key>\xC3\xBC</key><dict/></dict>");
  ASSERT_EQ(value.dictionary().count(), 2U);
  const ns::Array array = value.dictionary().objectForKey("a").array();
  ASSERT_EQ(array.count(), 2U);
  EXPECT_EQ(array[0].integerValue(), 1);
  EXPECT_TRUE(array[1].isArray());
  EXPECT_TRUE(value.dictionary().objectForKey("\xC3\xBC").isDictionary());
}

TEST(XmlPropertyList, TurnsUidDictionariesIntoReferences) {
  const auto typeOf = [](const std::string& value) {
    const ns::BinaryPropertyList list(ns::binaryFromXmlPropertyList(ns::Data(whole(value))));
    return list.object(list.topObject()).type;
  };
  using Type = ns::BinaryPropertyList::Type;
  EXPECT_EQ(typeOf("<dict><key>CF$UID</key><integer>4294967295</integer></dict>"), Type::uid);
  EXPECT_EQ(typeOf("<dict><key>CF$UID</key><string>4</string></dict>"), Type::dictionary);
  EXPECT_EQ(typeOf("<dict><key>CF$UID</key><array><integer>1</integer></array></dict>"),
            Type::dictionary);
  EXPECT_EQ(typeOf("<dict><key>CF$UID</key><integer>1</integer>"
                   "<key>b</key><integer>1</integer></dict>"),
            Type::dictionary);
  EXPECT_EQ(typeOf("<dict><key>b</key><integer>1</integer></dict>"), Type::dictionary);
  EXPECT_EQ(faultOfValue("<dict><key>CF$UID</key><integer>-1</integer></dict>"),
            refused("a reference out of range"));
  EXPECT_EQ(faultOfValue("<dict><key>CF$UID</key><integer>4294967296</integer></dict>"),
            refused("a reference out of range"));
}

TEST(XmlPropertyList, ReadsOtherEncodings) {
  std::string latin =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>\xE9</string></plist>";
  EXPECT_EQ(utf8(ns::propertyListFromData(ns::Data(latin))), "\xC3\xA9");
  std::string wide = "\xFE\xFF";
  for (const char c : std::string("<plist><string>a</string></plist>")) {
    wide.push_back('\0');
    wide.push_back(c);
  }
  EXPECT_EQ(utf8(ns::propertyListFromData(ns::Data(wide))), "a");
}

TEST(XmlPropertyList, RefusesOtherStructures) {
  EXPECT_EQ(faultOfValue(""), refused("the list holds no value"));
  EXPECT_EQ(faultOfValue("<true/><true/>"), refused("more than one value"));
  EXPECT_EQ(faultOfValue("<unknown/>"), refused("an element \"unknown\" is no value"));
  EXPECT_EQ(faultOfValue("text"), refused("text outside a value"));
  EXPECT_EQ(faultOfValue("<string>a<true/></string>"), refused("an element inside a value"));
  EXPECT_EQ(faultOfValue("<dict><true/></dict>"), refused("a value without a key"));
  EXPECT_EQ(faultOfValue("<dict><key>a</key></dict>"), refused("a key without a value"));
  EXPECT_EQ(faultOfValue("<dict><key>a</key><key>b</key><true/></dict>"),
            refused("a key where none belongs"));
  EXPECT_EQ(faultOfValue("<array><key>a</key></array>"), refused("a key where none belongs"));
  EXPECT_EQ(faultOfValue("<key>a</key>"), refused("a key where none belongs"));
  EXPECT_EQ(faultOfValue("<plist><true/></plist>"), refused("an element inside a value"));
  EXPECT_EQ(faultOfXml("<other/>"), refused("the top element is not \"plist\", line 1 column 8"));
  EXPECT_EQ(faultOfXml(""), refused("no element found, line 1 column 0"));
  EXPECT_EQ(faultOfXml("hello"), refused("syntax error, line 1 column 0"));
  EXPECT_EQ(faultOfXml("<plist>\n<true></plist>"), refused("mismatched tag, line 2 column 8"));
}

TEST(XmlPropertyList, RefusesEntities) {
  const std::string bomb =
      "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">"
      "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]><plist><string>&b;</string></plist>";
  EXPECT_EQ(faultOfXml(bomb).find(refused("entity declarations are not taken")), 0U);
  const std::string file =
      "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>"
      "<plist><string>&a;</string></plist>";
  EXPECT_EQ(faultOfXml(file).find(refused("entity declarations are not taken")), 0U);
  // the type declaration names a file that is never read: nothing may be left out silently
  EXPECT_EQ(faultOfValue("<string>a&undeclared;b</string>"), refused("an entity is not declared"));
}

TEST(XmlPropertyList, NestsTo512Levels) {
  const auto nested = [](size_t levels) {
    std::string value;
    for (size_t i = 0; i < levels; ++i) value += "<array>";
    for (size_t i = 0; i < levels; ++i) value += "</array>";
    return value;
  };
  EXPECT_TRUE(parse(nested(512)).isArray());
  EXPECT_EQ(faultOfValue(nested(513)), refused("containers are nested too deeply"));
  EXPECT_EQ(faultOfValue(nested(300000)), refused("containers are nested too deeply"));
}

TEST(XmlPropertyList, TruncationAtAnyLengthIsAnError) {
  const std::string xml = whole("<dict><key>a</key><string>b</string></dict>");
  const size_t end = xml.find("</plist>") + 8;
  for (size_t length = 0; length < end; ++length) {
    EXPECT_NE(faultOfXml(xml.substr(0, length)), "no fault") << length;
  }
  for (size_t at = 0; at < xml.size(); ++at) {
    for (int change = 1; change < 256; change += 5) {
      std::string changed = xml;
      changed[at] = static_cast<char>(changed[at] ^ change);
      (void)faultOf([&] { (void)ns::propertyListFromData(ns::Data(changed)); });
    }
  }
}

}  // namespace
