#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <csignal>

#include "tests/foundation/FileTesting.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::dataOf;
using ::testing::ElementsAre;
using testing::errorOf;
using testing::manyBytes;
using testing::openDescriptors;
using testing::reasonOf;
using testing::ScopedFault;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

/// Sets the mask for the modes of new files for a time.
class ScopedUmask {
 public:
  explicit ScopedUmask(mode_t mask) : usual_(umask(mask)) {}
  ~ScopedUmask() { umask(usual_); }

 private:
  mode_t usual_;
};

class FileWriteTest : public testing::FileTest {
 protected:
  std::string linkTo(const std::string& target, const std::string& name) {
    const std::string path = folder + name;
    EXPECT_EQ(symlink(target.c_str(), path.c_str()), 0);
    return path;
  }
  static std::string linkText(const std::string& path) {
    return std::filesystem::read_symlink(path).string();
  }
};

TEST_F(FileWriteTest, ReplacesTheContent) {
  const std::string path = make("file", "old and longer");
  const ino_t before = statusOf(path).st_ino;
  writeFileAtomically(path, dataOf("new"));
  EXPECT_EQ(content(path), "new");
  EXPECT_NE(statusOf(path).st_ino, before);
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

TEST_F(FileWriteTest, MakesAFile) {
  for (const mode_t mask : {0, 022, 077}) {
    const ScopedUmask scope(mask);
    const std::string path = folder + std::to_string(mask);
    writeFileAtomically(path, dataOf("new"));
    EXPECT_EQ(content(path), "new");
    EXPECT_EQ(modeOf(path), 0666 & ~mask);
  }
  EXPECT_EQ(names(folder).size(), 3U);
}

TEST_F(FileWriteTest, WritesNothingAndMuch) {
  const std::string path = folder + "file";
  writeFileAtomically(path, Data());
  EXPECT_EQ(content(path), "");
  const std::string much = manyBytes((size_t{9} << 20) + 7);
  writeFileAtomically(path, dataOf(much));
  EXPECT_TRUE(content(path) == much);
}

TEST_F(FileWriteTest, WritesPiecesInTheirOrder) {
  const std::string path = folder + "file";
  const Data data = dataOf("0123456789");
  DataPieces pieces = data.part(5, 5);
  pieces.append(data.part(0, 3));
  const std::string much = manyBytes((size_t{3} << 20) + 7);
  pieces.append(dataOf(much));
  pieces.append(dataOf("end"));
  writeFileAtomically(path, pieces);
  EXPECT_TRUE(content(path) == "56789012" + much + "end");
}

TEST_F(FileWriteTest, TakesPathsOfEveryForm) {
  const std::filesystem::path usual = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  std::filesystem::create_directory("sub");
  writeFileAtomically("plain", dataOf("1"));
  writeFileAtomically("./dotted", dataOf("2"));
  writeFileAtomically("sub/../up", dataOf("3"));
  writeFileAtomically("sub//below", dataOf("4"));
  writeFileAtomically("-", dataOf("5"));
  writeFileAtomically("\xFF", dataOf("6"));
  std::filesystem::current_path(usual);
  EXPECT_EQ(content(folder + "plain"), "1");
  EXPECT_EQ(content(folder + "dotted"), "2");
  EXPECT_EQ(content(folder + "up"), "3");
  EXPECT_EQ(content(folder + "sub/below"), "4");
  EXPECT_EQ(content(folder + "-"), "5");
  EXPECT_EQ(content(folder + "\xFF"), "6");
}

TEST_F(FileWriteTest, LeavesNoDescriptorOpenAndNoSignalBlocked) {
  const std::string path = make("file", "old");
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  const size_t open = openDescriptors();
  writeFileAtomically(path, dataOf("new"));
  EXPECT_EQ(openDescriptors(), open);
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int signal = 1; signal < 32; ++signal) {
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
  }
}

TEST_F(FileWriteTest, FollowsALink) {
  const std::string path = make("file", "old");
  const std::string link = linkTo("file", "link");
  writeFileAtomically(link, dataOf("new"));
  EXPECT_EQ(linkText(link), "file");
  EXPECT_EQ(content(path), "new");
  EXPECT_TRUE(S_ISREG(statusOf(path).st_mode));
}

