// Fuzzes the reading of purchase dates. An input is one text.

#include <optional>

#include "date_judge.h"
#include "fuzz_check.h"
#include "qel/date_formatter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qel::testing;
  const std::string_view text = textOf(data, size);
  const std::optional<qel::Instant> instant = qel::DateFormatter().dateFromString(text);
  const std::optional<std::int64_t> seconds = judgedSeconds(text);
  check(instant.has_value() == seconds.has_value(), "a date is read when the judge reads it");
  if (instant.has_value()) check(*instant == qel::Instant{*seconds}, "dates are as judged");
  return 0;
}
