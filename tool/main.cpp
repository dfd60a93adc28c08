// tavlin-keywords: reads and replaces the keywords of one document.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Log.h"
#include "tool/Modes.h"

namespace {

constexpr std::string_view kUsage =
    "\n\n tavlin-keywords - Command line utility to read and write keywords field in properties "
    "of Tavlin documents.\n\n"
    " tavlin-keywords -r fullpath\n"
    "    It reads keywords from file where fullpath and lists keywords.\n\n"
    " tavlin-keywords -w fullpath [keyword1 keyword2 ...]\n"
    "    It writes keywords into file where fullpath.\n\n";

void print(std::string_view text) {
  // what cannot be printed here changes nothing of what was done
  [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
}

int write(int argc, char** argv, std::shared_ptr<tavlin::OLDataManager>* opened) {
  std::vector<ns::String> keywords;
  for (int i = 3; i < argc; ++i) {
    const std::optional<ns::String> keyword = ns::String::fromUtf8(argv[i]);
    if (!keyword) {
      ns::log("argument " + std::to_string(i) + " is no UTF-8 text: nothing was changed");
      return tavlin::kFailure;
    }
    keywords.push_back(*keyword);
  }
  return tavlin::writeKeywords(argv[2], keywords, opened);
}

/// A standard stream that was closed must not become the document's descriptor: messages would
/// go into it.  Its place is taken by one that refuses what the stream is for.
void openStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    const int flags = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (::fcntl(stream, F_GETFD) == -1 && ::open("/dev/null", flags) == -1) return;
  }
}

/// A pipe that was closed and a limit on the size of files are errors of the write that meets
/// them: a document that was saved is no failure because its newline was not printed.
void ignoreSignalsOfWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

int run(bool isReading, int argc, char** argv) {
  // The process ends with the document: taking apart a hundred thousand items first would only
  // cost time.
  // (Used, or a compiler leaves it out, and the document looks lost.)
  [[gnu::used]] static auto* const opened = new std::shared_ptr<tavlin::OLDataManager>();
  const std::string path = argv[2];
  try {
    return isReading ? tavlin::readKeywords(path, nullptr, opened) : write(argc, argv, opened);
  } catch (const std::exception& exception) {
    tavlin::logFailure(path, exception);
  }
  ns::log(isReading ? "fail: open document" : "fail: write document");
  return tavlin::kFailure;
}

}  // namespace

int main(int argc, char** argv) {
  openStandardStreams();
  ignoreSignalsOfWrites();
  if (argc < 3) print(kUsage);
  const std::string_view mode = argc < 3 ? "" : argv[1];
  const bool isReading = mode == "-r";
  int status = tavlin::kSuccess;  // an unknown mode says nothing
  if (isReading || mode == "-w") status = run(isReading, argc, argv);
  if (isReading && status == tavlin::kSuccess) {
    if (!tavlin::printKeywords("\n")) status = tavlin::kFailure;
  } else {
    print("\n");
  }
  return status;
}
