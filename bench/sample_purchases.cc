#include "sample_purchases.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace qel::bench {
namespace {

// Returns `instant` as an RFC 3339 timestamp.
std::string writtenHour(std::chrono::sys_seconds instant) {
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return text.data();
}

}  // namespace

SamplePurchase::SamplePurchase(std::size_t size, ReceiptOrder order, unsigned seed) {
  const std::chrono::sys_seconds start =
      std::chrono::sys_days(std::chrono::year(2019) / 3 / 14) + seed * std::chrono::seconds(100003);
  const std::int64_t firstIdentifier = 1000000512345678 + std::int64_t{seed} * 7919;
  const std::int64_t firstLineItem = 1000000045678901 + std::int64_t{seed} * 6007;
  // Hours from the first purchase, in the order of the receipt.
  std::vector<int> hours(size);
  std::iota(hours.begin(), hours.end(), 0);
  if (order == ReceiptOrder::kReversed) std::reverse(hours.begin(), hours.end());
  if (order == ReceiptOrder::kRandom) std::shuffle(hours.begin(), hours.end(), std::mt19937(seed));

  product = {.productIdentifier = "com.example.app.monthly" + std::string(seed % 13, 'x'),
             .price = Decimal::fromMinorUnits(499 + seed % 5000, 2),
             .priceLocaleCurrencyCode = "EUR",
             .localizedTitle = "Monthly plan",
             .introductoryPrice = PlainDiscount{.price = Decimal::fromString("1.99")}};
  for (const int hour : hours) {
    QELInAppPurchaseItem& entry = entries.emplace_back();
    entry.productID = product.productIdentifier;
    entry.purchaseDateIA5String = writtenHour(start + std::chrono::hours(hour));
    entry.purchaseType = 3;
    entry.webOrderLineItemID = std::to_string(firstLineItem + hour);
    entry.transactionID = std::to_string(firstIdentifier + hour);
    entry.originalTransactionID = std::to_string(firstIdentifier);
  }
  receipt.assign(entries.begin(), entries.end());

  const int latest = static_cast<int>(size) - 1;
  const std::chrono::sys_seconds date = start + std::chrono::hours(latest);
  transaction = {.transactionIdentifier = std::to_string(firstIdentifier + latest),
                 .originalTransaction = PlainOriginalTransaction{std::to_string(firstIdentifier)},
                 .transactionDate = Instant(date)};
}

}  // namespace qel::bench
