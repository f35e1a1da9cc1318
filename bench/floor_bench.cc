// The lower bound for the event of a renewal with two entries: the work that every implementation
// must do, on the stack, without heap and without virtual calls.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

#include "qel/decimal.h"
#include "qel/digest.h"
#include "qel/micros_multiplier.h"
#include "qel/rfc3339.h"

namespace qel::bench {
namespace {

// The value of a key: an integer, or a view of a text.
struct Slot {
  std::int64_t integer = 0;
  std::string_view text;
};
using Mapping = std::array<Slot, 8>;

void BM_FloorRenewal(benchmark::State& state) {
  const std::array<std::string_view, 2> dates = {"2019-03-14T01:00:00Z", "2019-03-14T02:00:00Z"};
  const std::string_view originalId = "1000000512345678";
  const std::string_view productId = "com.example.app.monthly";
  const std::string_view webOrderLineItemId = "1000000045678902";
  Decimal price = *Decimal::fromString("4.99");

  for (auto _ : state) {
    // Parses six dates: two in the match by product, two to compare the entries once, and two in
    // the match by date.
    for (int reading = 0; reading < 3; ++reading) {
      for (std::string_view date : dates) {
        benchmark::DoNotOptimize(date);
        benchmark::DoNotOptimize(parseRfc3339(date));
      }
    }

    // Multiplies three times: once for the price in micros, twice for the value in micros.
    benchmark::DoNotOptimize(price);
    const Decimal multiplier = Decimal::initWithLongLong(QELDataTypeMicrosMultiplier);
    const double priceInMicros = price.decimalNumberByMultiplyingBy(multiplier).doubleValue();
    const double valueInMicros = Decimal::initWithLongLong(1)
                                     .decimalNumberByMultiplyingBy(price)
                                     .decimalNumberByMultiplyingBy(multiplier)
                                     .doubleValue();

    // Computes one digest, of three texts joined.
    std::array<char, 64> joined;
    char* end = std::copy(originalId.begin(), originalId.end(), joined.begin());
    end = std::copy(webOrderLineItemId.begin(), webOrderLineItemId.end(), end);
    end = std::copy(productId.begin(), productId.end(), end);
    const std::uint64_t dedupeId = qel_64LSBMD5({joined.data(), end});

    // Fills three mappings: base parameters, validated parameters, and the event.
    const Mapping base = {{{0, productId},
                           {static_cast<std::int64_t>(priceInMicros), {}},
                           {static_cast<std::int64_t>(valueInMicros), {}},
                           {1, {}},
                           {0, "EUR"},
                           {0, "Monthly plan"}}};
    Mapping validated = base;
    benchmark::DoNotOptimize(validated);
    validated[6].integer = static_cast<std::int64_t>(dedupeId);
    validated[7].integer = 1;
    Mapping returned = validated;
    benchmark::DoNotOptimize(returned);
  }
}
BENCHMARK(BM_FloorRenewal)->Name("BM_Floor/renewal");

}  // namespace
}  // namespace qel::bench
