// The command qel-purchase.

#include <fcntl.h>
#include <oneapi/tbb/info.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <string>

#include "events_command.h"

namespace {

using qel::tool::EventsOptions;
using qel::tool::ExitStatus;

constexpr const char* kEventsFooter = R"(
Reads one purchase from each line of FILE (JSON Lines), computes its event, and
writes one line of JSON for it to standard output, in the same order. A line that
cannot be read gives a line with an error in its place. Blank lines are skipped.

Exit status: 0 all lines were read, 1 some were rejected, 2 wrong usage or a file
that cannot be read or written, 130 interrupted.

Example:
  qel-purchase events examples/purchases.jsonl | jq -c .event)";

// Keeps the numbers of standard streams that are closed from the files that are opened next. What
// takes their place can be neither read nor written, as is right for a closed stream.
void reserveStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    // The lowest free number is given out, and that is this one.
    [[maybe_unused]] const int reserved =
        open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

// Writes a text that the command line asked for, such as the help.
ExitStatus show(const std::string& text) {
  std::cout << text << std::flush;
  if (std::cout) return qel::tool::kAllRead;
  std::cerr << "qel-purchase: cannot write standard output\n";
  return qel::tool::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that goes away is an error to tell, not a reason to end in silence.
  std::signal(SIGPIPE, SIG_IGN);
  reserveStandardStreams();

  CLI::App app("Computes the events of in-app purchases.", "qel-purchase");
  app.set_version_flag("--version", "qel-purchase " QEL_VERSION);
  app.require_subcommand(1);

  EventsOptions options;
  options.jobs = oneapi::tbb::info::default_concurrency();
  bool allowsUnknown = false;
  bool writesStrings = false;
  bool isQuiet = false;
  CLI::App* const events = app.add_subcommand("events", "Compute the event of each purchase");
  events->footer(kEventsFooter);
  events->add_option("FILE", options.input, "Purchases, one a line; - is standard input")
      ->capture_default_str();
  events->add_flag("--allow-unknown", allowsUnknown,
                   "Ignore unknown keys instead of rejecting them");
  events->add_flag(
      "--int64-as-string", writesStrings,
      "Write the integers of events as strings, for readers that hold numbers in doubles");
  events
      ->add_option("--first-line", options.firstLineNumber,
                   "Number of the first line, for a part of a larger input; by default 1")
      ->check(CLI::PositiveNumber);
  events->add_option("--jobs", options.jobs, "Threads to work on; by default one for each core")
      ->check(CLI::Range(1, 1024));
  events->add_flag("--quiet", isQuiet, "Show no progress on a terminal");

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return show(app.help());
  } catch (const CLI::CallForVersion&) {
    return show(app.version() + "\n");
  } catch (const CLI::ParseError& error) {
    std::cerr << "qel-purchase: " << error.what() << "\nTry 'qel-purchase --help'.\n";
    return qel::tool::kFailed;
  }

  if (allowsUnknown) options.unknownKeys = qel::tool::PurchaseReader::UnknownKeys::kAreIgnored;
  if (writesStrings) options.int64Form = qel::tool::Int64Form::kString;
  options.showsProgress = !isQuiet;
  return qel::tool::runEvents(options);
}
