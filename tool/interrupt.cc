#include "interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace qel::tool {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t received = 0;

// Reading end and writing end.
std::array<int, 2> pipeEnds = {-1, -1};

extern "C" void onInterrupt(int signal) {
  const int savedError = errno;
  received = signal;
  for (const int caught : kSignals) std::signal(caught, SIG_DFL);
  const char wake = 0;
  [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &wake, 1);
  errno = savedError;
}

[[noreturn]] void throwError(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

void catchInterrupts() {
  if (pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) throwError("cannot make a pipe");
  for (const int signal : kSignals) {
    struct sigaction action = {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESTART;
    struct sigaction before = {};
    if (sigaction(signal, &action, &before) != 0) throwError("cannot catch a signal");
    // A shell starts background programs with SIGINT ignored, nohup with SIGHUP: it must stay so.
    if (before.sa_handler == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

bool isInterrupted() { return received != 0; }

int interruptSignal() { return received; }

int interruptDescriptor() { return pipeEnds[0]; }

}  // namespace qel::tool
