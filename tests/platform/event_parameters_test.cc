#include "qel/event_parameters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <ranges>
#include <string>
#include <string_view>
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

TEST(EventParametersTest, MergedWithItselfIsTheSame) {
  EventParameters parameters;
  parameters.setInt64(ParameterKey::kPrice, 2);
  parameters.set("store", QELValue::initWithString("de"));
  const QELValuePtr price = parameters.find(ParameterKey::kPrice);
  parameters.merge(parameters);
  EXPECT_EQ(parameters.find(ParameterKey::kPrice), price);
  EXPECT_TRUE(isEvent(parameters, {{"price", 2}, {"store", "de"}}));
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
  EXPECT_EQ(entry->key, "value");
  EXPECT_EQ(++entry, parameters.end());
}

// --- Keys of the owner ---

// Two keys of the builder, and three others: before, between and after them.
EventParameters withOtherKeys() {
  EventParameters parameters;
  parameters.set("value", QELValue::initWithInt64(1));
  parameters.set("price", QELValue::initWithInt64(2));
  parameters.set("store", QELValue::initWithString("de"));
  parameters.set("zone", QELValue::initWithInt64(4));
  parameters.set("Campaign", QELValue::initWithInt64(5));
  return parameters;
}

TEST(EventParametersTest, KeyByTextIsTheSameKey) {
  EventParameters parameters;
  parameters.set("price", QELValue::initWithInt64(1));
  parameters.set(ParameterKey::kPrice, QELValue::initWithInt64(2));
  EXPECT_TRUE(isEvent(parameters, {{"price", 2}}));
  EXPECT_EQ(parameters.find("price"), parameters.find(ParameterKey::kPrice));
}

TEST(EventParametersTest, HoldsKeysOfTheOwner) {
  const EventParameters parameters = withOtherKeys();
  EXPECT_TRUE(isEvent(parameters,
                      {{"Campaign", 5}, {"price", 2}, {"store", "de"}, {"value", 1}, {"zone", 4}}));
  EXPECT_EQ(parameters.size(), 5U);
  EXPECT_TRUE(parameters.contains("store"));
  EXPECT_FALSE(parameters.contains("Store"));
  EXPECT_FALSE(parameters.contains("quantity"));
  EXPECT_TRUE(parameters.contains(ParameterKey::kPrice));
  EXPECT_FALSE(parameters.contains(ParameterKey::kQuantity));
}

TEST(EventParametersTest, IterationMergesAllKeysInOrder) {
  const EventParameters parameters = withOtherKeys();
  std::vector<std::string_view> keys;
  for (const auto& [key, value] : parameters) keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string_view>{"Campaign", "price", "store", "value", "zone"}));
}

TEST(EventParametersTest, OnlyOtherKeysAreIteratedToo) {
  EventParameters parameters;
  EXPECT_EQ(parameters.begin(), parameters.end());
  parameters.set("zone", QELValue::initWithInt64(4));
  EXPECT_FALSE(parameters.empty());
  EXPECT_EQ(parameters.begin()->key, "zone");
  EXPECT_EQ(++parameters.begin(), parameters.end());
}

TEST(EventParametersTest, OtherKeysAreReplacedNotByNull) {
  EventParameters parameters;
  parameters.set("store", QELValue::initWithString("de"));
  parameters.set("store", QELValue::initWithString("fr"));
  parameters.set("store", nullptr);
  parameters.set("empty", nullptr);
  EXPECT_TRUE(isEvent(parameters, {{"store", "fr"}}));
}

TEST(EventParametersTest, ErasesKeysThatAreThere) {
  EventParameters parameters = withOtherKeys();
  EXPECT_TRUE(parameters.erase("store"));
  EXPECT_FALSE(parameters.erase("store"));
  EXPECT_TRUE(parameters.erase("price"));
  EXPECT_TRUE(parameters.erase(ParameterKey::kValue));
  EXPECT_FALSE(parameters.erase(ParameterKey::kValue));
  EXPECT_TRUE(isEvent(parameters, {{"Campaign", 5}, {"zone", 4}}));
}

TEST(EventParametersTest, MergesOtherKeys) {
  EventParameters parameters = withOtherKeys();
  EventParameters other;
  other.set("zone", QELValue::initWithInt64(6));
  other.set("tag", QELValue::initWithInt64(7));
  parameters.merge(other);
  EXPECT_EQ(parameters.size(), 6U);
  EXPECT_EQ(parameters.find("zone")->int64Value(), 6);
  EXPECT_EQ(parameters.find("tag")->int64Value(), 7);
}

TEST(EventParametersTest, EqualityIsThatOfKeysAndValues) {
  EXPECT_EQ(withOtherKeys(), withOtherKeys());
  EXPECT_EQ(EventParameters(), EventParameters());
  EXPECT_NE(withOtherKeys(), EventParameters());
  EventParameters otherValue = withOtherKeys();
  otherValue.set("zone", QELValue::initWithInt64(6));
  EXPECT_NE(otherValue, withOtherKeys());
  EventParameters otherKey = withOtherKeys();
  otherKey.erase("zone");
  otherKey.set("zones", QELValue::initWithInt64(4));
  EXPECT_NE(otherKey, withOtherKeys());
}

static_assert(std::ranges::forward_range<EventParameters>);

TEST(EventParametersTest, IsARangeForViewsAndAlgorithms) {
  const EventParameters parameters = withOtherKeys();
  const auto isText = [](const EventParameters::Entry& entry) {
    return entry.value.stringValue().has_value();
  };
  EXPECT_EQ(std::ranges::count_if(parameters, isText), 1);
  // Clang before 16 cannot compile the views of libstdc++.
#if !defined(__clang_major__) || __clang_major__ >= 16
  for (const auto& entry : parameters | std::views::filter(isText)) EXPECT_EQ(entry.key, "store");
#endif
}

}  // namespace
}  // namespace qel::testing
