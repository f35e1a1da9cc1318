#include "unreadable_line.h"

#include <utf8/core.h>

#include <cstddef>

#include "json_text.h"

namespace qel::tool {
namespace {

// Returns the text of a raw JSON string, if it is well-formed.
std::optional<std::string> unescaped(std::string_view raw) {
  std::string text;
  if (!utf8::is_valid(raw.begin(), raw.end()) || !unescapeJsonString(raw, text)) {
    return std::nullopt;
  }
  return text;
}

}  // namespace

std::optional<std::string> idOfUnreadableLine(std::string_view line) {
  int depth = 0;
  // The last key of the object at depth 1, and whether its value comes next.
  std::optional<std::string> key;
  bool isBeforeValue = false;
  for (std::size_t position = 0; position < line.size(); ++position) {
    switch (line[position]) {
      case '{':
      case '[':
        ++depth;
        break;
      case '}':
      case ']':
        --depth;
        break;
      case ':':
        isBeforeValue = true;
        break;
      case ',':
        isBeforeValue = false;
        break;
      case '"': {
        const std::optional<std::string_view> raw = rawJsonString(line.substr(position + 1));
        if (!raw.has_value()) return std::nullopt;
        if (depth == 1 && isBeforeValue && key == "id") return unescaped(*raw);
        if (depth == 1 && !isBeforeValue) key = unescaped(*raw);
        position += raw->size() + 1;
        break;
      }
      default:
        break;
    }
  }
  return std::nullopt;
}

}  // namespace qel::tool
