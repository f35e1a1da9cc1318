#include "explain/timeline_rows.h"

#include <algorithm>

namespace qel::tool {
namespace {

// A list of this size is shown as a whole.
constexpr std::size_t kMostRows = 24;
// Rows at each end, and to each side of the transaction.
constexpr std::size_t kEnd = 3;
constexpr std::size_t kAround = 5;
constexpr std::size_t kMostDuplicates = 10;

// Returns, for each entry, whether it is shown. `transaction` is the position of the transaction
// among them.
std::vector<bool> shownEntries(const std::vector<TimelineEntry>& timeline,
                               std::size_t transaction) {
  const std::size_t size = timeline.size();
  std::vector<bool> isShown(size, size <= kMostRows);
  const auto show = [&isShown, size](std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < std::min(last, size); ++i) isShown[i] = true;
  };
  const auto firstDated = static_cast<std::size_t>(
      std::find_if(timeline.begin(), timeline.end(),
                   [](const TimelineEntry& entry) { return entry.date.has_value(); }) -
      timeline.begin());
  show(0, kEnd);
  show(firstDated, firstDated + kEnd);
  show(size - std::min(kEnd, size), size);
  show(transaction - std::min(transaction, kAround), transaction + kAround);
  std::size_t duplicates = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const bool isDuplicate = timeline[i].role == Role::kDuplicate;
    if (isDuplicate && ++duplicates > kMostDuplicates) continue;
    if (timeline[i].role != Role::kNone) isShown[i] = true;
  }
  return isShown;
}

}  // namespace

std::vector<TimelineRow> timelineRows(const Explanation& explanation) {
  const std::vector<TimelineEntry>& timeline = explanation.timeline;
  const std::optional<Instant> date = explanation.facts.transactionDate();
  const auto isBefore = [&date](const TimelineEntry& entry) {
    return !entry.date.has_value() || !date.has_value() || *entry.date < *date;
  };
  const auto transaction = static_cast<std::size_t>(
      std::find_if_not(timeline.begin(), timeline.end(), isBefore) - timeline.begin());
  const bool hasOwnRow = date.has_value() && explanation.facts.atDate.empty();

  std::vector<TimelineRow> rows;
  const std::vector<bool> isShown = shownEntries(timeline, transaction);
  for (std::size_t i = 0; i <= timeline.size(); ++i) {
    if (hasOwnRow && i == transaction) rows.push_back({.isTransaction = true});
    if (i == timeline.size()) break;
    if (isShown[i]) {
      rows.push_back({.entry = &timeline[i]});
    } else if (!rows.empty() && rows.back().leftOut > 0) {
      ++rows.back().leftOut;
    } else {
      rows.push_back({.leftOut = 1});
    }
  }
  return rows;
}

}  // namespace qel::tool
