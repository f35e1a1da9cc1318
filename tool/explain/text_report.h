// Explanations as text for a terminal of 80 columns.

#ifndef QEL_TOOL_EXPLAIN_TEXT_REPORT_H_
#define QEL_TOOL_EXPLAIN_TEXT_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "explain/explanation.h"
#include "json_error.h"

namespace qel::tool {

enum class TextColor : std::uint8_t { kNone, kAnsi };

// Returns the whole explanation of the purchase of line `lineNumber`.
std::string textReport(const Explanation& explanation, std::uint64_t lineNumber, TextColor color);

// Returns one or two lines about it, for a list of purchases.
std::string textRow(const Explanation& explanation, std::uint64_t lineNumber, TextColor color);

// Returns the same for a line that cannot be read.
std::string textRow(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber,
                    TextColor color);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_TEXT_REPORT_H_
