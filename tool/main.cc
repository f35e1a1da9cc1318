// The command qel-purchase.

#include <fcntl.h>
#include <oneapi/tbb/info.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "events_command.h"

namespace {

using qel::tool::EventsOptions;
using qel::tool::ExitStatus;

constexpr const char* kEventsFooter = R"(
Reads one purchase from each line of FILE (JSON Lines), computes its event, and
writes one line of JSON for it to standard output, in the same order. For a line
that cannot be read it writes a line with an error. Blank lines are skipped.

Exit status: 0 all lines were read, 1 some were rejected, 2 wrong usage or a file
that cannot be read or written, 130 interrupted.

Example:
  qel-purchase events examples/purchases.jsonl | jq -c .event)";

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

// Accepts a number from `least` to `most` in decimal digits: 010 is ten, 0x10 and +5 are errors.
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most) {
  const std::string range = "from " + std::to_string(least) + " to " + std::to_string(most);
  return CLI::Validator(
      [least, most, range](std::string& text) -> std::string {
        std::uint64_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || stop != end || number < least || number > most) {
          return "expected a number " + range + ", found " + text;
        }
        text = std::to_string(number);
        return "";
      },
      range);
}

// Writes a text that the user asked for, such as the help.
ExitStatus show(const std::string& text) {
  std::cout << text << std::flush;
  if (std::cout) return qel::tool::kAllRead;
  std::cerr << "qel-purchase: cannot write standard output\n";
  return qel::tool::kFailed;
}

// Reports an error in the command line.
ExitStatus complain(const std::string& what) {
  std::cerr << "qel-purchase: " << what << "\nTry 'qel-purchase --help'.\n";
  return qel::tool::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
  // A closed pipe and a file size limit become errors of write(), which are reported, instead of
  // ending the program silently.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  reserveStandardStreams();

  CLI::App app("Computes the events of in-app purchases.", "qel-purchase");
  app.set_version_flag("--version", "qel-purchase " QEL_VERSION);
  app.require_subcommand(1);

  EventsOptions options;
  options.jobs = oneapi::tbb::info::default_concurrency();
  bool writesStrings = false;
  bool isQuiet = false;
  CLI::App* const events = app.add_subcommand("events", "Compute the event of each purchase");
  events->footer(kEventsFooter);
  events->add_option("FILE", options.input, "Purchases, one a line; - is standard input")
      ->capture_default_str();
  events->add_flag("--allow-unknown", options.ignoresUnknownKeys,
                   "Ignore unknown keys instead of rejecting them");
  events->add_flag(
      "--int64-as-string", writesStrings,
      "Write the integers of events as strings, for readers that keep numbers in doubles");
  events
      ->add_option("--first-line", options.firstLineNumber,
                   "Number of the first line, for a part of a larger input; by default 1")
      ->transform(wholeNumber(1, std::numeric_limits<std::uint64_t>::max()));
  events->add_option("--jobs", options.jobs, "Number of threads; by default one for each core")
      ->transform(wholeNumber(1, 1024));
  events->add_flag("--quiet", isQuiet, "Show no progress on a terminal");

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return show(app.help());
  } catch (const CLI::CallForVersion&) {
    return show(app.version() + "\n");
  } catch (const CLI::RequiredError&) {
    const std::vector<std::string> unknown = app.remaining();
    return complain("expected the subcommand events" +
                    (unknown.empty() ? "" : ", found " + unknown.front()));
  } catch (const CLI::ParseError& error) {
    return complain(error.what());
  }

  if (writesStrings) options.int64Form = qel::tool::Int64Form::kString;
  options.showsProgress = !isQuiet;
  return qel::tool::runEvents(options);
}
