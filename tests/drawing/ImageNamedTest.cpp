// Finding images by name, in the search path and in the resources of the main bundle.

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/drawing/GraphicsContext.h"
#include "platform/propertylist/Bundle.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::Image;

namespace {

namespace fs = std::filesystem;

class ImageNamed : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "/image-named-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override {
    Image::setSearchPath({});
    fs::remove_all(folder_);
  }

  /// Makes a file of an image of a width, by which it is told.
  fs::path put(const fs::path& place, double width) {
    fs::create_directories((folder_ / place).parent_path());
    Image({width, 1}).writeToFile(folder_ / place);
    return folder_ / place;
  }

  static double widthOf(const char* name) {
    const auto image = Image::imageNamed(name);
    return image ? image->size().width : 0;
  }

  fs::path folder_;
};

}  // namespace

TEST_F(ImageNamed, FindsTheProjectsImages) {
  ns::Bundle bundle(TAVLIN_SOURCE_DIR "/resources");
  const ns::Bundle::ScopedMain main(bundle);
  const auto image = Image::imageNamed("check");
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->size(), (ns::Size{64, 64}));
  EXPECT_EQ(Image::imageNamed("check.png"), image);
}

TEST_F(ImageNamed, IsTheSameImageEveryTime) {
  put("one.png", 3);
  Image::setSearchPath({folder_});
  const auto image = Image::imageNamed("one");
  ASSERT_NE(image, nullptr);
  {
    const ns::ImageFocus focus(*image);
    ns::rectFill(ns::makeRect(0, 0, 1, 1));
  }
  EXPECT_EQ(Image::imageNamed("one"), image);
  EXPECT_EQ(picture(*Image::imageNamed("one")), "K..\n");
}

TEST_F(ImageNamed, AnUnknownNameGivesNone) {
  Image::setSearchPath({folder_, folder_ / "no such folder"});
  ns::Bundle bundle(folder_);
  const ns::Bundle::ScopedMain main(bundle);
  EXPECT_EQ(Image::imageNamed("no such image"), nullptr);
  EXPECT_EQ(Image::imageNamed(""), nullptr);
  EXPECT_EQ(Image::imageNamed(".png"), nullptr);
}

TEST_F(ImageNamed, AFolderOfThatNameIsNoImage) {
  fs::create_directories(folder_ / "album.png");
  Image::setSearchPath({folder_});
  EXPECT_EQ(Image::imageNamed("album"), nullptr);
}

TEST_F(ImageNamed, NamesCannotLeadOutOfTheFolders) {
  put("outside.png", 3);
  put("inside/here.png", 3);
  Image::setSearchPath({folder_ / "inside"});
  EXPECT_NE(Image::imageNamed("here"), nullptr);
  EXPECT_EQ(Image::imageNamed("../outside"), nullptr);
  EXPECT_EQ(Image::imageNamed((folder_ / "outside").c_str()), nullptr);
  EXPECT_EQ(Image::imageNamed(ns::String(std::string_view("here\0.png", 9))), nullptr);
}

TEST_F(ImageNamed, FoldersAreSearchedInOrder) {
  put("a/shared.png", 1);
  put("b/shared.png", 2);
  put("b/only-b.png", 3);
  put("resources/images/shared.png", 4);
  put("resources/images/icon.png", 5);
  put("resources/beside.png", 6);
  ns::Bundle bundle(folder_ / "resources");
  const ns::Bundle::ScopedMain main(bundle);
  EXPECT_EQ(widthOf("shared"), 4);
  EXPECT_EQ(widthOf("icon"), 5);
  EXPECT_EQ(widthOf("beside"), 0);
  EXPECT_EQ(widthOf("only-b"), 0);
  Image::setSearchPath({folder_ / "a", folder_ / "b"});
  EXPECT_EQ(Image::searchPath(), (std::vector<fs::path>{folder_ / "a", folder_ / "b"}));
  EXPECT_EQ(widthOf("shared"), 1);
  EXPECT_EQ(widthOf("only-b"), 3);
  EXPECT_EQ(widthOf("icon"), 5);
}

TEST_F(ImageNamed, AFileThatIsNoImageSaysSo) {
  std::ofstream(folder_ / "broken.png") << "not a picture";
  Image::setSearchPath({folder_});
  expectRaised<ns::DrawingException>([] { (void)Image::imageNamed("broken"); },
                                     "broken.png is no PNG image");
}
