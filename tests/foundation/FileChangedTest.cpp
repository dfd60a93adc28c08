#include <fcntl.h>
#include <gmock/gmock.h>
#include <time.h>

#include "tests/foundation/FileTesting.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::bytesOf;
using testing::dataOf;
using ::testing::ElementsAre;
using testing::openDescriptors;
using testing::reasonOf;
using testing::ScopedFault;

/// What another program does to a file between its reading and its replacing.
class FileChangedTest : public testing::FileTest {
 protected:
  /// The error that replacing what was read ends with, 0 for none.  Asks that nothing but a file
  /// of `left` remains, "(none)" for no file.
  int replace(const std::string& path, const FileState& read, const std::string& left) {
    const size_t open = openDescriptors();
    int error = 0;
    try {
      writeFileAtomically(path, dataOf("ours"), read);
    } catch (const FileChangedException& raised) {
      error = raised.error();
    }
    EXPECT_EQ(content(path), left);
    EXPECT_EQ(names(folder).size(), left == "(none)" ? 0U : 1U);
    EXPECT_EQ(openDescriptors(), open);
    return error;
  }
  /// A file that was changed so long ago that its times say everything.
  std::string makeSettled(const std::string& name, const std::string& bytes) {
    const std::string path = make(name, bytes);
    FileState state;
    do {
      (void)readFile(path, state);
    } while (state.content());
    return path;
  }
};

TEST_F(FileChangedTest, ReplacesWhatIsAsItWas) {
  const std::string path = make("file", "old");
  FileState state;
  EXPECT_EQ(bytesOf(readFile(path, state)), "old");
  EXPECT_TRUE(state.isThere());
  EXPECT_EQ(replace(path, state, "ours"), 0);
}

TEST_F(FileChangedTest, ReplacesWhatWasOnlyRead) {
  const std::string path = makeSettled("file", "old");
  FileState state;
  (void)readFile(path, state);
  ASSERT_FALSE(state.content());
  EXPECT_EQ(content(path), "old");
  EXPECT_EQ(replace(path, state, "ours"), 0);
}

TEST_F(FileChangedTest, LeavesAnotherFileInItsPlace) {
  for (const char* theirs : {"new", "longer", "old"}) {
    const std::string path = make("file", "old");
    FileState state;
    (void)readFile(path, state);
    ASSERT_EQ(rename(make("theirs", theirs).c_str(), path.c_str()), 0);
    EXPECT_EQ(replace(path, state, theirs), ESTALE);
  }
}

TEST_F(FileChangedTest, LeavesWhatWasWrittenInPlace) {
  for (const char* theirs : {"", "longer", "new"}) {
    const std::string path = makeSettled("file", "old");
    FileState state;
    (void)readFile(path, state);
    make("file", theirs);
    EXPECT_EQ(replace(path, state, theirs), ESTALE) << theirs;
  }
}

// On some systems the two changes have the same time.
TEST_F(FileChangedTest, LeavesWhatWasWrittenInPlaceAtTheSameMoment) {
  for (int i = 0; i < 200; ++i) {
    const std::string path = make("file", "old");
    FileState state;
    (void)readFile(path, state);
    std::ofstream(path, std::ios::binary | std::ios::in) << "new";
    ASSERT_EQ(replace(path, state, "new"), ESTALE) << i;
  }
}

// The same on every system: a state that has the times of the second change.
TEST_F(FileChangedTest, ComparesTheBytesThatAStateHoldsOnTo) {
  const std::string path = make("file", "new");
  const struct stat status = statusOf(path);
  const auto state = [&](const std::string& bytes) {
    const FileState held(status, 0, dataOf(bytes));
    EXPECT_TRUE(held.content());
    return held;
  };
  EXPECT_EQ(replace(path, state("old"), "new"), ESTALE);
  EXPECT_EQ(replace(path, state("new"), "ours"), 0);
}

// As programs do that restore times.
TEST_F(FileChangedTest, LeavesWhatHasItsOldTimeAgain) {
  const std::string path = makeSettled("file", "old");
  FileState state;
  (void)readFile(path, state);
  const struct stat before = statusOf(path);
  make("file", "new");
  const timespec times[] = {before.st_atim, before.st_mtim};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  EXPECT_EQ(replace(path, state, "new"), ESTALE);
}

TEST_F(FileChangedTest, AnotherModeCountsAsAChange) {
  const std::string path = makeSettled("file", "old");
  FileState state;
  (void)readFile(path, state);
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(replace(path, state, "old"), ESTALE);
}

TEST_F(FileChangedTest, MakesNothingWhereTheFileIsGone) {
  const std::string path = make("file", "old");
  FileState state;
  (void)readFile(path, state);
  ASSERT_EQ(unlink(path.c_str()), 0);
  EXPECT_EQ(replace(path, state, "(none)"), ENOENT);
}

TEST_F(FileChangedTest, FollowsALinkAsItLeadsNow) {
  const std::string path = make("file", "old");
  const std::string link = folder + "link";
  ASSERT_EQ(symlink("file", link.c_str()), 0);
  FileState state;
  (void)readFile(link, state);
  state = writeFileAtomically(link, dataOf("ours"), state);
  EXPECT_EQ(content(path), "ours");
  make("other", "theirs");
  ASSERT_EQ(unlink(link.c_str()), 0);
  ASSERT_EQ(symlink("other", link.c_str()), 0);
  EXPECT_THROW(writeFileAtomically(link, dataOf("again"), state), FileChangedException);
  EXPECT_EQ(content(folder + "other"), "theirs");
  EXPECT_EQ(content(path), "ours");
}

