// The subcommand `completion`: writes a script that completes the command line in a shell.

#ifndef QEL_TOOL_COMPLETION_COMMAND_H_
#define QEL_TOOL_COMPLETION_COMMAND_H_

#include "subcommand.h"

namespace qel::tool {

Subcommand addCompletion(CLI::App& app);

}  // namespace qel::tool

#endif  // QEL_TOOL_COMPLETION_COMMAND_H_
