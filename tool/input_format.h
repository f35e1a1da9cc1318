// Recognises inputs that are not JSON Lines.

#ifndef QEL_TOOL_INPUT_FORMAT_H_
#define QEL_TOOL_INPUT_FORMAT_H_

#include <string_view>

namespace qel::tool {

// Returns what an input that starts with the bytes `start` is and what to do about it, or null if
// it may be JSON Lines: "it is UTF-16 or UTF-32 text; convert it to UTF-8, ...". Recognises text in
// other encodings, a JSON array, JSON over several lines, CSV, receipts, archives and other binary
// data. A single broken line is none of these.
//
// More of the input may change null into an answer, but nothing else.
const char* foreignFormat(std::string_view start);

}  // namespace qel::tool

#endif  // QEL_TOOL_INPUT_FORMAT_H_
