#include "command_line.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>

#include "closest_word.h"
#include "excerpt.h"
#include "messages.h"

namespace qel::tool {
namespace {

// Writes names as "-o, --output", and a value as people write it.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() {
    column_width(28);
    label("Positionals", "Arguments");
  }
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    const std::string names = CLI::Formatter::make_option_name(option, isPositional);
    return CLI::detail::find_and_replace(names, ",", ", ");
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string type = option->get_type_name();
    return type.empty() || option->get_positional() ? "" : " " + type;
  }
};

// Writes a text that the user asked for, such as the help.
ExitStatus show(const std::string& text) {
  std::cout << text << std::flush;
  if (std::cout) return kAllRead;
  report("cannot write standard output");
  return kFailed;
}

std::vector<std::string> namesOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const subcommand : app.get_subcommands({})) {
    names.push_back(subcommand->get_name());
  }
  return names;
}

std::vector<std::string> optionsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::string suggestion(std::string_view found, const std::vector<std::string>& words) {
  const std::optional<std::string> closest = closestWord(found, words);
  return closest.has_value() ? "; did you mean " + *closest + "?" : "";
}

// Describes a word that `app` does not know. Without a word, a subcommand is missing.
std::string unknownWord(const CLI::App& app) {
  const std::vector<std::string> unknown = app.remaining();
  const std::vector<std::string> names = namesOf(app);
  if (!unknown.empty() && unknown.front().starts_with('-')) {
    const std::string option = unknown.front().substr(0, unknown.front().find('='));
    return "unknown option " + option + (names.empty() ? "" : " before the subcommand") +
           suggestion(option, optionsOf(app));
  }
  if (!unknown.empty() && names.empty()) return "unexpected argument " + foundText(unknown.front());
  std::string message = "expected a subcommand (" + CLI::detail::join(names, ", ") + ")";
  if (unknown.empty()) return message;
  return message + ", found " + foundText(unknown.front()) + suggestion(unknown.front(), names);
}

// Returns the subcommand that was chosen, or `app` if none was found yet.
const CLI::App& chosenPart(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  return chosen.empty() ? app : *chosen.front();
}

// Reports an error in the command line.
ExitStatus reportUsage(const CLI::App& app, const std::string& error) {
  const CLI::App* const parent = app.get_parent();
  const std::string command = (parent != nullptr ? parent->get_name() + " " : "") + app.get_name();
  report(error);
  std::cerr << "Try '" << command << " --help'.\n";
  return kFailed;
}

}  // namespace

ExitStatus runCommandLine(int argc, const char* const* argv, CLI::App& app,
                          const std::vector<Subcommand>& subcommands) {
  const auto formatter = std::make_shared<HelpFormatter>();
  app.formatter(formatter);
  for (CLI::App* const subcommand : app.get_subcommands({})) subcommand->formatter(formatter);
  app.require_subcommand(1);

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return show(app.help());
  } catch (const CLI::CallForVersion&) {
    return show(app.version() + "\n");
  } catch (const CLI::RequiredError& error) {
    const CLI::App& part = chosenPart(app);
    return reportUsage(part, &part == &app ? unknownWord(app) : error.what());
  } catch (const CLI::ExtrasError&) {
    const CLI::App& part = app.remaining().empty() ? chosenPart(app) : app;
    return reportUsage(part, unknownWord(part));
  } catch (const CLI::ArgumentMismatch& error) {
    // Its text starts with the option: "--jobs: 1 required N missing".
    const std::string text = error.what();
    return reportUsage(chosenPart(app), text.substr(0, text.find(':')) + ": expected a value");
  } catch (const CLI::ParseError& error) {
    return reportUsage(chosenPart(app), error.what());
  }
  const auto isChosen = [&app](const Subcommand& one) { return one.app == &chosenPart(app); };
  return std::find_if(subcommands.begin(), subcommands.end(), isChosen)->run();
}

}  // namespace qel::tool
