// The oracle for RFC 3339 timestamps.

#ifndef QEL_TESTS_REFERENCE_DATE_ORACLE_H_
#define QEL_TESTS_REFERENCE_DATE_ORACLE_H_

#include <cstdint>
#include <optional>
#include <string_view>

namespace qel::testing {

// Days of `month` in `year`, by the Gregorian rule.
int daysInMonth(int year, int month);

// Days from 1970-01-01 to the given day, counted year by year; negative before.
std::int64_t daysSince1970(int year, int month, int day);

// Seconds since 1970-01-01T00:00:00Z of a date that is written as the component reads it; nothing
// for any other text. Takes numbers from where they must stand, whatever stands there, and then
// asks whether writing those numbers gives the same text.
std::optional<std::int64_t> oracleSeconds(std::string_view text);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_DATE_ORACLE_H_
