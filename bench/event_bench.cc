// Benchmarks of an event, through the exported function.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <span>

#include "allocations.h"
#include "qel/purchase_event.h"
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

void measureEvent(benchmark::State& state, const SamplePurchase& purchase) {
  measureEvents(state, std::span(&purchase, 1));
}

void BM_EventConsumable(benchmark::State& state) {
  SamplePurchase purchase(1);
  purchase.entries[0].purchaseType = 1;
  purchase.entries[0].webOrderLineItemID.reset();
  measureEvent(state, purchase);
}
BENCHMARK(BM_EventConsumable)->Name("BM_Event/consumable");

void BM_EventRenewal(benchmark::State& state) { measureEvent(state, SamplePurchase(2)); }
BENCHMARK(BM_EventRenewal)->Name("BM_Event/renewal");

void BM_EventFreeTrial(benchmark::State& state) {
  SamplePurchase purchase(1);
  purchase.entries[0].isFreeTrial = true;
  measureEvent(state, purchase);
}
BENCHMARK(BM_EventFreeTrial)->Name("BM_Event/free_trial");

void BM_EventIntroductoryOffer(benchmark::State& state) {
  SamplePurchase purchase(2);
  purchase.entries[1].isIntroductoryOffer = true;
  measureEvent(state, purchase);
}
BENCHMARK(BM_EventIntroductoryOffer)->Name("BM_Event/introductory_offer");

// A subscription without an entry at the transaction's date.
void BM_EventInvalid(benchmark::State& state) {
  SamplePurchase purchase(2);
  const Instant date = *purchase.transaction.transactionDate;
  purchase.transaction.transactionDate = Instant(date.seconds() + 1);
  measureEvent(state, purchase);
}
BENCHMARK(BM_EventInvalid)->Name("BM_Event/invalid");

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
