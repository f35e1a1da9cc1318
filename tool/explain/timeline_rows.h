// Which entries of a long receipt are shown, and where the transaction stands among them.

#ifndef QEL_TOOL_EXPLAIN_TIMELINE_ROWS_H_
#define QEL_TOOL_EXPLAIN_TIMELINE_ROWS_H_

#include <cstddef>
#include <vector>

#include "explain/explanation.h"

namespace qel::tool {

// A row of the list of entries: an entry, a number of entries that are left out, or the
// transaction's date.
struct TimelineRow {
  const TimelineEntry* entry = nullptr;
  std::size_t leftOut = 0;
  bool isTransaction = false;
};

// Returns the rows for the product's entries in their order. Has a row for the transaction's date
// if it is known and no entry is at it. Of a long list it leaves out what is far from the
// transaction and has no role.
std::vector<TimelineRow> timelineRows(const Explanation& explanation);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_TIMELINE_ROWS_H_
