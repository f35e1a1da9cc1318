// Breaks text into lines for a terminal.

#ifndef QEL_TOOL_EXPLAIN_TEXT_WRAP_H_
#define QEL_TOOL_EXPLAIN_TEXT_WRAP_H_

#include <cstddef>
#include <string>
#include <vector>

namespace qel::tool {

// Columns of a line.
inline constexpr std::size_t kLineColumns = 80;

// Appends words, with a space between two of them, and a newline. The first one begins at column
// `start`, which `out` has reached; further lines begin with `indent` spaces. A word is never
// broken, so a line can be longer than kLineColumns.
void appendWrapped(const std::vector<std::string>& words, std::size_t start, std::size_t indent,
                   std::string& out);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_TEXT_WRAP_H_
