#include "purchase_values.h"

#include <ostream>
#include <variant>

#include "qel/purchase_event.h"
#include "reference/event_oracle.h"
#include "reference/message_texts.h"

namespace qel::testing {
namespace {

std::optional<Decimal> decimalOf(const std::optional<std::string>& text) {
  if (!text.has_value()) return std::nullopt;
  return Decimal::fromString(*text).value();
}

std::optional<OracleReading> oracleReadingOf(const std::optional<std::string>& text) {
  if (!text.has_value()) return std::nullopt;
  return oracleReading(*text);
}

}  // namespace

Outcome outcomeOfPlainRecords(const PurchaseValues& purchase, const DiscountClass& discountClass) {
  Outcome outcome;
  FakeDiscount discount(&outcome.asked);
  FakeProduct product(&outcome.asked);
  FakePayment payment(&outcome.asked);
  FakeTransaction original(&outcome.asked);
  FakeTransaction transaction(&outcome.asked);

  product.platformHasDiscountClass = discountClass.exists;
  product.discountsHavePrice = discountClass.answersPrice;
  product.discountsHavePaymentMode = discountClass.answersPaymentMode;
  if (const auto& values = purchase.product) {
    product.theProductIdentifier = values->identifier;
    product.thePrice = decimalOf(values->price);
    if (values->hasLocale) product.theCurrencyCode = values->currencyCode;
    product.theLocalizedTitle = values->title;
    product.hasIntroductoryPrice = values->answersIntroductoryPrice;
    if (const auto& offer = values->introductoryPrice) {
      discount.thePrice = decimalOf(offer->price);
      discount.thePaymentMode = offer->paymentMode;
      product.theIntroductoryPrice = &discount;
    }
  }
  if (const auto& values = purchase.transaction) {
    transaction.theTransactionIdentifier = values->identifier;
    original.theTransactionIdentifier = values->originalIdentifier;
    if (values->hasOriginal) transaction.theOriginalTransaction = &original;
    transaction.theTransactionDate = values->date;
    payment.theQuantity = values->quantity.value_or(0);
    if (values->quantity.has_value()) transaction.thePayment = &payment;
  }

  const ScopedRecordingMonitor monitor;
  const QELInAppPurchaseItems receipt(purchase.receipt.begin(), purchase.receipt.end());
  const std::optional<EventParameters> event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(
          purchase.product.has_value() ? &product : nullptr,
          purchase.transaction.has_value() ? &transaction : nullptr, receipt);
  if (event.has_value()) {
    outcome.event.emplace();
    for (const EventParameters::Entry entry : *event) {
      const OptionalText text = entry.value.stringValue();
      outcome.event->emplace(entry.key, text.has_value() ? Outcome::Value(std::string(*text))
                                                         : entry.value.int64Value());
    }
  }
  outcome.diagnostics = monitor->diagnostics();
  std::erase(outcome.asked, "product.hasDiscountClass");
  return outcome;
}

Outcome outcomeOfOracle(const PurchaseValues& purchase, const DiscountClass& discountClass) {
  OraclePurchase values;
  values.platform = {discountClass.exists, discountClass.answersPrice,
                     discountClass.answersPaymentMode};
  if (const auto& product = purchase.product) {
    OracleProduct& to = values.product.emplace();
    to.identifier = product->identifier;
    to.price = oracleReadingOf(product->price);
    if (product->hasLocale) to.currency = product->currencyCode;
    to.title = product->title;
    to.answersOffer = product->answersIntroductoryPrice;
    if (const auto& offer = product->introductoryPrice)
      to.offer = {oracleReadingOf(offer->price), offer->paymentMode};
  }
  if (const auto& transaction = purchase.transaction) {
    OracleTransaction& to = values.transaction.emplace();
    to.identifier = transaction->identifier;
    if (transaction->hasOriginal) to.original = {transaction->originalIdentifier};
    if (const auto& date = transaction->date) to.date = {date->seconds(), date->nanoseconds()};
    to.quantity = transaction->quantity;
  }
  for (const QELInAppPurchaseItem& item : purchase.receipt) {
    values.receipt.push_back({item.productID, item.purchaseDateIA5String, item.purchaseType,
                              item.webOrderLineItemID, item.transactionID,
                              item.originalTransactionID, item.isFreeTrial,
                              item.isIntroductoryOffer});
  }

  const OracleOutcome expected = oracleOutcome(values);
  Outcome outcome;
  if (expected.event.has_value())
    outcome.event.emplace(expected.event->begin(), expected.event->end());
  for (const OracleMessage& message : expected.messages) {
    Diagnostic& to = outcome.diagnostics.emplace_back();
    to = {8, message.code, messageTexts().at(message.code), {}};
    for (const OracleValue& context : message.context) {
      if (const auto* const text = std::get_if<std::string>(&context)) {
        to.context.emplace_back(*text);
      } else {
        to.context.emplace_back(static_cast<std::uint64_t>(std::get<std::int64_t>(context)));
      }
    }
  }
  return outcome;
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  const auto write = [&out](const auto& content) { out << content; };
  if (!outcome.event.has_value()) out << "no event";
  for (const auto& [key, value] : outcome.event.value_or(std::map<std::string, Outcome::Value>())) {
    out << key << "=";
    std::visit(write, value);
    out << " ";
  }
  out << "\nlogged:";
  for (const Diagnostic& diagnostic : outcome.diagnostics) {
    out << "\n  " << diagnostic.level << " " << diagnostic.code << " " << diagnostic.message;
    for (const Diagnostic::Context& context : diagnostic.context) {
      out << " [";
      std::visit(write, context);
      out << "]";
    }
  }
  out << "\nasked:";
  for (const std::string& operation : outcome.asked) out << " " << operation;
  return out;
}

}  // namespace qel::testing
