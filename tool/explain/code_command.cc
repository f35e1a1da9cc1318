#include "explain/code_command.h"

#include <memory>
#include <optional>
#include <string>

#include "excerpt.h"
#include "explain/diagnostics_page.h"
#include "messages.h"
#include "output_file.h"

namespace qel::tool {
namespace {

constexpr const char* kFooter =
    R"(Explains a code of the diagnostics: what it means, what the event then has, usual
causes, and what to check. Without CODE, lists all codes.

Exit status: 0 explained, 2 wrong usage, or an output that cannot be written.

Examples:

  qel-purchase code

  qel-purchase code 40023)";

ExitStatus show(const std::string& text) {
  try {
    OutputFile output("-", {});
    output.write(text);
    output.commit();
    return kAllRead;
  } catch (const OutputError& error) {
    report(error.what());
    return kFailed;
  }
}

// Without a code, lists all.
ExitStatus runCode(const std::optional<std::string>& code) {
  const std::vector<CodeSection> sections = codeSections(diagnosticsPage());
  std::string list;
  for (const CodeSection& section : sections) {
    if (section.code == code) return show(plainText(section));
    list.append(section.code).append("  ").append(section.message).append("\n");
  }
  if (!code.has_value()) return show(list);
  report("expected a code of the diagnostics, such as 40023, found " + foundText(*code) +
         "; qel-purchase code lists all");
  return kFailed;
}

}  // namespace

Subcommand addCode(CLI::App& app) {
  const auto code = std::make_shared<std::optional<std::string>>();
  CLI::App* const command = app.add_subcommand("code", "Explain a code of the diagnostics");
  command->footer(kFooter);
  command->add_option("CODE", *code, "A code, such as 40023; without it, all are listed");
  return {command, [code] { return runCode(*code); }};
}

}  // namespace qel::tool