TEST_F(FileWriteTest, FollowsAChainOfLinksThroughFolders) {
  std::filesystem::create_directories(folder + "a/b");
  std::filesystem::create_directories(folder + "c");
  const std::string path = make("c/file", "old");
  linkTo("../c/file", "a/third");
  linkTo(folder + "a/third", "a/b/second");
  const std::string first = linkTo("a/b/second", "first");
  linkTo("a", "folder link");
  writeFileAtomically(first, dataOf("new"));
  EXPECT_EQ(content(path), "new");
  writeFileAtomically(folder + "folder link/b/second", dataOf("newer"));
  EXPECT_EQ(content(path), "newer");
  EXPECT_EQ(linkText(first), "a/b/second");
  EXPECT_THAT(names(folder), UnorderedElementsAre("a", "c", "first", "folder link"));
  EXPECT_THAT(names(folder + "a"), UnorderedElementsAre("b", "third"));
  EXPECT_THAT(names(folder + "a/b"), ElementsAre("second"));
  EXPECT_THAT(names(folder + "c"), ElementsAre("file"));
}

TEST_F(FileWriteTest, MakesTheFileThatALinkWaitsFor) {
  const std::string link = linkTo("file", "link");
  writeFileAtomically(link, dataOf("new"));
  EXPECT_EQ(linkText(link), "file");
  EXPECT_EQ(content(folder + "file"), "new");
}

TEST_F(FileWriteTest, RefusesLinksThatLeadNowhere) {
  const std::string loop = linkTo("other", "loop");
  linkTo("loop", "other");
  EXPECT_EQ(reasonOf<FileException>([&] { writeFileAtomically(loop, dataOf("new")); }),
            "write " + loop + ": Too many levels of symbolic links");
  const std::string self = linkTo("self", "self");
  EXPECT_EQ(errorOf([&] { writeFileAtomically(self, dataOf("new")); }), ELOOP);
  const std::string lost = linkTo("no folder/file", "lost");
  EXPECT_EQ(errorOf([&] { writeFileAtomically(lost, dataOf("new")); }), ENOENT);
  EXPECT_THAT(names(folder), UnorderedElementsAre("loop", "other", "self", "lost"));
}

TEST_F(FileWriteTest, LeavesOtherHardLinksTheOldContent) {
  const std::string path = make("file", "old");
  const std::string other = folder + "other";
  ASSERT_EQ(link(path.c_str(), other.c_str()), 0);
  writeFileAtomically(path, dataOf("new"));
  EXPECT_EQ(content(path), "new");
  EXPECT_EQ(content(other), "old");
}

TEST_F(FileWriteTest, RefusesAFolder) {
  std::filesystem::create_directory(folder + "sub");
  linkTo("sub", "link");
  for (const char* name : {"sub", "sub/", "link", "link/", "sub/.", "sub/..", ""}) {
    EXPECT_EQ(errorOf([&] { writeFileAtomically(folder + name, dataOf("new")); }), EISDIR) << name;
  }
  EXPECT_EQ(errorOf([&] { writeFileAtomically("/", dataOf("new")); }), EISDIR);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(folder + "missing/", dataOf("new")); }), EISDIR);
  EXPECT_THAT(names(folder), UnorderedElementsAre("sub", "link"));
}

TEST_F(FileWriteTest, RefusesWhatIsNoFileAndLeavesIt) {
  const std::string fifo = folder + "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(fifo, dataOf("new")); }), EOPNOTSUPP);
  EXPECT_TRUE(S_ISFIFO(statusOf(fifo).st_mode));
  const std::string link = linkTo("/dev/null", "link");
  EXPECT_EQ(errorOf([&] { writeFileAtomically(link, dataOf("new")); }), EOPNOTSUPP);
  EXPECT_TRUE(S_ISCHR(statusOf("/dev/null").st_mode));
}

TEST_F(FileWriteTest, RefusesPathsThatCannotBe) {
  const std::string path = make("file", "old");
  EXPECT_EQ(errorOf([] { writeFileAtomically("", dataOf("new")); }), ENOENT);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(path + '\0' + "x", dataOf("new")); }), EINVAL);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(path + "/x", dataOf("new")); }), ENOTDIR);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(path + "/", dataOf("new")); }), ENOTDIR);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(folder + "no/x", dataOf("new")); }), ENOENT);
  EXPECT_EQ(errorOf([&] { writeFileAtomically(folder + std::string(256, 'n'), dataOf("new")); }),
            ENAMETOOLONG);
  EXPECT_EQ(errorOf([&] { writeFileAtomically("/" + std::string(4096, '/'), dataOf("new")); }),
            ENAMETOOLONG);
  EXPECT_EQ(content(path), "old");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

TEST_F(FileWriteTest, TakesTheLongestName) {
  const std::string path = folder + std::string(255, 'n');
  writeFileAtomically(path, dataOf("first"));
  writeFileAtomically(path, dataOf("second"));
  EXPECT_EQ(content(path), "second");
  EXPECT_EQ(names(folder).size(), 1U);
}

