// Purchases to measure with.

#ifndef QEL_BENCH_SAMPLE_PURCHASES_H_
#define QEL_BENCH_SAMPLE_PURCHASES_H_

#include <cstddef>
#include <deque>

#include "qel/plain_records.h"

namespace qel::bench {

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

  PlainProduct product;
  PlainTransaction transaction;
  const PlainProductRecord productRecord = PlainProductRecord(product);
  const PlainTransactionRecord transactionRecord = PlainTransactionRecord(transaction);
  // In the order of the receipt, as a parser makes them.
  std::deque<QELInAppPurchaseItem> entries;
  QELInAppPurchaseItems receipt;
};

}  // namespace qel::bench

#endif  // QEL_BENCH_SAMPLE_PURCHASES_H_
