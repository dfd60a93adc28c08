#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/File.h"
#include "platform/foundation/FileSteps.h"

namespace ns::testing {

inline Data dataOf(const std::string& bytes) { return Data(bytes); }

/// Bytes of which no stretch looks like another.
inline std::string manyBytes(size_t length) {
  std::string bytes(length, '\0');
  uint64_t state = 1;
  for (char& byte : bytes) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    byte = static_cast<char>(state >> 56);
  }
  return bytes;
}

inline std::string bytesOf(const Data& data) { return std::string(data.view()); }

/// A folder of a test's own, removed with everything in it.
class FileTest : public ::testing::Test {
 protected:
  FileTest() {
    std::string name = (std::filesystem::temp_directory_path() / "tavlin-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    folder = name + "/";
  }
  ~FileTest() override { std::filesystem::remove_all(folder); }

  /// Makes a file without the code under test.
  std::string make(const std::string& name, const std::string& content, mode_t mode = 0644) {
    const std::string path = folder + name;
    std::ofstream(path, std::ios::binary) << content;
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
  }
  /// A file's content, read without the code under test; "(none)" when there is no file.
  static std::string content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return "(none)";
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  /// What lies in a folder, sorted.
  static std::vector<std::string> names(const std::string& path) {
    std::vector<std::string> all;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      all.push_back(entry.path().filename().string());
    }
    std::sort(all.begin(), all.end());
    return all;
  }
  static struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
  }
  static mode_t modeOf(const std::string& path) { return statusOf(path).st_mode & 07777; }

  std::string folder;  ///< with a slash at its end
};

/// Has a function asked before each step of file operations while it lives; it answers 0 or the
/// error that the step is to have.
class ScopedFault {
 public:
  using Function = std::function<int(FileStep)>;
  explicit ScopedFault(Function function) {
    current() = std::move(function);
    fileFault = [](FileStep step) { return current()(step); };
  }
  ~ScopedFault() {
    fileFault = nullptr;
    current() = nullptr;
  }

 private:
  static Function& current() {
    static Function function;
    return function;
  }
};

/// Has root act as another user for a time.
class ScopedUser {
 public:
  ScopedUser(uid_t user, gid_t group, const std::vector<gid_t>& more) {
    groups_.resize(static_cast<size_t>(getgroups(0, nullptr)));
    EXPECT_GE(getgroups(static_cast<int>(groups_.size()), groups_.data()), 0);
    EXPECT_EQ(setgroups(more.size(), more.data()), 0);
    EXPECT_EQ(setegid(group), 0);
    EXPECT_EQ(seteuid(user), 0);
  }
  ~ScopedUser() {
    EXPECT_EQ(seteuid(0), 0);
    EXPECT_EQ(setegid(0), 0);
    EXPECT_EQ(setgroups(groups_.size(), groups_.data()), 0);
  }

 private:
  std::vector<gid_t> groups_;
};

/// The error number that an action raises FileException with; 0 for none.
inline int errorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const FileException& raised) {
    return raised.error();
  }
  return 0;
}

inline size_t openDescriptors() {
  size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    (void)entry;
    ++count;
  }
  return count;
}

}  // namespace ns::testing
