#include "explain/money.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace qel::tool {
namespace {

TEST(MoneyTest, AmountHasTheDecimalsOfItsCurrency) {
  EXPECT_EQ(amountText(4990000, "EUR"), "4.99");
  EXPECT_EQ(amountText(4500000, "EUR"), "4.50");
  EXPECT_EQ(amountText(13000000000, "KRW"), "13000");
  EXPECT_EQ(amountText(14500000, "TND"), "14.500");
  EXPECT_EQ(amountText(1000000, "CLF"), "1.0000");
  EXPECT_EQ(amountText(1000000, "no currency"), "1.00");
}

TEST(MoneyTest, AmountHasMoreDecimalsIfItNeedsThem) {
  EXPECT_EQ(amountText(1234567, "EUR"), "1.234567");
  EXPECT_EQ(amountText(1, "JPY"), "0.000001");
}

TEST(MoneyTest, AmountIsExactAtTheLimits) {
  constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(amountText(kGreatest, "EUR"), "9223372036854.775807");
  EXPECT_EQ(amountText(-kGreatest, "EUR"), "-9223372036854.775807");
  EXPECT_EQ(amountText(-500000, "EUR"), "-0.50");
  EXPECT_EQ(amountText(0, "JPY"), "0");
}

TEST(MoneyTest, LeastIntegerIsNoAmount) {
  EXPECT_EQ(amountText(std::numeric_limits<std::int64_t>::min(), "EUR"), "no amount");
}

TEST(MoneyTest, PriceIsShownAsItIs) {
  const auto priceOf = [](const char* text) { return Decimal::fromString(text).value(); };
  EXPECT_EQ(priceText(priceOf("4.99"), "EUR"), "4.99");
  EXPECT_EQ(priceText(priceOf("4.5"), "EUR"), "4.50");
  EXPECT_EQ(priceText(priceOf("499"), "EUR"), "499.00");
  EXPECT_EQ(priceText(priceOf("980"), "JPY"), "980");
  EXPECT_EQ(priceText(priceOf("-0.5"), "EUR"), "-0.50");
  EXPECT_EQ(priceText(priceOf("0.0000015"), "EUR"), "1.5e-06");
  EXPECT_EQ(priceText(priceOf("1e120"), "EUR"), "1e+120");
  EXPECT_EQ(priceText(priceOf("NaN"), "EUR"), "NaN");
}

}  // namespace
}  // namespace qel::tool
