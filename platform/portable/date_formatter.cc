#include "qel/date_formatter.h"

#include "qel/rfc3339.h"

namespace qel {

// RFC 3339 does not depend on a locale or a default zone, so there is nothing to set.
DateFormatter::DateFormatter() = default;
DateFormatter::~DateFormatter() = default;

std::optional<Instant> DateFormatter::dateFromString(const OptionalText& text) const {
  if (!text.has_value()) return std::nullopt;
  return parseRfc3339(*text);
}

}  // namespace qel
