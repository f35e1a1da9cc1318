#include "closest_word.h"

#include <algorithm>
#include <cstddef>

namespace qel::tool {
namespace {

// Returns the number of edits that turn `a` into `b` (optimal string alignment distance).
std::size_t editsBetween(std::string_view a, std::string_view b) {
  // edits[i][j]: from the first i characters of `a` to the first j of `b`.
  std::vector<std::vector<std::size_t>> edits(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) edits[i][0] = i;
  for (std::size_t j = 0; j <= b.size(); ++j) edits[0][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = edits[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      edits[i][j] = std::min({replaced, edits[i - 1][j] + 1, edits[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
      }
    }
  }
  return edits[a.size()][b.size()];
}

}  // namespace

std::optional<std::string> closestWord(std::string_view word,
                                       const std::vector<std::string>& words) {
  std::optional<std::string> closest;
  std::size_t most = word.size() / 3;
  for (const std::string& candidate : words) {
    // A word whose length differs by more has more edits; a very long one would take long.
    const std::size_t shorter = std::min(word.size(), candidate.size());
    if (std::max(word.size(), candidate.size()) - shorter > most) continue;
    const std::size_t edits = editsBetween(word, candidate);
    if (edits < most || (edits == most && !closest.has_value())) {
      closest = candidate;
      most = edits;
    }
  }
  return closest;
}

}  // namespace qel::tool
