#include "purchase_trial.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <variant>

#include "reference/message_texts.h"
#include "support/plain_purchase.h"

namespace qel::testing {
namespace {

std::optional<Decimal> decimalOf(const std::optional<OracleReading>& price) {
  if (!price.has_value()) return std::nullopt;
  if (price->kind == OracleReading::Kind::kNotANumber) return Decimal::notANumber();
  // The prices are few, and parsing is slow. None is negative.
  struct Known {
    OracleDecimal number;
    Decimal decimal;
  };
  static std::vector<Known> known;
  for (const Known& each : known) {
    if (each.number.exponent == price->number.exponent &&
        each.number.coefficient == price->number.coefficient)
      return each.decimal;
  }
  known.push_back({price->number, *plainPrice(price)});
  return known.back().decimal;
}

// --- Comparing -------------------------------------------------------------------------------

bool isSame(const QELValue& actual, const OracleValue& expected) {
  const OptionalText text = actual.stringValue();
  if (const auto* const integer = std::get_if<std::int64_t>(&expected))
    return !text.has_value() && actual.int64Value() == *integer;
  return text == std::get<std::string>(expected);
}

// The keys of both are in ascending order.
bool isSame(const std::optional<EventParameters>& actual,
            const std::optional<OracleEvent>& expected) {
  if (!actual.has_value() || !expected.has_value())
    return actual.has_value() == expected.has_value();
  auto place = expected->begin();
  for (const auto& [key, value] : *actual) {
    if (place == expected->end() || key != place->first || !isSame(value, place->second))
      return false;
    ++place;
  }
  return place == expected->end();
}

bool isSame(const Diagnostic::Context& actual, const OracleValue& expected) {
  if (const auto* const integer = std::get_if<std::int64_t>(&expected))
    return actual == Diagnostic::Context(static_cast<std::uint64_t>(*integer));
  return actual == Diagnostic::Context(std::get<std::string>(expected));
}

bool isSame(const Diagnostic& actual, const OracleMessage& expected) {
  if (actual.level != 8 || actual.code != expected.code ||
      actual.message != messageTexts().at(expected.code) ||
      actual.context.size() != expected.context.size())
    return false;
  for (std::size_t i = 0; i < actual.context.size(); ++i) {
    if (!isSame(actual.context[i], expected.context[i])) return false;
  }
  return true;
}

bool isSame(const std::vector<Diagnostic>& actual, const std::vector<OracleMessage>& expected) {
  if (actual.size() != expected.size()) return false;
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (!isSame(actual[i], expected[i])) return false;
  }
  return true;
}

// --- Writing a failure -----------------------------------------------------------------------

template <typename Value>
void write(std::ostream& out, const char* name, const std::optional<Value>& value) {
  out << ' ' << name << '=';
  value.has_value() ? out << *value : out << "absent";
}

void write(std::ostream& out, const OraclePurchase& purchase) {
  if (const auto& product = purchase.product) {
    out << "    product:";
    write(out, "identifier", product->identifier);
    write(out, "price", priceText(product->price));
    write(out, "currency", product->currency);
    write(out, "title", product->title);
    out << " answers=" << purchase.platform.hasDiscountClass
        << purchase.platform.discountsAnswerPrice << purchase.platform.discountsAnswerPaymentMode
        << product->answersOffer;
    if (const auto& offer = product->offer) {
      out << " offer: mode=" << offer->mode;
      write(out, "price", priceText(offer->price));
    }
    out << '\n';
  }
  if (const auto& transaction = purchase.transaction) {
    out << "    transaction:";
    write(out, "identifier", transaction->identifier);
    if (const auto& original = transaction->original) write(out, "original", original->identifier);
    if (const auto& date = transaction->date)
      out << " date=" << date->seconds << "s+" << date->nanoseconds << "ns";
    write(out, "quantity", transaction->quantity);
    out << '\n';
  }
  for (const OracleEntry& entry : purchase.receipt) {
    out << "    entry:";
    write(out, "productID", entry.productId);
    write(out, "purchaseDate", entry.dateText);
    write(out, "type", entry.type);
    write(out, "webOrderLineItemID", entry.webOrder);
    write(out, "transactionID", entry.transactionId);
    write(out, "originalTransactionID", entry.originalId);
    out << (entry.isFreeTrial ? " freeTrial" : "") << (entry.isOffer ? " introductoryOffer" : "")
        << '\n';
  }
}

void write(std::ostream& out, const OracleOutcome& outcome) {
  out << "  expected:\n    ";
  if (!outcome.event.has_value()) out << "no event";
  for (const auto& [key, content] : outcome.event.value_or(OracleEvent()))
    std::visit([&out, &key = key](const auto& value) { out << key << '=' << value << ' '; },
               content);
  for (const OracleMessage& message : outcome.messages) {
    out << "\n    8 " << message.code << ' ' << messageTexts().at(message.code);
    for (const OracleValue& context : message.context)
      std::visit([&out](const auto& value) { out << " [" << value << ']'; }, context);
  }
  out << '\n';
}

void write(std::ostream& out, const std::optional<EventParameters>& event,
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

ReceiptEntry::ReceiptEntry(const OracleEntry& entry) : values(entry), record(plainEntry(entry)) {}

void PurchaseTrial::setReceipt(OraclePurchase& purchase,
                               std::initializer_list<const ReceiptEntry*> entries) {
  receipt_.clear();
  // Entries that are overwritten keep the memory of their texts.
  purchase.receipt.resize(entries.size());
  for (const ReceiptEntry* const entry : entries) {
    purchase.receipt[receipt_.size()] = entry->values;
    receipt_.emplace_back(entry->record);
  }
}

void PurchaseTrial::makeRecords(const OraclePurchase& purchase) {
  if (const auto& product = purchase.product) {
    product_.productIdentifier = product->identifier;
    product_.price = decimalOf(product->price);
    product_.priceLocaleCurrencyCode = product->currency;
    product_.localizedTitle = product->title;
    product_.introductoryPrice.reset();
    if (const auto& offer = product->offer)
      product_.introductoryPrice = {decimalOf(offer->price), offer->mode};
    product_.hasDiscountClass = purchase.platform.hasDiscountClass;
    product_.discountsAnswerPrice = purchase.platform.discountsAnswerPrice;
    product_.discountsAnswerPaymentMode = purchase.platform.discountsAnswerPaymentMode;
    product_.answersIntroductoryPrice = product->answersOffer;
  }
  if (purchase.transaction.has_value()) transaction_ = plainTransaction(*purchase.transaction);
}

OracleOutcome PurchaseTrial::tryOut(const OraclePurchase& purchase) {
  makeRecords(purchase);
  monitor_->clear();
  const std::optional<EventParameters> event =
      plainPurchaseEvent(purchase.product.has_value() ? &product_ : nullptr,
                         purchase.transaction.has_value() ? &transaction_ : nullptr, receipt_);

  ++combinations_;
  OracleOutcome expected = oracleOutcome(purchase);
  if (isSame(event, expected.event) && isSame(monitor_->diagnostics(), expected.messages))
    return expected;

  ++failures_;
  std::ostringstream out;
  out << "  input:\n";
  write(out, purchase);
  write(out, expected);
  write(out, event, monitor_->diagnostics());
  ADD_FAILURE() << "combination " << combinations_ << '\n' << out.str();
  return expected;
}

}  // namespace qel::testing
