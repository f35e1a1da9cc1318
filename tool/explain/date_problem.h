// Why a purchase date of a receipt cannot be read.

#ifndef QEL_TOOL_EXPLAIN_DATE_PROBLEM_H_
#define QEL_TOOL_EXPLAIN_DATE_PROBLEM_H_

#include <cstdint>
#include <string_view>

#include "qel/text.h"

namespace qel::tool {

enum class DateProblem : std::uint8_t {
  kAbsent,
  kEmpty,
  kServiceForm,         // 2020-07-14 19:36:40 Etc/GMT, as the store's validation service writes
  kMilliseconds,        // 1594755400000
  kNoTime,              // 2020-07-14
  kSpaceForT,           // 2020-07-14 19:36:40Z
  kFraction,            // 2020-07-14T19:36:40.250Z
  kNoZone,              // 2020-07-14T19:36:40
  kOffsetWithoutColon,  // 2020-07-14T19:36:40+0000
  kLowerCase,           // 2020-07-14t19:36:40z
  kNoSuchDateOrTime,    // 2020-02-30T25:00:00Z
  kTextAfterwards,      // 2020-07-14T19:36:40Z UTC
  kOther,
};

// Returns why parseRfc3339 cannot read `text`. `text` must be such a text, or absent.
DateProblem dateProblem(const OptionalText& text);

// Returns the reason in words: "offset without a colon".
std::string_view describe(DateProblem problem);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_DATE_PROBLEM_H_
