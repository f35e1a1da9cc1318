// docs/diagnostics.md, the page that describes each code, as the command has it built in.

#ifndef QEL_TOOL_EXPLAIN_DIAGNOSTICS_PAGE_H_
#define QEL_TOOL_EXPLAIN_DIAGNOSTICS_PAGE_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::tool {

// Returns the page, in Markdown.
std::string_view diagnosticsPage();

// A section of the page: "## 40023 Subscription transaction ..." and what follows.
struct CodeSection {
  std::string_view code;
  std::string_view message;
  // In Markdown.
  std::string_view body;
};

// Returns the sections of the codes, in the order of the page.
std::vector<CodeSection> codeSections(std::string_view page);

// Returns a section as plain text in lines of 80 columns: without the marks of code and emphasis.
std::string plainText(const CodeSection& section);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_DIAGNOSTICS_PAGE_H_
