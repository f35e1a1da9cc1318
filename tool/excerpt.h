// Excerpts of texts for messages.

#ifndef QEL_TOOL_EXCERPT_H_
#define QEL_TOOL_EXCERPT_H_

#include <string>
#include <string_view>

namespace qel::tool {

// Returns the start of `text` for a message: up to 60 bytes, without a part of a character at the
// end, and "..." if there is more.
std::string excerpt(std::string_view text);

// Returns an excerpt of `text` for a message that says what was found. Quotes it if it is empty, or
// starts or ends with white space. Returns a description if it starts with a byte order mark.
std::string foundText(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXCERPT_H_
