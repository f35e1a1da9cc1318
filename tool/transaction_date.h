// Parses transaction dates.

#ifndef QEL_TOOL_TRANSACTION_DATE_H_
#define QEL_TOOL_TRANSACTION_DATE_H_

#include <optional>
#include <string_view>

#include "qel/instant.h"

namespace qel::tool {

// Parses an RFC 3339 timestamp (see qel/rfc3339.h) with an optional fraction of a second, of one or
// more digits: 2019-03-14T09:26:53.250Z. Returns std::nullopt for any other text. Digits after the
// ninth are dropped, but a fraction other than 0 never becomes 0.
std::optional<Instant> parseTransactionDate(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_TRANSACTION_DATE_H_
