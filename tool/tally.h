// Counts for the summary of a run.

#ifndef QEL_TOOL_TALLY_H_
#define QEL_TOOL_TALLY_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace qel::tool {

// A line of an input.
struct LinePlace {
  // Index of the input.
  std::size_t input = 0;
  std::uint64_t line = 1;
};

// How often something was found, and where first.
struct Finding {
  std::uint64_t count = 0;
  LinePlace firstPlace;
  // What was found first, and where in the line.
  std::string first;

  Finding& operator+=(const Finding& later);
};

struct Tally {
  std::uint64_t read = 0;
  Finding rejected;
  // Receipt entries whose purchase date is not an RFC 3339 timestamp of whole seconds.
  Finding unreadableDates;
  // Receipt entries with webOrderLineItemID 0.
  Finding zeroLineItems;

  std::uint64_t lines() const { return read + rejected.count; }
  Tally& operator+=(const Tally& later);
};

}  // namespace qel::tool

#endif  // QEL_TOOL_TALLY_H_