TEST_F(FileChangedTest, WhatChangesWhileItIsReadHasChanged) {
  const std::string path = makeSettled("file", "old");
  FileState state;
  {
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::read) std::ofstream(path, std::ios::binary | std::ios::in) << "new";
      return 0;
    });
    EXPECT_EQ(bytesOf(readFile(path, state)), "new");
  }
  EXPECT_EQ(replace(path, state, "new"), ESTALE);
}

// The last step before the move is the close of the new file.
TEST_F(FileChangedTest, LooksWhenTheNewFileIsComplete) {
  for (const bool isInvisible : {true, false}) {
    const std::string path = make("file", "old");
    FileState state;
    (void)readFile(path, state);
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::createInvisible && !isInvisible) return EOPNOTSUPP;
      if (step == FileStep::close) make("file", "new");
      return 0;
    });
    EXPECT_EQ(replace(path, state, "new"), ESTALE);
  }
}

TEST_F(FileChangedTest, WithoutAStateTheLastOneWins) {
  const std::string path = make("file", "old");
  const ScopedFault fault([&](FileStep step) {
    if (step == FileStep::close) make("file", "new");
    return 0;
  });
  writeFileAtomically(path, dataOf("ours"));
  EXPECT_EQ(content(path), "ours");
}

TEST_F(FileChangedTest, WhatWasWrittenCanBeReplacedAgain) {
  const std::string path = folder + "file";
  FileState state;
  for (int i = 0; i < 20; ++i) {
    const std::string bytes = "version " + std::to_string(i % 10);
    state = writeFileAtomically(path, dataOf(bytes), state);
    EXPECT_TRUE(state.isThere());
    EXPECT_EQ(content(path), bytes);
  }
  std::ofstream(path, std::ios::binary | std::ios::in) << "changed !";
  EXPECT_EQ(replace(path, state, "changed !"), ESTALE);
  state = writeFileAtomically(path, dataOf("forced"));
  EXPECT_EQ(replace(path, state, "ours"), 0);
}

TEST_F(FileChangedTest, MakesAFileOnlyWhereNothingIs) {
  const std::string path = folder + "file";
  EXPECT_EQ(replace(path, FileState(), "ours"), 0);
  EXPECT_EQ(replace(make("file", "theirs"), FileState(), "theirs"), EEXIST);
  for (const bool canKeepOthers : {true, false}) {
    ASSERT_EQ(unlink(path.c_str()), 0);
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::keepOthers && !canKeepOthers) return EINVAL;
      if (step == FileStep::close) make("file", "theirs");
      return 0;
    });
    EXPECT_EQ(replace(path, FileState(), "theirs"), EEXIST);
  }
}

// Between the last look and the move.
TEST_F(FileChangedTest, MovesOverNothingThatWasMadeInTheLastMoment) {
  const std::string path = folder + "file";
  const ScopedFault fault([&](FileStep step) {
    if (step == FileStep::rename) make("file", "theirs");
    return 0;
  });
  EXPECT_EQ(replace(path, FileState(), "theirs"), EEXIST);
}

TEST_F(FileChangedTest, MakesAFileWhereTheSystemOnlyKnowsHowToReplace) {
  const ScopedFault fault([](FileStep step) { return step == FileStep::keepOthers ? EINVAL : 0; });
  EXPECT_EQ(replace(folder + "file", FileState(), "ours"), 0);
}

TEST_F(FileChangedTest, SaysWhatHappened) {
  const std::string path = make("file", "old");
  FileState state;
  (void)readFile(path, state);
  const auto reason = [&](const FileState& expected) {
    return reasonOf<FileException>([&] { writeFileAtomically(path, dataOf("ours"), expected); });
  };
  make("file", "new");
  EXPECT_EQ(reason(state), "replace " + path + ": another program has changed it meanwhile");
  EXPECT_EQ(reason(FileState()), "replace " + path + ": another program has made it meanwhile");
  ASSERT_EQ(unlink(path.c_str()), 0);
  EXPECT_EQ(reason(state), "replace " + path + ": another program has removed it meanwhile");
}

TEST_F(FileChangedTest, AFolderInItsPlaceIsNoFileToReplace) {
  const std::string path = make("file", "old");
  FileState state;
  (void)readFile(path, state);
  ASSERT_EQ(unlink(path.c_str()), 0);
  std::filesystem::create_directory(path);
  EXPECT_EQ(testing::errorOf([&] { writeFileAtomically(path, dataOf("ours"), state); }), EISDIR);
  EXPECT_TRUE(S_ISDIR(statusOf(path).st_mode));
}

/// The state of a file that was last changed at a time, taken some nanoseconds later.
FileState takenAfter(timespec changed, int64_t later) {
  struct stat status {};
  status.st_mode = S_IFREG;
  status.st_ctim = changed;
  return {status, int64_t{changed.tv_sec} * 1'000'000'000 + changed.tv_nsec + later,
          dataOf("bytes")};
}

TEST_F(FileChangedTest, HoldsTheBytesWhereTheTimesMayStandStill) {
  constexpr timespec kFine{1000, 123'456'789};
  constexpr timespec kCoarse{1000, 0};
  EXPECT_TRUE(takenAfter(kFine, 0).content());
  EXPECT_TRUE(takenAfter(kFine, -1'000'000).content());
  EXPECT_TRUE(takenAfter(kFine, 900).content());
  EXPECT_FALSE(takenAfter(kFine, 4'000'000).content());
  EXPECT_TRUE(takenAfter(kCoarse, 1'999'999'999).content());
  EXPECT_FALSE(takenAfter(kCoarse, 2'000'000'000).content());
}

}  // namespace
}  // namespace ns
