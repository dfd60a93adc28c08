#include "platform/text/Unarchiver.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/foundation/Exception.h"
#include "platform/text/Color.h"
#include "platform/text/Font.h"

namespace ns {
namespace {

using namespace std::string_literals;

const std::string kHeader = "\x04\x0Bstreamtyped\x81\xE8\x03\x84\x01@"s;
const std::string kObject = "\x84\x84\x08NSObject\0\x85"s;

/// An object of the first class of a stream.
std::string first(const std::string& name, char version, const std::string& fields) {
  return kHeader + "\x84\x84\x84" + static_cast<char>(name.size()) + name + version + kObject +
         fields + "\x86";
}

std::string color(char space, const std::string& types, const std::string& values) {
  return first("NSColor", 0,
               "\x84\x01"
               "c"s +
                   space + "\x84" + static_cast<char>(types.size()) + types + values);
}

/// The font of a name block, a size and four flags.
std::string font(const std::string& block, const std::string& size) {
  const std::string types = "[" + std::to_string(block.size()) + "c]";
  return first("NSFont", 30,
               "\x84\x01i"s + static_cast<char>(block.size()) + "\x84" +
                   static_cast<char>(types.size()) + types + block + "\x84\x01" + "f" + size +
                   "\x84\x01" + "c" + "\0\x98\x01\x98\0\x98\0"s);
}

const std::string kWideMonaco = "\x06\0\0\0\x0E\0\0\0\xFF\xFEM\0o\0n\0a\0c\0o\0\0\0"s;

Value unarchive(const std::string& bytes) {
  return Unarchiver::unarchiveObjectWithData(Data(bytes));
}

Color::RGBA rgba(const std::string& bytes) {
  const auto found = Color::fromValue(unarchive(bytes));
  return found && found->rgba() ? *found->rgba() : Color::RGBA{-1, -1, -1, -1};
}

TEST(Unarchiver, Fonts) {
  const auto wide = Font::fromValue(unarchive(font(kWideMonaco, "\x0A")));
  ASSERT_TRUE(wide);
  EXPECT_EQ(wide->fontName(), "Monaco");
  EXPECT_EQ(wide->pointSize(), 10);
  const std::string narrow = "\x05\0\0\0\x09\0\0\0Helvetica\0\0\0"s;
  // 12.5 in four bytes, behind the mark of a number with a fraction
  const auto old = Font::fromValue(unarchive(font(narrow, "\x83\0\0\x48\x41"s)));
  ASSERT_TRUE(old);
  EXPECT_EQ(old->fontName(), "Helvetica");
  EXPECT_EQ(old->pointSize(), 12.5);
  const std::string bigEndianName = "\x06\0\0\0\x06\0\0\0\xFE\xFF\0A\0b"s;
  EXPECT_EQ(Font::fromValue(unarchive(font(bigEndianName, "\x0A")))->fontName(), "Ab");
}

TEST(Unarchiver, Colours) {
  EXPECT_EQ(rgba(color(1, "ffff", "\0\0\x83\0\0\0\x3F\x01"s)), (Color::RGBA{0, 0, 0.5, 1}));
  EXPECT_EQ(rgba(color(2, "ffff", "\x01\0\0\0"s)), (Color::RGBA{1, 0, 0, 0}));
  EXPECT_EQ(rgba(color(3, "ff", "\x01\x01")), (Color::RGBA{1, 1, 1, 1}));
  EXPECT_EQ(rgba(color(4, "ff", "\0\x01"s)), (Color::RGBA{0, 0, 0, 1}));
  EXPECT_EQ(rgba(color(5, "fffff", "\0\x01\x01\0\x01"s)), (Color::RGBA{1, 0, 0, 1}));
  EXPECT_EQ(Color::fromValue(unarchive(color(2, "ffff", "\x01\0\0\0"s)))->colorSpace(),
            Color::Space::deviceRGB);
}

TEST(Unarchiver, ANamedColour) {
  // strings: @ NSColor NSObject c @@@ NSString + ; objects: the colour, its two classes, the name
  const std::string name = "\x84\x84\x84\x08NSString\x01\x94\x84\x01+\x06System\x86"s;
  const std::string colorName = "\x84\x96\x98\x09textColor\x86"s;
  const std::string fallback = "\x84\x93\x95\x03\x84\x02"s + "ff" + "\0\x01\x86"s;
  const auto found = Color::fromValue(unarchive(color(6, "@@@", name + colorName + fallback)));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->catalogNameComponent(), "System");
  EXPECT_EQ(found->colorNameComponent(), "textColor");
  EXPECT_EQ(found->rgba(), (Color::RGBA{0, 0, 0, 1}));
}

TEST(Unarchiver, StringsNilAndNumbersWithTheirHighByteFirst) {
  EXPECT_EQ(unarchive(first("NSString", 1, "\x84\x01+\x05gr\xC3\xBCn"s)), Value("grün"));
  EXPECT_TRUE(unarchive(kHeader + "\x85").isNone());
  EXPECT_EQ(unarchive("\x04\x0Btypedstream\x81\x03\xE8\x84\x01@\x84\x84\x84\x08NSString\x01\x85"
                      "\x84\x01+\x81\0\x02ok\x86"s),
            Value("ok"));
}

TEST(Unarchiver, WhatFollowsTheObjectDoesNotCount) {
  EXPECT_EQ(rgba(color(3, "ff", "\x01\x01") + "trailing"), (Color::RGBA{1, 1, 1, 1}));
}

TEST(Unarchiver, KnowsItsArchives) {
  EXPECT_TRUE(Unarchiver::isArchive(Data(kHeader)));
  EXPECT_FALSE(Unarchiver::isArchive(Data(std::string("bplist00"))));
  EXPECT_FALSE(Unarchiver::isArchive(Data()));
}

TEST(Unarchiver, EveryBeginningOfAnArchiveIsRefused) {
  for (const std::string& whole :
       {font(kWideMonaco, "\x0A"), color(1, "ffff", "\0\0\x83\0\0\0\x3F\x01"s)}) {
    ASSERT_FALSE(unarchive(whole).isNone());
    for (size_t length = 0; length < whole.size(); ++length) {
      EXPECT_THROW(unarchive(whole.substr(0, length)), ArchiveException) << length;
    }
  }
}

TEST(Unarchiver, NoByteEndsTheProgram) {
  for (const std::string& whole :
       {font(kWideMonaco, "\x0A"), color(1, "ffff", "\0\0\x83\0\0\0\x3F\x01"s)}) {
    for (size_t at = 0; at < whole.size(); ++at) {
      for (const int byte : {0,    1,    2,    8,    0x40, 0x7F, 0x80, 0x81, 0x82, 0x83,
                             0x84, 0x85, 0x86, 0x87, 0x91, 0x92, 0x93, 0x98, 0xFE, 0xFF}) {
        std::string changed = whole;
        changed[at] = static_cast<char>(byte);
        try {
          unarchive(changed);
        } catch (const ArchiveException&) {
        }
      }
    }
  }
}

TEST(Unarchiver, FaultsSayWhere) {
  try {
    unarchive(first("NSFoo", 0, ""));
    FAIL();
  } catch (const ArchiveException& fault) {
    EXPECT_EQ(std::string(fault.what()), "archive without keys: byte 42: an object of class NSFoo");
  }
  EXPECT_THROW(unarchive(color(1, "ff", "\x01\x01")), ArchiveException);
  EXPECT_THROW(unarchive(color(9, "ff", "\x01\x01")), ArchiveException);
  EXPECT_THROW(unarchive(kHeader + "\x92"), ArchiveException);
  EXPECT_THROW(unarchive(font("\x06\0\0\0\xFF\0\0\0"s, "\x0A")), ArchiveException);
  EXPECT_THROW(unarchive(font("\x06\0\0\0\0\0\0\0"s, "\x0A")), ArchiveException);
  EXPECT_THROW(unarchive(font("\x01\0\0\0\x01\0\0\0A"s, "\x0A")), ArchiveException);
}

TEST(Unarchiver, FallbacksOfFallbacksEndSomewhere) {
  const std::string name = "\x84\x84\x84\x08NSString\x01\x94\x84\x01+\x01n\x86"s;
  std::string fields = name + "\x84\x96\x98\x01n\x86"s;
  for (int depth = 0; depth < 100000; ++depth) {
    fields += "\x84\x93\x95\x06\x96\x84\x96\x98\x01n\x86\x84\x96\x98\x01n\x86"s;
  }
  EXPECT_THROW(unarchive(color(6, "@@@", fields)), ArchiveException);
}

TEST(Unarchiver, ALongNameOfManyClassesTakesItsMemoryOnce) {
  // a chain of 20,000 classes that all have the name that is written with the first one
  const std::string name(90000, 'n');
  std::string chain = "\x84\x84\x84\x82"s + "\x90\x5F\x01\0"s + name + "\0"s;
  for (int i = 0; i < 20000; ++i) chain += "\x84\x93\0"s;
  const auto peak = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
  };
  const auto before = peak();
  try {
    unarchive(kHeader + chain + "\x85"s);
    ADD_FAILURE() << "an object of such a class was read";
  } catch (const ArchiveException& exception) {
    EXPECT_NE(std::string(exception.what()).find("an object of class nnn"), std::string::npos)
        << std::string(exception.what()).substr(0, 200);
  }
  EXPECT_LT(peak() - before, 64 * 1024);  // in KiB
}

}  // namespace
}  // namespace ns
