#include "explain/text_wrap.h"

#include "explain/display_text.h"

namespace qel::tool {

void appendWrapped(const std::vector<std::string>& words, std::size_t start, std::size_t indent,
                   std::string& out) {
  std::size_t column = start;
  bool isAtStart = true;
  for (const std::string& word : words) {
    const std::size_t columns = columnsOf(word);
    if (!isAtStart && column + 1 + columns > kLineColumns) {
      out += "\n" + std::string(indent, ' ');
      column = indent;
      isAtStart = true;
    }
    if (!isAtStart) {
      out += ' ';
      ++column;
    }
    out += word;
    column += columns;
    isAtStart = false;
  }
  out += '\n';
}

}  // namespace qel::tool
