#include "completion_command.h"

#include <memory>
#include <string>

#include "completion.h"
#include "messages.h"
#include "option_values.h"
#include "output_file.h"

namespace qel::tool {
namespace {

constexpr const char* kFooter =
    R"(Writes a script for the shell that completes subcommands, options and their values.

Examples:

  source <(qel-purchase completion bash)

  qel-purchase completion zsh >~/.zfunc/_qel-purchase

  qel-purchase completion fish >~/.config/fish/completions/qel-purchase.fish)";

ExitStatus writeCompletion(const CLI::App& app, const std::string& shell) {
  try {
    OutputFile output("-", {});
    if (shell == "bash") output.write(bashCompletion(app));
    if (shell == "zsh") output.write(zshCompletion(app));
    if (shell == "fish") output.write(fishCompletion(app));
    return kAllRead;
  } catch (const OutputError& error) {
    report(error.what());
    return kFailed;
  }
}

}  // namespace

Subcommand addCompletion(CLI::App& app) {
  const auto shell = std::make_shared<std::string>();
  CLI::App* const completion =
      app.add_subcommand("completion", "Write a script that completes the command line");
  completion->footer(kFooter);
  completion->add_option("SHELL", *shell, "bash, zsh or fish")
      ->type_name("bash|zsh|fish")
      ->required()
      ->check(oneOf({"bash", "zsh", "fish"}));
  return {completion, [&app, shell] { return writeCompletion(app, *shell); }};
}

}  // namespace qel::tool
