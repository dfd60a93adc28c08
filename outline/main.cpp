// tavlin: see, search, convert, change, check and edit outline documents.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "outline/Program.h"
#include "outline/common/Messages.h"
#include "outline/common/Output.h"

namespace {

constexpr int kPipeStatus = 141;

/// A standard stream that was closed must not become a document's descriptor: messages would go
/// into it.
void openStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    const int mode = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;  // so that its use still fails
    if (::fcntl(stream, F_GETFD) == -1 && ::open("/dev/null", mode) == -1) return;
  }
}

int run(int argc, char** argv) {
  try {
    return tavlin::runProgram(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
  } catch (const tavlin::ClosedPipe&) {
    return kPipeStatus;
  } catch (const std::bad_alloc&) {
    tavlin::report("there is not enough memory");
  } catch (const std::exception& exception) {
    tavlin::report(exception.what());
  }
  return tavlin::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  openStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  // taking apart a document of a hundred thousand items would only cost time
  std::_Exit(run(argc, argv));
}
