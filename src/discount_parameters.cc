#include "discount_parameters.h"

#include "micros_and_dedupe_id.h"
#include "qel/decimal.h"

namespace qel {
namespace {

// An offer with this payment mode is a free trial.
constexpr std::uint64_t kPaymentModeFreeTrial = 2;

// A flag is set when its value is exactly 1.
bool isSet(const QELValuePtr& flag) { return flag != nullptr && flag->int64Value() == 1; }

bool canAskForIntroductoryPrice(const StoreProduct& product) {
  return product.hasDiscountClass() && product.discountsAnswerPrice() &&
         product.discountsAnswerPaymentMode() && product.answersIntroductoryPrice();
}

EventParameters freeTrialParameters(const EventParameters& validated) {
  EventParameters result;
  result.set(ParameterKey::kOriginalPrice, validated.find(ParameterKey::kPrice));
  result.setFlag(ParameterKey::kPriceIsDiscounted);
  result.setInt64(ParameterKey::kPrice, 0);
  result.setInt64(ParameterKey::kValue, 0);
  return result;
}

EventParameters offerParameters(const EventParameters& validated, const Decimal& offerPrice,
                                const StoreTransaction& transaction, std::int64_t multiplier) {
  EventParameters result;
  result.set(ParameterKey::kOriginalPrice, validated.find(ParameterKey::kPrice));
  result.setInt64(ParameterKey::kPrice, amountFromPrice(offerPrice, multiplier));
  const std::int64_t quantity = quantityOf(transaction);
  if (quantity != 0) {
    result.setInt64(ParameterKey::kValue,
                    QELValueInMicrosFromPriceAndQuantity(offerPrice, quantity));
  }
  // "price_is_discounted" is left out: the validated parameters have it already.
  return result;
}

}  // namespace

std::optional<EventParameters> QELDiscountParameters(
    const std::optional<EventParameters>& validated, const StoreProduct& product,
    const StoreTransaction& transaction, std::int64_t multiplier) {
  if (!validated.has_value()) return std::nullopt;
  const bool isDiscounted = isSet(validated->find(ParameterKey::kPriceIsDiscounted));
  const bool isFreeTrial = isSet(validated->find(ParameterKey::kFreeTrial));
  if (!isDiscounted && !isFreeTrial) return std::nullopt;
  if (isFreeTrial) return freeTrialParameters(*validated);

  if (!canAskForIntroductoryPrice(product)) return std::nullopt;
  const StoreProductDiscount* const offer = product.introductoryPrice();
  if (offer == nullptr) return std::nullopt;
  if (offer->paymentMode() == kPaymentModeFreeTrial) return freeTrialParameters(*validated);
  const std::optional<Decimal> offerPrice = offer->price();
  if (!offerPrice.has_value()) return std::nullopt;
  return offerParameters(*validated, *offerPrice, transaction, multiplier);
}

}  // namespace qel
