#include "interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace qel::tool {
namespace {

volatile std::sig_atomic_t interrupted = 0;

// Reading end and writing end.
std::array<int, 2> pipeEnds = {-1, -1};

extern "C" void onInterrupt(int) {
  const int savedError = errno;
  interrupted = 1;
  const char wake = 0;
  [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &wake, 1);
  errno = savedError;
}

[[noreturn]] void throwError(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

void catchInterrupt() {
  if (pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) throwError("cannot make a pipe");
  struct sigaction action = {};
  action.sa_handler = onInterrupt;
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  struct sigaction before = {};
  if (sigaction(SIGINT, &action, &before) != 0) throwError("cannot catch the interrupt");
  // A shell starts background programs with SIGINT ignored, and it must stay so.
  if (before.sa_handler == SIG_IGN) std::signal(SIGINT, SIG_IGN);
}

bool isInterrupted() { return interrupted != 0; }

int interruptDescriptor() { return pipeEnds[0]; }

}  // namespace qel::tool
