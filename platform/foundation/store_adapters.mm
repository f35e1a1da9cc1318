#include "store_adapters.h"

#include "text_conversion.h"
#include "value_conversion.h"

namespace qel::foundation {
namespace {

// Stores a record of `object` in `slot` and returns it. Returns null for nil.
template <typename Record, typename Object>
const Record* recordOf(Object object, std::optional<Record>& slot) {
  slot.reset();
  return object != nil ? &slot.emplace(object) : nullptr;
}

}  // namespace

std::optional<Decimal> FoundationDiscount::price() const noexcept {
  return decimalFrom([discount_.get() performSelector:@selector(price)]);
}

std::uint64_t FoundationDiscount::paymentMode() const noexcept {
  return [discount_.get() paymentMode];
}

OptionalText FoundationProduct::productIdentifier() const noexcept {
  return productIdentifier_ = textFrom([product_.get() productIdentifier]);
}

std::optional<Decimal> FoundationProduct::price() const noexcept {
  return decimalFrom([product_.get() price]);
}

OptionalText FoundationProduct::priceLocaleCurrencyCode() const noexcept {
  NSLocale* const locale = [product_.get() priceLocale];
  return currencyCode_ = textFrom([locale objectForKey:NSLocaleCurrencyCode]);
}

OptionalText FoundationProduct::localizedTitle() const noexcept {
  return localizedTitle_ = textFrom([product_.get() localizedTitle]);
}

bool FoundationProduct::hasDiscountClass() const noexcept {
  discountClass_ = NSClassFromString(@"SKProductDiscount");
  return discountClass_ != Nil;
}

bool FoundationProduct::discountsAnswerPrice() const noexcept {
  return [discountClass_ instancesRespondToSelector:@selector(price)];
}

bool FoundationProduct::discountsAnswerPaymentMode() const noexcept {
  return [discountClass_ instancesRespondToSelector:@selector(paymentMode)];
}

bool FoundationProduct::answersIntroductoryPrice() const noexcept {
  return [product_.get() respondsToSelector:@selector(introductoryPrice)];
}

const StoreProductDiscount* FoundationProduct::introductoryPrice() const noexcept {
  id<QELStoreDiscountOperations> const offer =
      [product_.get() performSelector:@selector(introductoryPrice)];
  return recordOf(offer, introductoryPrice_);
}

std::int64_t FoundationPayment::quantity() const noexcept { return [payment_.get() quantity]; }

OptionalText FoundationTransaction::transactionIdentifier() const noexcept {
  return transactionIdentifier_ = textFrom([transaction_.get() transactionIdentifier]);
}

const StoreTransaction* FoundationTransaction::originalTransaction() const noexcept {
  id<QELStoreTransactionOperations> const original = [transaction_.get() originalTransaction];
  originalTransaction_.reset(original != nil ? new FoundationTransaction(original) : nullptr);
  return originalTransaction_.get();
}

std::optional<Instant> FoundationTransaction::transactionDate() const noexcept {
  return instantFrom([transaction_.get() transactionDate]);
}

const StorePayment* FoundationTransaction::payment() const noexcept {
  return recordOf([transaction_.get() payment], payment_);
}

}  // namespace qel::foundation
