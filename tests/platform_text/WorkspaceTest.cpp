#include "platform/text/Workspace.h"

#include <gtest/gtest.h>

#include <fstream>

#include "TextTesting.h"
#include "platform/archive/PropertyList.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Log.h"

namespace ns {
namespace {

using Types = std::vector<String>;

Value declaration(const char* type, const Value& extensions, const Value& conformsTo = nullptr) {
  Dictionary made{
      {"UTTypeIdentifier", type},
      {"UTTypeTagSpecification", Dictionary({{"public.filename-extension", extensions}})}};
  made.setObjectForKey(conformsTo, "UTTypeConformsTo");
  return made;
}

class WorkspaceTest : public ::testing::Test {
 protected:
  std::string file(const std::string& name, const Array& exported, const Array& imported = {}) {
    const Data data = dataFromPropertyList(Value(Dictionary(
        {{"UTExportedTypeDeclarations", exported}, {"UTImportedTypeDeclarations", imported}})));
    std::ofstream(folder / name) << data.view();
    return folder / name;
  }
  TemporaryFolder folder;
};

TEST_F(WorkspaceTest, ExtensionsOfTypesAndTypesOfExtensions) {
  Workspace workspace({file("a", {declaration("text.one", Array({"One", "uno"}))},
                            {declaration("text.two", "ONE")}),
                       folder / "missing", file("b", {declaration("text.one", Array({"un"}))})});
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("text.one"), String("One"));
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("text.two"), String("ONE"));
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("text.three"), std::nullopt);
  EXPECT_EQ(workspace.typesForFilenameExtension("one"), (Types{"text.one", "text.two"}));
  EXPECT_EQ(workspace.typesForFilenameExtension("un"), (Types{"text.one"}));
  EXPECT_EQ(workspace.typesForFilenameExtension(""), Types());
}

TEST_F(WorkspaceTest, PackagesAreFoldersOfAPackageType) {
  Workspace workspace({file("a", {declaration("my.base", Array(), Array({"com.apple.package"})),
                                  declaration("my.bundle", "pkgdir", "my.base"),
                                  declaration("my.circle", "circle", Array({"my.circle"})),
                                  declaration("my.text", "txt", "public.text")})});
  for (const char* name : {"a.pkgdir", "b.PKGDIR", "c.txt", "d.circle", ".pkgdir", "plain"}) {
    std::filesystem::create_directory(folder / name);
  }
  std::ofstream(folder / "file.pkgdir") << "x";
  EXPECT_TRUE(workspace.isFilePackageAtPath(folder / "a.pkgdir"));
  EXPECT_TRUE(workspace.isFilePackageAtPath(folder / "a.pkgdir/"));
  EXPECT_TRUE(workspace.isFilePackageAtPath(folder / "b.PKGDIR"));
  for (const char* name : {"c.txt", "d.circle", ".pkgdir", "plain", "file.pkgdir", "no.pkgdir"}) {
    EXPECT_FALSE(workspace.isFilePackageAtPath(folder / name)) << name;
  }
  EXPECT_FALSE(workspace.isFilePackageAtPath("/"));
  EXPECT_FALSE(workspace.isFilePackageAtPath(""));
}

TEST_F(WorkspaceTest, AFileThatCannotBeReadIsLoggedOnce) {
  std::ofstream(folder / "junk") << "junk";
  Workspace workspace(
      {folder / "junk", file("a", {declaration("a.b", "c"), "no declaration", Dictionary()})});
  std::vector<std::string> messages;
  const LogHandler before =
      setLogHandler([&](std::string_view message) { messages.emplace_back(message); });
  EXPECT_EQ(workspace.typesForFilenameExtension("c"), (Types{"a.b"}));
  EXPECT_EQ(workspace.typesForFilenameExtension("c"), (Types{"a.b"}));
  setLogHandler(before);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0].find(folder / "junk: "), 0U);
}

TEST_F(WorkspaceTest, TheTypesThatComeAlong) {
  Workspace workspace({std::string(TAVLIN_SOURCE_DIR) + "/resources/types.plist"});
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("public.plain-text"), String("txt"));
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("public.text"), std::nullopt);
  EXPECT_EQ(workspace.typesForFilenameExtension("opml"), (Types{"org.opml.opml"}));
  for (const char* extension : {"rtf", "html", "xml", "md", "pdf", "png", "jpg", "zip", "xlsx",
                                "csv", "c", "py", "docx", "rtfd"}) {
    EXPECT_EQ(workspace.typesForFilenameExtension(extension).size(), 1U) << extension;
  }
  std::filesystem::create_directory(folder / "notes.rtfd");
  EXPECT_TRUE(workspace.isFilePackageAtPath(folder / "notes.rtfd"));
}

}  // namespace
}  // namespace ns
