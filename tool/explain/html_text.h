// Texts for a page. Whatever is put into a page goes through one of these.

#ifndef QEL_TOOL_EXPLAIN_HTML_TEXT_H_
#define QEL_TOOL_EXPLAIN_HTML_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "explain/prose.h"

namespace qel::tool {

// Returns `text` with the characters that mean something in HTML as character references. Fit for
// the content of an element and for an attribute in quotes.
std::string escapedHtml(std::string_view text);

// Returns a text of the input as an element of its own, visible and shortened to `mostColumns` as
// displayText does, and isolated from the direction of what is around it.
std::string htmlOf(const OptionalText& input, std::size_t mostColumns = 120);

// Returns a sentence.
std::string htmlOf(const Prose& text);

// Returns a sentence for an attribute or a title, without elements.
std::string plainHtmlOf(const Prose& text);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_HTML_TEXT_H_
