#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "platform/foundation/FileHandle.h"
#include "tests/foundation/FileTesting.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::bytesOf;
using testing::errorOf;
using testing::openDescriptors;
using testing::reasonOf;
using testing::ScopedFault;

class FileReadTest : public testing::FileTest {};

/// Bytes that differ from place to place.
std::string pattern(size_t length) {
  std::string bytes(length, '\0');
  for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
  return bytes;
}

TEST_F(FileReadTest, ReadsEveryLengthWithZerosBehindIt) {
  constexpr size_t kMapped = size_t{4} << 20;
  for (const size_t length :
       {size_t{0}, size_t{1}, size_t{15}, size_t{16}, size_t{17}, size_t{4095}, size_t{4096},
        size_t{4097}, kMapped - 18, kMapped - 17, kMapped - 16, kMapped, kMapped + 1,
        2 * kMapped - 17, 2 * kMapped - 16, 2 * kMapped}) {
    const std::string bytes = pattern(length);
    const Data data = readFile(make("file", bytes));
    ASSERT_EQ(data.length(), length);
    ASSERT_TRUE(data.view() == bytes) << length;
    for (size_t i = 0; i < 16; ++i) ASSERT_EQ(data.bytes()[length + i], 0) << length;
  }
}

TEST_F(FileReadTest, LeavesNoDescriptorOpen) {
  const std::string path = make("file", "text");
  const size_t before = openDescriptors();
  (void)readFile(path);
  (void)errorOf([&] { (void)readFile(folder); });
  (void)errorOf([&] { (void)readFile(folder + "missing"); });
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FileReadTest, WhatWasReadStaysWhenTheFileChanges) {
  for (const size_t length : {size_t{1000}, size_t{5} << 20}) {
    const std::string bytes = pattern(length);
    const std::string path = make("file", bytes);
    const Data data = readFile(path);
    make("file", "");
    EXPECT_TRUE(data.view() == bytes);
  }
}

TEST_F(FileReadTest, SaysWhatFailedWhereAndWhy) {
  const std::string path = folder + "missing";
  EXPECT_EQ(reasonOf<FileException>([&] { (void)readFile(path); }),
            "open " + path + ": No such file or directory");
  EXPECT_EQ(errorOf([&] { (void)readFile(path); }), ENOENT);
  EXPECT_EQ(errorOf([&] { (void)readFile(""); }), ENOENT);
  EXPECT_EQ(errorOf([&] { (void)readFile(make("file", "") + "/x"); }), ENOTDIR);
}

TEST_F(FileReadTest, RefusesAFolder) {
  EXPECT_EQ(reasonOf<FileException>([&] { (void)readFile(folder); }),
            "read " + folder + ": Is a directory");
  EXPECT_EQ(errorOf([&] { (void)readFile(folder); }), EISDIR);
}

TEST_F(FileReadTest, RefusesWhatIsNoFileWithoutWaiting) {
  const std::string fifo = folder + "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(errorOf([&] { (void)readFile(fifo); }), EOPNOTSUPP);
  EXPECT_EQ(errorOf([] { (void)readFile("/dev/null"); }), EOPNOTSUPP);
  EXPECT_EQ(errorOf([] { (void)readFile("/dev/zero"); }), EOPNOTSUPP);
}

TEST_F(FileReadTest, RefusesAPathWithAZeroByte) {
  const std::string path = make("file", "text");
  EXPECT_EQ(errorOf([&] { (void)readFile(path + '\0' + "x"); }), EINVAL);
}

TEST_F(FileReadTest, FollowsLinks) {
  make("file", "text");
  ASSERT_EQ(symlink("file", (folder + "link").c_str()), 0);
  EXPECT_EQ(bytesOf(readFile(folder + "link")), "text");
}

TEST_F(FileReadTest, NamesNeedNotBeText) {
  EXPECT_EQ(bytesOf(readFile(make("\xFF\xFE", "bytes"))), "bytes");
}

// The system says that such a file has no bytes.
TEST_F(FileReadTest, ReadsFilesOfUnknownSize) {
  const std::string status = bytesOf(readFile("/proc/self/status"));
  EXPECT_EQ(status.substr(0, 5), "Name:");
  // longer than a first guess
  EXPECT_GT(readFile("/proc/self/smaps").length(), 4096U);
}

TEST_F(FileReadTest, ReadsAFileThatGrows) {
  for (const size_t length : {size_t{10}, size_t{5} << 20}) {
    const std::string bytes = pattern(length);
    const std::string more = pattern(length + 100000);
    const std::string path = make("file", bytes);
    int reads = 0;
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::read && ++reads == 2) {
        std::ofstream(path, std::ios::binary | std::ios::app) << more;
      }
      return 0;
    });
    const Data data = readFile(path);
    ASSERT_TRUE(data.view() == bytes + more);
    for (size_t i = 0; i < 16; ++i) ASSERT_EQ(data.bytes()[data.length() + i], 0);
  }
}

TEST_F(FileReadTest, ReadsAFileThatShrinks) {
  for (const size_t length : {size_t{1000}, size_t{5} << 20}) {
    const std::string bytes = pattern(length);
    const std::string path = make("file", bytes);
    const ScopedFault fault([&](FileStep step) {
      if (step == FileStep::read) {
        EXPECT_EQ(truncate(path.c_str(), 10), 0);
      }
      return 0;
    });
    const Data data = readFile(path);
    ASSERT_TRUE(data.view() == bytes.substr(0, 10));
    for (size_t i = 0; i < 16; ++i) ASSERT_EQ(data.bytes()[data.length() + i], 0);
  }
}

