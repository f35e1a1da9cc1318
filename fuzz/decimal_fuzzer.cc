// Fuzzes decimal numbers and the amounts made of them. An input is up to three lines: a price,
// another price to multiply it by, and a quantity, which is 1 when it is no integer.

#include <bit>
#include <charconv>
#include <cmath>
#include <optional>

#include "decimal_oracle.h"
#include "fuzz_target.h"
#include "micros_and_dedupe_id.h"
#include "qel/decimal.h"
#include "qel/micros_multiplier.h"

namespace qel::testing {
namespace {

// Bit by bit: negative zero differs from zero.
void checkSameDouble(const Decimal& component, const OracleDecimal& expected) {
  check(std::bit_cast<std::uint64_t>(component.doubleValue()) ==
            std::bit_cast<std::uint64_t>(expected.nearestDouble()),
        "the double is the nearest");
}

// Reads `text` as both do; gives the number when it is one.
std::optional<OracleDecimal> checkReading(std::string_view text,
                                          const std::optional<Decimal>& component) {
  const OracleReading expected = oracleReading(text);
  check(component.has_value() == (expected.kind != OracleReading::Kind::kRejected),
        "a number is read when the oracle reads it");
  if (expected.kind == OracleReading::Kind::kNotANumber) {
    check(std::isnan(component->doubleValue()), "NaN is not a number");
  }
  if (expected.kind != OracleReading::Kind::kNumber) return std::nullopt;
  checkSameDouble(*component, expected.number);
  return expected.number;
}

std::int64_t quantityOf(std::string_view line) {
  std::int64_t quantity = 1;
  std::from_chars(line.data(), line.data() + line.size(), quantity);
  return quantity;
}

void checkAmounts(const Decimal& price, const OracleDecimal& expected, std::int64_t quantity) {
  const OracleDecimal multiplier = OracleDecimal::ofInteger(QELDataTypeMicrosMultiplier);
  check(amountFromPrice(price, QELDataTypeMicrosMultiplier) ==
            expected.times(multiplier).truncatedNearestDouble(),
        "a price in micros is as expected");
  check(QELValueInMicrosFromPriceAndQuantity(price, quantity) ==
            expected.times(OracleDecimal::ofInteger(quantity))
                .times(multiplier)
                .truncatedNearestDouble(),
        "a value in micros is as expected");
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string_view priceText = takeLine(input);
  const std::string_view factorText = takeLine(input);
  const std::optional<Decimal> price = Decimal::fromString(priceText);
  const std::optional<Decimal> factor = Decimal::fromString(factorText);
  const std::optional<OracleDecimal> expectedPrice = checkReading(priceText, price);
  const std::optional<OracleDecimal> expectedFactor = checkReading(factorText, factor);

  if (expectedPrice.has_value()) checkAmounts(*price, *expectedPrice, quantityOf(input));
  if (expectedPrice.has_value() && expectedFactor.has_value()) {
    checkSameDouble(price->decimalNumberByMultiplyingBy(*factor),
                    expectedPrice->times(*expectedFactor));
  }
}

}  // namespace qel::testing
