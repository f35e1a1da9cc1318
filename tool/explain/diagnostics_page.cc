#include "explain/diagnostics_page.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "explain/text_wrap.h"

namespace qel::tool {
namespace {

constexpr std::string_view kHeading = "## ";

// Returns the next line of `text`, without its newline, and removes it.
std::string_view takeLine(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

bool isCode(std::string_view word) {
  return word.size() == 5 && std::all_of(word.begin(), word.end(), [](unsigned char character) {
           return std::isdigit(character) != 0;
         });
}

// Returns the words of a paragraph. A piece of code, such as a date with a space, is one word.
std::vector<std::string> wordsOf(std::string_view paragraph) {
  std::vector<std::string> words(1);
  bool isInCode = false;
  for (std::size_t i = 0; i < paragraph.size(); ++i) {
    const char character = paragraph[i];
    if (character == '`') {
      isInCode = !isInCode;
    } else if (!isInCode && paragraph.substr(i, 2) == "**") {
      ++i;
    } else if (character != ' ' || isInCode) {
      words.back() += character;
    } else if (!words.back().empty()) {
      words.emplace_back();
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

// Appends a paragraph or an item of a list.
void appendBlock(const std::string& block, std::string& out) {
  constexpr std::string_view kItem = "- ";
  if (block.empty()) return;
  const bool isItem = block.starts_with(kItem);
  if (isItem) out += "  - ";
  appendWrapped(wordsOf(isItem ? std::string_view(block).substr(kItem.size()) : block),
                isItem ? 4 : 0, isItem ? 4 : 0, out);
}

}  // namespace

std::vector<CodeSection> codeSections(std::string_view page) {
  std::vector<CodeSection> sections;
  bool isInCode = false;
  for (std::string_view rest = page; !rest.empty();) {
    const std::string_view line = takeLine(rest);
    if (line.starts_with(kHeading)) {
      const std::string_view heading = line.substr(kHeading.size());
      const std::string_view word = heading.substr(0, std::min(heading.find(' '), heading.size()));
      isInCode = isCode(word);
      if (isInCode) {
        sections.push_back({word, heading.substr(std::min(word.size() + 1, heading.size())), rest});
        sections.back().body = rest.substr(0, 0);
      }
    } else if (isInCode) {
      std::string_view& body = sections.back().body;
      body = {body.data(), static_cast<std::size_t>(line.data() + line.size() - body.data())};
    }
  }
  return sections;
}

std::string plainText(const CodeSection& section) {
  std::string out;
  appendWrapped(wordsOf(section.message), section.code.size() + 2, section.code.size() + 2,
                out.append(section.code).append("  "));
  std::string block;
  for (std::string_view rest = section.body; !rest.empty();) {
    const std::string_view line = takeLine(rest);
    const bool endsBlock = line.empty() || line.starts_with("- ");
    if (endsBlock) {
      appendBlock(block, out);
      block.clear();
    }
    if (line.empty() && !out.ends_with("\n\n")) out += '\n';
    if (line.empty()) continue;
    block += (block.empty() ? "" : " ") + std::string(line);
  }
  appendBlock(block, out);
  while (out.ends_with("\n\n")) out.pop_back();
  return out;
}

}  // namespace qel::tool
