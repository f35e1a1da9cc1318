// Fuzzes the reading of purchase dates. An input is one text.

#include <optional>

#include "date_oracle.h"
#include "fuzz_target.h"
#include "qel/date_formatter.h"

namespace qel::testing {

void fuzz(std::string_view input) {
  const std::optional<Instant> instant = DateFormatter().dateFromString(input);
  const std::optional<std::int64_t> seconds = oracleSeconds(input);
  check(instant.has_value() == seconds.has_value(), "a date is read when the oracle reads it");
  if (instant.has_value()) check(*instant == Instant{*seconds}, "dates are as expected");
}

}  // namespace qel::testing
