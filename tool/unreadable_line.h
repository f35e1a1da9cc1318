// Finds the id of a line that cannot be read.

#ifndef QEL_TOOL_UNREADABLE_LINE_H_
#define QEL_TOOL_UNREADABLE_LINE_H_

#include <optional>
#include <string>
#include <string_view>

namespace qel::tool {

// Returns the string under the key "id" of the object in `line`, which may be truncated, or broken
// before or after the id. Returns std::nullopt if there is no complete id.
std::optional<std::string> idOfUnreadableLine(std::string_view line);

}  // namespace qel::tool

#endif  // QEL_TOOL_UNREADABLE_LINE_H_
