#include "event_oracle.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

#include "date_oracle.h"
#include "identifier_oracle.h"

namespace qel::testing {
namespace {

bool isGiven(const OracleText& text) { return !text.value_or("").empty(); }

bool areSame(const OracleText& left, const OracleText& right) {
  return left.has_value() && left == right;
}

// Remembers what a function returned for each argument. A random input cannot fill the memory.
template <typename Argument, typename Result>
class Memo {
 public:
  // `argument` is an Argument or, so that a lookup copies nothing, a tuple of references.
  template <typename Reference, typename Function>
  const Result& operator()(const Reference& argument, const Function& function) {
    if (results_.size() >= kCapacity) results_.clear();
    auto place = results_.find(argument);
    if (place == results_.end()) place = results_.emplace(argument, function()).first;
    return place->second;
  }

 private:
  static constexpr std::size_t kCapacity = 1000;
  std::map<Argument, Result, std::less<>> results_;
};

std::optional<std::int64_t> secondsOf(const OracleEntry& entry) {
  if (!entry.dateText.has_value()) return std::nullopt;
  thread_local Memo<std::string, std::optional<std::int64_t>> memo;
  return memo(*entry.dateText, [&] { return oracleSeconds(*entry.dateText); });
}

std::int64_t dedupeIdOf(const OracleEntry& entry, const OracleText& webOrder) {
  thread_local Memo<std::tuple<OracleText, OracleText, OracleText>, std::int64_t> memo;
  return memo(std::tie(entry.originalId, webOrder, entry.productId), [&] {
    return static_cast<std::int64_t>(oracleDedupeId(entry.originalId, webOrder, entry.productId));
  });
}

std::int64_t micros(const OracleReading& price, std::int64_t quantity) {
  if (price.kind == OracleReading::Kind::kNotANumber) {
    return std::numeric_limits<std::int64_t>::min();
  }
  const OracleDecimal& number = price.number;
  thread_local Memo<std::tuple<bool, mpz_class, std::int64_t, std::int64_t>, std::int64_t> memo;
  return memo(std::tie(number.isNegative, number.coefficient, number.exponent, quantity), [&] {
    return number.times(OracleDecimal::ofInteger(quantity))
        .times(OracleDecimal::ofInteger(1000000))
        .truncatedNearestDouble();
  });
}

// The outcome of one purchase whose product, identifier and transaction are all there.
class EventOracle {
 public:
  explicit EventOracle(const OraclePurchase& purchase)
      : purchase_(purchase), product_(*purchase.product), transaction_(*purchase.transaction) {
    // Absent dates come first. Entries of one date keep their order in the receipt, which is the
    // order of their addresses.
    std::vector<std::pair<std::optional<std::int64_t>, const OracleEntry*>> dated;
    dated.reserve(purchase.receipt.size());
    for (const OracleEntry& entry : purchase.receipt) {
      if (areSame(entry.productId, product_.identifier))
        dated.emplace_back(secondsOf(entry), &entry);
    }
    std::sort(dated.begin(), dated.end());
    const bool isWholeSecond = transaction_.date.has_value() && transaction_.date->nanoseconds == 0;
    entries_.reserve(dated.size());
    for (const auto& [date, entry] : dated) {
      entries_.push_back(entry);
      if (isWholeSecond && date == transaction_.date->seconds) atDate_.push_back(entry);
    }
    event_.reserve(kKeys);
  }

  OracleOutcome outcome() {
    quantity_ = transaction_.quantity.value_or(0);
    setBase();
    if (!isGiven(transaction_.identifier)) say(40003);
    classify();
    setDiscount();
    for (const char* const key : {"price", "value", "currency", "product_id"}) {
      if (!event_.contains(key)) return {std::nullopt, std::move(messages_)};
    }
    return {std::move(event_), std::move(messages_)};
  }

 private:
  void say(int code, std::vector<OracleValue> context = {}) {
    messages_.push_back({code, std::move(context)});
  }
  void flag(const char* key) { event_[key] = std::int64_t{1}; }

  void setBase() {
    event_["product_id"] = *product_.identifier;
    if (product_.currency.has_value()) event_["currency"] = *product_.currency;
    if (product_.title.has_value()) event_["product_name"] = *product_.title;
    if (product_.price.has_value()) event_["price"] = micros(*product_.price, 1);
    if (product_.price.has_value() && quantity_ != 0) {
      event_["value"] = micros(*product_.price, quantity_);
      event_["quantity"] = quantity_;
    }
  }

