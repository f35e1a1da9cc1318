#include "qel/parameter_values.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace qel::testing {
namespace {

constexpr ParameterKey kPrice = ParameterKey::kPrice;
constexpr ParameterKey kOriginalPrice = ParameterKey::kOriginalPrice;
constexpr ParameterKey kName = ParameterKey::kProductName;

// Longer than the memory that the values of a mapping share.
const std::string& longText() {
  static const std::string kText(5000, 'x');
  return kText;
}

// A price, a short name, and a currency that needs memory of its own.
ParameterValues threeValues() {
  ParameterValues values;
  values.setInt64(kPrice, 499);
  values.setString(kName, "Coins");
  values.setString(ParameterKey::kCurrency, longText());
  return values;
}

void expectThreeValues(const ParameterValues& values) {
  ASSERT_NE(values.get(kPrice), nullptr);
  EXPECT_EQ(values.get(kPrice)->int64Value(), 499);
  EXPECT_EQ(values.get(kName)->stringValue(), "Coins");
  EXPECT_EQ(values.get(ParameterKey::kCurrency)->stringValue(), longText());
  EXPECT_EQ(values.get(ParameterKey::kValue), nullptr);
}

TEST(ParameterValuesTest, HaveNoValueAtFirst) { EXPECT_EQ(ParameterValues().get(kPrice), nullptr); }

TEST(ParameterValuesTest, AreReadBackWhereverTheyFit) { expectThreeValues(threeValues()); }

TEST(ParameterValuesTest, AreReplacedMoreOftenThanThereIsRoom) {
  ParameterValues values;
  for (int i = 0; i < 1000; ++i) {
    values.setInt64(kPrice, i);
    values.setString(kName, std::to_string(i));
    ASSERT_EQ(values.get(kPrice)->int64Value(), i);
    ASSERT_EQ(values.get(kName)->stringValue(), std::to_string(i));
  }
}

TEST(ParameterValuesTest, StringsOfAllSizesAreReadBack) {
  for (std::size_t size = 0; size < 600; ++size) {
    ParameterValues values;
    const std::string text(size, 'x');
    values.setString(kName, text);
    values.setInt64(kPrice, -1);
    values.setString(ParameterKey::kCurrency, text);
    EXPECT_EQ(values.get(kName)->stringValue(), text);
    EXPECT_EQ(values.get(kPrice)->int64Value(), -1);
    EXPECT_EQ(values.get(ParameterKey::kCurrency)->stringValue(), text);
  }
}

TEST(ParameterValuesTest, StringCanBeThatOfTheValueItReplaces) {
  ParameterValues values = threeValues();
  // More often than there is room.
  for (int i = 0; i < 100; ++i) {
    values.setString(kName, *values.get(kName)->stringValue());
    values.setString(ParameterKey::kCurrency, *values.get(ParameterKey::kCurrency)->stringValue());
  }
  expectThreeValues(values);
}

TEST(ParameterValuesTest, AreDifferentObjects) {
  ParameterValues values;
  values.setInt64(kPrice, 1);
  values.setInt64(kOriginalPrice, 1);
  EXPECT_NE(values.get(kPrice), values.get(kOriginalPrice));
}

TEST(ParameterValuesTest, OneObjectCanBeUnderTwoKeys) {
  ParameterValues values = threeValues();
  const QELValue* const price = values.get(kPrice);
  values.set(kOriginalPrice, price->share());
  values.set(kPrice, price->share());
  EXPECT_EQ(values.get(kOriginalPrice), price);
  EXPECT_EQ(values.get(kPrice), price);
  values.setInt64(kPrice, 0);
  EXPECT_EQ(values.get(kOriginalPrice), price);
  EXPECT_EQ(price->int64Value(), 499);
}

TEST(ParameterValuesTest, ValueOfOthersIsThatObject) {
  const QELValuePtr value = QELValue::initWithInt64(7);
  {
    ParameterValues values = threeValues();
    values.set(kPrice, value);
    values.set(kPrice, value);
    EXPECT_EQ(values.get(kPrice), value.get());
    values.setInt64(kPrice, 8);
    values.set(kName, value);
  }
  EXPECT_EQ(value->int64Value(), 7);
}

TEST(ParameterValuesTest, ErasedValueIsGone) {
  ParameterValues values = threeValues();
  EXPECT_TRUE(values.erase(kPrice));
  EXPECT_FALSE(values.erase(kPrice));
  EXPECT_TRUE(values.erase(ParameterKey::kCurrency));
  EXPECT_EQ(values.get(kPrice), nullptr);
  EXPECT_EQ(values.get(kName)->stringValue(), "Coins");
}

TEST(ParameterValuesTest, OwnedValueOutlivesThem) {
  QELValuePtr name;
  QELValuePtr currency;
  {
    const ParameterValues values = threeValues();
    name = values.get(kName)->share();
    currency = values.get(ParameterKey::kCurrency)->share();
  }
  EXPECT_EQ(name->stringValue(), "Coins");
  EXPECT_EQ(currency->stringValue(), longText());
}

TEST(ParameterValuesTest, CopySharesTheValuesAndOutlivesTheOriginal) {
  std::optional<ParameterValues> values = threeValues();
  ParameterValues copy = *values;
  EXPECT_EQ(copy.get(kPrice), values->get(kPrice));
  EXPECT_EQ(copy.get(kName), values->get(kName));
  copy.setInt64(ParameterKey::kQuantity, 1);
  EXPECT_EQ(values->get(ParameterKey::kQuantity), nullptr);
  values.reset();
  expectThreeValues(copy);
}

TEST(ParameterValuesTest, OriginalOutlivesItsCopies) {
  const ParameterValues values = threeValues();
  {
    ParameterValues copy = values;
    const ParameterValues second = copy;
    copy.erase(kPrice);
    copy.setString(kName, "other");
  }
  expectThreeValues(values);
}

TEST(ParameterValuesTest, MoveLeavesNoValue) {
  ParameterValues values = threeValues();
  const QELValue* const price = values.get(kPrice);
  const ParameterValues moved = std::move(values);
  expectThreeValues(moved);
  EXPECT_EQ(moved.get(kPrice), price);
  // NOLINTNEXTLINE(bugprone-use-after-move): it is empty, and can be used again.
  EXPECT_EQ(values.get(kPrice), nullptr);
  values.setInt64(kPrice, 1);
  EXPECT_EQ(values.get(kPrice)->int64Value(), 1);
}

TEST(ParameterValuesTest, AssignmentReplacesTheValues) {
  ParameterValues values;
  values.setInt64(ParameterKey::kValue, 1);
  values.setString(kName, longText());
  values = threeValues();
  expectThreeValues(values);
  const ParameterValues& self = values;
  values = self;
  expectThreeValues(values);
}

// Run under the thread sanitizer: one thread copies and drops values, while another adds to the
// mapping that they come from, and ends it.
TEST(ParameterValuesTest, ValuesAreSharedBetweenThreads) {
  std::optional<ParameterValues> values = threeValues();
  int soundReads = 0;
  std::thread reader([&soundReads, name = values->get(kName)->share()] {
    for (int round = 0; round < 1000; ++round) {
      // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): a copy is what is tested.
      const QELValuePtr copy = name;
      if (copy->stringValue() == "Coins") ++soundReads;
    }
  });
  for (int round = 0; round < 100; ++round) values->setInt64(kPrice, round);
  values.reset();
  reader.join();
  EXPECT_EQ(soundReads, 1000);
}

}  // namespace
}  // namespace qel::testing
