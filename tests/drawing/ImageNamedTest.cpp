// Finding images by name, in the search path and in the resource folders.

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/drawing/GraphicsContext.h"
#include "platform/drawing/ResourceFolders.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using ns::Image;
using testing::Contains;

namespace {

namespace fs = std::filesystem;

class ImageNamed : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = testing::TempDir() + "/image-named-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    unsetenv("TAVLIN_RESOURCES");
  }
  void TearDown() override {
    Image::setSearchPath({});
    unsetenv("TAVLIN_RESOURCES");
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
  setenv("TAVLIN_RESOURCES", TAVLIN_SOURCE_DIR "/resources", 1);
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
  setenv("TAVLIN_RESOURCES", folder_.c_str(), 1);
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
  put("a/images/shared.png", 1);
  put("b/shared.png", 2);
  put("b/only-b.png", 3);
  put("c/shared.png", 4);
  put("c/images/both.png", 5);
  put("c/both.png", 6);
  setenv("TAVLIN_RESOURCES", ((folder_ / "a").string() + "::" + (folder_ / "b").string()).c_str(),
         1);
  EXPECT_EQ(widthOf("shared"), 1);
  EXPECT_EQ(widthOf("only-b"), 3);
  EXPECT_EQ(widthOf("both"), 0);
  Image::setSearchPath({folder_ / "c"});
  EXPECT_EQ(Image::searchPath(), std::vector<fs::path>{folder_ / "c"});
  EXPECT_EQ(widthOf("shared"), 4);
  EXPECT_EQ(widthOf("both"), 5);
}

TEST_F(ImageNamed, AFileThatIsNoImageSaysSo) {
  std::ofstream(folder_ / "broken.png") << "not a picture";
  Image::setSearchPath({folder_});
  expectRaised<ns::DrawingException>([] { (void)Image::imageNamed("broken"); },
                                     "broken.png is no PNG image");
}

TEST_F(ImageNamed, TheResourceFoldersOfTheBuildAreKnown) {
  EXPECT_THAT(ns::resourceFolders(), Contains(fs::path(TAVLIN_SOURCE_DIR) / "resources"));
  setenv("TAVLIN_RESOURCES", "/first:/second", 1);
  const auto folders = ns::resourceFolders();
  ASSERT_GE(folders.size(), 2U);
  EXPECT_EQ(folders[0], "/first");
  EXPECT_EQ(folders[1], "/second");
}