  void setDid(const OracleEntry& entry, const OracleText& webOrder) {
    event_["_did"] = dedupeIdOf(entry, webOrder);
  }

  void classify() {
    const OracleValue product = *product_.identifier;
    if (entries_.empty()) {
      say(40020, {product});
      flag("invalid");
      return;
    }
    const OracleEntry& latest = *entries_.back();
    const auto type = static_cast<std::int32_t>(latest.type.value_or(0));
    const OracleText originalId =
        transaction_.original.has_value() ? transaction_.original->identifier : std::nullopt;
    const bool isAgain = isGiven(transaction_.identifier) && isGiven(originalId) &&
                         transaction_.identifier != originalId;
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
      const OracleEntry none;
      const OracleEntry& chosen = atDate_.empty() ? none : *atDate_.front();
      if (type == 2) {
        flag("subscription");
        setDid(chosen, std::nullopt);
        say(40025);
      } else {
        classifyRenewable(chosen, isAgain);
      }
    }
  }

  void classifySingle(const OracleEntry& entry, std::int32_t type) {
    if (!areSame(entry.transactionId, entry.originalId)) {
      say(40007);
      return;
    }
    if (type == 0) say(40022);
    if (type == 1) say(40021);
    setDid(entry, std::nullopt);
  }

  void classifyRenewable(const OracleEntry& chosen, bool isAgain) {
    const bool isFirst = areSame(chosen.originalId, chosen.transactionId);
    if (isFirst) flag("subscription");
    setDid(chosen, chosen.webOrder);
    const bool isPlain = !chosen.isFreeTrial && !chosen.isOffer;
    const bool isRepeatedTrial = chosen.isFreeTrial && isAgain;
    if (chosen.isFreeTrial) flag("free_trial");
    if (isRepeatedTrial) flag("invalid");
    if (chosen.isOffer && !isRepeatedTrial) flag("price_is_discounted");
    if (!isFirst && !isRepeatedTrial && (isPlain || chosen.isOffer)) {
      const auto place = std::find_if(entries_.begin(), entries_.end(),
                                      [&](const OracleEntry* entry) { return *entry == chosen; });
      const bool follows = place != entries_.end() && place != entries_.begin();
      flag(follows && (*(place - 1))->isFreeTrial ? "sub_convert" : "sub_renew");
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
        purchase_.platform.canHaveOffers() && product_.answersOffer && product_.offer.has_value();
    const bool isTrialOffer = hasOffer && product_.offer->mode == 2;
    const bool isPriced = hasOffer && !isTrialOffer && product_.offer->price.has_value();
    if (!isTrial && !isTrialOffer && !isPriced) return;

    const auto fullPrice = event_.find("price");
    if (fullPrice != event_.end()) event_.emplace("original_price", OracleValue(fullPrice->second));
    if (isTrial || isTrialOffer) {
      flag("price_is_discounted");
      event_["price"] = std::int64_t{0};
      event_["value"] = std::int64_t{0};
      return;
    }
    event_["price"] = micros(*product_.offer->price, 1);
    if (quantity_ != 0) {
      event_["value"] = micros(*product_.offer->price, quantity_);
    }
  }

  static constexpr std::size_t kKeys = 14;

  const OraclePurchase& purchase_;
  const OracleProduct& product_;
  const OracleTransaction& transaction_;
  std::vector<const OracleEntry*> entries_;  // of the product, earliest first
  std::vector<const OracleEntry*> atDate_;   // of these, the ones at the transaction's date
  std::int64_t quantity_ = 0;
  OracleEvent event_;
  std::vector<OracleMessage> messages_;
};

}  // namespace

OracleOutcome oracleOutcome(const OraclePurchase& purchase) {
  if (!purchase.product.has_value()) return {std::nullopt, {{40026, {}}}};
  if (!isGiven(purchase.product->identifier)) return {std::nullopt, {{40027, {}}}};
  if (!purchase.transaction.has_value()) return {std::nullopt, {{40028, {}}}};
  return EventOracle(purchase).outcome();
}

}  // namespace qel::testing
