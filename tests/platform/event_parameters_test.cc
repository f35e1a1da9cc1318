#include "qel/event_parameters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// --- Keys ---

struct KeyCase {
  const char* name;
  ParameterKey key;
  const char* text;
  friend std::ostream& operator<<(std::ostream& out, const KeyCase& c) { return out << c.text; }
};

const KeyCase kKeys[] = {
    {"DedupeId", ParameterKey::kDedupeId, "_did"},
    {"Currency", ParameterKey::kCurrency, "currency"},
    {"FreeTrial", ParameterKey::kFreeTrial, "free_trial"},
    {"Invalid", ParameterKey::kInvalid, "invalid"},
    {"OriginalPrice", ParameterKey::kOriginalPrice, "original_price"},
    {"Price", ParameterKey::kPrice, "price"},
    {"PriceIsDiscounted", ParameterKey::kPriceIsDiscounted, "price_is_discounted"},
    {"ProductId", ParameterKey::kProductId, "product_id"},
    {"ProductName", ParameterKey::kProductName, "product_name"},
    {"Quantity", ParameterKey::kQuantity, "quantity"},
    {"SubConvert", ParameterKey::kSubConvert, "sub_convert"},
    {"SubRenew", ParameterKey::kSubRenew, "sub_renew"},
    {"Subscription", ParameterKey::kSubscription, "subscription"},
    {"Value", ParameterKey::kValue, "value"},
};

class ParameterKeyTest : public ::testing::TestWithParam<KeyCase> {};

TEST_P(ParameterKeyTest, HasItsText) { EXPECT_EQ(textOf(GetParam().key), GetParam().text); }

TEST_P(ParameterKeyTest, IsFoundByKeyAndByText) {
  EventParameters parameters;
  const QELValuePtr value = QELValue::initWithInt64(7);
  parameters.set(GetParam().key, value);
  EXPECT_EQ(parameters.find(GetParam().key), value);
  EXPECT_EQ(parameters.find(std::string_view(GetParam().text)), value);
  EXPECT_TRUE(isEvent(parameters, {{GetParam().text, 7}}));
}

INSTANTIATE_TEST_SUITE_P(All, ParameterKeyTest, ::testing::ValuesIn(kKeys), nameOfCase<KeyCase>);

TEST(ParameterKeysTest, FourteenAreInAscendingOrder) {
  EXPECT_EQ(kParameterKeyTexts.size(), 14U);
  EXPECT_TRUE(std::is_sorted(kParameterKeyTexts.begin(), kParameterKeyTexts.end()));
}

// --- The mapping ---

TEST(EventParametersTest, IsEmptyAtFirst) {
  const EventParameters parameters;
  EXPECT_TRUE(parameters.empty());
  EXPECT_TRUE(isEvent(parameters, {}));
}

TEST(EventParametersTest, IsNotEmptyWithAnyOneKey) {
  for (const KeyCase& each : kKeys) {
    EventParameters parameters;
    parameters.setFlag(each.key);
    EXPECT_FALSE(parameters.empty()) << each.name;
  }
}

TEST(EventParametersTest, MissingKeyHasNoValue) {
  EventParameters parameters;
  parameters.setFlag(ParameterKey::kInvalid);
  EXPECT_EQ(parameters.find(ParameterKey::kPrice), nullptr);
  EXPECT_EQ(parameters.find(std::string_view("price")), nullptr);
}

TEST(EventParametersTest, TextThatNamesNoKeyHasNoValue) {
  EventParameters parameters;
  parameters.setFlag(ParameterKey::kInvalid);
  EXPECT_EQ(parameters.find(std::string_view("Invalid")), nullptr);
  EXPECT_EQ(parameters.find(std::string_view("")), nullptr);
}

TEST(EventParametersTest, FlagIsTheIntegerOne) {
  EventParameters parameters;
  parameters.setFlag(ParameterKey::kSubRenew);
  EXPECT_TRUE(isEvent(parameters, {{"sub_renew", 1}}));
}

TEST(EventParametersTest, LaterValueReplacesTheOneBefore) {
  EventParameters parameters;
  parameters.set(ParameterKey::kPrice, QELValue::initWithInt64(1));
  parameters.set(ParameterKey::kPrice, QELValue::initWithString("two"));
  EXPECT_TRUE(isEvent(parameters, {{"price", "two"}}));
}

TEST(EventParametersTest, NullValueChangesNothing) {
  EventParameters parameters;
  parameters.set(ParameterKey::kPrice, QELValue::initWithInt64(1));
  parameters.set(ParameterKey::kPrice, nullptr);
  parameters.set(ParameterKey::kValue, nullptr);
  EXPECT_TRUE(isEvent(parameters, {{"price", 1}}));
}

TEST(EventParametersTest, MergedValuesWinAndOthersStay) {
  EventParameters parameters;
  parameters.set(ParameterKey::kDedupeId, QELValue::initWithInt64(1));
  parameters.set(ParameterKey::kPrice, QELValue::initWithInt64(2));
  EventParameters other;
  other.set(ParameterKey::kPrice, QELValue::initWithInt64(3));
  other.set(ParameterKey::kValue, QELValue::initWithInt64(4));
  parameters.merge(other);
  EXPECT_TRUE(isEvent(parameters, {{"_did", 1}, {"price", 3}, {"value", 4}}));
  EXPECT_TRUE(isEvent(other, {{"price", 3}, {"value", 4}}));
}

TEST(EventParametersTest, CopiesShareTheirValuesButNotTheirKeys) {
  EventParameters parameters;
  parameters.set(ParameterKey::kPrice, QELValue::initWithInt64(1));
  EventParameters copy = parameters;
  EXPECT_EQ(copy.find(ParameterKey::kPrice), parameters.find(ParameterKey::kPrice));
  copy.setFlag(ParameterKey::kInvalid);
  EXPECT_TRUE(isEvent(parameters, {{"price", 1}}));
}

TEST(EventParametersTest, IterationIsInAscendingOrderOfTheKeysTexts) {
  EventParameters parameters;
  for (const ParameterKey key : {ParameterKey::kValue, ParameterKey::kDedupeId,
                                 ParameterKey::kQuantity, ParameterKey::kCurrency}) {
    parameters.setFlag(key);
  }
  std::vector<std::string_view> keys;
  for (const EventParameters::Entry entry : parameters) keys.push_back(entry.key);
  EXPECT_EQ(keys, (std::vector<std::string_view>{"_did", "currency", "quantity", "value"}));
}

TEST(EventParametersTest, StepPastAnEntryGivesThatEntry) {
  EventParameters parameters;
  parameters.setFlag(ParameterKey::kPrice);
  parameters.setFlag(ParameterKey::kValue);
  EventParameters::Iterator entry = parameters.begin();
  EXPECT_EQ((*entry++).key, "price");
  EXPECT_EQ((*entry).key, "value");
  EXPECT_EQ(++entry, parameters.end());
}

}  // namespace
}  // namespace qel::testing
