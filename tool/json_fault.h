// Finds where a text is not JSON.

#ifndef QEL_TOOL_JSON_FAULT_H_
#define QEL_TOOL_JSON_FAULT_H_

#include <optional>
#include <string>
#include <string_view>

namespace qel::tool {

// Returns a description of the first place where `text` is not one JSON value (RFC 8259) in UTF-8:
// "broken JSON at column 7: expected a colon, found }". Columns count characters from 1. Returns
// std::nullopt if the text is JSON.
std::optional<std::string> describeJsonFault(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_JSON_FAULT_H_
