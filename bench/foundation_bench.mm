// Benchmarks of an event of live objects, with each of the two date readers.

#include <benchmark/benchmark.h>

#import "live_purchase.h"
#import "platform_formatter.h"

namespace qel::bench {
namespace {

using EntryPoint = NSDictionary<NSString*, id>* (*)(SKProduct*, SKPaymentTransaction*,
                                                    NSArray<id<QELInAppPurchaseItem>>*);

// Returns whether `entryPoint` matches the entry of a renewal whose date is followed by `text`.
bool findsEntryWithTextAfterTheEnd(EntryPoint entryPoint, const char* text) {
  SamplePurchase sample(2);
  *sample.entries[1].purchaseDateIA5String += text;
  const LivePurchase purchase = livePurchaseOf(sample);
  NSDictionary* const event = entryPoint(purchase.product, purchase.transaction, purchase.receipt);
  return [event count] > 0 && [event objectForKey:(::kQELParameterInAppPurchaseInvalid)] == nil;
}

// Measures a renewal. Fails if `entryPoint` has the wrong date reader: only NSDateFormatter accepts
// text after a date.
void measureRenewal(benchmark::State& state, EntryPoint entryPoint, bool readsTextAfterTheEnd) {
  @autoreleasepool {
    if (!findsEntryWithTextAfterTheEnd(entryPoint, "") ||
        findsEntryWithTextAfterTheEnd(entryPoint, "!") != readsTextAfterTheEnd) {
      state.SkipWithError("wrong date reader");
      return;
    }
  }
  const LivePurchase purchase = livePurchaseOf(SamplePurchase(2));
  for (auto _ : state) {
    @autoreleasepool {
      benchmark::DoNotOptimize(
          entryPoint(purchase.product, purchase.transaction, purchase.receipt));
    }
  }
}

void BM_EventFoundation(benchmark::State& state) {
  measureRenewal(state, QELInAppPurchaseEventParametersFromProductAndTransactionV2, false);
}
BENCHMARK(BM_EventFoundation)->Name("BM_EventFoundation/renewal");

void BM_EventFoundationFormatter(benchmark::State& state) {
  measureRenewal(state, eventThroughPlatformFormatter, true);
}
BENCHMARK(BM_EventFoundationFormatter)->Name("BM_EventFoundationFormatter/renewal");

}  // namespace
}  // namespace qel::bench
