// Instants and spans of time as people write them.

#ifndef QEL_TOOL_EXPLAIN_TIME_TEXT_H_
#define QEL_TOOL_EXPLAIN_TIME_TEXT_H_

#include <cstdint>
#include <string>

#include "qel/instant.h"

namespace qel::tool {

// Returns "2019-04-14 09:26:53", in UTC, with the fraction of the second if there is one.
std::string dateText(const Instant& instant);

// Returns a number of seconds in its two largest units: "1 h", "30 days 2 h", "45 s".
std::string durationText(std::uint64_t seconds);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_TIME_TEXT_H_
