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

std::optional<OracleInstant> date(Random& random) {
  if (oneIn(random, 15)) return std::nullopt;
  OracleInstant instant = {oneOf(random, moments()).seconds, 0};
  // Fractions that a double has exactly.
  if (oneIn(random, 10)) instant.nanoseconds = oneIn(random, 2) ? 250000000 : 500000000;
  return instant;
}

// Mostly a small number, now and then any at all.
std::int64_t integer(Random& random, std::size_t count) {
  if (oneIn(random, 12)) return static_cast<std::int64_t>(random());
  return static_cast<std::int64_t>(below(random, count));
}

OracleProduct product(Random& random) {
  OracleProduct product;
  if (!oneIn(random, 20)) product.identifier = identifier(random);
  if (!oneIn(random, 10)) product.price = oracleReading(price(random));
  if (!oneIn(random, 8)) product.currency = oneIn(random, 2) ? "EUR" : title(random);
  if (!oneIn(random, 4)) product.title = title(random);
  product.answersOffer = !oneIn(random, 4);
  if (product.answersOffer && !oneIn(random, 5)) {
    product.offer.emplace();
    if (!oneIn(random, 5)) product.offer->price = oracleReading(price(random));
    product.offer->mode = oneIn(random, 12) ? random() : below(random, 4);
  }
  return product;
}

OracleTransaction transaction(Random& random) {
  OracleTransaction transaction;
  transaction.identifier = transactionIdentifier(random);
  if (oneIn(random, 2)) transaction.original = {transactionIdentifier(random)};
  transaction.date = date(random);
  if (!oneIn(random, 10)) transaction.quantity = integer(random, 5);
  return transaction;
}

// The string form of a number: mostly a small one, now and then one beyond 64 bits or no integer.
std::string webOrderLineItemID(Random& random) {
  static const std::vector<std::string> kUnusual = {
      "18446744073709551615", "340282366920938463463374607431768211456", "1.5", ""};
  if (oneIn(random, 8)) return oneOf(random, kUnusual);
  return std::to_string(integer(random, 100));
}

OracleEntry entry(Random& random) {
  OracleEntry entry;
  if (!oneIn(random, 15)) entry.productId = identifier(random);
  entry.dateText = writtenDate(random);
  if (!oneIn(random, 12)) entry.type = integer(random, 5);
  if (oneIn(random, 3)) entry.webOrder = webOrderLineItemID(random);
  entry.transactionId = transactionIdentifier(random);
  entry.originalId = transactionIdentifier(random);
  entry.isFreeTrial = oneIn(random, 3);
  entry.isOffer = oneIn(random, 3);
  return entry;
}

}  // namespace

OraclePurchase RandomPurchases::next() {
  OraclePurchase purchase;
  if (!oneIn(random_, 40)) purchase.product = product(random_);
  if (!oneIn(random_, 40)) purchase.transaction = transaction(random_);
  for (std::size_t entries = below(random_, 6); entries > 0; --entries) {
    purchase.receipt.push_back(entry(random_));
    // Some receipts have entries of this product alone.
    if (purchase.product.has_value() && !oneIn(random_, 3)) {
      purchase.receipt.back().productId = purchase.product->identifier;
    }
  }
  return purchase;
}

}  // namespace qel::testing
