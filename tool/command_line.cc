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

// CLI11 passes what follows -- to the main command if the subcommand has an argument already, and
// splits [a,b] into two arguments. So the words after --, and arguments that start with a bracket,
// get this mark as their first character, and the -- is removed. CLI11 then takes them for plain
// arguments. No word of a command line contains NUL.
constexpr char kArgumentMark = '\0';

std::string unmarked(const std::string& word) {
  return word.starts_with(kArgumentMark) ? word.substr(1) : word;
}

CLI::Validator markRemover() {
  const auto remove = [](std::string& word) {
    word = unmarked(word);
    return std::string();
  };
  return CLI::Validator(remove, "");
}

// Returns whether `word` is an option that has a value, of any subcommand.
bool takesValue(const CLI::App& app, const std::string& word) {
  const std::vector<const CLI::App*> subcommands = app.get_subcommands({});
  return std::any_of(subcommands.begin(), subcommands.end(), [&word](const CLI::App* subcommand) {
    const CLI::Option* const option =
        word.starts_with('-') ? subcommand->get_option_no_throw(word) : nullptr;
    return option != nullptr && option->get_items_expected_min() > 0;
  });
}

// Returns the words of the command line in reverse, as CLI11 expects them.
std::vector<std::string> reversedWords(int argc, const char* const* argv, const CLI::App& app) {
  std::vector<std::string> words;
  bool areArguments = false;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool isValue = takesValue(app, argv[i - 1]);
    if (areArguments || (word.starts_with('[') && !isValue)) {
      words.push_back(kArgumentMark + word);
    } else if (word == "--" && !isValue) {
      areArguments = true;
    } else {
      words.push_back(word);
    }
  }
  std::reverse(words.begin(), words.end());
  return words;
}

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
  const std::string word = unknown.empty() ? "" : unmarked(unknown.front());
  if (!unknown.empty() && names.empty()) return "unexpected argument " + foundText(word);
  std::string message = "expected a subcommand (" + CLI::detail::join(names, ", ") + ")";
  if (unknown.empty()) return message;
  return message + ", found " + foundText(word) + suggestion(word, names);
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
  for (CLI::App* const subcommand : app.get_subcommands({})) {
    subcommand->formatter(formatter);
    for (CLI::Option* const option : subcommand->get_options()) {
      if (option->get_positional()) option->transform(markRemover());
    }
  }
  app.require_subcommand(1);

  try {
    app.parse(reversedWords(argc, argv, app));
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
