#include "ui/ImageHelpers.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/drawing/GraphicsContext.h"
#include "platform/propertylist/Bundle.h"
#include "tests/drawing/DrawingTesting.h"

using namespace drawing_testing;
using tavlin::UIImageNamed;

namespace {

class UIImage : public testing::Test {
 protected:
  // Images of the project itself, whatever this program's environment says.
  ns::Bundle bundle_{TAVLIN_SOURCE_DIR "/resources"};
  ns::Bundle::ScopedMain main_{bundle_};
  void TearDown() override { ns::Image::setSearchPath({}); }
};

}  // namespace

TEST_F(UIImage, AnUnknownNameGivesNone) {
  EXPECT_EQ(UIImageNamed("no such image"), nullptr);
  EXPECT_EQ(UIImageNamed(""), nullptr);
}

TEST_F(UIImage, OneWithAlphaStaysAsItIs) {
  const auto image = UIImageNamed("check");
  ASSERT_NE(image, nullptr);
  EXPECT_TRUE(image->representations().front()->hasAlpha());
  EXPECT_EQ(image->pixelAtXY(0, 0), kClear);
}

TEST_F(UIImage, OneWithoutAlphaGetsIt) {
  // A copy of its own, for named images are shared with the other tests of this program.
  namespace fs = std::filesystem;
  std::string folder = testing::TempDir() + "/ui-image-XXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  fs::copy_file(TAVLIN_SOURCE_DIR "/resources/images/paper.png", fs::path(folder) / "sheet.png");
  ns::Image::setSearchPath({folder});
  const auto plain = ns::Image::imageNamed("sheet");
  ASSERT_NE(plain, nullptr);
  ASSERT_FALSE(plain->representations().front()->hasAlpha());

  const auto image = UIImageNamed("sheet");
  EXPECT_EQ(image, plain);
  EXPECT_TRUE(image->representations().front()->hasAlpha());
  EXPECT_EQ(image->pixelAtXY(0, 0), (ns::Pixel{190, 206, 222, 255}));
  {
    const ns::ImageFocus focus(*image);
    ns::DrawingColor::clearColor().set();
    ns::rectFill(ns::makeRect(0, 0, 1, 1));
  }
  EXPECT_EQ(image->pixelAtXY(0, 0), kClear);
  fs::remove_all(folder);
}

TEST_F(UIImage, IsTheSameImageEveryTime) {
  EXPECT_NE(UIImageNamed("paper"), nullptr);
  EXPECT_EQ(UIImageNamed("paper"), UIImageNamed("paper"));
}
