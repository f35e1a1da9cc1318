#include "purchase_line_oracle.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <set>

#include "date_oracle.h"
#include "json_oracle.h"

namespace qel::testing {
namespace {

struct Rejected {};

void require(bool holds) {
  if (!holds) throw Rejected();
}

// Returns the depth of the nesting below `json`.
int depthOf(const OracleJson& json) {
  int depth = 0;
  for (const OracleJson& value : json.values) depth = std::max(depth, 1 + depthOf(value));
  return depth;
}

// An object with a fixed set of keys. A value that is null counts as absent.
class Members {
 public:
  Members(const OracleJson& json, std::initializer_list<std::string_view> keys,
          bool ignoresUnknownKeys)
      : json_(json) {
    require(json.kind == OracleJson::Kind::kObject);
    std::set<std::string_view> seen;
    for (std::size_t i = 0; i < json.keys.size(); ++i) {
      const std::string_view key = json.keys[i];
      if (std::find(keys.begin(), keys.end(), key) != keys.end()) {
        require(seen.insert(key).second);
      } else {
        require(ignoresUnknownKeys && depthOf(json.values[i]) <= 1000);
      }
    }
  }

  bool has(std::string_view key) const { return json_.find(key) != nullptr; }

  const OracleJson* find(std::string_view key) const {
    const OracleJson* const member = json_.find(key);
    return member != nullptr && member->kind != OracleJson::Kind::kNull ? member : nullptr;
  }

  const OracleJson* find(std::string_view key, OracleJson::Kind kind) const {
    const OracleJson* const member = find(key);
    require(member == nullptr || member->kind == kind);
    return member;
  }

  OracleText text(std::string_view key) const {
    const OracleJson* const member = find(key, OracleJson::Kind::kString);
    return member != nullptr ? OracleText(member->text) : std::nullopt;
  }

  bool boolean(std::string_view key, bool otherwise) const {
    const OracleJson* const member = find(key, OracleJson::Kind::kBoolean);
    return member != nullptr ? member->text == "true" : otherwise;
  }

  template <typename Integer>
  std::optional<Integer> integer(std::string_view key) const {
    const OracleJson* const member = find(key, OracleJson::Kind::kNumber);
    if (member == nullptr) return std::nullopt;
    require(member->text.find_first_not_of("-0123456789") == std::string::npos);
    const mpz_class exact(member->text, 10);
    Integer integer = 0;
    require(exact >= mpz_class(std::to_string(std::numeric_limits<Integer>::min()), 10) &&
            exact <= mpz_class(std::to_string(std::numeric_limits<Integer>::max()), 10));
    // An unsigned number has no sign, not even before a zero.
    require(std::numeric_limits<Integer>::is_signed || member->text.front() != '-');
    const std::string digits = exact.get_str();
    std::from_chars(digits.data(), digits.data() + digits.size(), integer);
    return integer;
  }

  // The digits of an integer of any size.
  OracleText integerDigits(std::string_view key) const {
    const OracleJson* const member = find(key, OracleJson::Kind::kNumber);
    if (member == nullptr) return std::nullopt;
    require(member->text.find_first_not_of("-0123456789") == std::string::npos);
    return mpz_class(member->text, 10).get_str();
  }

  std::optional<OracleReading> price(std::string_view key) const {
    const OracleJson* const member = find(key);
    if (member == nullptr) return std::nullopt;
    require(member->kind == OracleJson::Kind::kString || member->kind == OracleJson::Kind::kNumber);
    const OracleReading reading = oracleReading(member->text);
    require(reading.kind != OracleReading::Kind::kRejected);
    return reading;
  }

  // A written date with an optional fraction of the second.
  std::optional<OracleInstant> moment(std::string_view key) const {
    const OracleText written = text(key);
    if (!written.has_value()) return std::nullopt;
    constexpr std::size_t kPoint = 19;
    std::string whole = *written;
    std::string fraction;
    if (whole.size() > kPoint && whole[kPoint] == '.') {
      const std::size_t end = whole.find_first_not_of("0123456789", kPoint + 1);
      fraction = whole.substr(kPoint + 1, end - kPoint - 1);
      require(!fraction.empty());
      whole.erase(kPoint, fraction.size() + 1);
    }
    const std::optional<std::int64_t> seconds = oracleSeconds(whole);
    require(seconds.has_value());

    const bool isWhole = fraction.find_first_not_of('0') == std::string::npos;
    const std::string places = (fraction + "000000000").substr(0, 9);
    // A fraction too fine for nanoseconds is still no whole second.
    const std::int64_t least = isWhole ? 0 : 1;
    return OracleInstant{*seconds, std::max<std::int64_t>(least, std::stol(places))};
  }

