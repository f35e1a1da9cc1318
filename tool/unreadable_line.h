// What can still be told of a line that cannot be read.

#ifndef QEL_TOOL_UNREADABLE_LINE_H_
#define QEL_TOOL_UNREADABLE_LINE_H_

#include <optional>
#include <string>
#include <string_view>

namespace qel::tool {

// The string under the key "id" of the object that `line` holds, as far as one can be made out: the
// line may be cut anywhere, or be broken before or after it. Nothing when the id itself is not
// whole.
std::optional<std::string> idOfUnreadableLine(std::string_view line);

}  // namespace qel::tool

#endif  // QEL_TOOL_UNREADABLE_LINE_H_
