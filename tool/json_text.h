// JSON strings and numbers, as RFC 8259 writes them, with one addition: an unpaired surrogate,
// which JSON can escape but UTF-8 cannot encode, is carried as the three bytes of its code point.

#ifndef QEL_TOOL_JSON_TEXT_H_
#define QEL_TOOL_JSON_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "text_buffer.h"

namespace qel::tool {

// The raw text between the quotes of the JSON string whose first character is at the start of
// `text`: everything up to the next quote that no backslash escapes. Nothing when there is no such
// quote.
std::optional<std::string_view> rawJsonString(std::string_view text);

// Appends to `out` what the raw text of a JSON string stands for. Never appends more than
// raw.size() bytes. Returns false at an escape that JSON does not have.
bool unescapeJsonString(std::string_view raw, std::string& out);

// Appends `text` to `out` as a JSON string with its quotes.
void appendJsonString(std::string_view text, TextBuffer& out);

// Whether `text` is a number in JSON syntax and nothing else.
bool isJsonNumber(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_JSON_TEXT_H_
