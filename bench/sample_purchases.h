// Purchases for benchmarks.

#ifndef QEL_BENCH_SAMPLE_PURCHASES_H_
#define QEL_BENCH_SAMPLE_PURCHASES_H_

#include <cstddef>
#include <deque>

#include "qel/plain_records.h"

namespace qel::bench {

// The order in which a receipt lists its entries.
enum class ReceiptOrder { kSorted, kReversed, kRandom };

// A subscription with the records of its latest renewal. The receipt has `size` entries, one hour
// apart. The first entry began the subscription.
struct SamplePurchase {
  // Another seed gives other identifiers, prices and dates, and another order to a random receipt.
  // The same seed gives the same purchase in every run.
  explicit SamplePurchase(std::size_t size, ReceiptOrder order = ReceiptOrder::kSorted,
                          unsigned seed = 0);
  SamplePurchase(const SamplePurchase&) = delete;
  SamplePurchase& operator=(const SamplePurchase&) = delete;

  PlainProduct product;
  PlainTransaction transaction;
  const PlainProductRecord productRecord = PlainProductRecord(product);
  const PlainTransactionRecord transactionRecord = PlainTransactionRecord(transaction);
  // In the order of the receipt.
  std::deque<QELInAppPurchaseItem> entries;
  QELInAppPurchaseItems receipt;
};

}  // namespace qel::bench

#endif  // QEL_BENCH_SAMPLE_PURCHASES_H_
