// The written form of a transaction date.

#ifndef QEL_TOOL_TRANSACTION_DATE_H_
#define QEL_TOOL_TRANSACTION_DATE_H_

#include <optional>
#include <string_view>

#include "qel/instant.h"

namespace qel::tool {

// Reads an RFC 3339 timestamp as receipts write it, with an optional fraction of the second of one
// or more digits: 2019-03-14T09:26:53.250Z. Nothing for any other text. A fraction finer than
// nanoseconds is cut to them, but never to a whole second that it is not.
std::optional<Instant> parseTransactionDate(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_TRANSACTION_DATE_H_
