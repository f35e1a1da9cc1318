// The platform store's records, as the component asks them.
//
// These are interfaces to live objects of the store: each operation is asked when its answer is
// needed, in a fixed order, and not before. An app's library implements them over the store
// framework; tests and tools implement them over plain data.
//
// A returned text or record belongs to the record that returned it. A text stays valid until the
// call of the component that asked for it returns, whatever else is asked meanwhile; a record until
// the same operation is asked again. An operation must not throw:
// an exception ends the program.
//
// Threads: a record is asked on the thread that called the component, and on no other.

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

  // How the offer is paid: 0 as you go, 1 up front, 2 free trial.
  virtual std::uint64_t paymentMode() const = 0;
};

// A product of the store.
class StoreProduct {
 public:
  virtual ~StoreProduct() = default;

  virtual OptionalText productIdentifier() const = 0;

  // The price of one unit, in units of the currency of the price's locale.
  virtual std::optional<Decimal> price() const = 0;

  // The currency code (NSLocaleCurrencyCode) of the price's locale: EUR. Absent when there is no
  // locale.
  virtual OptionalText priceLocaleCurrencyCode() const = 0;

  virtual OptionalText localizedTitle() const = 0;

  // Introductory offers came late to the store, so what the platform and this product provide is
  // asked at run time, in the order of the next four operations, ending at the first no.

  // Whether the platform has the class SKProductDiscount.
  virtual bool hasDiscountClass() const = 0;
  // Whether that class's instances answer `price`.
  virtual bool discountsAnswerPrice() const = 0;
  // Whether that class's instances answer `paymentMode`.
  virtual bool discountsAnswerPaymentMode() const = 0;
  // Whether this product answers `introductoryPrice`.
  virtual bool answersIntroductoryPrice() const = 0;

  // The introductory offer, null when the product has none. Asked only after four times yes.
  virtual const StoreProductDiscount* introductoryPrice() const = 0;
};

// What was paid for.
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

  // The transaction that this one restores or continues, null when there is none. Only its
  // transactionIdentifier is asked.
  virtual const StoreTransaction* originalTransaction() const = 0;

  virtual std::optional<Instant> transactionDate() const = 0;

  // Null when there is none.
  virtual const StorePayment* payment() const = 0;
};

// The units that `transaction` bought; 0 when it has no payment.
inline std::int64_t quantityOf(const StoreTransaction& transaction) {
  const StorePayment* const payment = transaction.payment();
  return payment != nullptr ? payment->quantity() : 0;
}

}  // namespace qel

#endif  // QEL_PLATFORM_STORE_RECORDS_H_
