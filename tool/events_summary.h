// The summary of a run.

#ifndef QEL_TOOL_EVENTS_SUMMARY_H_
#define QEL_TOOL_EVENTS_SUMMARY_H_

#include <string>
#include <vector>

#include "tally.h"

namespace qel::tool {

// Returns the place for people: "line 3 of a.jsonl".
std::string textOf(const LinePlace& place, const std::vector<std::string>& inputs);

// Writes to standard error what was found in the inputs, and at last the numbers of purchases read
// and of lines rejected.
void reportSummary(const Tally& tally, const std::vector<std::string>& inputs);

}  // namespace qel::tool

#endif  // QEL_TOOL_EVENTS_SUMMARY_H_
