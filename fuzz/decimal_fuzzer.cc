// Fuzzes decimal numbers and the amounts made of them. An input is up to three lines: a price,
// another price to multiply it by, and a quantity, which is 1 when it is no integer.

#include <bit>
#include <charconv>
#include <cmath>
#include <optional>

#include "decimal_judge.h"
#include "fuzz_target.h"
#include "micros_and_dedupe_id.h"
#include "qel/decimal.h"
#include "qel/micros_multiplier.h"

namespace qel::testing {
namespace {

// Bit by bit: negative zero is told from zero.
void checkSameDouble(const Decimal& component, const JudgedDecimal& judged) {
  check(std::bit_cast<std::uint64_t>(component.doubleValue()) ==
            std::bit_cast<std::uint64_t>(judged.nearestDouble()),
        "the double is the nearest");
}

// Reads `text` as both do; gives the number when it is one.
std::optional<JudgedDecimal> checkReading(std::string_view text,
                                          const std::optional<Decimal>& component) {
  const JudgedReading judged = judgedReading(text);
  check(component.has_value() == (judged.kind != JudgedReading::Kind::kRejected),
        "a number is read when the judge reads it");
  if (judged.kind == JudgedReading::Kind::kNotANumber) {
    check(std::isnan(component->doubleValue()), "NaN is not a number");
  }
  if (judged.kind != JudgedReading::Kind::kNumber) return std::nullopt;
  checkSameDouble(*component, judged.number);
  return judged.number;
}

std::int64_t quantityOf(std::string_view line) {
  std::int64_t quantity = 1;
  std::from_chars(line.data(), line.data() + line.size(), quantity);
  return quantity;
}

void checkAmounts(const Decimal& price, const JudgedDecimal& judged, std::int64_t quantity) {
  const JudgedDecimal multiplier = JudgedDecimal::ofInteger(QELDataTypeMicrosMultiplier);
  check(amountFromPrice(price, QELDataTypeMicrosMultiplier) ==
            judged.times(multiplier).truncatedNearestDouble(),
        "a price in micros is as judged");
  check(QELValueInMicrosFromPriceAndQuantity(price, quantity) ==
            judged.times(JudgedDecimal::ofInteger(quantity))
                .times(multiplier)
                .truncatedNearestDouble(),
        "a value in micros is as judged");
}

}  // namespace

void fuzz(std::string_view input) {
  const std::string_view priceText = takeLine(input);
  const std::string_view factorText = takeLine(input);
  const std::optional<Decimal> price = Decimal::fromString(priceText);
  const std::optional<Decimal> factor = Decimal::fromString(factorText);
  const std::optional<JudgedDecimal> judgedPrice = checkReading(priceText, price);
  const std::optional<JudgedDecimal> judgedFactor = checkReading(factorText, factor);

  if (judgedPrice.has_value()) checkAmounts(*price, *judgedPrice, quantityOf(input));
  if (judgedPrice.has_value() && judgedFactor.has_value()) {
    checkSameDouble(price->decimalNumberByMultiplyingBy(*factor),
                    judgedPrice->times(*judgedFactor));
  }
}

}  // namespace qel::testing
