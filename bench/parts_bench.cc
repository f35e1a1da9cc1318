// Benchmarks of the parts of an event.

#include <benchmark/benchmark.h>

#include <string_view>

#include "allocations.h"
#include "qel/decimal.h"
#include "qel/digest.h"
#include "qel/receipt_matching.h"
#include "qel/rfc3339.h"
#include "sample_purchases.h"

namespace qel::bench {
namespace {

void BM_Date(benchmark::State& state) {
  std::string_view text = "2019-03-14T09:26:53Z";
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(parseRfc3339(text));
  }
}
BENCHMARK(BM_Date);

void BM_Product(benchmark::State& state) {
  Decimal price = *Decimal::fromString("4.99");
  Decimal multiplier = Decimal::initWithLongLong(1000000);
  for (auto _ : state) {
    benchmark::DoNotOptimize(price);
    benchmark::DoNotOptimize(price.decimalNumberByMultiplyingBy(multiplier));
  }
}
BENCHMARK(BM_Product);

void BM_Digest(benchmark::State& state) {
  std::string_view text = "10000005123456781000000045678902com.example.app.monthly";
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(qel_64LSBMD5(text));
  }
}
BENCHMARK(BM_Digest);

void BM_Matching(benchmark::State& state) {
  const SamplePurchase purchase(static_cast<std::size_t>(state.range(0)));
  const OptionalText identifier = purchase.product.productIdentifier;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        QELMatchingInAppPurchaseItems(purchase.receipt, identifier, std::nullopt));
  }
}
BENCHMARK(BM_Matching)->RangeMultiplier(10)->Range(1, 10000);

}  // namespace
}  // namespace qel::bench
