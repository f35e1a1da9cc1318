#include "random_purchases.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qel::testing {
namespace {

using Random = std::mt19937_64;

// A number from 0 to `count` - 1.
std::size_t below(Random& random, std::size_t count) { return random() % count; }

bool oneIn(Random& random, std::size_t count) { return below(random, count) == 0; }

template <typename T>
const T& oneOf(Random& random, const std::vector<T>& choices) {
  return choices[below(random, choices.size())];
}

// Few, so that they meet; one with an accent, one with an unpaired surrogate, one that ends in one.
std::string identifier(Random& random) {
  static const std::vector<std::string> kIdentifiers = {"monthly",
                                                        "monthly",
                                                        "monthly",
                                                        "coins",
                                                        "caf\xC3\xA9",
                                                        "a\xED\xA0\xBD"
                                                        "b",
                                                        "x\xED\xA0\xBD",
                                                        "\xED\xB8\x80y",
                                                        std::string("nul\0", 4),
                                                        ""};
  return oneOf(random, kIdentifiers);
}

std::optional<std::string> transactionIdentifier(Random& random) {
  static const std::vector<std::string> kIdentifiers = {"1000", "1000", "2000",         "2000",
                                                        "3000", "",     "z\xED\xA0\xBD"};
  if (oneIn(random, 12)) return std::nullopt;
  return oneOf(random, kIdentifiers);
}

std::string title(Random& random) {
  static const std::vector<std::string> kPieces = {
      "Monthly ",     "\xF0\x9F\x98\x80 ", "caf\xC3\xA9 ", "\xED\xA0\x80 ",
      "\xE2\x82\xAC", "\xED\xBF\xBF.",     "\xEF\xBB\xBF"};
  std::string text;
  for (std::size_t pieces = below(random, 4); pieces > 0; --pieces) text += oneOf(random, kPieces);
  return text;
}

// A price as a store has it, or one with up to 38 digits and any exponent.
std::string price(Random& random) {
  static const std::vector<std::string> kPrices = {"0.99", "4.99", "8.29",      "15.12",
                                                   "0.29", "0",    "0.0000015", "NaN"};
  if (!oneIn(random, 3)) return oneOf(random, kPrices);
  std::string text = oneIn(random, 4) ? "-" : "";
  text += static_cast<char>('1' + below(random, 9));
  for (std::size_t digits = below(random, 38); digits > 0; --digits) {
    text += static_cast<char>('0' + below(random, 10));
  }
  // Some sizes that prices have, some that fit no amount.
  const int exponent = oneIn(random, 3) ? static_cast<int>(below(random, 218)) - 128
                                        : -static_cast<int>(below(random, 40));
  return text + "e" + std::to_string(exponent);
}

// The moments of purchases: as a receipt writes them, and as instants.
struct Moment {
  std::string text;
  std::int64_t seconds;
};
const std::vector<Moment>& moments() {
  static const std::vector<Moment> kMoments = {
      {"2019-03-14T09:26:53Z", 1552555613},     {"2019-03-14T10:26:53+01:00", 1552555613},
      {"2019-04-14T09:26:53Z", 1555234013},     {"2019-05-14T09:26:53Z", 1557826013},
      {"1996-02-29T23:59:59-02:30", 825647399}, {"2019-04-14T09:26:53-00:00", 1555234013},
  };
  return kMoments;
}

std::optional<std::string> writtenDate(Random& random) {
  if (oneIn(random, 20)) return std::nullopt;
  if (oneIn(random, 20)) return oneIn(random, 2) ? "2019-03-14" : "\xED\xA0\xBD";
  return oneOf(random, moments()).text;
}

std::optional<Instant> date(Random& random) {
  if (oneIn(random, 15)) return std::nullopt;
  const std::int64_t seconds = oneOf(random, moments()).seconds;
  if (!oneIn(random, 10)) return Instant(seconds);
  return Instant(seconds, oneIn(random, 2) ? 250000000 : 500000000);
}

// Mostly a small number, now and then any at all.
std::int64_t integer(Random& random, std::size_t count) {
  if (oneIn(random, 12)) return static_cast<std::int64_t>(random());
  return static_cast<std::int64_t>(below(random, count));
}

ProductValues product(Random& random) {
  ProductValues values;
  if (!oneIn(random, 20)) values.identifier = identifier(random);
  if (!oneIn(random, 10)) values.price = price(random);
  values.hasLocale = !oneIn(random, 12);
  if (!oneIn(random, 12)) values.currencyCode = oneIn(random, 2) ? "EUR" : title(random);
  if (!oneIn(random, 4)) values.title = title(random);
  values.answersIntroductoryPrice = !oneIn(random, 4);
  if (values.answersIntroductoryPrice && !oneIn(random, 5)) {
    values.introductoryPrice.emplace();
    if (!oneIn(random, 5)) values.introductoryPrice->price = price(random);
    values.introductoryPrice->paymentMode = oneIn(random, 12) ? random() : below(random, 4);
  }
  return values;
}

TransactionValues transaction(Random& random) {
  TransactionValues values;
  values.identifier = transactionIdentifier(random);
  values.hasOriginal = oneIn(random, 2);
  values.originalIdentifier = transactionIdentifier(random);
  values.date = date(random);
  if (!oneIn(random, 10)) values.quantity = integer(random, 5);
  return values;
}

// The string form of a number: mostly a small one, now and then one beyond 64 bits or no integer.
std::string webOrderLineItemID(Random& random) {
  static const std::vector<std::string> kUnusual = {
      "18446744073709551615", "340282366920938463463374607431768211456", "1.5", ""};
  if (oneIn(random, 8)) return oneOf(random, kUnusual);
  return std::to_string(integer(random, 100));
}

QELInAppPurchaseItem entry(Random& random) {
  QELInAppPurchaseItem item;
  if (!oneIn(random, 15)) item.productID = identifier(random);
  item.purchaseDateIA5String = writtenDate(random);
  if (!oneIn(random, 12)) item.purchaseType = integer(random, 5);
  if (oneIn(random, 3)) item.webOrderLineItemID = webOrderLineItemID(random);
  item.transactionID = transactionIdentifier(random);
  item.originalTransactionID = transactionIdentifier(random);
  item.isFreeTrial = oneIn(random, 3);
  item.isIntroductoryOffer = oneIn(random, 3);
  return item;
}

}  // namespace

PurchaseValues RandomPurchases::next() {
  PurchaseValues values;
  if (!oneIn(random_, 40)) values.product = product(random_);
  if (!oneIn(random_, 40)) values.transaction = transaction(random_);
  for (std::size_t entries = below(random_, 6); entries > 0; --entries) {
    values.receipt.push_back(entry(random_));
    // Some receipts hold purchases of this product alone.
    if (values.product.has_value() && !oneIn(random_, 3)) {
      values.receipt.back().productID = values.product->identifier;
    }
  }
  return values;
}

}  // namespace qel::testing
