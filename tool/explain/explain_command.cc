#include "explain/explain_command.h"

#include <memory>

#include "explain/explain_run.h"
#include "option_values.h"

namespace qel::tool {
namespace {

constexpr const char* kFooter =
    R"(Says why a purchase came out as it did: the outcome, the receipt's entries on a
timeline, each decision with its facts, and where each value of the event comes
from. FILE is JSON Lines, as for qel-purchase events. If it has several purchases
and neither --id nor --line is given, the command lists them with their outcomes.

Exit status: 0 all lines were read, 1 some were rejected, 2 wrong usage, a file that
cannot be read or written, no purchase with the id, no such line, or a page without
a purchase or of more than 20,000. After an interrupt 130, after SIGTERM 143,
after SIGHUP 129: nothing more is written.

Examples:

  qel-purchase explain --line 32 examples/purchases.jsonl

  qel-purchase explain --html purchases.html examples/purchases.jsonl)";

}  // namespace

Subcommand addExplain(CLI::App& app) {
  const auto options = std::make_shared<ExplainOptions>();
  CLI::App* const explain = app.add_subcommand("explain", "Say why purchases came out as they did");
  explain->footer(kFooter);
  explain->add_option("FILE", options->input, "Purchases, one a line; - is standard input");
  explain->add_flag("--allow-unknown", options->ignoresUnknownKeys,
                    "Ignore unknown keys instead of rejecting them");
  explain
      ->add_option("--html", options->html,
                   "Write an HTML page to PAGE instead of text;\n- is standard output")
      ->type_name("PAGE");
  CLI::Option* const id =
      explain->add_option("--id", options->id, "Explain the purchases with this id")
          ->type_name("ID");
  explain->add_option("--line", options->line, "Explain the purchase of this line")
      ->type_name("N")
      ->transform(wholeNumber(1, kMostLines))
      ->excludes(id);
  return {explain, [options] { return runExplain(*options); }};
}

}  // namespace qel::tool
