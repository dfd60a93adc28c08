// tavlin-keywords: reads and replaces the keywords of one document.

#include <fcntl.h>
#include <unistd.h>

#include <exception>
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
  // a newline that cannot be printed changes nothing of what was done
  [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
}

int write(int argc, char** argv) {
  std::vector<ns::String> keywords;
  for (int i = 3; i < argc; ++i) {
    const std::optional<ns::String> keyword = ns::String::fromUtf8(argv[i]);
    if (!keyword) {
      ns::log("argument " + std::to_string(i) + " is no UTF-8 text: nothing was changed");
      return tavlin::kFailure;
    }
    keywords.push_back(*keyword);
  }
  return tavlin::writeKeywords(argv[2], keywords);
}

/// A standard stream that was closed must not become the document's descriptor: messages would
/// go into it.
void openStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) == -1 && ::open("/dev/null", O_RDWR) == -1) return;
  }
}

int run(int argc, char** argv) {
  if (argc < 3) {
    print(kUsage);
    return tavlin::kSuccess;
  }
  const std::string_view mode = argv[1];
  if (mode != "-r" && mode != "-w") return tavlin::kSuccess;  // an unknown mode says nothing
  const bool isReading = mode == "-r";
  try {
    return isReading ? tavlin::readKeywords(argv[2], nullptr) : write(argc, argv);
  } catch (const std::exception& exception) {
    ns::log(exception.what());
  }
  ns::log(isReading ? "fail: open document" : "fail: write document");
  return tavlin::kFailure;
}

}  // namespace

int main(int argc, char** argv) {
  openStandardStreams();
  const int status = run(argc, argv);
  print("\n");
  return status;
}
