// The subcommand `explain`: says why a purchase came out as it did.

#ifndef QEL_TOOL_EXPLAIN_EXPLAIN_COMMAND_H_
#define QEL_TOOL_EXPLAIN_EXPLAIN_COMMAND_H_

#include <CLI/CLI.hpp>

#include "subcommand.h"

namespace qel::tool {

Subcommand addExplain(CLI::App& app);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_EXPLAIN_COMMAND_H_
