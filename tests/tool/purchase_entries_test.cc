#include "purchase_entries.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "diagnostics_collector.h"
#include "qel/measurement.h"
#include "qel/plain_records.h"
#include "reference/random_source.h"
#include "result_writer.h"

namespace qel::tool {
namespace {

using Indices = std::vector<std::size_t>;
using qel::testing::randomBetween;
using qel::testing::seededRandom;

AppReceiptEntry entryOf(const char* product, const char* date) {
  AppReceiptEntry entry;
  entry.item.productID = product;
  entry.item.purchaseDateIA5String = date;
  return entry;
}

// A purchase of coins among five of a subscription, in any order.
AppReceipt sampleReceipt() {
  AppReceipt receipt;
  receipt.entries = {
      entryOf("monthly", "2024-04-01T00:00:00Z"), entryOf("monthly", "2024-01-01T00:00:00Z"),
      entryOf("coins", "2024-01-15T00:00:00Z"),   entryOf("monthly", "2024-05-01T00:00:00Z"),
      entryOf("monthly", "2024-02-01T00:00:00Z"), entryOf("monthly", "2024-03-01T00:00:00Z")};
  return receipt;
}

TEST(PurchaseEntriesTest, APurchaseHasItselfTheOneBeforeAndTheLatest) {
  const AppReceipt receipt = sampleReceipt();
  const PurchaseEntries entries(receipt, {});
  EXPECT_EQ(entries.of(0), (Indices{0, 3, 5}));
  EXPECT_EQ(entries.of(1), (Indices{1, 3}));
  EXPECT_EQ(entries.of(2), (Indices{2}));
  EXPECT_EQ(entries.of(3), (Indices{0, 3}));
  EXPECT_EQ(entries.of(4), (Indices{1, 3, 4}));
}

TEST(PurchaseEntriesTest, AsOfThePurchaseThereAreNoLaterEntries) {
  const AppReceipt receipt = sampleReceipt();
  const PurchaseEntries entries(receipt, {.isAsOfPurchase = true});
  EXPECT_EQ(entries.of(0), (Indices{0, 5}));
  EXPECT_EQ(entries.of(1), (Indices{1}));
  EXPECT_EQ(entries.of(4), (Indices{1, 4}));
}

TEST(PurchaseEntriesTest, AllEntriesAreOfAllProducts) {
  const AppReceipt receipt = sampleReceipt();
  EXPECT_EQ(PurchaseEntries(receipt, {.isAll = true}).of(4), (Indices{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(PurchaseEntries(receipt, {.isAll = true, .isAsOfPurchase = true}).of(4),
            (Indices{1, 2, 4}));
}

TEST(PurchaseEntriesTest, EntriesAtTheSameDateAreAllThere) {
  AppReceipt receipt = sampleReceipt();
  receipt.entries.push_back(entryOf("monthly", "2024-02-01T01:00:00+01:00"));
  const PurchaseEntries entries(receipt, {.isAsOfPurchase = true});
  EXPECT_EQ(entries.of(4), (Indices{1, 4, 6}));
  EXPECT_EQ(entries.of(6), (Indices{1, 4, 6}));
}

TEST(PurchaseEntriesTest, APurchaseWithoutADateHasTheLastTwo) {
  AppReceipt receipt = sampleReceipt();
  receipt.entries.push_back(entryOf("monthly", "yesterday"));
  for (const bool isAsOfPurchase : {false, true}) {
    const PurchaseEntries entries(receipt, {.isAsOfPurchase = isAsOfPurchase});
    EXPECT_EQ(entries.dateOf(6), std::nullopt);
    EXPECT_EQ(entries.of(6), (Indices{0, 3, 6}));
    // It comes before every date.
    EXPECT_EQ(entries.of(1).back(), 6U);
  }
}

TEST(PurchaseEntriesTest, APurchaseWithoutAProductHasItself) {
  AppReceipt receipt = sampleReceipt();
  receipt.entries[0].item.productID.reset();
  EXPECT_EQ(PurchaseEntries(receipt, {}).of(0), (Indices{0}));
  EXPECT_EQ(PurchaseEntries(receipt, {}).latestFor(0), 0U);
}

TEST(PurchaseEntriesTest, TheLatestEntryIsOfThePurchasesProduct) {
  AppReceipt receipt = sampleReceipt();
  receipt.entries.push_back(entryOf("monthly", "yesterday"));
  for (const bool isAll : {false, true}) {
    const PurchaseEntries entries(receipt, {.isAll = isAll});
    EXPECT_EQ(entries.latestFor(1), 3U);
    EXPECT_EQ(entries.latestFor(2), 2U);
    EXPECT_EQ(entries.latestFor(6), 3U);
    const PurchaseEntries earlier(receipt, {.isAll = isAll, .isAsOfPurchase = true});
    EXPECT_EQ(earlier.latestFor(4), 4U);
    EXPECT_EQ(earlier.latestFor(6), 3U);
  }
}

// --- Events ---

template <typename T>
T oneOf(std::mt19937_64& random, const std::vector<T>& values) {
  return values[randomBetween<std::size_t>(random, 0, values.size() - 1)];
}

AppReceipt randomReceipt(std::mt19937_64& random) {
  AppReceipt receipt;
  const int count = randomBetween(random, 1, 7);
  for (int i = 0; i < count; ++i) {
    AppReceiptEntry& entry = receipt.entries.emplace_back();
    entry.item.purchaseDateIA5String = oneOf<std::optional<std::string>>(
        random, {std::nullopt, "yesterday", "2024-01-01T00:00:00Z", "2024-01-01T01:00:00+01:00",
                 "2024-02-01T00:00:00Z", "2024-03-01T00:00:00Z", "2024-04-01T00:00:00Z"});
    entry.item.isFreeTrial = randomBetween(random, 0, 2) == 0;
    entry.item.isIntroductoryOffer = randomBetween(random, 0, 2) == 0;
    entry.item.purchaseType =
        oneOf<std::optional<std::int64_t>>(random, {std::nullopt, 0, 1, 2, 3, 3, 3, 5});
    entry.item.productID = oneOf<std::optional<std::string>>(
        random, {std::nullopt, "monthly", "monthly", "monthly", "coins"});
    entry.item.transactionID =
        oneOf<std::optional<std::string>>(random, {std::nullopt, "0", "1", "2"});
    entry.item.originalTransactionID =
        oneOf<std::optional<std::string>>(random, {std::nullopt, "1", "2"});
    entry.item.webOrderLineItemID =
        oneOf<std::optional<std::string>>(random, {std::nullopt, std::nullopt, "77"});
  }
  return receipt;
}

// Returns the event and the diagnostics of the purchase that entry `index` records.
std::string resultOf(const AppReceipt& receipt, std::size_t index, const PurchaseEntries& entries) {
  const AppReceiptEntry& entry = receipt.entries[index];
  const PlainProduct product{.productIdentifier = entry.item.productID,
                             .price = Decimal::fromString("4.99"),
                             .priceLocaleCurrencyCode = "EUR"};
  PlainTransaction transaction{.transactionIdentifier = entry.item.transactionID,
                               .transactionDate = entries.dateOf(index)};
  if (entry.item.originalTransactionID != entry.item.transactionID) {
    transaction.originalTransaction =
        PlainOriginalTransaction{.transactionIdentifier = entry.item.originalTransactionID};
  }
  QELInAppPurchaseItems items;
  for (const std::size_t i : entries.of(index)) items.emplace_back(receipt.entries[i].item);

  TextBuffer diagnostics;
  const DiagnosticsCollector::Collection collection(diagnostics, UnpairedSurrogates::kEscape);
  const std::optional<EventParameters> event = plainPurchaseEvent(&product, &transaction, items);
  TextBuffer result;
  appendResult(std::nullopt, event, diagnostics.text(), {}, result);
  return std::string(result.text());
}

// Returns the receipt as it was at the date of entry `index`, and the new index of this entry.
std::pair<AppReceipt, std::size_t> receiptAsOf(const AppReceipt& receipt, std::size_t index,
                                               const PurchaseEntries& dates) {
  AppReceipt earlier;
  std::size_t newIndex = 0;
  for (std::size_t i = 0; i < receipt.entries.size(); ++i) {
    const bool isLater = dates.dateOf(i).has_value() && dates.dateOf(index).has_value() &&
                         *dates.dateOf(i) > *dates.dateOf(index);
    if (isLater) continue;
    if (i == index) newIndex = earlier.entries.size();
    earlier.entries.push_back(receipt.entries[i]);
  }
  return {earlier, newIndex};
}

TEST(PurchaseEntriesTest, EventsAreTheSameAsWithAllEntries) {
  std::mt19937_64 random = seededRandom();
  QELMeasurement::setMonitor(std::make_shared<DiagnosticsCollector>());
  for (int i = 0; i < 3000; ++i) {
    const AppReceipt receipt = randomReceipt(random);
    const PurchaseEntries all(receipt, {.isAll = true});
    const PurchaseEntries few(receipt, {});
    const PurchaseEntries fewAsOf(receipt, {.isAsOfPurchase = true});
    for (std::size_t j = 0; j < receipt.entries.size(); ++j) {
      ASSERT_EQ(resultOf(receipt, j, few), resultOf(receipt, j, all)) << j;
      const auto [earlier, index] = receiptAsOf(receipt, j, all);
      ASSERT_EQ(resultOf(receipt, j, fewAsOf),
                resultOf(earlier, index, PurchaseEntries(earlier, {.isAll = true})))
          << j;
    }
  }
  QELMeasurement::setMonitor(nullptr);
}

}  // namespace
}  // namespace qel::tool
