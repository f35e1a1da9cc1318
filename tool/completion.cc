#include "completion.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace qel::tool {
namespace {

using Options = std::vector<const CLI::Option*>;

// Returns the options, or the arguments, of a command.
Options optionsOf(const CLI::App& app, bool isPositional) {
  return app.get_options([isPositional](const CLI::Option* option) {
    return option->get_positional() == isPositional;
  });
}

// Returns the names of an option: --output and -o.
std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  return names;
}

// A flag has no type.
bool hasValue(const CLI::Option& option) { return !option.get_type_name().empty(); }

bool isFile(const CLI::Option& option) {
  return option.get_type_name() == "FILE" || option.get_type_name() == "PAGE";
}

// Returns the possible values, separated by spaces. Empty if they are not known: the name of the
// type is then in capitals.
std::string valuesOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  if (std::any_of(type.begin(), type.end(), [](char c) { return c >= 'A' && c <= 'Z'; })) return "";
  return CLI::detail::find_and_replace(type, "|", " ");
}

// Returns a description on one line.
std::string oneLine(const std::string& description) {
  return CLI::detail::find_and_replace(description, "\n", " ");
}

// Returns `text` with a backslash before each of `special`.
std::string escaped(std::string_view text, std::string_view special) {
  std::string result;
  for (const char character : text) {
    if (special.find(character) != std::string_view::npos) result.push_back('\\');
    result.push_back(character);
  }
  return result;
}

// Returns `text` as one word of a shell.
std::string quoted(const std::string& text) {
  return "'" + CLI::detail::find_and_replace(text, "'", "'\\''") + "'";
}

// --- bash ---

// Returns the words that can follow a command: options, subcommands, and values of arguments.
std::string bashWords(const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::App* const subcommand : app.get_subcommands({})) {
    words.push_back(subcommand->get_name());
  }
  for (const CLI::Option* const option : optionsOf(app, true)) {
    if (const std::string values = valuesOf(*option); !values.empty()) words.push_back(values);
  }
  for (const CLI::Option* const option : optionsOf(app, false)) {
    for (const std::string& name : namesOf(*option)) words.push_back(name);
  }
  return CLI::detail::join(words, " ");
}

// Returns the cases of what follows the options of a subcommand that have a value.
std::string bashValueCases(const CLI::App& app) {
  std::string cases;
  for (const CLI::Option* const option : optionsOf(app, false)) {
    if (!hasValue(*option)) continue;
    for (const std::string& name : namesOf(*option)) {
      cases += "    '" + app.get_name() + " " + name + "') ";
      cases += isFile(*option) ? "compopt -o default; return" : "words='" + valuesOf(*option) + "'";
      cases += " ;;\n";
    }
  }
  return cases;
}

// --- zsh ---

std::string zshValue(const CLI::Option& option) {
  if (isFile(option)) return ":FILE:_files";
  const std::string values = valuesOf(option);
  return values.empty() ? ":" + option.get_type_name() + ":" : ":value:(" + values + ")";
}

// Returns the arguments of _arguments for a subcommand.
std::string zshArguments(const CLI::App& app) {
  std::string arguments;
  for (const CLI::Option* const option : optionsOf(app, false)) {
    std::string rest = "[" + escaped(oneLine(option->get_description()), "[]:\\") + "]";
    if (hasValue(*option)) rest += zshValue(*option);
    for (const std::string& name : namesOf(*option)) {
      arguments.append(" \\\n        ").append(quoted(name + rest));
    }
  }
  for (const CLI::Option* const option : optionsOf(app, true)) {
    const std::string value = isFile(*option) ? ":FILE:_files" : zshValue(*option);
    const bool isRepeated = option->get_expected_max() > 1;
    arguments += " \\\n        " + quoted((isRepeated ? "*" : "") + value);
  }
  return arguments;
}

// --- fish ---

