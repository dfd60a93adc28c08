// Images from PNG files and to them.

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/drawing/GraphicsContext.h"
#include "platform/foundation/File.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::Data;
using ns::Image;
using ns::makeRect;

namespace {

namespace fs = std::filesystem;

const fs::path kImages = fs::path(TAVLIN_SOURCE_DIR) / "resources" / "images";

std::string bytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::string smallPng() {
  const auto image = drawn({5, 3}, [] {
    rgb(1, 0, 0, 0.5).set();
    ns::rectFill(makeRect(1, 0, 3, 2));
  });
  return std::string(image->pngRepresentation().view());
}

void putNumber(std::string& bytes, size_t offset, uint32_t number) {
  for (size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<char>(number >> (24 - 8 * i));
}

}  // namespace

TEST(ImageFile, ReadsAFileWithAlpha) {
  const auto image = Image::imageWithContentsOfFile(kImages / "check.png");
  EXPECT_EQ(image->size(), (ns::Size{64, 64}));
  EXPECT_TRUE(image->representations().front()->hasAlpha());
  EXPECT_EQ(image->pixelAtXY(0, 0), kClear);
  EXPECT_EQ(image->pixelAtXY(27, 17), (ns::Pixel{46, 125, 80, 255}));  // The bend of the tick.
  EXPECT_EQ(image->pixelAtXY(27, 60), kClear);
}

TEST(ImageFile, ReadsAFileWithoutAlpha) {
  const auto image = Image::imageWithContentsOfFile(kImages / "paper.png");
  EXPECT_EQ(image->size(), (ns::Size{96, 64}));
  EXPECT_FALSE(image->representations().front()->hasAlpha());
  EXPECT_EQ(image->pixelAtXY(0, 0), (ns::Pixel{190, 206, 222, 255}));
  EXPECT_EQ(image->pixelAtXY(0, 1), (ns::Pixel{252, 249, 240, 255}));
  EXPECT_EQ(image->pixelAtXY(16, 1), (ns::Pixel{226, 160, 150, 255}));
}

TEST(ImageFile, WhatIsWrittenIsReadBack) {
  const auto image = drawn({4, 3}, [] {
    rgb(1, 0, 0).set();
    ns::rectFill(makeRect(0, 0, 2, 1));
    white(1).set();
    ns::rectFill(makeRect(3, 2, 1, 1));
  });
  const auto again = Image::imageWithData(image->pngRepresentation());
  EXPECT_EQ(picture(*again), "...W\n....\nRR..\n");
  EXPECT_EQ(again->size(), image->size());
}

TEST(ImageFile, AlphaIsKeptOrKeptAway) {
  const auto image = drawn({2, 2}, [] {});
  EXPECT_TRUE(
      Image::imageWithData(image->pngRepresentation())->representations().front()->hasAlpha());
  image->representations().front()->setAlpha(false);
  EXPECT_FALSE(
      Image::imageWithData(image->pngRepresentation())->representations().front()->hasAlpha());
}

TEST(ImageFile, WritesOverAFile) {
  const fs::path path = fs::path(testing::TempDir()) / "drawing-image-file-test.png";
  drawn({2, 1}, [] {})->writeToFile(path);
  drawn({3, 1}, [] { ns::rectFill(makeRect(0, 0, 1, 1)); })->writeToFile(path);
  EXPECT_EQ(picture(*Image::imageWithContentsOfFile(path)), "K..\n");
  fs::remove(path);
  EXPECT_THROW(drawn({2, 1}, [] {})->writeToFile(path / "no folder"), ns::FileException);
}

TEST(ImageFile, AFileThatIsMissingOrNoImageSaysSo) {
  EXPECT_THROW((void)Image::imageWithContentsOfFile(kImages / "no such image.png"),
               ns::FileException);
  const fs::path self = fs::path(TAVLIN_SOURCE_DIR) / "tests/drawing/ImageFileTest.cpp";
  expectRaised<ns::DrawingException>([&] { (void)Image::imageWithContentsOfFile(self); },
                                     "ImageFileTest.cpp is no PNG image");
  expectRaised<ns::DrawingException>([] { (void)Image::imageWithData(Data()); },
                                     "the data is no PNG image");
}

TEST(ImageFile, EveryLengthOfATruncatedFileSaysSo) {
  const std::string whole = smallPng();
  // The last chunk, twelve bytes without content, tells nothing about the picture.
  for (size_t length = 0; length < whole.size() - 12; ++length) {
    EXPECT_THROW((void)Image::imageWithData(Data(whole.substr(0, length))), ns::DrawingException)
        << length;
  }
  for (size_t length = whole.size() - 12; length < whole.size(); ++length) {
    try {
      (void)Image::imageWithData(Data(whole.substr(0, length)));
    } catch (const ns::DrawingException&) {
    }
  }
}

TEST(ImageFile, AFlippedByteGivesAnImageOrAnError) {
  for (const std::string& whole :
       {smallPng(), bytesOf(kImages / "paper.png"), bytesOf(kImages / "check.png")}) {
    size_t refused = 0;
    for (size_t at = 0; at < whole.size(); ++at) {
      for (const int flip : {0x01, 0x80, 0xff}) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ flip);
        try {
          const auto image = Image::imageWithData(Data(damaged));
          EXPECT_FALSE(image->representations().empty());
        } catch (const ns::DrawingException&) {
          ++refused;
        }
      }
    }
    EXPECT_GT(refused, whole.size());
  }
}

TEST(ImageFile, ClaimedSizesAreCheckedBeforeMemoryIsTaken) {
  constexpr size_t kWidth = 16;
  constexpr size_t kHeight = 20;
  std::string wide = smallPng();
  putNumber(wide, kWidth, 32001);
  expectRaised<ns::DrawingException>([&] { (void)Image::imageWithData(Data(wide)); },
                                     "the data is too large: 32001 by 3 pixels");
  std::string high = smallPng();
  putNumber(high, kHeight, 0xffffffff);
  expectRaised<ns::DrawingException>([&] { (void)Image::imageWithData(Data(high)); },
                                     "is too large");
  std::string both = smallPng();
  putNumber(both, kWidth, 32000);
  putNumber(both, kHeight, 32000);
  expectRaised<ns::DrawingException>([&] { (void)Image::imageWithData(Data(both)); },
                                     "is too large");
}
