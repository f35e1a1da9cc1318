// Finds what was probably meant by a misspelt word.

#ifndef QEL_TOOL_CLOSEST_WORD_H_
#define QEL_TOOL_CLOSEST_WORD_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::tool {

// Returns the first of `words` with the fewest edits from `word`: insertions, deletions,
// replacements and swaps of neighbours. Returns std::nullopt if that takes more than one edit for
// three characters of `word`.
std::optional<std::string> closestWord(std::string_view word,
                                       const std::vector<std::string>& words);

}  // namespace qel::tool

#endif  // QEL_TOOL_CLOSEST_WORD_H_
