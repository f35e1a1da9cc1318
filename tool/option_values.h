// Checks the values of options.

#ifndef QEL_TOOL_OPTION_VALUES_H_
#define QEL_TOOL_OPTION_VALUES_H_

#include <CLI/CLI.hpp>
#include <cstdint>

namespace qel::tool {

// Accepts a number from `least` to `most` in decimal digits: 010 is ten, 0x10 and +5 are errors.
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most);

}  // namespace qel::tool

#endif  // QEL_TOOL_OPTION_VALUES_H_
