// The byte order mark, which some programs write at the start of a text.

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

// Returns whether `text` starts with U+FEFF in UTF-16, in either byte order.
constexpr bool startsWithUtf16Mark(std::string_view text) {
  return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
}

// What a text in UTF-16 is, and what to do about it.
inline constexpr const char* kItIsUtf16 =
    "it is UTF-16 or UTF-32 text; convert it to UTF-8, for example with iconv -f UTF-16 -t UTF-8, "
    "or -f UTF-32";

}  // namespace qel::tool

#endif  // QEL_TOOL_BYTE_ORDER_MARK_H_