TEST_F(FileWriteTest, TakesTheLongestPath) {
  constexpr size_t kLongest = 4095;
  std::string path = folder;
  while (kLongest - path.size() > 256) path += std::string(200, 'd') + "/";
  std::filesystem::create_directories(path);
  path += std::string(kLongest - path.size(), 'n');
  ASSERT_EQ(path.size(), kLongest);
  writeFileAtomically(path, dataOf("first"));
  writeFileAtomically(path, dataOf("second"));
  EXPECT_EQ(testing::bytesOf(readFile(path)), "second");
}

// A document is seen whole or not at all, and what is private stays so while it is written.
TEST_F(FileWriteTest, ShowsNothingBeforeTheNewFileIsComplete) {
  const std::string path = make("file", "old", 0640);
  for (const bool isInvisible : {true, false}) {
    std::vector<FileStep> steps;
    const std::string fresh = isInvisible ? "new" : "newer";
    const ScopedFault fault([&](FileStep step) {
      steps.push_back(step);
      if (step == FileStep::createInvisible) return isInvisible ? 0 : EOPNOTSUPP;
      const std::vector<std::string> all = names(folder);
      // the name reaches the disk with the content
      if (step == FileStep::sync || step == FileStep::close || step == FileStep::rename) {
        EXPECT_THAT(all, SizeIs(2));
        const std::string temporary = all.front();
        EXPECT_EQ(temporary.front(), '.');
        EXPECT_EQ(content(folder + temporary), fresh);
        EXPECT_EQ(modeOf(folder + temporary), 0640U);
      } else if (all.size() == 2) {
        EXPECT_FALSE(isInvisible);
        if (step == FileStep::write) {
          EXPECT_EQ(modeOf(folder + all.front()), 0600U);
        }
      } else {
        EXPECT_THAT(all, ElementsAre("file"));
      }
      if (step != FileStep::syncFolder) {
        EXPECT_NE(content(path), fresh);
      }
      return 0;
    });
    writeFileAtomically(path, dataOf(fresh));
    using enum FileStep;
    if (isInvisible && std::count(steps.begin(), steps.end(), link) == 1) {
      EXPECT_THAT(steps, ElementsAre(openFolder, createTemporary, createInvisible, write,
                                     setAttributes, link, sync, close, rename, syncFolder));
    } else {
      EXPECT_THAT(steps, ElementsAre(openFolder, createTemporary, createInvisible, write,
                                     setAttributes, sync, close, rename, syncFolder));
    }
    EXPECT_EQ(content(path), fresh);
    EXPECT_THAT(names(folder), ElementsAre("file"));
  }
}

TEST_F(FileWriteTest, GoesOnWhenAnInvisibleFileCannotGetAName) {
  const std::string path = make("file", "old", 0640);
  for (const int error : {ENOENT, EPERM, EACCES, EOPNOTSUPP}) {
    const ScopedFault fault([&](FileStep step) { return step == FileStep::link ? error : 0; });
    writeFileAtomically(path, dataOf("new " + std::to_string(error)));
    EXPECT_EQ(content(path), "new " + std::to_string(error));
    EXPECT_EQ(modeOf(path), 0640U);
    EXPECT_THAT(names(folder), ElementsAre("file"));
  }
}

TEST_F(FileWriteTest, WritesIntoAFolderThatCannotBeRead) {
  const std::string path = make("file", "old");
  const ScopedFault fault([](FileStep step) { return step == FileStep::openFolder ? EACCES : 0; });
  writeFileAtomically(path, dataOf("new"));
  EXPECT_EQ(content(path), "new");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

int delivered = 0;

// One that ends the process would leave a half-made file behind.
TEST_F(FileWriteTest, HoldsSignalsBackUntilTheFileIsInItsPlace) {
  const std::string path = make("file", "old");
  delivered = 0;
  struct sigaction action {};
  struct sigaction usual {};
  action.sa_handler = [](int) { ++delivered; };
  ASSERT_EQ(sigaction(SIGTERM, &action, &usual), 0);
  {
    const ScopedFault fault([](FileStep step) {
      if (step == FileStep::createTemporary) raise(SIGTERM);
      EXPECT_EQ(delivered, 0);
      return 0;
    });
    writeFileAtomically(path, dataOf("new"));
  }
  EXPECT_EQ(delivered, 1);
  EXPECT_EQ(content(path), "new");
  sigaction(SIGTERM, &usual, nullptr);
}

}  // namespace
}  // namespace ns
