// Messages for people, on standard error.

#ifndef QEL_TOOL_MESSAGES_H_
#define QEL_TOOL_MESSAGES_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace qel::tool {

// Writes "qel-purchase: ", the message and a newline to standard error. What is not UTF-8, and
// characters that control a terminal or the direction of text, become question marks, because file
// names and texts of an input can have any bytes.
void report(std::string_view message);

// Returns "1 line" or "2 lines" for the noun "line".
std::string counted(std::uint64_t number, const char* noun);

}  // namespace qel::tool

#endif  // QEL_TOOL_MESSAGES_H_