 private:
  const OracleJson& json_;
};

OracleEntry entryOf(const OracleJson& json, bool ignores) {
  const Members members(
      json,
      {"productID", "purchaseDateIA5String", "purchaseType", "webOrderLineItemID", "transactionID",
       "originalTransactionID", "isFreeTrial", "isIntroductoryOffer"},
      ignores);
  return {.productId = members.text("productID"),
          .dateText = members.text("purchaseDateIA5String"),
          .type = members.integer<std::int64_t>("purchaseType"),
          .webOrder = members.integerDigits("webOrderLineItemID"),
          .transactionId = members.text("transactionID"),
          .originalId = members.text("originalTransactionID"),
          .isFreeTrial = members.boolean("isFreeTrial", false),
          .isOffer = members.boolean("isIntroductoryOffer", false)};
}

OracleProduct productOf(const OracleJson& json, bool ignores) {
  const Members members(
      json, {"productIdentifier", "price", "priceLocale", "localizedTitle", "introductoryPrice"},
      ignores);
  OracleProduct product;
  product.identifier = members.text("productIdentifier");
  product.price = members.price("price");
  product.title = members.text("localizedTitle");
  product.answersOffer = members.has("introductoryPrice");
  if (const OracleJson* const locale = members.find("priceLocale")) {
    product.currency = Members(*locale, {"currencyCode"}, ignores).text("currencyCode");
  }
  if (const OracleJson* const offer = members.find("introductoryPrice")) {
    const Members offerMembers(*offer, {"price", "paymentMode"}, ignores);
    product.offer = {offerMembers.price("price"),
                     offerMembers.integer<std::uint64_t>("paymentMode").value_or(0)};
  }
  return product;
}

OracleTransaction transactionOf(const OracleJson& json, bool ignores) {
  const Members members(
      json, {"transactionIdentifier", "originalTransaction", "transactionDate", "payment"},
      ignores);
  OracleTransaction transaction;
  transaction.identifier = members.text("transactionIdentifier");
  transaction.date = members.moment("transactionDate");
  if (const OracleJson* const original = members.find("originalTransaction")) {
    transaction.original = {
        Members(*original, {"transactionIdentifier"}, ignores).text("transactionIdentifier")};
  }
  if (const OracleJson* const payment = members.find("payment")) {
    transaction.quantity =
        Members(*payment, {"quantity"}, ignores).integer<std::int64_t>("quantity").value_or(0);
  }
  return transaction;
}

OraclePlatform platformOf(const OracleJson& json, bool ignores) {
  constexpr std::string_view kClass = "SKProductDiscount";
  const Members members(json, {kClass}, ignores);
  OraclePlatform platform;
  if (!members.has(kClass)) return platform;
  const OracleJson* const discountClass = members.find(kClass);
  platform.hasDiscountClass = discountClass != nullptr;
  if (discountClass == nullptr) return platform;
  const Members answers(*discountClass, {"price", "paymentMode"}, ignores);
  platform.discountsAnswerPrice = answers.boolean("price", true);
  platform.discountsAnswerPaymentMode = answers.boolean("paymentMode", true);
  return platform;
}

OraclePurchase purchaseOf(const OracleJson& json, bool ignores) {
  const Members members(json, {"id", "product", "transaction", "receipt", "platform"}, ignores);
  OraclePurchase purchase;
  purchase.id = members.text("id");
  if (const OracleJson* const product = members.find("product")) {
    purchase.product = productOf(*product, ignores);
  }
  if (const OracleJson* const transaction = members.find("transaction")) {
    purchase.transaction = transactionOf(*transaction, ignores);
  }
  if (const OracleJson* const receipt = members.find("receipt", OracleJson::Kind::kArray)) {
    for (const OracleJson& entry : receipt->values) {
      purchase.receipt.push_back(entryOf(entry, ignores));
    }
  }
  if (const OracleJson* const platform = members.find("platform")) {
    purchase.platform = platformOf(*platform, ignores);
  }
  return purchase;
}

}  // namespace

std::optional<OraclePurchase> oraclePurchase(std::string_view line, bool ignoresUnknownKeys) {
  const std::optional<OracleJson> json = oracleJson(line);
  if (!json.has_value()) return std::nullopt;
  try {
    return purchaseOf(*json, ignoresUnknownKeys);
  } catch (const Rejected&) {
    return std::nullopt;
  }
}

}  // namespace qel::testing
