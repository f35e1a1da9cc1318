#include "events_command.h"

#include <oneapi/tbb/info.h>

#include <cstdint>
#include <memory>
#include <string>

#include "events_run.h"
#include "option_values.h"

namespace qel::tool {
namespace {

constexpr const char* kFooter =
    R"(Reads one purchase from each line of the files (JSON Lines, UTF-8), computes its
event, and writes one line of JSON for it, in the same order. For a line that cannot
be read it writes a line with an error. Blank lines are skipped. Files that are
compressed with gzip, zstd or xz are decompressed.

Exit status: 0 all lines were read, 1 some were rejected, 2 wrong usage, a file that
cannot be read or written, or too many rejected lines. After an interrupt 130, after
SIGTERM 143, after SIGHUP 129: the results of what was read are written.

Examples:

  qel-purchase events examples/purchases.jsonl >events.jsonl

  qel-purchase events --unpaired-surrogates replace --did-as-string examples/purchases.jsonl | jq -c .event

  qel-purchase events -o events.jsonl monday.jsonl.gz tuesday.jsonl.zst)";

// The longest line that simdjson reads has 4 GiB.
constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 30;

// Adds the options that say what is read.
void addInputOptions(CLI::App& events, EventsOptions& options) {
  events.add_option("FILE", options.inputs, "Purchases, one a line; - is standard input")
      ->type_name("FILE")
      ->take_all();
  events.add_flag("--allow-unknown", options.ignoresUnknownKeys,
                  "Ignore unknown keys instead of rejecting them");
  events
      .add_option("--first-line", options.firstLineNumber,
                  "Number of the first line of the first file, if\n"
                  "that is a part of a larger one; by default 1")
      ->type_name("N")
      ->transform(wholeNumber(1, kMostLines));
  events
      .add_option("--max-line", options.maxLine,
                  "Reject lines with more bytes than SIZE, such as\n64K or 64M; by default 1G")
      ->type_name("SIZE")
      ->transform(byteSize(1, kMostBytes - 1024));
  events
      .add_option("--max-rejected", options.maxRejected, "Stop when more than N lines are rejected")
      ->type_name("N")
      ->transform(wholeNumber(0, kMostLines));
}

// Adds the options that say what is written.
void addOutputOptions(CLI::App& events, EventsOptions& options) {
  events
      .add_option("-o,--output", options.output,
                  "Write to FILE, which appears when it is whole,\ninstead of standard output")
      ->type_name("FILE");
  events.add_flag_callback(
      "--did-as-string",
      [&options] {
        if (options.resultForm.int64 == Int64Form::kNumber) {
          options.resultForm.int64 = Int64Form::kDidAsString;
        }
      },
      "Write the deduplication identifier _did as a\nstring, for readers that keep numbers in\n"
      "doubles");
  events.add_flag_callback(
      "--int64-as-string", [&options] { options.resultForm.int64 = Int64Form::kString; },
      "Write all integers of events as strings");
  events
      .add_option_function<std::string>(
          "--unpaired-surrogates",
          [&options](const std::string& form) {
            options.resultForm.surrogates =
                form == "replace" ? UnpairedSurrogates::kReplace : UnpairedSurrogates::kEscape;
          },
          "escape: write them as in \\ud800, the default;\n"
          "replace: write U+FFFD, for readers that refuse\nthe escape")
      ->type_name("escape|replace")
      ->check(oneOf({"escape", "replace"}));
}

// Adds the options that say how the command works.
void addRunOptions(CLI::App& events, EventsOptions& options) {
  events.add_option("--jobs", options.jobs, "Number of threads; by default one for each core")
      ->type_name("N")
      ->transform(wholeNumber(1, 1024));
  events.add_flag_callback(
      "--quiet", [&options] { options.showsProgress = false; }, "Show no progress on a terminal");
}

}  // namespace

Subcommand addEvents(CLI::App& app) {
  const auto options = std::make_shared<EventsOptions>();
  options->jobs = oneapi::tbb::info::default_concurrency();
  CLI::App* const events = app.add_subcommand("events", "Compute the event of each purchase");
  events->footer(kFooter);
  addInputOptions(*events, *options);
  addOutputOptions(*events, *options);
  addRunOptions(*events, *options);
  return {events, [options] { return runEvents(*options); }};
}

}  // namespace qel::tool
