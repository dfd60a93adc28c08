#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/foundation/FileTesting.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::dataOf;
using ::testing::ElementsAre;
using testing::errorOf;
using ::testing::IsEmpty;
using testing::openDescriptors;
using testing::reasonOf;
using testing::ScopedFault;
using testing::ScopedUser;

struct Failure {
  FileStep step;
  const char* operation;
};

constexpr Failure kFailures[] = {
    {FileStep::openFolder, "open the folder of"},
    {FileStep::createTemporary, "create a file beside"},
    {FileStep::write, "write"},
    {FileStep::setAttributes, "set the attributes of"},
    {FileStep::link, "create a file beside"},
    {FileStep::sync, "sync"},
    {FileStep::close, "close"},
    {FileStep::rename, "replace"},
    {FileStep::syncFolder, "sync the folder of"},
};

/// With invisible new files and with visible ones.
class FileWriteFailureTest : public testing::FileTest, public ::testing::WithParamInterface<bool> {
 protected:
  /// Makes one step fail, the first time it comes.
  ScopedFault::Function failing(FileStep failing, int error) {
    hasFailed_ = false;
    return [this, failing, error](FileStep step) {
      if (step == FileStep::createInvisible && !GetParam()) return EOPNOTSUPP;
      if (step != failing || hasFailed_) return 0;
      hasFailed_ = true;
      return error;
    };
  }
  /// Whether the step came; a visible file needs no name, for example.
  [[nodiscard]] bool hasFailed() const { return hasFailed_; }

 private:
  bool hasFailed_ = false;
};

INSTANTIATE_TEST_SUITE_P(NewFile, FileWriteFailureTest, ::testing::Values(true, false),
                         [](const auto& each) { return each.param ? "Invisible" : "Visible"; });

TEST_P(FileWriteFailureTest, LeavesTheOldFileAndNoOther) {
  const std::string path = make("file", "old", 0751);
  const struct stat before = statusOf(path);
  const size_t open = openDescriptors();
  for (const Failure& failure : kFailures) {
    const ScopedFault fault(failing(failure.step, EIO));
    const std::string reason =
        reasonOf<FileException>([&] { writeFileAtomically(path, dataOf("new")); });
    if (!hasFailed()) {
      EXPECT_EQ(failure.step, FileStep::link);
      EXPECT_EQ(reason, "nothing");
      make("file", "old", 0751);
      continue;
    }
    EXPECT_EQ(reason, failure.operation + (" " + path) + ": Input/output error");
    EXPECT_EQ(content(path), "old") << failure.operation;
    EXPECT_THAT(names(folder), ElementsAre("file")) << failure.operation;
    const struct stat after = statusOf(path);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(openDescriptors(), open);
  }
}

TEST_P(FileWriteFailureTest, TouchesTheOldFileOnlyWhenItHadBeenReplaced) {
  const std::string path = make("file", "old");
  const struct stat before = statusOf(path);
  for (const Failure& failure : kFailures) {
    if (failure.step == FileStep::syncFolder || failure.step == FileStep::link) continue;
    const ScopedFault fault(failing(failure.step, EIO));
    EXPECT_EQ(errorOf([&] { writeFileAtomically(path, dataOf("new")); }), EIO);
    const struct stat after = statusOf(path);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_ctim.tv_sec, before.st_ctim.tv_sec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
  }
}

TEST_P(FileWriteFailureTest, KeepsTheTimesWhenItPutsTheOldContentBack) {
  const std::string path = make("file", "old");
  const timespec times[] = {{1000, 1}, {2000, 2}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const ScopedFault fault(failing(FileStep::syncFolder, EIO));
  EXPECT_EQ(errorOf([&] { writeFileAtomically(path, dataOf("new")); }), EIO);
  EXPECT_EQ(content(path), "old");
  EXPECT_EQ(statusOf(path).st_mtim.tv_sec, 2000);
  EXPECT_EQ(statusOf(path).st_mtim.tv_nsec, 2);
}

TEST_P(FileWriteFailureTest, LeavesNothingWhereNothingWas) {
  for (const Failure& failure : kFailures) {
    const ScopedFault fault(failing(failure.step, ENOSPC));
    const std::string path = folder + "file";
    const int error = errorOf([&] { writeFileAtomically(path, dataOf("new")); });
    if (!hasFailed()) {
      EXPECT_EQ(failure.step, FileStep::link);
      EXPECT_EQ(unlink(path.c_str()), 0);
      continue;
    }
    EXPECT_EQ(error, ENOSPC) << failure.operation;
    EXPECT_THAT(names(folder), IsEmpty()) << failure.operation;
  }
}

DataPieces threePieces() {
  DataPieces pieces = dataOf("one ");
  pieces.append(dataOf("two "));
  pieces.append(dataOf("three"));
  return pieces;
}

TEST_P(FileWriteFailureTest, EachPieceCounts) {
  const std::string path = make("file", "old");
  for (int refused = 1; refused <= 3; ++refused) {
    int writes = 0;
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::createInvisible && !GetParam()) return EOPNOTSUPP;
      return step == FileStep::write && ++writes == refused ? ENOSPC : 0;
    });
    EXPECT_EQ(errorOf([&] { writeFileAtomically(path, threePieces()); }), ENOSPC);
    EXPECT_EQ(writes, refused);
    EXPECT_EQ(content(path), "old");
    EXPECT_THAT(names(folder), ElementsAre("file"));
  }
}

