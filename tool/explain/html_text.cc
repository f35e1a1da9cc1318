#include "explain/html_text.h"

#include "explain/display_text.h"

namespace qel::tool {

std::string escapedHtml(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char character : text) {
    switch (character) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += character;
    }
  }
  return escaped;
}

std::string htmlOf(const OptionalText& input, std::size_t mostColumns) {
  if (!input.has_value()) return "<i>absent</i>";
  if (input->empty()) return "<i>empty</i>";
  return "<bdi>" + escapedHtml(displayText(*input, mostColumns)) + "</bdi>";
}

std::string htmlOf(const Prose& text) {
  std::string html;
  for (const Span& span : text.spans()) {
    html += span.isInput ? htmlOf(OptionalText(span.text)) : escapedHtml(span.text);
  }
  return html;
}

std::string plainHtmlOf(const Prose& text) {
  constexpr std::size_t kMostColumns = 60;
  std::string html;
  for (const Span& span : text.spans()) {
    html += escapedHtml(span.isInput ? displayText(span.text, kMostColumns) : span.text);
  }
  return html;
}

}  // namespace qel::tool
