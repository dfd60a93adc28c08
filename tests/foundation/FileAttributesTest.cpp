#include "platform/foundation/FileAttributes.h"

#include <gmock/gmock.h>
#include <sys/xattr.h>

#include <cstring>
#include <optional>

#include "tests/foundation/FileTesting.h"

namespace ns {
namespace {

using testing::dataOf;
using ::testing::ElementsAre;
using testing::ScopedFault;
using testing::ScopedUser;

/// Whether new files are invisible.
class FileAttributesTest : public testing::FileTest, public ::testing::WithParamInterface<bool> {
 protected:
  void replace(const std::string& path) {
    const ScopedFault fault([](FileStep step) {
      return step == FileStep::createInvisible && !GetParam() ? EOPNOTSUPP : 0;
    });
    writeFileAtomically(path, dataOf("new"));
    EXPECT_EQ(content(path), "new");
  }
  static bool setAttribute(const std::string& path, const char* name, const std::string& value) {
    return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
  }
  static std::optional<std::string> attribute(const std::string& path, const char* name) {
    std::string value(1000, '\0');
    const ssize_t length = getxattr(path.c_str(), name, value.data(), value.size());
    if (length < 0) return std::nullopt;
    value.resize(static_cast<size_t>(length));
    return value;
  }
};

INSTANTIATE_TEST_SUITE_P(NewFile, FileAttributesTest, ::testing::Values(true, false),
                         [](const auto& each) { return each.param ? "Invisible" : "Visible"; });

TEST_P(FileAttributesTest, KeepsTheModeWhateverTheMask) {
  const mode_t usual = umask(0);
  for (const mode_t mask : {0000, 0022, 0077, 0777}) {
    for (const mode_t mode :
         {0644, 0600, 0666, 0444, 0400, 0755, 0777, 0751, 01644, 02755, 04755}) {
      const std::string path = make("file", "old");
      ASSERT_EQ(chmod(path.c_str(), mode), 0);
      umask(mask);
      replace(path);
      umask(0);
      EXPECT_EQ(modeOf(path), mode) << std::oct << mode << " under " << mask;
      EXPECT_EQ(unlink(path.c_str()), 0);
    }
  }
  umask(usual);
}

TEST_P(FileAttributesTest, KeepsExtendedAttributes) {
  const std::string path = make("file", "old");
  if (!setAttribute(path, "user.tavlin.empty", "")) GTEST_SKIP() << "no extended attributes here";
  const std::string bytes("a\0b", 3);
  const std::string longer(900, 'l');
  ASSERT_TRUE(setAttribute(path, "user.tavlin.bytes", bytes));
  ASSERT_TRUE(setAttribute(path, "user.tavlin.long", longer));
  replace(path);
  EXPECT_EQ(attribute(path, "user.tavlin.empty"), "");
  EXPECT_EQ(attribute(path, "user.tavlin.bytes"), bytes);
  EXPECT_EQ(attribute(path, "user.tavlin.long"), longer);
}

/// An access control list as the system's attribute holds it.
std::string accessList(const std::vector<std::array<uint32_t, 3>>& entries) {
  std::string bytes("\2\0\0\0", 4);
  for (const auto& [tag, rights, id] : entries) {
    const uint16_t shorts[] = {static_cast<uint16_t>(tag), static_cast<uint16_t>(rights)};
    bytes.append(reinterpret_cast<const char*>(shorts), sizeof shorts);
    bytes.append(reinterpret_cast<const char*>(&id), sizeof id);
  }
  return bytes;
}

constexpr uint32_t kOwner = 0x01, kUser = 0x02, kGroup = 0x04, kMask = 0x10, kOthers = 0x20;
constexpr uint32_t kNobody = 0xFFFFFFFF;
constexpr const char* kAccess = "system.posix_acl_access";
constexpr const char* kDefault = "system.posix_acl_default";

/// Lets user 4711 read and write what the group may only read.
std::string usualList() {
  return accessList({{kOwner, 6, kNobody},
                     {kUser, 6, 4711},
                     {kGroup, 4, kNobody},
                     {kMask, 6, kNobody},
                     {kOthers, 0, kNobody}});
}

TEST_P(FileAttributesTest, KeepsTheAccessControlList) {
  const std::string path = make("file", "old", 0640);
  if (!setAttribute(path, kAccess, usualList())) GTEST_SKIP() << "no access control lists here";
  const mode_t mode = modeOf(path);
  replace(path);
  EXPECT_EQ(attribute(path, kAccess), usualList());
  EXPECT_EQ(modeOf(path), mode);
}

// The folder's list is for new files; a file that was saved again is an old one.
TEST_P(FileAttributesTest, TakesNoAccessControlListFromTheFolder) {
  const std::string path = make("file", "old", 0640);
  if (!setAttribute(folder, kDefault, usualList())) GTEST_SKIP() << "no access control lists here";
  replace(path);
  EXPECT_EQ(attribute(path, kAccess), std::nullopt);
  EXPECT_EQ(modeOf(path), 0640U);
  const std::string made = folder + "made";
  replace(made);
  EXPECT_NE(attribute(made, kAccess), std::nullopt);
}

TEST_P(FileAttributesTest, KeepsOwnerAndGroupWhereThatIsAllowed) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const std::string path = make("file", "old");
  ASSERT_EQ(chown(path.c_str(), 4711, 4712), 0);
  ASSERT_EQ(chmod(path.c_str(), 06664), 0);
  replace(path);
  EXPECT_EQ(statusOf(path).st_uid, 4711U);
  EXPECT_EQ(statusOf(path).st_gid, 4712U);
  EXPECT_EQ(modeOf(path), 06664U);
}

TEST_P(FileAttributesTest, KeepsTheGroupInAFolderThatGivesItsOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const std::string path = make("file", "old");
  ASSERT_EQ(chown(folder.c_str(), 0, 4712), 0);
  ASSERT_EQ(chmod(folder.c_str(), 02755), 0);
  replace(path);
  EXPECT_EQ(statusOf(path).st_gid, getegid());
  replace(folder + "made");
  EXPECT_EQ(statusOf(folder + "made").st_gid, 4712U);
}

struct Refusal {
  gid_t group;  ///< of the old file
  mode_t before;
  mode_t after;
  gid_t groupAfter;
};

// Somebody who may write in the folder, but owns neither file nor group.
TEST_P(FileAttributesTest, GivesAwayNoRightsWithAnotherOwner) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of other users";
  constexpr Refusal kRefusals[] = {
      // the group is one of the user's own: only what runs as the owner is lost
      {4713, 0664, 0664, 4713},
      {4713, 06775, 0775, 4713},
      // the group is lost too: it gets what everybody has
      {4714, 0664, 0644, 4712},
      {4714, 0660, 0600, 4712},
      {4714, 02777, 0777, 4712},
      {4714, 0646, 0646, 4712},
  };
  for (const Refusal& each : kRefusals) {
    const std::string path = make("file", "old");
    ASSERT_EQ(chown(folder.c_str(), 4711, 4712), 0);
    ASSERT_EQ(chown(path.c_str(), 4799, each.group), 0);
    ASSERT_EQ(chmod(path.c_str(), each.before), 0);
    {
      const ScopedUser user(4711, 4712, {4712, 4713});
      const ScopedFault fault([](FileStep step) {
        return step == FileStep::createInvisible && !GetParam() ? EOPNOTSUPP : 0;
      });
      writeFileAtomically(path, dataOf("new"));
    }
    EXPECT_EQ(content(path), "new");
    EXPECT_EQ(statusOf(path).st_uid, 4711U);
    EXPECT_EQ(statusOf(path).st_gid, each.groupAfter);
    EXPECT_EQ(modeOf(path), each.after) << std::oct << each.before;
    EXPECT_EQ(unlink(path.c_str()), 0);
  }
}

TEST_P(FileAttributesTest, ReplacesAFileThatMayNotBeRead) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of other users";
  const std::string path = make("file", "old", 0200);
  ASSERT_EQ(chown(folder.c_str(), 4711, 4712), 0);
  ASSERT_EQ(chown(path.c_str(), 4711, 4712), 0);
  {
    const ScopedUser user(4711, 4712, {});
    writeFileAtomically(path, dataOf("new"));
  }
  EXPECT_EQ(content(path), "new");
  EXPECT_EQ(modeOf(path), 0200U);
}

}  // namespace
}  // namespace ns
