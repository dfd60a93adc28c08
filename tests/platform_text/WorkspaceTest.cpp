#include "platform/text/Workspace.h"

#include <gtest/gtest.h>

#include <fstream>

#include "TextTesting.h"
#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"
#include "platform/propertylist/PropertyList.h"

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

TEST_F(WorkspaceTest, TypesHaveNoCase) {
  Workspace workspace(
      {file("a", {declaration("My.Text", "a"), declaration("my.text", Array({"b", "a"})),
                  declaration("my.dir", "d", "Com.Apple.Package")})});
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("my.TEXT"), String("a"));
  EXPECT_EQ(workspace.typesForFilenameExtension("a"), (Types{"My.Text"}));
  EXPECT_EQ(workspace.typesForFilenameExtension("B"), (Types{"My.Text"}));
  std::filesystem::create_directory(folder / "x.d");
  EXPECT_TRUE(workspace.isFilePackageAtPath(folder / "x.d"));
}

TEST_F(WorkspaceTest, TheUserMayDeclareMore) {
  const char* const before = getenv("XDG_DATA_HOME");
  const std::string kept = before ? before : "";
  setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
  EXPECT_EQ(Workspace::userTypesPath(), folder / "tavlin/types.plist");
  std::filesystem::create_directory(folder / "tavlin");
  std::ofstream(Workspace::userTypesPath())
      << "<plist version=\"1.0\"><dict><key>UTExportedTypeDeclarations</key><array><dict>"
         "<key>UTTypeIdentifier</key><string>my.outline</string><key>UTTypeConformsTo</key>"
         "<string>com.apple.package</string><key>UTTypeTagSpecification</key><dict>"
         "<key>public.filename-extension</key><array><string>myoutline</string>"
         "<string>opml</string></array></dict></dict></array></dict></plist>";
  Workspace workspace(
      {std::string(TAVLIN_SOURCE_DIR) + "/resources/types.plist", Workspace::userTypesPath()});
  EXPECT_EQ(workspace.preferredFilenameExtensionForType("my.outline"), String("myoutline"));
  EXPECT_EQ(workspace.typesForFilenameExtension("opml"), (Types{"org.opml.opml", "my.outline"}));
  std::filesystem::create_directory(folder / "a.myoutline");
  EXPECT_TRUE(workspace.isFilePackageAtPath(folder / "a.myoutline"));
  setenv("XDG_DATA_HOME", "relative", 1);
  const std::string home = expandTildeInPath("~") + "/.local/share/tavlin/types.plist";
  EXPECT_EQ(Workspace::userTypesPath(), home);
  unsetenv("XDG_DATA_HOME");
  EXPECT_EQ(Workspace::userTypesPath(), home);
  if (before) setenv("XDG_DATA_HOME", kept.c_str(), 1);
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
  std::ofstream(folder / "list") << "<plist version=\"1.0\"><array/></plist>";
  Workspace workspace({folder / "junk", folder / "list",
                       file("a", {declaration("a.b", "c"), "no declaration", Dictionary()})});
  std::vector<std::string> messages;
  const LogHandler before =
      setLogHandler([&](std::string_view message) { messages.emplace_back(message); });
  EXPECT_EQ(workspace.typesForFilenameExtension("c"), (Types{"a.b"}));
  EXPECT_EQ(workspace.typesForFilenameExtension("c"), (Types{"a.b"}));
  setLogHandler(before);
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(messages[0].find(folder / "junk: "), 0U);
  EXPECT_EQ(messages[1].find(folder / "list: "), 0U);
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
