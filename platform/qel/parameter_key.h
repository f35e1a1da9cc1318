// The keys that the builder of an event can set.

#ifndef QEL_PLATFORM_PARAMETER_KEY_H_
#define QEL_PLATFORM_PARAMETER_KEY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qel {

// Every key that the builder can set, in ascending order of the key's text. Amounts are in micros
// of the currency; a flag is the integer 1 and is otherwise left out. The matched entry is the one
// entry of the product at the transaction's date, or the only entry of a one-off purchase.
enum class ParameterKey : std::uint8_t {
  kDedupeId,           // integer: deduplication identifier; -1 insufficient input, 0 not encodable
  kCurrency,           // string: currency code of the product's price
  kFreeTrial,          // flag: the matched entry is a free trial
  kInvalid,            // flag: not confirmed by the receipt, or a restore or repeated trial
  kOriginalPrice,      // integer: the product's price, where kPrice is a trial's or an offer's
  kPrice,              // integer: the price of one unit; the offer's, where it can be read
  kPriceIsDiscounted,  // flag: the matched entry is a free trial or an introductory offer
  kProductId,          // string: the product's identifier
  kProductName,        // string: the product's localized title
  kQuantity,           // integer: units bought
  kSubConvert,         // flag: a later purchase of a subscription, right after a free trial
  kSubRenew,           // flag: any other later purchase of a subscription
  kSubscription,       // flag: first purchase of a subscription; docs/event.md lists the rest
  kValue,              // integer: the price of all units
};

// The texts of the keys, in the order of ParameterKey.
inline constexpr std::array<std::string_view, 14> kParameterKeyTexts = {
    "_did",           "currency", "free_trial",          "invalid",
    "original_price", "price",    "price_is_discounted", "product_id",
    "product_name",   "quantity", "sub_convert",         "sub_renew",
    "subscription",   "value",
};

// Returns the text of `key`.
[[nodiscard]] constexpr std::string_view textOf(ParameterKey key) {
  return kParameterKeyTexts[static_cast<std::size_t>(key)];
}

}  // namespace qel

#endif  // QEL_PLATFORM_PARAMETER_KEY_H_
