#include "platform/foundation/FileState.h"

#include <time.h>

namespace ns {

namespace {

int64_t nanoseconds(const timespec& time) {
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// How far apart two changes have to be for their times to differ, beyond what the system's clock
/// for files takes for a step.
int64_t precision(int64_t time) {
  // A time without microseconds is one of a file system that counts more coarsely, up to two
  // seconds as FAT does.  Others drop what is below a microsecond.
  constexpr int64_t kCoarse = 2'000'000'000;
  constexpr int64_t kFine = 1'000;
  return time % 1'000'000 == 0 ? kCoarse : kFine;
}

}  // namespace

FileState::Stamp::Stamp(const struct stat& status)
    : device(status.st_dev),
      inode(status.st_ino),
      size(status.st_size),
      modified(nanoseconds(status.st_mtim)),
      changed(nanoseconds(status.st_ctim)) {}

int64_t FileState::clock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return nanoseconds(now);
}

FileState::FileState(const struct stat& status, int64_t moment, const DataPieces& content)
    : stamp_(status) {
  // Every change sets this time, whatever it sets the other one to.
  if (stamp_->changed + precision(stamp_->changed) > moment) content_ = content;
}

bool FileState::matches(const struct stat& status) const {
  return stamp_ && S_ISREG(status.st_mode) && *stamp_ == Stamp(status);
}

}  // namespace ns
