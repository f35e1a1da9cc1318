// Amounts as people write them.

#ifndef QEL_TOOL_EXPLAIN_MONEY_H_
#define QEL_TOOL_EXPLAIN_MONEY_H_

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "qel/decimal.h"
#include "qel/text.h"

namespace qel::tool {

// Returns the number of decimals of amounts in `currency` (ISO 4217): 2 for EUR, 0 for JPY, 3 for
// TND. Returns 2 for a text that is no currency code.
int decimalsOf(std::string_view currency);

// Returns whether an integer of an event is an amount. The least one stands for a price that is not
// a number, and for what does not fit into 64 bits.
constexpr bool isAmount(std::int64_t micros) {
  return micros != std::numeric_limits<std::int64_t>::min();
}

// Returns an amount of an event in units of the currency: 4990000 is "4.99" in EUR, "4.990" in TND.
// Has more decimals than the currency if the amount needs them. Returns "no amount" for what is
// none.
std::string amountText(std::int64_t micros, std::string_view currency);

// Returns the price of a product, with at least the decimals of the currency. It has up to 17
// significant digits, and an exponent if it is very large or small.
std::string priceText(const Decimal& price, std::string_view currency);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_MONEY_H_
