// Fixtures of several tests: assertions on a whole event and on a whole list of diagnostics,
// receipt entries, and a purchase.

#ifndef QEL_TESTS_SUPPORT_PURCHASE_FIXTURES_H_
#define QEL_TESTS_SUPPORT_PURCHASE_FIXTURES_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "qel/event_parameters.h"
#include "qel/instant.h"
#include "qel/plain_records.h"
#include "qel/purchase_event.h"
#include "qel/receipt_item.h"
#include "reference/message_texts.h"
#include "support/recording_monitor.h"
#include "support/store_doubles.h"

namespace qel::testing {

// --- Names of table tests ---

// Names a case of a table test by its `name`.
template <typename Case>
std::string nameOfCase(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

// --- Diagnostics ---

// Returns the message `code` as the monitor must receive it: at level 8, with its text and
// `context`.
inline Diagnostic logged(int code, std::vector<Diagnostic::Context> context = {}) {
  return {8, code, messageTexts().at(code), std::move(context)};
}

// Checks the whole ordered list of messages, each with its level, code, text and context.
inline ::testing::AssertionResult hasLogged(const std::vector<Diagnostic>& actual,
                                            const std::vector<Diagnostic>& expected) {
  if (actual == expected) return ::testing::AssertionSuccess();
  const auto describe = [](const std::vector<Diagnostic>& diagnostics) {
    std::ostringstream out;
    for (const Diagnostic& diagnostic : diagnostics) {
      out << "\n  level " << diagnostic.level << ", " << diagnostic.code << " \""
          << diagnostic.message << "\"";
      for (const Diagnostic::Context& context : diagnostic.context) {
        std::visit([&out](const auto& content) { out << " [" << content << "]"; }, context);
      }
    }
    return diagnostics.empty() ? "\n  (nothing)" : out.str();
  };
  return ::testing::AssertionFailure()
         << "logged:" << describe(actual) << "\nexpected:" << describe(expected);
}

// --- Events ---

using ParameterContent = std::variant<std::int64_t, std::string>;

// An event as a test writes it down: {{"price", 990000}, {"currency", "USD"}}.
using Event = std::map<std::string, ParameterContent>;

inline Event eventOf(const EventParameters& parameters) {
  Event event;
  for (const EventParameters::Entry entry : parameters) {
    const OptionalText text = entry.value.stringValue();
    event[std::string(entry.key)] =
        text.has_value() ? ParameterContent(std::string(*text)) : entry.value.int64Value();
  }
  return event;
}

// Checks the whole mapping. A failure lists the keys that differ.
inline ::testing::AssertionResult isEvent(const std::optional<EventParameters>& actual,
                                          const Event& expected) {
  if (!actual.has_value()) return ::testing::AssertionFailure() << "there is no event";
  const Event event = eventOf(*actual);
  if (event == expected) return ::testing::AssertionSuccess();

  auto failure = ::testing::AssertionFailure();
  const auto describeMissing = [&failure](const char* what, const Event& from, const Event& in) {
    for (const auto& [key, content] : from) {
      const auto other = in.find(key);
      if (other != in.end() && other->second == content) continue;
      failure << "\n  " << what << " \"" << key << "\": ";
      std::visit([&failure](const auto& value) { failure << value; }, content);
    }
  };
  describeMissing("actual  ", event, expected);
  describeMissing("expected", expected, event);
  return failure;
}

inline ::testing::AssertionResult isNothing(const std::optional<EventParameters>& actual) {
  if (!actual.has_value()) return ::testing::AssertionSuccess();
  return isEvent(actual, {}) << "\n  where nothing was expected";
}

// --- Receipts ---

// The dates of the purchases in most tests, a month apart, each as a receipt writes it and as the
// instant that `date -u -d TEXT +%s` gives.
inline constexpr const char* kJanuary = "2019-01-14T09:26:53Z";
inline constexpr const char* kFebruary = "2019-02-14T09:26:53Z";
inline constexpr const char* kMarch = "2019-03-14T09:26:53Z";
inline constexpr const char* kApril = "2019-04-14T09:26:53Z";
inline constexpr Instant kJanuaryInstant(1547458013);
inline constexpr Instant kFebruaryInstant(1550136413);
inline constexpr Instant kMarchInstant(1552555613);
inline constexpr Instant kAprilInstant(1555234013);

// The meanings of an entry's purchase type.
inline constexpr std::int64_t kNonConsumable = 0;
inline constexpr std::int64_t kConsumable = 1;
inline constexpr std::int64_t kNonRenewing = 2;
inline constexpr std::int64_t kAutoRenewable = 3;

inline QELInAppPurchaseItem entryOf(std::int64_t purchaseType, std::string productID,
                                    std::string date, std::string transactionID,
                                    std::string originalTransactionID) {
  QELInAppPurchaseItem item;
  item.productID = std::move(productID);
  item.purchaseDateIA5String = std::move(date);
  item.purchaseType = purchaseType;
  item.transactionID = std::move(transactionID);
  item.originalTransactionID = std::move(originalTransactionID);
  return item;
}

inline QELInAppPurchaseItem withWebOrder(QELInAppPurchaseItem item,
                                         std::string webOrderLineItemID) {
  item.webOrderLineItemID = std::move(webOrderLineItemID);
  return item;
}

inline QELInAppPurchaseItem freeTrial(QELInAppPurchaseItem item) {
  item.isFreeTrial = true;
  return item;
}

inline QELInAppPurchaseItem introductoryOffer(QELInAppPurchaseItem item) {
  item.isIntroductoryOffer = true;
  return item;
}

// Changes one field of an entry.
struct FieldChange {
  const char* name;
  void (*change)(QELInAppPurchaseItem&);
  friend std::ostream& operator<<(std::ostream& out, const FieldChange& c) { return out << c.name; }
};

// Returns at least one change for each field. Each makes an entry differ from itself if it is a
// period of "monthly" like firstMonth(): before April, under web order line item 77, at full price.
inline std::vector<FieldChange> fieldChanges() {
  using Item = QELInAppPurchaseItem;
  return {{"ProductID", [](Item& item) { item.productID = "yearly"; }},
          {"PurchaseDate", [](Item& item) { item.purchaseDateIA5String = kApril; }},
          {"PurchaseType", [](Item& item) { item.purchaseType = kNonRenewing; }},
          {"WebOrder", [](Item& item) { item.webOrderLineItemID = "78"; }},
          {"WebOrderAbsent", [](Item& item) { item.webOrderLineItemID = std::nullopt; }},
          {"TransactionID", [](Item& item) { item.transactionID = "2"; }},
          {"OriginalTransactionID", [](Item& item) { item.originalTransactionID = "2"; }},
          {"FreeTrial", [](Item& item) { item.isFreeTrial = true; }},
          {"IntroductoryOffer", [](Item& item) { item.isIntroductoryOffer = true; }}};
}

// Returns a list of references to `entries`, in their order. `entries` must outlive it.
inline QELInAppPurchaseItems listOf(const std::vector<QELInAppPurchaseItem>& entries) {
  return {entries.begin(), entries.end()};
}

// --- A purchase ---

inline Decimal decimal(std::string_view text) { return Decimal::fromString(text).value(); }

// The arguments of one call, for a test to change: three packs of coins, a consumable at 0.99 USD,
// which the receipt confirms. The records log each call.
struct Purchase {
  Purchase() = default;
  Purchase(const Purchase&) = delete;
  Purchase& operator=(const Purchase&) = delete;

  std::optional<EventParameters> event() const {
    return QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        &productRecord, &transactionRecord, listOf(receipt));
  }

  PlainProduct product = {.productIdentifier = "coins",
                          .price = decimal("0.99"),
                          .priceLocaleCurrencyCode = "USD",
                          .localizedTitle = "Coins"};
  PlainTransaction transaction = {
      .transactionIdentifier = "1", .transactionDate = kMarchInstant, .quantity = 3};
  std::vector<QELInAppPurchaseItem> receipt = {entryOf(kConsumable, "coins", kMarch, "1", "1")};

  // The calls to the records below.
  Asked asked;

  PlainProductRecord plainProductRecord = PlainProductRecord(product);
  PlainTransactionRecord plainTransactionRecord = PlainTransactionRecord(transaction);
  LoggedProduct productRecord = LoggedProduct(plainProductRecord, asked);
  LoggedTransaction transactionRecord = LoggedTransaction(plainTransactionRecord, asked);
};

// Makes `purchase` one of the subscription "monthly" at 4.99 EUR, bought in March. `entries` become
// the receipt.
inline void makeMonthly(Purchase& purchase, std::vector<QELInAppPurchaseItem> entries) {
  purchase.product = {.productIdentifier = "monthly",
                      .price = decimal("4.99"),
                      .priceLocaleCurrencyCode = "EUR",
                      .localizedTitle = "Monthly"};
  purchase.transaction = {.transactionIdentifier = "1000", .transactionDate = kMarchInstant};
  purchase.receipt = std::move(entries);
}

// The first period of "monthly": transaction 1000, web order line item 77, in March.
inline QELInAppPurchaseItem firstMonth() {
  return withWebOrder(entryOf(kAutoRenewable, "monthly", kMarch, "1000", "1000"), "77");
}

// Makes `purchase` the first period of "monthly", bought at an introductory offer.
inline void makeIntroductoryOffer(Purchase& purchase, std::string_view price,
                                  std::uint64_t paymentMode) {
  makeMonthly(purchase, {introductoryOffer(firstMonth())});
  purchase.product.introductoryPrice = PlainDiscount{decimal(price), paymentMode};
}

// Returns the base parameters of Purchase(), with `others` added or in their place.
inline Event coinsEvent(Event others) {
  others.merge(Event{{"currency", "USD"},
                     {"price", 990000},
                     {"product_id", "coins"},
                     {"product_name", "Coins"},
                     {"quantity", 3},
                     {"value", 2970000}});
  return others;
}

// The same for a purchase of makeMonthly().
inline Event monthlyEvent(Event others) {
  others.merge(Event{{"currency", "EUR"},
                     {"price", 4990000},
                     {"product_id", "monthly"},
                     {"product_name", "Monthly"},
                     {"quantity", 1},
                     {"value", 4990000}});
  return others;
}

// Returns the calls to the store's records before the receipt is read, for a product with a price
// and a payment with a quantity.
inline Asked questionsOfEveryPurchase() {
  return {"product.productIdentifier",
          "product.price",
          "transaction.payment",
          "payment.quantity",
          "transaction.payment",
          "payment.quantity",
          "product.priceLocaleCurrencyCode",
          "product.localizedTitle",
          "transaction.transactionIdentifier",
          "transaction.originalTransaction",
          "transaction.transactionDate"};
}

// The deduplication identifier of firstMonth() and of every later period of the same subscription
// under this web order line item. `printf 100077monthly | md5sum` ends in 114f509b0a08bcf9, which
// is this number.
inline constexpr std::int64_t kDedupeIdOf100077monthly = 1247304248623414521;

// `printf 1coins | md5sum` ends in 16a65cdfdbecf4cb.
inline constexpr std::int64_t kDedupeIdOf1coins = 1632094031505585355;

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_PURCHASE_FIXTURES_H_
