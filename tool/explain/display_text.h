// Texts of the input, made fit to show: on a terminal, and in a page.
//
// A text of the input can be anything: markup, control characters, escape sequences of a terminal,
// characters that reverse the direction of what follows, 100 kB of accents. What is shown has none
// of these. A character that would not be visible, or would change what is around it, is shown as
// JSON escapes it: \u001b.

#ifndef QEL_TOOL_EXPLAIN_DISPLAY_TEXT_H_
#define QEL_TOOL_EXPLAIN_DISPLAY_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace qel::tool {

// Returns `text` with visible characters only, in well-formed UTF-8, in one line. If that takes
// more than `mostColumns` columns of a terminal, the middle is left out: "abc…xyz". The size is
// added if it is unusual: "abc…xyz (100000 bytes)".
std::string displayText(std::string_view text, std::size_t mostColumns);

// Returns whether displayText() leaves something of `text` out at this number of columns.
bool isLongerThan(std::string_view text, std::size_t mostColumns);

// Returns the number of columns that a terminal needs for a text that displayText returned: 2 for a
// wide character, 0 for an accent that combines with the character before it.
std::size_t columnsOf(std::string_view text);

// Returns whether `text` has a character that is written from right to left.
bool hasRightToLeft(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_DISPLAY_TEXT_H_
