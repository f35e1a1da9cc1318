#include "counting_date_formatter.h"

#include "qel/date_formatter.h"
#include "qel/rfc3339.h"

namespace qel {
namespace testing {

FormatterCounts& formatterCounts() {
  static FormatterCounts counts;
  return counts;
}

}  // namespace testing

DateFormatter::DateFormatter() {
  ++testing::formatterCounts().created;
  ++testing::formatterCounts().living;
}

DateFormatter::~DateFormatter() { --testing::formatterCounts().living; }

std::optional<Instant> DateFormatter::dateFromString(const OptionalText& text) const {
  testing::formatterCounts().parsed.emplace_back(text);
  return text.has_value() ? parseRfc3339(*text) : std::nullopt;
}

}  // namespace qel
