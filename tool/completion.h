// Scripts that complete the command line in a shell.

#ifndef QEL_TOOL_COMPLETION_H_
#define QEL_TOOL_COMPLETION_H_

#include <CLI/CLI.hpp>
#include <string>

namespace qel::tool {

// Each returns a script that completes the subcommands and options of `app`. The type name of an
// option or argument says what its value is: FILE is a file, words with | between them are the
// possible values, and anything else is free text.
std::string bashCompletion(const CLI::App& app);
std::string zshCompletion(const CLI::App& app);
std::string fishCompletion(const CLI::App& app);

}  // namespace qel::tool

#endif  // QEL_TOOL_COMPLETION_H_
