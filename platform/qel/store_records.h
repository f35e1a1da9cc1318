// Interfaces to the records of the platform's store.
//
// An app's library implements them over live objects of the store framework. The library calls
// each operation only when it needs the answer, in a fixed order.
//
// A returned text or record belongs to the record that returned it. A text must stay valid until
// the library's function returns. A record must stay valid until the same operation is called
// again. An operation must not throw: an exception ends the program.
//
// Threads: operations are called on the thread that called the library, and on no other.

#ifndef QEL_PLATFORM_STORE_RECORDS_H_
#define QEL_PLATFORM_STORE_RECORDS_H_

#include <cstdint>
#include <optional>

#include "qel/decimal.h"
#include "qel/instant.h"
#include "qel/text.h"

namespace qel {

// A product's introductory offer.
class StoreProductDiscount {
 public:
  virtual ~StoreProductDiscount() = default;

  // The offer's price, in units of the product's currency.
  virtual std::optional<Decimal> price() const = 0;

  // 0 pay as you go, 1 pay up front, 2 free trial.
  virtual std::uint64_t paymentMode() const = 0;
};

// A product of the store.
class StoreProduct {
 public:
  virtual ~StoreProduct() = default;

  virtual OptionalText productIdentifier() const = 0;

  // The price of one unit, in units of the currency of the price's locale.
  virtual std::optional<Decimal> price() const = 0;

  // The currency code (NSLocaleCurrencyCode) of the price's locale, such as EUR. Absent if there is
  // no locale.
  virtual OptionalText priceLocaleCurrencyCode() const = 0;

  virtual OptionalText localizedTitle() const = 0;

  // Older systems have no introductory offers. The next four operations say what is available. They
  // are called in this order, up to the first false.

  // Whether the platform has the class SKProductDiscount.
  virtual bool hasDiscountClass() const = 0;
  // Whether that class's instances answer `price`.
  virtual bool discountsAnswerPrice() const = 0;
  // Whether that class's instances answer `paymentMode`.
  virtual bool discountsAnswerPaymentMode() const = 0;
  // Whether this product answers `introductoryPrice`.
  virtual bool answersIntroductoryPrice() const = 0;

  // The introductory offer, null if the product has none. Called only if all four returned true.
  virtual const StoreProductDiscount* introductoryPrice() const = 0;
};

// A payment of the store.
class StorePayment {
 public:
  virtual ~StorePayment() = default;

  // Units bought.
  virtual std::int64_t quantity() const = 0;
};

// A finished payment transaction of the store.
class StoreTransaction {
 public:
  virtual ~StoreTransaction() = default;

  virtual OptionalText transactionIdentifier() const = 0;

  // The transaction that this one restores or continues, null if there is none. Only its
  // transactionIdentifier is called.
  virtual const StoreTransaction* originalTransaction() const = 0;

  virtual std::optional<Instant> transactionDate() const = 0;

  // Null if there is none.
  virtual const StorePayment* payment() const = 0;
};

// Returns the number of units that `transaction` bought, 0 if it has no payment.
[[nodiscard]] inline std::int64_t quantityOf(const StoreTransaction& transaction) {
  const StorePayment* const payment = transaction.payment();
  return payment != nullptr ? payment->quantity() : 0;
}

}  // namespace qel

#endif  // QEL_PLATFORM_STORE_RECORDS_H_