TEST_F(FileReadTest, TriesAgainWhenInterrupted) {
  const std::string path = make("file", "text");
  int reads = 0;
  const ScopedFault fault(
      [&](FileStep step) { return step == FileStep::read && ++reads <= 3 ? EINTR : 0; });
  EXPECT_EQ(bytesOf(readFile(path)), "text");
  EXPECT_EQ(reads, 5);
}

TEST_F(FileReadTest, RaisesWhenOpeningOrReadingFails) {
  const std::string path = make("file", "text");
  for (const FileStep failing : {FileStep::open, FileStep::read}) {
    const size_t before = openDescriptors();
    const ScopedFault fault([&](FileStep step) { return step == failing ? EIO : 0; });
    EXPECT_EQ(reasonOf<FileException>([&] { (void)readFile(path); }),
              (failing == FileStep::open ? "open " : "read ") + path + ": Input/output error");
    EXPECT_EQ(openDescriptors(), before);
  }
}

// Nothing but a claim: the file takes no room and cannot be read into memory.
TEST_F(FileReadTest, RaisesWhenThereIsNotEnoughMemory) {
  const std::string path = make("file", "");
  if (truncate(path.c_str(), off_t{1} << 43) != 0) GTEST_SKIP() << "no files of this size here";
  const int error = errorOf([&] {
    const ScopedFault fault([](FileStep step) { return step == FileStep::read ? EIO : 0; });
    (void)readFile(path);
  });
  // EIO where the system promises memory that it does not have
  EXPECT_TRUE(error == ENOMEM || error == EIO) << error;
}

/// Writes to a FIFO from another thread: once somebody reads it, the pieces with a pause before
/// each.
class FifoWriter {
 public:
  FifoWriter(const std::string& path, const std::vector<std::string>& pieces,
             std::chrono::milliseconds pause)
      : thread_([=] {
          const FileHandle file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
          for (const std::string& piece : pieces) {
            std::this_thread::sleep_for(pause);
            for (size_t at = 0; at < piece.size();) {
              const ssize_t count = ::write(file.get(), piece.data() + at, piece.size() - at);
              if (count < 0) return;
              at += static_cast<size_t>(count);
            }
          }
        }) {}
  ~FifoWriter() { thread_.join(); }

 private:
  std::thread thread_;
};

class StreamReadTest : public testing::FileTest {
 protected:
  StreamReadTest() { EXPECT_EQ(mkfifo(fifo_.c_str(), 0600), 0); }
  const std::string fifo_ = folder + "fifo";
};

TEST_F(StreamReadTest, ReadsAFifoToItsEnd) {
  const std::string much = pattern(500'000);
  for (const std::vector<std::string>& pieces :
       {std::vector<std::string>{"text"}, {much}, {"a", much, "b", "c"}}) {
    std::string all;
    for (const std::string& piece : pieces) all += piece;
    const FifoWriter writer(fifo_, pieces, std::chrono::milliseconds(20));
    const Data data = readFileOrStream(fifo_);
    ASSERT_TRUE(data.view() == all);
    for (size_t i = 0; i < 16; ++i) ASSERT_EQ(data.bytes()[data.length() + i], 0);
  }
}

// The writer is there, but takes longer than anybody waits for one to come.
TEST_F(StreamReadTest, WaitsForAWriterThatIsSlow) {
  const FifoWriter writer(fifo_, {"late"}, std::chrono::milliseconds(1300));
  EXPECT_EQ(bytesOf(readFileOrStream(fifo_)), "late");
}

TEST_F(StreamReadTest, AFifoThatNobodyWritesToIsEmpty) {
  const size_t open = openDescriptors();
  EXPECT_TRUE(readFileOrStream(fifo_).empty());
  EXPECT_EQ(openDescriptors(), open);
}

TEST_F(StreamReadTest, ReadsAPipeOfThisProcessAndItsEndAtOnce) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const FileHandle readEnd(ends[0]);
  ASSERT_EQ(::write(ends[1], "text", 4), 4);
  ASSERT_EQ(::close(ends[1]), 0);
  const std::string path = "/dev/fd/" + std::to_string(readEnd.get());
  EXPECT_EQ(bytesOf(readFileOrStream(path)), "text");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(readFileOrStream(path).empty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
}

TEST_F(StreamReadTest, ReadsFilesAndRefusesTheRest) {
  EXPECT_EQ(bytesOf(readFileOrStream(make("file", "text"))), "text");
  EXPECT_EQ(errorOf([&] { (void)readFileOrStream(folder); }), EISDIR);
  EXPECT_EQ(errorOf([&] { (void)readFileOrStream(folder + "missing"); }), ENOENT);
  EXPECT_EQ(errorOf([] { (void)readFileOrStream("/dev/zero"); }), EOPNOTSUPP);
  EXPECT_EQ(errorOf([&] { (void)readFileOrStream(fifo_ + '\0'); }), EINVAL);
}

}  // namespace
}  // namespace ns
