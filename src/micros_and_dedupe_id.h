// Amounts in micros, and the deduplication identifier of a purchase.
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
// truncated toward zero: 7.9 micros become 7, -1.5 become -1. The amount is -9223372036854775808 if
// the product is not a number or outside the signed 64-bit range.

// Returns the price of one unit in micros. `multiplier` is the number of micros in one unit of the
// currency.
std::int64_t amountFromPrice(const Decimal& price, std::int64_t multiplier);

// Returns the price of `quantity` units in micros. `price` is the price of one.
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
