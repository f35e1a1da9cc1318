// Checks the values of options.

#ifndef QEL_TOOL_OPTION_VALUES_H_
#define QEL_TOOL_OPTION_VALUES_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace qel::tool {

// The greatest number of a line, and the greatest count of lines.
inline constexpr std::uint64_t kMostLines = std::numeric_limits<std::int64_t>::max();

// Accepts a number from `least` to `most` in decimal digits: 010 is ten, 0x10 and +5 are errors.
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most);

// Accepts a number of bytes from `least` to `most`, in decimal digits and with an optional unit: K,
// M or G, of 1024, 1024^2 and 1024^3 bytes.
CLI::Validator byteSize(std::uint64_t least, std::uint64_t most);

// Accepts one of `words`.
CLI::Validator oneOf(std::vector<std::string> words);

}  // namespace qel::tool

#endif  // QEL_TOOL_OPTION_VALUES_H_
