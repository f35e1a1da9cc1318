// Purchases to measure with: the store's records over plain data, at the least cost.

#ifndef QEL_BENCH_SAMPLE_PURCHASES_H_
#define QEL_BENCH_SAMPLE_PURCHASES_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel::bench {

struct SampleDiscount final : StoreProductDiscount {
  Decimal thePrice = *Decimal::fromString("1.99");

  std::optional<Decimal> price() const override { return thePrice; }
  std::uint64_t paymentMode() const override { return 0; }
};

struct SampleProduct final : StoreProduct {
  Decimal thePrice = *Decimal::fromString("4.99");
  SampleDiscount discount;

  OptionalText productIdentifier() const override { return "com.example.app.monthly"; }
  std::optional<Decimal> price() const override { return thePrice; }
  OptionalText priceLocaleCurrencyCode() const override { return "EUR"; }
  OptionalText localizedTitle() const override { return "Monthly plan"; }
  bool hasDiscountClass() const override { return true; }
  bool discountsAnswerPrice() const override { return true; }
  bool discountsAnswerPaymentMode() const override { return true; }
  bool answersIntroductoryPrice() const override { return true; }
  const StoreProductDiscount* introductoryPrice() const override { return &discount; }
};

struct SamplePayment final : StorePayment {
  std::int64_t quantity() const override { return 1; }
};

struct SampleTransaction final : StoreTransaction {
  OptionalText identifier;
  const StoreTransaction* original = nullptr;
  std::optional<Instant> date;
  SamplePayment thePayment;

  OptionalText transactionIdentifier() const override { return identifier; }
  const StoreTransaction* originalTransaction() const override { return original; }
  std::optional<Instant> transactionDate() const override { return date; }
  const StorePayment* payment() const override { return &thePayment; }
};

// The order in which a receipt lists its entries.
enum class ReceiptOrder { kSorted, kReversed, kRandom };

// A monthly subscription and all that it takes to compute the event of its latest renewal: the
// receipt has `size` entries an hour apart, the first of which began the subscription.
struct SamplePurchase {
  // `seed` tells random receipts apart; the same seed gives the same receipt in every run.
  explicit SamplePurchase(std::size_t size, ReceiptOrder order = ReceiptOrder::kSorted,
                          unsigned seed = 0);
  SamplePurchase(const SamplePurchase&) = delete;
  SamplePurchase& operator=(const SamplePurchase&) = delete;

  SampleProduct product;
  std::string originalIdentifier;
  std::string latestIdentifier;
  SampleTransaction original;
  SampleTransaction transaction;
  // In the order of the receipt, as a parser makes them.
  std::deque<QELInAppPurchaseItem> entries;
  QELInAppPurchaseItems receipt;
};

}  // namespace qel::bench

#endif  // QEL_BENCH_SAMPLE_PURCHASES_H_
