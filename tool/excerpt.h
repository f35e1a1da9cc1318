// Excerpts of texts for messages.

#ifndef QEL_TOOL_EXCERPT_H_
#define QEL_TOOL_EXCERPT_H_

#include <string>
#include <string_view>

namespace qel::tool {

// Returns the start of `text` for a message: up to 60 bytes, without a part of a character at the
// end, and "..." if there is more.
std::string excerpt(std::string_view text);

// Returns `text` for a message that says what was found: an excerpt. It is in quotes if it is empty
// or starts or ends with white space, and a byte order mark at its start is named.
std::string foundText(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXCERPT_H_
