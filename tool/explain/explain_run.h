// A run of the subcommand `explain` over one input.

#ifndef QEL_TOOL_EXPLAIN_EXPLAIN_RUN_H_
#define QEL_TOOL_EXPLAIN_EXPLAIN_RUN_H_

#include <cstdint>
#include <optional>
#include <string>

#include "exit_status.h"

namespace qel::tool {

struct ExplainOptions {
  // Path of the input; - is standard input.
  std::string input = "-";
  // The purchases to explain: those with this id, or the one of this line. All, if neither is set.
  std::optional<std::string> id;
  std::optional<std::uint64_t> line;
  // Path of the page to write; - is standard output. Without it, text goes to standard output.
  std::optional<std::string> html;
  bool ignoresUnknownKeys = false;
};

// Explains purchases. Without a selection and with several purchases in the input, lists them.
// Writes errors and a count to standard error.
ExitStatus runExplain(const ExplainOptions& options);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_EXPLAIN_RUN_H_
