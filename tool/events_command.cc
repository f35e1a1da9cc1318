#include "events_command.h"

#include <oneapi/tbb/info.h>

#include <cstdint>
#include <limits>
#include <memory>

#include "events_run.h"
#include "option_values.h"

namespace qel::tool {
namespace {

constexpr const char* kFooter =
    R"(Reads one purchase from each line of FILE (JSON Lines), computes its event, and
writes one line of JSON for it to standard output, in the same order. For a line
that cannot be read it writes a line with an error. Blank lines are skipped.

Exit status: 0 all lines were read, 1 some were rejected, 2 wrong usage or a file
that cannot be read or written, 130 interrupted.

Example:
  qel-purchase events examples/purchases.jsonl | jq -c .event)";

}  // namespace

Subcommand addEvents(CLI::App& app) {
  const auto options = std::make_shared<EventsOptions>();
  options->jobs = oneapi::tbb::info::default_concurrency();
  CLI::App* const events = app.add_subcommand("events", "Compute the event of each purchase");
  events->footer(kFooter);
  events->add_option("FILE", options->input, "Purchases, one a line; - is standard input");
  events->add_flag("--allow-unknown", options->ignoresUnknownKeys,
                   "Ignore unknown keys instead of rejecting them");
  events
      ->add_option("--first-line", options->firstLineNumber,
                   "Number of the first line, for a part of a\nlarger input; by default 1")
      ->type_name("N")
      ->transform(wholeNumber(1, std::numeric_limits<std::uint64_t>::max()));
  events->add_flag_callback(
      "--int64-as-string", [options] { options->int64Form = Int64Form::kString; },
      "Write the integers of events as strings, for\nreaders that keep numbers in doubles");
  events->add_option("--jobs", options->jobs, "Number of threads; by default one for each core")
      ->type_name("N")
      ->transform(wholeNumber(1, 1024));
  events->add_flag_callback(
      "--quiet", [options] { options->showsProgress = false; }, "Show no progress on a terminal");
  return {events, [options] { return runEvents(*options); }};
}

}  // namespace qel::tool
