#include "purchase_judge.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <set>

#include "date_judge.h"
#include "identifier_judge.h"
#include "json_judge.h"

namespace qel::testing {
namespace {

// --- Reading the line ---

struct Rejected {};

void require(bool holds) {
  if (!holds) throw Rejected();
}

// How deep a value may stand inside of an ignored one.
int depthOf(const JudgedJson& json) {
  int depth = 0;
  for (const JudgedJson& value : json.values) depth = std::max(depth, 1 + depthOf(value));
  return depth;
}

// An object of which the keys are known. Gives null for a value that is absent or null.
class Members {
 public:
  Members(const JudgedJson& json, std::initializer_list<std::string_view> keys,
          bool ignoresUnknownKeys)
      : json_(json) {
    require(json.kind == JudgedJson::Kind::kObject);
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

  const JudgedJson* find(std::string_view key) const {
    const JudgedJson* const member = json_.find(key);
    return member != nullptr && member->kind != JudgedJson::Kind::kNull ? member : nullptr;
  }

  const JudgedJson* find(std::string_view key, JudgedJson::Kind kind) const {
    const JudgedJson* const member = find(key);
    require(member == nullptr || member->kind == kind);
    return member;
  }

  JudgedText text(std::string_view key) const {
    const JudgedJson* const member = find(key, JudgedJson::Kind::kString);
    return member != nullptr ? JudgedText(member->text) : std::nullopt;
  }

  bool boolean(std::string_view key, bool otherwise) const {
    const JudgedJson* const member = find(key, JudgedJson::Kind::kBoolean);
    return member != nullptr ? member->text == "true" : otherwise;
  }

  template <typename Integer>
  std::optional<Integer> integer(std::string_view key) const {
    const JudgedJson* const member = find(key, JudgedJson::Kind::kNumber);
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
  JudgedText integerDigits(std::string_view key) const {
    const JudgedJson* const member = find(key, JudgedJson::Kind::kNumber);
    if (member == nullptr) return std::nullopt;
    require(member->text.find_first_not_of("-0123456789") == std::string::npos);
    return mpz_class(member->text, 10).get_str();
  }

  std::optional<JudgedReading> price(std::string_view key) const {
    const JudgedJson* const member = find(key);
    if (member == nullptr) return std::nullopt;
    require(member->kind == JudgedJson::Kind::kString || member->kind == JudgedJson::Kind::kNumber);
    const JudgedReading reading = judgedReading(member->text);
    require(reading.kind != JudgedReading::Kind::kRejected);
    return reading;
  }

  // A written date with an optional fraction of the second.
  std::optional<JudgedMoment> moment(std::string_view key) const {
    const JudgedText written = text(key);
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
    const std::optional<std::int64_t> seconds = judgedSeconds(whole);
    require(seconds.has_value());

    const bool isWhole = fraction.find_first_not_of('0') == std::string::npos;
    const std::string places = (fraction + "000000000").substr(0, 9);
    // A fraction too fine for nanoseconds is still no whole second.
    const std::int64_t least = isWhole ? 0 : 1;
    return JudgedMoment{*seconds, std::max<std::int64_t>(least, std::stol(places))};
  }

 private:
  const JudgedJson& json_;
};

JudgedEntry entryOf(const JudgedJson& json, bool ignores) {
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

JudgedProduct productOf(const JudgedJson& json, bool ignores) {
  const Members members(
      json, {"productIdentifier", "price", "priceLocale", "localizedTitle", "introductoryPrice"},
      ignores);
  JudgedProduct product;
  product.identifier = members.text("productIdentifier");
  product.price = members.price("price");
  product.title = members.text("localizedTitle");
  product.answersOffer = members.has("introductoryPrice");
  if (const JudgedJson* const locale = members.find("priceLocale")) {
    product.currency = Members(*locale, {"currencyCode"}, ignores).text("currencyCode");
  }
  if (const JudgedJson* const offer = members.find("introductoryPrice")) {
    const Members offerMembers(*offer, {"price", "paymentMode"}, ignores);
    product.offer = {offerMembers.price("price"),
                     offerMembers.integer<std::uint64_t>("paymentMode").value_or(0)};
  }
  return product;
}

JudgedTransaction transactionOf(const JudgedJson& json, bool ignores) {
  const Members members(
      json, {"transactionIdentifier", "originalTransaction", "transactionDate", "payment"},
      ignores);
  JudgedTransaction transaction;
  transaction.identifier = members.text("transactionIdentifier");
  transaction.date = members.moment("transactionDate");
  if (const JudgedJson* const original = members.find("originalTransaction")) {
    transaction.originalIdentifier =
        Members(*original, {"transactionIdentifier"}, ignores).text("transactionIdentifier");
  }
  if (const JudgedJson* const payment = members.find("payment")) {
    transaction.quantity =
        Members(*payment, {"quantity"}, ignores).integer<std::int64_t>("quantity").value_or(0);
  }
  return transaction;
}

// Whether discount records exist with both their operations.
bool canHaveOffers(const JudgedJson& platform, bool ignores) {
  constexpr std::string_view kClass = "SKProductDiscount";
  const Members members(platform, {kClass}, ignores);
  if (!members.has(kClass)) return true;
  const JudgedJson* const discountClass = members.find(kClass);
  if (discountClass == nullptr) return false;
  const Members answers(*discountClass, {"price", "paymentMode"}, ignores);
  const bool hasPrice = answers.boolean("price", true);
  return answers.boolean("paymentMode", true) && hasPrice;
}

JudgedPurchase purchaseOf(const JudgedJson& json, bool ignores) {
  const Members members(json, {"id", "product", "transaction", "receipt", "platform"}, ignores);
  JudgedPurchase purchase;
  purchase.id = members.text("id");
  if (const JudgedJson* const product = members.find("product")) {
    purchase.product = productOf(*product, ignores);
  }
  if (const JudgedJson* const transaction = members.find("transaction")) {
    purchase.transaction = transactionOf(*transaction, ignores);
  }
  if (const JudgedJson* const receipt = members.find("receipt", JudgedJson::Kind::kArray)) {
    for (const JudgedJson& entry : receipt->values) {
      purchase.receipt.push_back(entryOf(entry, ignores));
    }
  }
  if (const JudgedJson* const platform = members.find("platform")) {
    purchase.canHaveOffers = canHaveOffers(*platform, ignores);
  }
  return purchase;
}

// --- What comes of it ---

bool isGiven(const JudgedText& text) { return !text.value_or("").empty(); }

bool areSame(const JudgedText& left, const JudgedText& right) {
  return left.has_value() && left == right;
}

std::optional<std::int64_t> secondsOf(const JudgedEntry& entry) {
  return entry.dateText.has_value() ? judgedSeconds(*entry.dateText) : std::nullopt;
}

std::int64_t micros(const JudgedReading& price, std::int64_t quantity) {
  if (price.kind == JudgedReading::Kind::kNotANumber) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return price.number.times(JudgedDecimal::ofInteger(quantity))
      .times(JudgedDecimal::ofInteger(1000000))
      .truncatedNearestDouble();
}

// The outcome of one purchase whose product, identifier and transaction are all there.
class Judgement {
 public:
  explicit Judgement(const JudgedPurchase& purchase)
      : purchase_(purchase), product_(*purchase.product), transaction_(*purchase.transaction) {
    // A row for each date keeps the receipt's order within a date; absent comes first.
    std::map<std::optional<std::int64_t>, std::vector<JudgedEntry>> rows;
    for (const JudgedEntry& entry : purchase.receipt) {
      if (areSame(entry.productId, product_.identifier)) rows[secondsOf(entry)].push_back(entry);
    }
    for (const auto& [date, row] : rows) entries_.insert(entries_.end(), row.begin(), row.end());
    if (transaction_.date.has_value() && transaction_.date->nanoseconds == 0) {
      atDate_ = rows[transaction_.date->seconds];
    }
  }

  JudgedOutcome outcome() {
    setBase();
    if (!isGiven(transaction_.identifier)) say(40003);
    classify();
    setDiscount();
    for (const char* const key : {"price", "value", "currency", "product_id"}) {
      if (!event_.contains(key)) return {std::nullopt, messages_};
    }
    return {event_, messages_};
  }

 private:
  void say(int code, std::vector<JudgedValue> context = {}) {
    messages_.push_back({code, std::move(context)});
  }
  void flag(const char* key) { event_[key] = std::int64_t{1}; }

  void setBase() {
    event_["product_id"] = *product_.identifier;
    if (product_.currency.has_value()) event_["currency"] = *product_.currency;
    if (product_.title.has_value()) event_["product_name"] = *product_.title;
    if (product_.price.has_value()) event_["price"] = micros(*product_.price, 1);
    if (product_.price.has_value() && transaction_.quantity != 0) {
      event_["value"] = micros(*product_.price, transaction_.quantity);
      event_["quantity"] = transaction_.quantity;
    }
  }

  void setDid(const JudgedEntry& entry, const JudgedText& webOrder) {
    event_["_did"] =
        static_cast<std::int64_t>(judgedDedupeId(entry.originalId, webOrder, entry.productId));
  }

  void classify() {
    const JudgedValue product = *product_.identifier;
    if (entries_.empty()) {
      say(40020, {product});
      flag("invalid");
      return;
    }
    const JudgedEntry& latest = entries_.back();
    const auto type = static_cast<std::int32_t>(latest.type.value_or(0));
    const bool isAgain = isGiven(transaction_.identifier) &&
                         isGiven(transaction_.originalIdentifier) &&
                         transaction_.identifier != transaction_.originalIdentifier;
    const bool isSubscription = type == 2 || type == 3 || latest.webOrder.has_value();
    if (type == 0 && isAgain) {
      say(40005);
      flag("invalid");
    } else if (entries_.size() == 1 && !isSubscription) {
      classifySingle(latest, type);
    } else if (atDate_.empty() && isSubscription) {
      say(40023, {product});
      flag("invalid");
      flag("subscription");
    } else if (atDate_.size() >= 2) {
      say(40024, {product, static_cast<std::int64_t>(atDate_.size())});
      flag("invalid");
      flag("subscription");
    } else {
      const JudgedEntry chosen = atDate_.empty() ? JudgedEntry() : atDate_.front();
      if (type == 2) {
        flag("subscription");
        setDid(chosen, std::nullopt);
        say(40025);
      } else {
        classifyRenewable(chosen, isAgain);
      }
    }
  }

  void classifySingle(const JudgedEntry& entry, std::int32_t type) {
    if (!areSame(entry.transactionId, entry.originalId)) {
      say(40007);
      return;
    }
    if (type == 0) say(40022);
    if (type == 1) say(40021);
    setDid(entry, std::nullopt);
  }

  void classifyRenewable(const JudgedEntry& chosen, bool isAgain) {
    const bool isFirst = areSame(chosen.originalId, chosen.transactionId);
    if (isFirst) flag("subscription");
    setDid(chosen, chosen.webOrder);
    const bool isPlain = !chosen.isFreeTrial && !chosen.isOffer;
    const bool isRepeatedTrial = chosen.isFreeTrial && isAgain;
    if (chosen.isFreeTrial) flag("free_trial");
    if (isRepeatedTrial) flag("invalid");
    if (chosen.isOffer && !isRepeatedTrial) flag("price_is_discounted");
    if (!isFirst && !isRepeatedTrial && (isPlain || chosen.isOffer)) {
      const auto place = std::find(entries_.begin(), entries_.end(), chosen);
      const bool follows = place != entries_.end() && place != entries_.begin();
      flag(follows && (place - 1)->isFreeTrial ? "sub_convert" : "sub_renew");
    }

    if (isPlain) say(40008);
    if (isRepeatedTrial) say(40011);
    if (isPlain || isRepeatedTrial) return;
    if (chosen.isFreeTrial) say(40009);
    if (chosen.isOffer) say(40018);
    say(40010);
  }

  void setDiscount() {
    const bool isTrial = event_.contains("free_trial");
    if (!isTrial && !event_.contains("price_is_discounted")) return;
    const bool hasOffer =
        purchase_.canHaveOffers && product_.answersOffer && product_.offer.has_value();
    const bool isTrialOffer = hasOffer && product_.offer->mode == 2;
    const bool isPriced = hasOffer && !isTrialOffer && product_.offer->price.has_value();
    if (!isTrial && !isTrialOffer && !isPriced) return;

    if (event_.contains("price")) event_["original_price"] = event_["price"];
    if (isTrial || isTrialOffer) {
      flag("price_is_discounted");
      event_["price"] = std::int64_t{0};
      event_["value"] = std::int64_t{0};
      return;
    }
    event_["price"] = micros(*product_.offer->price, 1);
    if (transaction_.quantity != 0) {
      event_["value"] = micros(*product_.offer->price, transaction_.quantity);
    }
  }

  const JudgedPurchase& purchase_;
  const JudgedProduct& product_;
  const JudgedTransaction& transaction_;
  std::vector<JudgedEntry> entries_;  // of the product, earliest first
  std::vector<JudgedEntry> atDate_;   // of these, the ones at the transaction's date
  std::map<std::string, JudgedValue> event_;
  std::vector<JudgedMessage> messages_;
};

}  // namespace

std::optional<JudgedPurchase> judgedPurchase(std::string_view line, bool ignoresUnknownKeys) {
  const std::optional<JudgedJson> json = judgedJson(line);
  if (!json.has_value()) return std::nullopt;
  try {
    return purchaseOf(*json, ignoresUnknownKeys);
  } catch (const Rejected&) {
    return std::nullopt;
  }
}

JudgedOutcome judgedOutcome(const JudgedPurchase& purchase) {
  if (!purchase.product.has_value()) return {std::nullopt, {{40026, {}}}};
  if (!isGiven(purchase.product->identifier)) return {std::nullopt, {{40027, {}}}};
  if (!purchase.transaction.has_value()) return {std::nullopt, {{40028, {}}}};
  return Judgement(purchase).outcome();
}

}  // namespace qel::testing
