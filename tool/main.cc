// The command qel-purchase.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>

#include "command_line.h"
#include "events_command.h"
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

}  // namespace

int main(int argc, char** argv) {
  // A closed pipe and a file size limit become errors of write(), which are reported, instead of
  // ending the program silently.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  reserveStandardStreams();

  CLI::App app("Computes the events of in-app purchases.", "qel-purchase");
  app.option_defaults()->take_last();
  app.set_version_flag("--version", "qel-purchase " QEL_VERSION);
  return qel::tool::runCommandLine(argc, argv, app,
                                   {
                                       qel::tool::addEvents(app),
                                       qel::tool::addReceipt(app),
                                   });
}
