#include "micros_and_dedupe_id.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "qel/digest.h"
#include "qel/micros_multiplier.h"

namespace qel {
namespace {

std::int64_t integerFromDecimal(const Decimal& amount) {
  // 2^63 is the first magnitude outside the signed 64-bit range. -2^63 would fit, but it is also
  // the result for everything that does not.
  constexpr double kTwoTo63 = 9223372036854775808.0;
  const double nearest = amount.doubleValue();
  // The range is tested first, because converting a double that does not fit is undefined. The test
  // is false for NaN.
  const bool fits = std::abs(nearest) < kTwoTo63;
  if (!fits) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(nearest);
}

}  // namespace

std::int64_t amountFromPrice(const Decimal& price, std::int64_t multiplier) {
  return integerFromDecimal(
      price.decimalNumberByMultiplyingBy(Decimal::initWithLongLong(multiplier)));
}

std::int64_t QELValueInMicrosFromPriceAndQuantity(const Decimal& price, std::int64_t quantity) {
  const Decimal multiplier = Decimal::initWithLongLong(QELDataTypeMicrosMultiplier);
  const Decimal units = Decimal::initWithLongLong(quantity);
  // Both products are decimal: 0.99 x 3 x 1000000 reaches the conversion as exactly 2970000.
  const Decimal total = units.decimalNumberByMultiplyingBy(price);
  return integerFromDecimal(total.decimalNumberByMultiplyingBy(multiplier));
}

std::uint64_t QELTransactionDedupeID(const OptionalText& originalTransactionID,
                                     const OptionalText& webOrderLineItemID,
                                     const OptionalText& productID) {
  constexpr std::uint64_t kInsufficient = std::numeric_limits<std::uint64_t>::max();
  constexpr std::uint64_t kCannotBeEncoded = 0;

  if (isEmpty(originalTransactionID)) return kInsufficient;
  if (isEmpty(productID)) return kInsufficient;

  // Without a separator the texts 1, 23, p and 12, 3, p have the same identifier. This never
  // changes.
  const std::string_view lineItem = webOrderLineItemID.value_or(std::string_view());
  std::string text;
  text.reserve(originalTransactionID->size() + lineItem.size() + productID->size());
  text.append(*originalTransactionID).append(lineItem).append(*productID);

  const std::optional<std::string> bytes = utf8DataWithoutLoss(std::move(text));
  if (!bytes.has_value()) return kCannotBeEncoded;
  return qel_64LSBMD5(*bytes);
}

}  // namespace qel
