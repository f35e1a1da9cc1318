// Fuzzes the reading of purchases, the builder behind it and the writing of what came of it. An
// input is lines of JSON; one reader reads them all, as it does in a run.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics_collector.h"
#include "fuzz_target.h"
#include "json_oracle.h"
#include "message_texts.h"
#include "purchase_line_oracle.h"
#include "purchase_reader.h"
#include "qel/measurement.h"
#include "result_writer.h"
#include "unreadable_line.h"

namespace qel::testing {
namespace {

using tool::PurchaseReader;

bool isSame(const std::optional<Decimal>& read, const std::optional<OracleReading>& expected) {
  if (!read.has_value() || !expected.has_value()) return read.has_value() == expected.has_value();
  const double nearest = read->doubleValue();
  if (expected->kind == OracleReading::Kind::kNotANumber) return nearest != nearest;
  return nearest == expected->number.nearestDouble();
}

bool isSame(const std::optional<Instant>& read, const std::optional<OracleInstant>& expected) {
  if (!read.has_value() || !expected.has_value()) return read.has_value() == expected.has_value();
  return OracleInstant{read->seconds(), read->nanoseconds()} == *expected;
}

bool isSame(const PlainProduct& read, const OracleProduct& expected) {
  if (read.answersIntroductoryPrice != expected.answersOffer) return false;
  const std::optional<PlainDiscount>& offer = read.introductoryPrice;
  if (offer.has_value() != expected.offer.has_value()) return false;
  if (offer.has_value() && offer->paymentMode != expected.offer->mode) return false;
  if (offer.has_value() && !isSame(offer->price, expected.offer->price)) return false;
  return read.productIdentifier == expected.identifier && isSame(read.price, expected.price) &&
         read.priceLocaleCurrencyCode == expected.currency && read.localizedTitle == expected.title;
}

bool isSame(const PlainTransaction& read, const OracleTransaction& expected) {
  const std::optional<std::string> originalIdentifier =
      read.originalTransaction.has_value() ? read.originalTransaction->transactionIdentifier
                                           : std::nullopt;
  const OracleText expectedOriginal =
      expected.original.has_value() ? expected.original->identifier : std::nullopt;
  return read.transactionIdentifier == expected.identifier &&
         originalIdentifier == expectedOriginal && isSame(read.transactionDate, expected.date) &&
         read.quantity.value_or(0) == expected.quantity.value_or(0);
}

OracleEntry entryOf(const QELInAppPurchaseItem& item) {
  return {item.productID,          item.purchaseDateIA5String, item.purchaseType,
          item.webOrderLineItemID, item.transactionID,         item.originalTransactionID,
          item.isFreeTrial,        item.isIntroductoryOffer};
}

void checkRead(const tool::Purchase& read, const OraclePurchase& expected) {
  check(read.id == expected.id, "the id is as expected");
  check(read.product.has_value() == expected.product.has_value(), "a product is there as expected");
  check(read.transaction.has_value() == expected.transaction.has_value(),
        "a transaction is there as expected");
  if (read.product.has_value()) {
    check(isSame(*read.product, *expected.product), "the product is as expected");
    const bool canHaveOffers = read.product->hasDiscountClass &&
                               read.product->discountsAnswerPrice &&
                               read.product->discountsAnswerPaymentMode;
    check(canHaveOffers == expected.platform.canHaveOffers(), "the platform is as expected");
  }
  if (read.transaction.has_value()) {
    check(isSame(*read.transaction, *expected.transaction), "the transaction is as expected");
  }
  std::vector<OracleEntry> entries;
  for (const QELInAppPurchaseItem& item : read.receipt) entries.push_back(entryOf(item));
  check(entries == expected.receipt, "the receipt is as expected");
}

// The value that a result holds, an integer in the form that was asked for.
bool isSame(const OracleJson& json, const OracleValue& expected, tool::Int64Form form) {
  if (const auto* text = std::get_if<std::string>(&expected)) {
    return json.kind == OracleJson::Kind::kString && json.text == *text;
  }
  const OracleJson::Kind kind =
      form == tool::Int64Form::kNumber ? OracleJson::Kind::kNumber : OracleJson::Kind::kString;
  return json.kind == kind && json.text == std::to_string(std::get<std::int64_t>(expected));
}

void checkEvent(const OracleJson& event, const OracleOutcome& expected, tool::Int64Form form) {
  check((event.kind == OracleJson::Kind::kObject) == expected.event.has_value(),
        "there is an event as expected");
  if (!expected.event.has_value()) return;
  check(event.keys.size() == expected.event->size(), "an event has as many keys as expected");
  std::size_t place = 0;
  // A map's keys are sorted, as those of an event have to be.
  for (const auto& [key, value] : *expected.event) {
    check(event.keys[place] == key, "the keys of an event are as expected, and sorted");
    check(isSame(event.values[place], value, form), "the values of an event are as expected");
    ++place;
  }
}

void checkDiagnostics(const OracleJson& diagnostics, const OracleOutcome& expected) {
  check(diagnostics.values.size() == expected.messages.size(), "there are messages as expected");
  for (std::size_t i = 0; i < expected.messages.size(); ++i) {
    const OracleJson& diagnostic = diagnostics.values[i];
    check(diagnostic.find("level")->text == "8", "the level is 8");
    check(diagnostic.find("code")->text == std::to_string(expected.messages[i].code),
          "codes are as expected");
    check(diagnostic.find("message")->text == messageTexts().at(expected.messages[i].code),
          "texts are as expected");
    const std::vector<OracleJson>& context = diagnostic.find("context")->values;
    const std::vector<OracleValue>& expectedContext = expected.messages[i].context;
    check(context.size() == expectedContext.size(), "contexts are as many as expected");
    for (std::size_t j = 0; j < context.size(); ++j) {
      check(isSame(context[j], expectedContext[j], tool::Int64Form::kNumber),
            "contexts are as expected");
    }
  }
}

// Reads a result as any reader of JSON Lines would.
OracleJson parsedResult(std::string_view written) {
  check(written.find('\n') == written.size() - 1, "a result is one line");
  const std::optional<OracleJson> json = oracleJson(written);
  check(json.has_value(), "a result is JSON");
  return *json;
}

void checkAccepted(const tool::Purchase& purchase, const OraclePurchase& expected) {
  checkRead(purchase, expected);
  tool::TextBuffer diagnostics;
  const tool::DiagnosticsCollector::Collection collection(diagnostics,
                                                          tool::UnpairedSurrogates::kEscape);
  const std::optional<EventParameters> event = plainPurchaseEvent(
      purchase.product.has_value() ? &*purchase.product : nullptr,
      purchase.transaction.has_value() ? &*purchase.transaction : nullptr, purchase.receipt);
  const OracleOutcome expectedOutcome = oracleOutcome(expected);
  for (const tool::Int64Form form : {tool::Int64Form::kNumber, tool::Int64Form::kString}) {
    tool::TextBuffer written;
    tool::appendResult(purchase.id, event, diagnostics.text(), {.int64 = form}, written);
    const OracleJson result = parsedResult(written.text());
    const OracleJson* const id = result.find("id");
    check((id != nullptr) == expected.id.has_value() && (id == nullptr || id->text == *expected.id),
          "the id comes back");
    checkEvent(*result.find("event"), expectedOutcome, form);
    checkDiagnostics(*result.find("diagnostics"), expectedOutcome);
  }
}

// The text under the first "id" of a line that holds one.
std::optional<std::string> idOf(const OracleJson& line) {
  for (std::size_t i = 0; i < line.keys.size(); ++i) {
    const OracleJson& value = line.values[i];
    if (line.keys[i] == "id" && value.kind == OracleJson::Kind::kString) return value.text;
  }
  return std::nullopt;
}

void checkRejected(std::string_view line, const tool::JsonError& error) {
  check(!error.message.empty(), "an error says what is wrong");
  check(error.pointer.empty() || error.pointer.starts_with('/'), "a path is a JSON Pointer");
  const std::optional<std::string> id = tool::idOfUnreadableLine(line);
  if (const std::optional<OracleJson> json = oracleJson(line)) {
    const bool isObject = json->kind == OracleJson::Kind::kObject;
    if (isObject) check(id == idOf(*json), "the id of a rejected line comes back");
  }
  tool::TextBuffer written;
  tool::appendError(id, {std::nullopt, 17}, error, tool::UnpairedSurrogates::kEscape, written);
  const OracleJson result = parsedResult(written.text());
  check(result.find("error")->find("message")->text == error.message, "the message comes back");
  check(result.find("error")->find("path")->text == error.pointer, "the path comes back");
}

void checkLine(PurchaseReader& reader, std::string_view line, bool ignoresUnknownKeys) {
  // The memory ends where the reader may no longer look, and what it may look at is no help.
  std::vector<char> memory(line.size() + tool::JsonReader::kPadding, '"');
  std::copy(line.begin(), line.end(), memory.begin());
  const std::string_view padded(memory.data(), line.size());

  const std::optional<OraclePurchase> expected = oraclePurchase(line, ignoresUnknownKeys);
  try {
    const tool::Purchase& purchase = reader.read(padded);
    check(expected.has_value(), "a line is read only when the oracle reads it");
    checkAccepted(purchase, *expected);
  } catch (const tool::JsonError& error) {
    check(!expected.has_value(), "a line is rejected only when the oracle rejects it");
    checkRejected(padded, error);
  }
}

}  // namespace

void fuzz(std::string_view input) {
  QELMeasurement::setMonitor(std::make_shared<tool::DiagnosticsCollector>());
  PurchaseReader strict(tool::UnknownKeys::kAreErrors);
  PurchaseReader lenient(tool::UnknownKeys::kAreIgnored);
  while (!input.empty()) {
    const std::string_view line = takeLine(input);
    checkLine(strict, line, false);
    checkLine(lenient, line, true);
  }
}

}  // namespace qel::testing
