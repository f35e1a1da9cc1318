// Amounts in micros, and the identifier by which the same purchase is known when it is reported
// twice.
//
// Threads: pure functions, safe from any thread.

#ifndef QEL_SRC_MICROS_AND_DEDUPE_ID_H_
#define QEL_SRC_MICROS_AND_DEDUPE_ID_H_

#include <cstdint>
#include <optional>

#include "qel/decimal.h"
#include "qel/text.h"

namespace qel {

// Prices are in units of their currency. An amount is the double nearest to the exact product,
// truncated toward zero: 7.9 micros give 7, -1.5 give -1. Not a number, and an amount outside the
// signed 64-bit range, give -9223372036854775808.

// What one unit at `price` costs, in micros when `multiplier` is the number of micros in a unit of
// the currency.
std::int64_t amountFromPrice(const Decimal& price, std::int64_t multiplier);

// What `quantity` units at `price` cost in all, in micros.
std::int64_t QELValueInMicrosFromPriceAndQuantity(const Decimal& price, std::int64_t quantity);

// Identifies a purchase by its receipt entry: the digest of the three pieces joined without a
// separator. Gives all 64 bits set when either text is absent or empty, and 0 when the joined text
// cannot be encoded in UTF-8: it holds an unpaired surrogate, or is no UTF-8 to begin with. Halves
// of a surrogate pair that meet where two pieces join are one character.
std::uint64_t QELTransactionDedupeID(const OptionalText& originalTransactionID,
                                     const std::optional<std::int64_t>& webOrderLineItemID,
                                     const OptionalText& productID);

}  // namespace qel

#endif  // QEL_SRC_MICROS_AND_DEDUPE_ID_H_