// Part of the new file may be on the disk by then.
TEST_P(FileWriteFailureTest, TheEndOfALargePieceCounts) {
  const std::string path = make("file", "old");
  const Data large = dataOf(testing::manyBytes(size_t{6} << 20));
  int writes = 0;
  const auto counting = [&](int refused) {
    writes = 0;
    return [&writes, refused](FileStep step) {
      if (step == FileStep::createInvisible && !GetParam()) return EOPNOTSUPP;
      return step == FileStep::write && ++writes == refused ? ENOSPC : 0;
    };
  };
  int all = 0;
  {
    const ScopedFault fault(counting(0));
    writeFileAtomically(folder + "other", large);
    all = writes;
  }
  EXPECT_GT(all, 1);
  const ScopedFault fault(counting(all));
  EXPECT_EQ(errorOf([&] { writeFileAtomically(path, large); }), ENOSPC);
  EXPECT_EQ(writes, all);
  EXPECT_EQ(content(path), "old");
  EXPECT_THAT(names(folder), ElementsAre("file", "other"));
}

// An invisible file that gets no name is left for a visible one, which needs all pieces again.
TEST_P(FileWriteFailureTest, WritesAllPiecesAgainWhereAnInvisibleFileGetsNoName) {
  const std::string path = make("file", "old");
  const ScopedFault fault(failing(FileStep::link, EPERM));
  writeFileAtomically(path, threePieces());
  EXPECT_EQ(hasFailed(), GetParam());
  EXPECT_EQ(content(path), "one two three");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

TEST_P(FileWriteFailureTest, TriesAgainWhenAWriteIsInterrupted) {
  const std::string path = make("file", "old");
  const ScopedFault fault(failing(FileStep::write, EINTR));
  writeFileAtomically(path, dataOf("new"));
  EXPECT_TRUE(hasFailed());
  EXPECT_EQ(content(path), "new");
}

// Even when putting the old content back fails, the path names a whole file.
TEST_P(FileWriteFailureTest, LeavesTheNewContentWholeWhenTheOldCannotComeBack) {
  const std::string path = make("file", "old");
  bool isBroken = false;
  const ScopedFault fault([&](FileStep step) {
    if (step == FileStep::createInvisible && !GetParam()) return EOPNOTSUPP;
    isBroken = isBroken || step == FileStep::syncFolder;
    return isBroken ? EIO : 0;
  });
  EXPECT_EQ(errorOf([&] { writeFileAtomically(path, dataOf("new")); }), EIO);
  EXPECT_EQ(content(path), "new");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

TEST_P(FileWriteFailureTest, ReportsTheFolderWhenTheOldContentMayNotBeRead) {
  const std::string path = make("file", "old", 0200);
  const auto write = [&] {
    const ScopedFault fault(failing(FileStep::syncFolder, EIO));
    return errorOf([&] { writeFileAtomically(path, dataOf("new")); });
  };
  if (geteuid() == 0) {
    ASSERT_EQ(chown(folder.c_str(), 4711, 4712), 0);
    ASSERT_EQ(chown(path.c_str(), 4711, 4712), 0);
    const ScopedUser user(4711, 4712, {});
    EXPECT_EQ(write(), EIO);
  } else {
    EXPECT_EQ(write(), EIO);
  }
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(content(path), "new");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

/// Limits the size of the files that this process writes.
class ScopedFileSizeLimit {
 public:
  explicit ScopedFileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &usual_);
    const rlimit limit{bytes, usual_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~ScopedFileSizeLimit() { setrlimit(RLIMIT_FSIZE, &usual_); }

 private:
  rlimit usual_{};
};

TEST_P(FileWriteFailureTest, ALimitOnFileSizesIsAnErrorAndNoSignal) {
  const std::string path = make("file", "old");
  int writes = 0;
  int error = 0;
  {
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::createInvisible && !GetParam()) return EOPNOTSUPP;
      writes += step == FileStep::write ? 1 : 0;
      return 0;
    });
    const ScopedFileSizeLimit limit(1000);
    error = errorOf([&] { writeFileAtomically(path, dataOf(std::string(5000, 'x'))); });
  }
  EXPECT_EQ(error, EFBIG);
  EXPECT_EQ(writes, 2);  // the first was short
  EXPECT_EQ(content(path), "old");
  EXPECT_THAT(names(folder), ElementsAre("file"));
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGXFSZ), 0);
}

TEST_P(FileWriteFailureTest, FolderThatTakesNoFiles) {
  const std::string path = make("file", "old");
  ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
  const auto write = [&] { return errorOf([&] { writeFileAtomically(path, dataOf("new")); }); };
  if (geteuid() == 0) {
    const ScopedUser user(4711, 4712, {});
    EXPECT_EQ(write(), EACCES);
  } else {
    EXPECT_EQ(write(), EACCES);
  }
  ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
  EXPECT_EQ(content(path), "old");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

// A folder that only lets files be made in it, as a letter box does.
TEST_P(FileWriteFailureTest, FolderThatCannotBeListed) {
  const std::string path = make("file", "old");
  const auto write = [&] { return errorOf([&] { writeFileAtomically(path, dataOf("new")); }); };
  if (geteuid() == 0) {
    ASSERT_EQ(chown(folder.c_str(), 4711, 4712), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0300), 0);
    const ScopedUser user(4711, 4712, {});
    EXPECT_EQ(write(), 0);
  } else {
    ASSERT_EQ(chmod(folder.c_str(), 0300), 0);
    EXPECT_EQ(write(), 0);
  }
  ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
  EXPECT_EQ(content(path), "new");
  EXPECT_THAT(names(folder), ElementsAre("file"));
}

}  // namespace
}  // namespace ns
