// The byte order mark, which some programs write at the start of a file in UTF-8.

#ifndef QEL_TOOL_BYTE_ORDER_MARK_H_
#define QEL_TOOL_BYTE_ORDER_MARK_H_

#include <string_view>

namespace qel::tool {

// U+FEFF in UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Returns `text` without the byte order mark at its start, if it has one.
constexpr std::string_view withoutByteOrderMark(std::string_view text) {
  return text.substr(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
}

}  // namespace qel::tool

#endif  // QEL_TOOL_BYTE_ORDER_MARK_H_
