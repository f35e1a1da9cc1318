// The command qel-purchase.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string_view>

#include "command_line.h"
#include "completion_command.h"
#include "events_command.h"
#include "explain/code_command.h"
#include "explain/explain_command.h"
#include "receipt_command.h"

namespace {

// Opens /dev/null in place of each standard stream that is closed, so that no file gets its
// descriptor. The descriptor is opened in the wrong direction: using it fails, as on a closed
// stream.
void reserveStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    // open() returns the lowest free descriptor, which is this one.
    [[maybe_unused]] const int reserved =
        open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

// Ends the program with a message. Allocates nothing.
[[noreturn]] void fail(std::string_view reason) {
  for (const std::string_view text : {std::string_view("qel-purchase: "), reason, {"\n"}}) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  }
  _exit(qel::tool::kFailed);
}

constexpr std::string_view kNoMemory = "not enough memory";

// Ends the program after an exception that nothing catches. The library lets none out, so a
// failed allocation within it ends here. So does TBB's if it cannot start a thread.
[[noreturn]] void onTerminate() {
  if (const std::exception_ptr exception = std::current_exception()) {
    try {
      std::rethrow_exception(exception);
    } catch (const std::bad_alloc&) {
      fail(kNoMemory);
    } catch (const std::runtime_error& error) {
      fail(error.what());
    } catch (...) {
      std::abort();
    }
  }
  std::abort();
}

}  // namespace

int main(int argc, char** argv) {
  // A closed pipe and a file size limit become errors of write(), which are reported, instead of
  // ending the program silently.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  reserveStandardStreams();
  std::set_terminate(onTerminate);

  CLI::App app("Computes the events of in-app purchases, explains them, and reads receipts.",
               "qel-purchase");
  app.footer("'qel-purchase SUBCOMMAND --help' shows the options of a subcommand, and examples.");
  app.option_defaults()->take_last();
  app.set_version_flag("--version", "qel-purchase " QEL_VERSION);
  try {
    return qel::tool::runCommandLine(argc, argv, app,
                                     {
                                         qel::tool::addEvents(app),
                                         qel::tool::addReceipt(app),
                                         qel::tool::addExplain(app),
                                         qel::tool::addCode(app),
                                         qel::tool::addCompletion(app),
                                     });
  } catch (const std::bad_alloc&) {
    fail(kNoMemory);
  }
}
