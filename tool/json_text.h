// JSON strings and integers (RFC 8259). An unpaired surrogate, which JSON can escape but UTF-8
// cannot encode, is kept as the three bytes of its code point.

#ifndef QEL_TOOL_JSON_TEXT_H_
#define QEL_TOOL_JSON_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

#include "text_buffer.h"

namespace qel::tool {

// Returns the raw text of a JSON string whose first character is at the start of `text`: everything
// before the first quote that is not escaped. Returns std::nullopt if there is no such quote.
std::optional<std::string_view> rawJsonString(std::string_view text);

// Unescapes the raw text of a JSON string and appends it to `out`, at most raw.size() bytes.
// Returns false if it has an escape that JSON does not have.
bool unescapeJsonString(std::string_view raw, std::string& out);

// Returns whether `token` is a JSON number without a fraction and an exponent.
bool isJsonInteger(std::string_view token);

// How an unpaired surrogate is written: as its escape, or, for readers that refuse the escape, as
// U+FFFD.
enum class UnpairedSurrogates { kEscape, kReplace };

// Appends `text` to `out` as a JSON string with its quotes.
void appendJsonString(std::string_view text, UnpairedSurrogates surrogates, TextBuffer& out);

}  // namespace qel::tool

#endif  // QEL_TOOL_JSON_TEXT_H_
