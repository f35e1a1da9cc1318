// Benchmarks of an event, through the exported function.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <random>
#include <span>

#include "allocations.h"
#include "qel/purchase_event.h"
#include "qel/rfc3339.h"
#include "sample_purchases.h"

namespace qel::bench {
namespace {

// Measures the events of `purchases`, one purchase after the other.
template <typename Purchases>
void measureEvents(benchmark::State& state, const Purchases& purchases) {
  const std::uint64_t before = allocationsOfThisThread();
  auto purchase = purchases.begin();
  for (auto _ : state) {
    benchmark::DoNotOptimize(QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        &purchase->productRecord, &purchase->transactionRecord, purchase->receipt));
    if (++purchase == purchases.end()) purchase = purchases.begin();
  }
  state.counters["allocs"] = benchmark::Counter(
      static_cast<double>(allocationsOfThisThread() - before), benchmark::Counter::kAvgIterations);
}

// The kinds of purchases. Each function makes a renewal of two entries one of the kind.

void makeRenewal(SamplePurchase&) {}

void makeConsumable(SamplePurchase& purchase) {
  purchase.receipt.pop_back();
  QELInAppPurchaseItem& entry = purchase.entries[0];
  entry.purchaseType = 1;
  entry.webOrderLineItemID.reset();
  purchase.transaction.transactionDate = parseRfc3339(*entry.purchaseDateIA5String);
}

void makeFreeTrial(SamplePurchase& purchase) {
  purchase.receipt.pop_back();
  QELInAppPurchaseItem& entry = purchase.entries[0];
  entry.isFreeTrial = true;
  purchase.transaction.transactionIdentifier = entry.transactionID;
  purchase.transaction.transactionDate = parseRfc3339(*entry.purchaseDateIA5String);
}

void makeIntroductoryOffer(SamplePurchase& purchase) {
  purchase.entries[1].isIntroductoryOffer = true;
}

// A subscription without an entry at the transaction's date.
void makeInvalid(SamplePurchase& purchase) {
  const Instant date = *purchase.transaction.transactionDate;
  purchase.transaction.transactionDate = Instant(date.seconds() + 1);
}

using MakeKind = void (*)(SamplePurchase& purchase);

void BM_Event(benchmark::State& state, MakeKind makeKind) {
  SamplePurchase purchase(2);
  makeKind(purchase);
  measureEvents(state, std::span(&purchase, 1));
}
BENCHMARK_CAPTURE(BM_Event, renewal, makeRenewal);
BENCHMARK_CAPTURE(BM_Event, consumable, makeConsumable);
BENCHMARK_CAPTURE(BM_Event, free_trial, makeFreeTrial);
BENCHMARK_CAPTURE(BM_Event, introductory_offer, makeIntroductoryOffer);
BENCHMARK_CAPTURE(BM_Event, invalid, makeInvalid);

// Takes a thousand purchases of all kinds in turn, no two of which are alike. BM_Event repeats one
// purchase, whose branches the processor learns.
void BM_EventMix(benchmark::State& state) {
  constexpr std::array<MakeKind, 5> kKinds = {makeRenewal, makeConsumable, makeFreeTrial,
                                              makeIntroductoryOffer, makeInvalid};
  std::mt19937 random(1);
  std::deque<SamplePurchase> purchases;
  for (unsigned seed = 0; seed < 1000; ++seed) {
    kKinds[random() % kKinds.size()](purchases.emplace_back(2, ReceiptOrder::kSorted, seed));
  }
  measureEvents(state, purchases);
}
BENCHMARK(BM_EventMix)->Name("BM_Event/mix");

// Takes many receipts of the same size in turn, so that caches and branch predictor do not know the
// next one, as in production. Receipts of 100 entries or more have 100000 entries in all.
void BM_EventReceipt(benchmark::State& state, ReceiptOrder order) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::size_t count = std::min<std::size_t>(100000 / size, 1000);
  std::deque<SamplePurchase> purchases;
  for (unsigned seed = 0; seed < count; ++seed) purchases.emplace_back(size, order, seed);
  measureEvents(state, purchases);
}
BENCHMARK_CAPTURE(BM_EventReceipt, sorted, ReceiptOrder::kSorted)
    ->Name("BM_EventReceipt")
    ->RangeMultiplier(10)
    ->Range(1, 10000);
BENCHMARK_CAPTURE(BM_EventReceipt, reversed, ReceiptOrder::kReversed)
    ->Name("BM_EventReceipt/reversed")
    ->Arg(1000)
    ->Arg(10000);
BENCHMARK_CAPTURE(BM_EventReceipt, random, ReceiptOrder::kRandom)
    ->Name("BM_EventReceipt/random")
    ->Arg(1000)
    ->Arg(10000);

}  // namespace
}  // namespace qel::bench
