// A subcommand of qel-purchase.

#ifndef QEL_TOOL_SUBCOMMAND_H_
#define QEL_TOOL_SUBCOMMAND_H_

#include <CLI/CLI.hpp>
#include <functional>

#include "exit_status.h"

namespace qel::tool {

// Each subcommand NAME has a function addName(CLI::App&), in NAME_command.h, that adds its options
// and its help to the command and returns one of these.
struct Subcommand {
  // Its options. Belongs to the command's CLI::App.
  const CLI::App* app;

  // Runs it, after the command line was parsed.
  std::function<ExitStatus()> run;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_SUBCOMMAND_H_
