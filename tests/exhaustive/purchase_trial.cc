#include "purchase_trial.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>

#include "qel/purchase_event.h"

namespace qel::testing {
namespace {

// --- From points to records -----------------------------------------------------------------

// 2019-04-14T09:26:53Z.
constexpr std::int64_t kDateSeconds = 1555234013;

// The same moments in other words, so that no comparison of texts can pass for one of dates.
constexpr std::string_view kDatesAtDate[] = {"2019-04-14T09:26:53Z", "2019-04-14T10:26:53+01:00",
                                             "2019-04-13T23:56:53-09:30"};
constexpr std::string_view kDatesEarliest[] = {"2018-12-31T23:59:59Z", "2019-01-01T05:29:59+05:30",
                                               "2018-12-31T15:59:59-08:00"};
constexpr std::string_view kDatesEarlier[] = {"2019-04-14T09:26:52Z", "2019-04-14T11:26:52+02:00",
                                              "2019-04-14T04:26:52-05:00"};
constexpr std::string_view kDatesLater[] = {"2019-04-14T09:26:54Z", "2019-04-14T09:26:54-00:00",
                                            "2019-04-15T00:26:54+15:00"};

std::optional<std::string> dateTextOf(const Entry& entry) {
  switch (entry.when) {
    case When::kAbsent:
      return std::nullopt;
    case When::kUnreadable:
      return "2019-04-14 09:26:53Z";
    case When::kEarliest:
      return std::string(kDatesEarliest[entry.series]);
    case When::kEarlier:
      return std::string(kDatesEarlier[entry.series]);
    case When::kAtDate:
      return std::string(kDatesAtDate[entry.series]);
    case When::kLater:
      return std::string(kDatesLater[entry.series]);
  }
  return std::nullopt;
}

std::optional<std::string> productOf(EntryProductIs product) {
  switch (product) {
    case EntryProductIs::kOurs:
      return kOurProduct;
    case EntryProductIs::kOtherCase:
      return "Monthly";
    case EntryProductIs::kOther:
      return "yearly";
    case EntryProductIs::kEmpty:
      return "";
    case EntryProductIs::kAbsent:
      return std::nullopt;
  }
  return std::nullopt;
}

std::optional<std::int64_t> typeOf(TypeIs type) {
  constexpr std::int64_t kTwoTo32 = std::int64_t{1} << 32;
  switch (type) {
    case TypeIs::kAbsent:
      return std::nullopt;
    case TypeIs::k0:
      return 0;
    case TypeIs::k1:
      return 1;
    case TypeIs::k2:
      return 2;
    case TypeIs::k3:
      return 3;
    case TypeIs::k5:
      return 5;
    case TypeIs::kReads3:
      return kTwoTo32 + 3;
    case TypeIs::kReads2:
      return 2 - kTwoTo32;
  }
  return std::nullopt;
}

std::optional<std::string> textOrNot(TextIs text, const std::string& given) {
  if (text == TextIs::kAbsent) return std::nullopt;
  return text == TextIs::kEmpty ? "" : given;
}

QELInAppPurchaseItem recordOf(const Entry& entry) {
  const std::string own = "200" + std::to_string(entry.series);
  const std::string other = "100" + std::to_string(entry.series);
  QELInAppPurchaseItem record;
  record.productID = productOf(entry.product);
  record.purchaseDateIA5String = dateTextOf(entry);
  record.purchaseType = typeOf(entry.type);
  if (entry.webOrder == WebOrderIs::kZero) record.webOrderLineItemID = "0";
  if (entry.webOrder == WebOrderIs::kGiven)
    record.webOrderLineItemID = std::to_string(70 + entry.series);
  record.transactionID = textOrNot(entry.transaction, own);
  if (entry.original == EntryOriginalIs::kEmpty) record.originalTransactionID = "";
  if (entry.original == EntryOriginalIs::kSame) record.originalTransactionID = own;
  if (entry.original == EntryOriginalIs::kOther) record.originalTransactionID = other;
  record.isFreeTrial = entry.isFreeTrial;
  record.isIntroductoryOffer = entry.isIntroductoryOffer;
  return record;
}

std::uint64_t modeOf(OfferIs offer) {
  if (offer == OfferIs::kWideMode) return (std::uint64_t{1} << 32) + 2;
  return offer == OfferIs::kMode2 ? 2 : offer == OfferIs::kMode1 ? 1 : 0;
}

// --- Comparing -------------------------------------------------------------------------------

bool isAsExpected(const ExpectedValue& expected, const QELValue& actual) {
  const OptionalText text = actual.stringValue();
  if (expected.kind == ExpectedValue::Kind::kText) return text == expected.text;
  return expected.kind == ExpectedValue::Kind::kInteger && !text.has_value() &&
         actual.int64Value() == expected.integer;
}

bool isAsExpected(const ExpectedOutcome& expected, const std::optional<EventParameters>& event) {
  if (expected.hasEvent != event.has_value()) return false;
  if (!event.has_value()) return true;
  std::size_t key = 0;
  const auto skipAbsent = [&] {
    while (key < kKeyCount && expected.values[key].kind == ExpectedValue::Kind::kNone) ++key;
  };
  skipAbsent();
  for (const auto& [text, value] : *event) {
    if (key == kKeyCount || text != kKeyTexts[key] || !isAsExpected(expected.values[key], value))
      return false;
    ++key;
    skipAbsent();
  }
  return key == kKeyCount;
}

bool isAsExpected(const ExpectedMessage& expected, std::uint64_t count, const Diagnostic& actual) {
  const std::size_t contexts = (expected.namesProduct ? 1u : 0u) + (expected.namesCount ? 1u : 0u);
  return actual.level == 8 && actual.code == expected.code && actual.message == expected.text &&
         actual.context.size() == contexts &&
         (!expected.namesProduct || actual.context[0] == Diagnostic::Context(kOurProduct)) &&
         (!expected.namesCount || actual.context[1] == Diagnostic::Context(count));
}

bool isAsExpected(const ExpectedOutcome& expected, const std::vector<Diagnostic>& diagnostics) {
  if (diagnostics.size() != expected.messageCount) return false;
  for (std::size_t i = 0; i < diagnostics.size(); ++i) {
    if (!isAsExpected(expected.messages[i], expected.countAtDate, diagnostics[i])) return false;
  }
  return true;
}

// --- Telling what went wrong ----------------------------------------------------------------

void tell(std::ostream& out, const char* name, const std::optional<std::string>& text) {
  out << ' ' << name << '=';
  text.has_value() ? out << '"' << *text << '"' : out << "absent";
}

void tell(std::ostream& out, const char* name, const std::optional<std::int64_t>& integer) {
  out << ' ' << name << '=';
  integer.has_value() ? out << *integer : out << "absent";
}

void tellEntry(std::ostream& out, const QELInAppPurchaseItem& entry) {
  out << "    entry:";
  tell(out, "productID", entry.productID);
  tell(out, "purchaseDate", entry.purchaseDateIA5String);
  tell(out, "type", entry.purchaseType);
  tell(out, "webOrderLineItemID", entry.webOrderLineItemID);
  tell(out, "transactionID", entry.transactionID);
  tell(out, "originalTransactionID", entry.originalTransactionID);
  out << (entry.isFreeTrial ? " freeTrial" : "")
      << (entry.isIntroductoryOffer ? " introductoryOffer" : "") << '\n';
}

const char* nameOf(PriceIs price) {
  constexpr const char* kNames[] = {"absent", "8.29", "NaN"};
  return kNames[static_cast<std::size_t>(price)];
}

const char* nameOf(DateIs date) {
  constexpr const char* kNames[] = {"absent", "2019-04-14T09:26:53Z", "2019-04-14T09:26:53.25Z"};
  return kNames[static_cast<std::size_t>(date)];
}

const char* nameOf(QuantityIs quantity) {
  constexpr const char* kNames[] = {"no payment", "0", "7", "-4"};
  return kNames[static_cast<std::size_t>(quantity)];
}

void tellProduct(std::ostream& out, const Purchase& purchase, const FakeProduct& product) {
  if (purchase.product == ProductIs::kAbsent) {
    out << "    no product\n";
    return;
  }
  out << "    product:";
  tell(out, "productIdentifier", product.theProductIdentifier);
  out << " price=" << nameOf(purchase.price);
  tell(out, "currency", product.theCurrencyCode);
  tell(out, "title", product.theLocalizedTitle);
  if (purchase.offer == OfferIs::kAbsent) {
    out << " no offer";
  } else {
    out << " offer mode=" << modeOf(purchase.offer)
        << " price=" << (purchase.offerHasPrice ? "0.29" : "absent");
  }
  out << " answers=" << purchase.platformHasDiscounts << purchase.discountsHavePrice
      << purchase.discountsHaveMode << purchase.productHasOffer << '\n';
}

void tellTransaction(std::ostream& out, const Purchase& purchase,
                     const FakeTransaction& transaction, const FakeTransaction& original) {
  if (!purchase.hasTransaction) {
    out << "    no transaction\n";
    return;
  }
  out << "    transaction:";
  tell(out, "identifier", transaction.theTransactionIdentifier);
  if (purchase.original == OriginalIs::kNoTransaction) {
    out << " no original";
  } else {
    tell(out, "original", original.theTransactionIdentifier);
  }
  out << " date=" << nameOf(purchase.date) << " quantity=" << nameOf(purchase.quantity) << '\n';
}

void tellExpected(std::ostream& out, const ExpectedOutcome& expected) {
  out << "  expected (" << situationOf(expected.row) << "):\n    ";
  if (!expected.hasEvent) out << "no event";
  for (std::size_t key = 0; expected.hasEvent && key < kKeyCount; ++key) {
    const ExpectedValue& value = expected.values[key];
    if (value.kind == ExpectedValue::Kind::kNone) continue;
    out << kKeyTexts[key] << '=';
    value.kind == ExpectedValue::Kind::kText ? out << value.text : out << value.integer;
    out << ' ';
  }
  for (std::size_t i = 0; i < expected.messageCount; ++i) {
    const ExpectedMessage& message = expected.messages[i];
    out << "\n    8 " << message.code << ' ' << message.text;
    if (message.namesProduct) out << " [" << kOurProduct << ']';
    if (message.namesCount) out << " [" << expected.countAtDate << ']';
  }
  out << '\n';
}

void tellActual(std::ostream& out, const std::optional<EventParameters>& event,
                const std::vector<Diagnostic>& diagnostics) {
  out << "  actual:\n    ";
  if (!event.has_value()) {
    out << "no event";
  } else {
    for (const auto& [key, value] : *event) {
      const OptionalText text = value.stringValue();
      out << key << '=';
      text.has_value() ? out << *text : out << value.int64Value();
      out << ' ';
    }
  }
  for (const Diagnostic& diagnostic : diagnostics) {
    out << "\n    " << diagnostic.level << ' ' << diagnostic.code << ' ' << diagnostic.message;
    for (const Diagnostic::Context& context : diagnostic.context)
      std::visit([&out](const auto& value) { out << " [" << value << ']'; }, context);
  }
  out << '\n';
}

}  // namespace

ReceiptEntry::ReceiptEntry(const Entry& entry) : point(entry), record(recordOf(entry)) {}

PurchaseTrial::PurchaseTrial()
    : price_(*Decimal::fromString("8.29")),
      offerPrice_(*Decimal::fromString("0.29")),
      rowCounts_(rowCount()) {}

void PurchaseTrial::setReceipt(Purchase& purchase,
                               std::initializer_list<const ReceiptEntry*> entries) {
  receipt_.clear();
  purchase.entryCount = 0;
  for (const ReceiptEntry* const entry : entries) {
    receipt_.emplace_back(entry->record);
    purchase.entries.at(purchase.entryCount++) = &entry->point;
  }
}

void PurchaseTrial::makeRecords(const Purchase& purchase) {
  product_.theProductIdentifier.reset();
  if (purchase.product == ProductIs::kEmptyIdentifier) product_.theProductIdentifier = "";
  if (purchase.product == ProductIs::kGiven) product_.theProductIdentifier = kOurProduct;
  product_.thePrice.reset();
  if (purchase.price == PriceIs::kGiven) product_.thePrice = price_;
  if (purchase.price == PriceIs::kNotANumber) product_.thePrice = Decimal::notANumber();
  product_.theCurrencyCode.reset();
  if (purchase.hasCurrency) product_.theCurrencyCode = kCurrency;
  product_.theLocalizedTitle.reset();
  if (purchase.hasTitle) product_.theLocalizedTitle = kTitle;

  offer_.thePaymentMode = modeOf(purchase.offer);
  offer_.thePrice.reset();
  if (purchase.offerHasPrice) offer_.thePrice = offerPrice_;
  product_.theIntroductoryPrice = purchase.offer != OfferIs::kAbsent ? &offer_ : nullptr;
  product_.platformHasDiscountClass = purchase.platformHasDiscounts;
  product_.discountsHavePrice = purchase.discountsHavePrice;
  product_.discountsHavePaymentMode = purchase.discountsHaveMode;
  product_.hasIntroductoryPrice = purchase.productHasOffer;

  transaction_.theTransactionIdentifier = textOrNot(purchase.transaction, "5");
  original_.theTransactionIdentifier.reset();
  if (purchase.original == OriginalIs::kEmpty) original_.theTransactionIdentifier = "";
  if (purchase.original == OriginalIs::kSame) original_.theTransactionIdentifier = "5";
  if (purchase.original == OriginalIs::kOther) original_.theTransactionIdentifier = "4";
  transaction_.theOriginalTransaction =
      purchase.original != OriginalIs::kNoTransaction ? &original_ : nullptr;
  transaction_.theTransactionDate.reset();
  if (purchase.date == DateIs::kWhole) transaction_.theTransactionDate = Instant{kDateSeconds, 0};
  if (purchase.date == DateIs::kWithFraction)
    transaction_.theTransactionDate = Instant{kDateSeconds, 250000000};

  transaction_.thePayment = purchase.quantity != QuantityIs::kNoPayment ? &payment_ : nullptr;
  payment_.theQuantity = purchase.quantity == QuantityIs::kPositive   ? kPositiveQuantity
                         : purchase.quantity == QuantityIs::kNegative ? kNegativeQuantity
                                                                      : 0;
}

void PurchaseTrial::tryOut(const Purchase& purchase) {
  makeRecords(purchase);
  monitor_->clear();
  const std::optional<EventParameters> event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(
          purchase.product != ProductIs::kAbsent ? &product_ : nullptr,
          purchase.hasTransaction ? &transaction_ : nullptr, receipt_);

  ++combinations_;
  const ExpectedOutcome expected = expectedOutcomeOf(purchase);
  if (expected.row != kNoSingleRow) ++rowCounts_[expected.row];
  if (expected.row != kNoSingleRow && isAsExpected(expected, event) &&
      isAsExpected(expected, monitor_->diagnostics()))
    return;

  ++failures_;
  std::ostringstream out;
  out << "  input:\n";
  tellProduct(out, purchase, product_);
  tellTransaction(out, purchase, transaction_, original_);
  for (const QELInAppPurchaseItem& entry : receipt_) tellEntry(out, entry);
  if (receipt_.empty()) out << "    no entries\n";
  tellExpected(out, expected);
  tellActual(out, event, monitor_->diagnostics());
  ADD_FAILURE() << "combination " << combinations_ << '\n' << out.str();
}

}  // namespace qel::testing
