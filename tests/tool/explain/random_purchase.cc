#include "random_purchase.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qel/rfc3339.h"

namespace qel::tool::testing {
namespace {

using Random = std::mt19937_64;
using Text = std::optional<std::string>;

std::size_t below(Random& random, std::size_t count) { return random() % count; }
bool oneIn(Random& random, std::size_t count) { return below(random, count) == 0; }

template <typename T>
const T& oneOf(Random& random, const std::vector<T>& choices) {
  return choices[below(random, choices.size())];
}

Text productIdentifier(Random& random) {
  static const std::vector<Text> kIdentifiers = {
      "monthly", "monthly", "monthly", "monthly",   "Monthly",       "yearly",
      "p q",     "",        "<b>",     "caf\u00e9", "x\xED\xA0\xBD", std::nullopt};
  return oneOf(random, kIdentifiers);
}

Text transactionIdentifier(Random& random) {
  static const std::vector<Text> kIdentifiers = {
      "1000", "1000", "1000", "2000", "2000", "3000", "", "\xED\xB8\x80y", std::nullopt};
  return oneOf(random, kIdentifiers);
}

Text entryDate(Random& random) {
  static const std::vector<Text> kDates = {"2019-03-14T09:26:53Z",
                                           "2019-03-14T10:26:53+01:00",
                                           "2019-04-14T09:26:53Z",
                                           "2019-04-14T09:26:53Z",
                                           "2019-04-14T08:26:53Z",
                                           "2019-05-14T09:26:53Z",
                                           "2019-04-14T09:26:50Z",
                                           "2019-04-14 09:26:53 Etc/GMT",
                                           "2019-04-14T09:26:53+0000",
                                           "",
                                           std::nullopt};
  return oneOf(random, kDates);
}

std::optional<Instant> transactionDate(Random& random) {
  if (oneIn(random, 12)) return std::nullopt;
  static const std::vector<std::string> kDates = {"2019-03-14T09:26:53Z", "2019-04-14T09:26:53Z",
                                                  "2019-04-14T09:26:53Z", "2019-05-14T09:26:53Z"};
  const Instant date = *parseRfc3339(oneOf(random, kDates));
  return oneIn(random, 12) ? Instant(date.seconds(), 250000000) : date;
}

std::optional<Decimal> price(Random& random) {
  static const std::vector<std::string> kPrices = {"4.99", "4.99",      "0",       "15.12",
                                                   "499",  "NaN",       "4990000", "-0.5",
                                                   "1e30", "1.2345678", "980",     "14.500"};
  if (oneIn(random, 10)) return std::nullopt;
  return Decimal::fromString(oneOf(random, kPrices));
}

Text currency(Random& random) {
  static const std::vector<Text> kCurrencies = {
      "EUR", "EUR", "USD", "JPY", "TND", "", "odd <currency>", std::nullopt};
  return oneOf(random, kCurrencies);
}

PlainProduct product(Random& random) {
  PlainProduct product;
  product.productIdentifier = productIdentifier(random);
  product.price = price(random);
  product.priceLocaleCurrencyCode = currency(random);
  if (!oneIn(random, 4)) product.localizedTitle = oneIn(random, 2) ? "Monthly" : "<Title>\n";
  product.hasDiscountClass = !oneIn(random, 12);
  product.discountsAnswerPrice = !oneIn(random, 12);
  product.discountsAnswerPaymentMode = !oneIn(random, 12);
  product.answersIntroductoryPrice = !oneIn(random, 6);
  if (product.answersIntroductoryPrice && !oneIn(random, 4)) {
    product.introductoryPrice = PlainDiscount{price(random), below(random, 4)};
  }
  return product;
}

PlainTransaction transaction(Random& random) {
  PlainTransaction transaction;
  transaction.transactionIdentifier = transactionIdentifier(random);
  if (oneIn(random, 2)) {
    transaction.originalTransaction = PlainOriginalTransaction{transactionIdentifier(random)};
  }
  transaction.transactionDate = transactionDate(random);
  static const std::vector<std::optional<std::int64_t>> kQuantities = {
      1, 1, 1, 1, 3, 0, -2, 9223372036854775807, std::nullopt};
  transaction.quantity = oneOf(random, kQuantities);
  return transaction;
}

QELInAppPurchaseItem entry(Random& random, bool isOneOff) {
  static const std::vector<std::optional<std::int64_t>> kTypes = {
      3, 3, 3, 3, 2, 1, 0, 5, -1, 4294967299, std::nullopt};
  static const std::vector<Text> kLineItems = {"77", "78", "0", "", std::nullopt, std::nullopt};
  static const std::vector<std::optional<std::int64_t>> kOneOffTypes = {0, 1, 1, 5, std::nullopt};
  QELInAppPurchaseItem item;
  item.productID = productIdentifier(random);
  item.purchaseDateIA5String = entryDate(random);
  item.purchaseType = oneOf(random, isOneOff ? kOneOffTypes : kTypes);
  if (!isOneOff) item.webOrderLineItemID = oneOf(random, kLineItems);
  item.transactionID = transactionIdentifier(random);
  item.originalTransactionID =
      oneIn(random, 2) ? item.transactionID : transactionIdentifier(random);
  item.isFreeTrial = oneIn(random, 4);
  item.isIntroductoryOffer = oneIn(random, 4);
  return item;
}

}  // namespace

RandomPurchase::RandomPurchase(Random& random) {
  if (!oneIn(random, 60)) purchase_.product = product(random);
  if (!oneIn(random, 60)) purchase_.transaction = transaction(random);
  const bool isOneOff = oneIn(random, 3);
  // Receipts of one entry and of several differ most.
  const std::size_t count = oneIn(random, 3) ? 1 : below(random, 7);
  for (std::size_t i = 0; i < count; ++i) {
    entries_.push_back(entry(random, isOneOff));
    if (purchase_.product.has_value() && !oneIn(random, 4)) {
      entries_.back().productID = purchase_.product->productIdentifier;
    }
  }
  for (const QELInAppPurchaseItem& item : entries_) purchase_.receipt.emplace_back(item);
  // Now and then an entry is in the receipt twice.
  if (count > 0 && oneIn(random, 20)) purchase_.receipt.push_back(purchase_.receipt.front());
}

}  // namespace qel::tool::testing
