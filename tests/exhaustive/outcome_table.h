// What is to come of a purchase, read from a table of outcomes.
//
// A second reading of the rules. It shares nothing with the component: no code, no header, no
// order of steps; its texts, digests and amounts are its own.

#ifndef QEL_TESTS_EXHAUSTIVE_OUTCOME_TABLE_H_
#define QEL_TESTS_EXHAUSTIVE_OUTCOME_TABLE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "purchase_space.h"

namespace qel::testing {

// The keys of an event in ascending order of their texts.
enum Key : std::size_t {
  kDid,
  kCurrencyCode,
  kFreeTrial,
  kInvalid,
  kOriginalPrice,
  kPrice,
  kDiscounted,
  kProductId,
  kProductName,
  kQuantity,
  kConvert,
  kRenew,
  kSubscription,
  kValue,
  kKeyCount
};

inline constexpr std::array<std::string_view, kKeyCount> kKeyTexts = {
    "_did",           "currency", "free_trial",          "invalid",
    "original_price", "price",    "price_is_discounted", "product_id",
    "product_name",   "quantity", "sub_convert",         "sub_renew",
    "subscription",   "value"};

// The value under one key: none, an integer, or a text.
struct ExpectedValue {
  enum class Kind : std::uint8_t { kNone, kInteger, kText };

  Kind kind = Kind::kNone;
  std::int64_t integer = 0;
  std::string_view text;
};

// One message, always at level 8. The contexts are the product, then the count.
struct ExpectedMessage {
  int code = 0;
  std::string_view text;
  bool namesProduct = false;
  bool namesCount = false;
};

struct ExpectedOutcome {
  bool hasEvent = false;
  // Meaningful with an event only.
  std::array<ExpectedValue, kKeyCount> values;

  std::array<ExpectedMessage, 4> messages;
  std::size_t messageCount = 0;
  // The number that a message with a count names.
  std::uint64_t countAtDate = 0;

  // The row that applies; kNoSingleRow when not exactly one does, which is a mistake in the table.
  std::size_t row = 0;
};

inline constexpr std::size_t kNoSingleRow = static_cast<std::size_t>(-1);

std::size_t rowCount();
// What is the case where row `row` applies.
std::string_view situationOf(std::size_t row);

ExpectedOutcome expectedOutcomeOf(const Purchase& purchase);

}  // namespace qel::testing

#endif  // QEL_TESTS_EXHAUSTIVE_OUTCOME_TABLE_H_