std::string fishOption(const std::string& condition, const CLI::Option& option) {
  std::string line = "complete -c qel-purchase -n " + quoted(condition);
  for (const std::string& name : option.get_lnames()) line += " -l " + name;
  for (const std::string& name : option.get_snames()) line += " -s " + name;
  if (hasValue(option)) {
    line += isFile(option) ? " -r -F" : " -x";
    if (const std::string values = valuesOf(option); !values.empty())
      line += " -a " + quoted(values);
  }
  return line + " -d " + quoted(escaped(oneLine(option.get_description()), "\\")) + "\n";
}

}  // namespace

std::string bashCompletion(const CLI::App& app) {
  std::string valueCases;
  std::string wordCases;
  for (const CLI::App* const subcommand : app.get_subcommands({})) {
    valueCases += bashValueCases(*subcommand);
    wordCases +=
        "      " + subcommand->get_name() + ") words='" + bashWords(*subcommand) + "' ;;\n";
  }
  return "# bash completion of qel-purchase\n"
         "_qel_purchase() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words=\n"
         "  COMPREPLY=()\n"
         "  if ((COMP_CWORD == 1)); then\n"
         "    words='" +
         bashWords(app) +
         "'\n"
         "  else\n"
         "    case \"${COMP_WORDS[1]} $previous\" in\n" +
         valueCases +
         "    *)\n"
         "      case \"${COMP_WORDS[1]}\" in\n" +
         wordCases +
         "      esac\n"
         "      ;;\n"
         "    esac\n"
         "  fi\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "}\n"
         "complete -o default -F _qel_purchase qel-purchase\n";
}

std::string zshCompletion(const CLI::App& app) {
  std::string subcommands;
  std::string cases;
  for (const CLI::App* const subcommand : app.get_subcommands({})) {
    const std::string description = escaped(oneLine(subcommand->get_description()), ":\\");
    subcommands += "      " + quoted(subcommand->get_name() + ":" + description) + "\n";
    cases += "    " + subcommand->get_name() + ")\n      _arguments" + zshArguments(*subcommand) +
             " ;;\n";
  }
  return "#compdef qel-purchase\n"
         "_qel-purchase() {\n"
         "  if ((CURRENT == 2)); then\n"
         "    local -a subcommands=(\n" +
         subcommands +
         "    )\n"
         "    _describe subcommand subcommands\n"
         "    _arguments" +
         zshArguments(app) +
         "\n"
         "    return\n"
         "  fi\n"
         "  shift words\n"
         "  ((CURRENT--))\n"
         "  case $words[1] in\n" +
         cases +
         "  esac\n"
         "}\n"
         // In a folder of fpath, the file is the function. Its first call defines it anew.
         "if [[ $funcstack[1] == _qel-purchase ]]; then\n"
         "  _qel-purchase \"$@\"\n"
         "else\n"
         "  compdef _qel-purchase qel-purchase\n"
         "fi\n";
}

std::string fishCompletion(const CLI::App& app) {
  constexpr const char* kFirstWord = "__fish_use_subcommand";
  std::string script = "# fish completion of qel-purchase\n";
  script += "complete -c qel-purchase -n " + std::string(kFirstWord) + " -f\n";
  for (const CLI::Option* const option : optionsOf(app, false)) {
    script += fishOption(kFirstWord, *option);
  }
  for (const CLI::App* const subcommand : app.get_subcommands({})) {
    const std::string& name = subcommand->get_name();
    script += "complete -c qel-purchase -n " + std::string(kFirstWord) + " -a " + name + " -d " +
              quoted(oneLine(subcommand->get_description())) + "\n";
    const std::string condition = "__fish_seen_subcommand_from " + name;
    for (const CLI::Option* const option : optionsOf(*subcommand, false)) {
      script += fishOption(condition, *option);
    }
    for (const CLI::Option* const option : optionsOf(*subcommand, true)) {
      if (const std::string values = valuesOf(*option); !values.empty()) {
        script +=
            "complete -c qel-purchase -n " + quoted(condition) + " -f -a " + quoted(values) + "\n";
      }
    }
  }
  return script;
}

}  // namespace qel::tool
