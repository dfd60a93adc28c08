#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "platform/foundation/File.h"

namespace ns {
namespace {

/// Changes $HOME for a time; none removes it.
class ScopedHome {
 public:
  explicit ScopedHome(const char* home) {
    if (const char* usual = std::getenv("HOME")) usual_ = usual;
    set(home);
  }
  ~ScopedHome() { set(usual_ ? usual_->c_str() : nullptr); }

 private:
  static void set(const char* home) {
    if (home == nullptr) {
      unsetenv("HOME");
    } else {
      setenv("HOME", home, 1);
    }
  }
  std::optional<std::string> usual_;
};

TEST(ExpandTilde, LeavesOtherPathsAlone) {
  const ScopedHome home("/home/anna");
  for (const char* path : {"", "a", "/a/b", "a~", "./~", "a/~/b", "/~"}) {
    EXPECT_EQ(expandTildeInPath(path), path);
  }
}

TEST(ExpandTilde, PutsTheHomeFolderInItsPlace) {
  const ScopedHome home("/home/anna");
  EXPECT_EQ(expandTildeInPath("~"), "/home/anna");
  EXPECT_EQ(expandTildeInPath("~/"), "/home/anna/");
  EXPECT_EQ(expandTildeInPath("~/a/b"), "/home/anna/a/b");
  EXPECT_EQ(expandTildeInPath("~/~"), "/home/anna/~");
  EXPECT_EQ(expandTildeInPath("~//a"), "/home/anna//a");
}

TEST(ExpandTilde, DoublesNoSlash) {
  {
    const ScopedHome home("/home/anna//");
    EXPECT_EQ(expandTildeInPath("~/a"), "/home/anna/a");
    EXPECT_EQ(expandTildeInPath("~"), "/home/anna");
  }
  const ScopedHome home("/");
  EXPECT_EQ(expandTildeInPath("~/a"), "/a");
  EXPECT_EQ(expandTildeInPath("~"), "/");
}

TEST(ExpandTilde, AsksTheUserDatabaseWithoutHome) {
  const passwd* const entry = getpwuid(getuid());
  const std::string expected = entry == nullptr ? "~" : entry->pw_dir;
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    const ScopedHome home(none);
    EXPECT_EQ(expandTildeInPath("~"), expected);
  }
}

TEST(ExpandTilde, FindsOtherUsers) {
  const passwd* const entry = getpwnam("root");
  if (entry == nullptr) GTEST_SKIP() << "no user root";
  const std::string folder = entry->pw_dir;
  const ScopedHome home("/home/anna");
  EXPECT_EQ(expandTildeInPath("~root"), folder);
  EXPECT_EQ(expandTildeInPath("~root/a"), folder + "/a");
}

TEST(ExpandTilde, LeavesNamesOfNobodyAsTheyAre) {
  const ScopedHome home("/home/anna");
  EXPECT_EQ(expandTildeInPath("~no such user"), "~no such user");
  EXPECT_EQ(expandTildeInPath("~no such user/a"), "~no such user/a");
  EXPECT_EQ(expandTildeInPath("~~"), "~~");
  const std::string withZero("~root\0x/a", 9);
  EXPECT_EQ(expandTildeInPath(withZero), withZero);
}

}  // namespace
}  // namespace ns
