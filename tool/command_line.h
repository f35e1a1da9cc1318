// Parses the command line: help, version, wrong usage, and the choice of a subcommand.

#ifndef QEL_TOOL_COMMAND_LINE_H_
#define QEL_TOOL_COMMAND_LINE_H_

#include <CLI/CLI.hpp>
#include <vector>

#include "exit_status.h"
#include "subcommand.h"

namespace qel::tool {

// Runs the subcommand that the command line chooses. Writes the help or the version to standard
// output if it asks for them. Writes wrong usage to standard error, with the option or subcommand
// that was probably meant, and with the command that shows the help.
ExitStatus runCommandLine(int argc, const char* const* argv, CLI::App& app,
                          const std::vector<Subcommand>& subcommands);

}  // namespace qel::tool

#endif  // QEL_TOOL_COMMAND_LINE_H_
