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

// Returns the identifier of a purchase: the digest of the three texts of its receipt entry, joined
// without a separator. The web order line item identifier may be absent or empty, which adds
// nothing.
//
// Returns all 64 bits set if either of the other two is absent or empty. Returns 0 if the joined
// text has no UTF-8 encoding: it holds an unpaired surrogate, or is not UTF-8 to begin with. Halves
// of a surrogate pair that meet where two texts join are one character.
std::uint64_t QELTransactionDedupeID(const OptionalText& originalTransactionID,
                                     const OptionalText& webOrderLineItemID,
                                     const OptionalText& productID);

}  // namespace qel

#endif  // QEL_SRC_MICROS_AND_DEDUPE_ID_H_
