#include "outline/common/Jobs.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <new>

#include "model/OLException.h"
#include "outline/common/Documents.h"
#include "outline/common/JobProcesses.h"
#include "outline/common/Messages.h"
#include "outline/common/Progress.h"
#include "platform/foundation/Exception.h"

namespace tavlin {

namespace {

volatile std::sig_atomic_t isInterrupted = 0;

/// Notes SIGINT while it lives, instead of ending the program.
class InterruptGuard {
 public:
  explicit InterruptGuard(bool isWanted) : isWanted_(isWanted) {
    if (!isWanted_) return;
    isInterrupted = 0;
    struct sigaction noting {};
    noting.sa_handler = [](int) { isInterrupted = 1; };
    ::sigaction(SIGINT, &noting, &former_);
  }
  ~InterruptGuard() {
    if (isWanted_) ::sigaction(SIGINT, &former_, nullptr);
  }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  bool isWanted_;
  struct sigaction former_ {};
};

size_t processCount(size_t asked, size_t files) {
  const size_t processors = static_cast<size_t>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
  return std::min(asked == 0 ? processors : asked, files);
}

}  // namespace

bool wasInterrupted() { return isInterrupted != 0; }

int workOnFile(const std::string& file, Output& output, const FileWork& work) {
  try {
    return work(file, output);
  } catch (const FileFailure& failure) {
    report(failure.file().empty() ? file : failure.file(), failure.what());
  } catch (const OLException& exception) {
    report(file, exception.what());
  } catch (const ns::Exception& exception) {
    report(file, exception.what());
  } catch (const std::bad_alloc&) {
    report(file, "there is not enough memory");
  }
  return kFailed;
}

void JobSummary::count(int status) { ++(status == kDone ? done : status == kNo ? no : failed); }

int JobSummary::status() const { return failed > 0 ? kFailed : no > 0 ? kNo : kDone; }

JobSummary forEachFile(const std::vector<std::string>& files, const JobOptions& options,
                       Output& output, const FileWork& work) {
  const InterruptGuard guard(options.finishesWhenInterrupted);
  const size_t processes = processCount(options.count, files.size());
  if (processes > 1) return JobProcesses(files, processes, output, work).run();
  JobSummary summary;
  Progress progress(files.size());
  const auto workOn = [&](const std::string& file) {
    const FileProgress shown(file);
    return workOnFile(file, output, work);
  };
  for (const std::string& file : files) {
    if (options.finishesWhenInterrupted && wasInterrupted()) {
      summary.isInterrupted = true;
      break;
    }
    summary.count(workOn(file));
    progress.step();
  }
  return summary;
}

}  // namespace tavlin
