// The subcommand `code`: explains the codes of the diagnostics.

#ifndef QEL_TOOL_EXPLAIN_CODE_COMMAND_H_
#define QEL_TOOL_EXPLAIN_CODE_COMMAND_H_

#include <CLI/CLI.hpp>

#include "subcommand.h"

namespace qel::tool {

Subcommand addCode(CLI::App& app);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_CODE_COMMAND_H_
