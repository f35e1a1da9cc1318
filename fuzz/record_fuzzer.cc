// Fuzzes the reading of purchases, the builder behind it and the writing of what came of it. An
// input is lines of JSON; one reader reads them all, as it does in a run.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics_collector.h"
#include "fuzz_target.h"
#include "json_judge.h"
#include "purchase_judge.h"
#include "purchase_reader.h"
#include "qel/measurement.h"
#include "result_writer.h"
#include "unreadable_line.h"

namespace qel::testing {
namespace {

using tool::PurchaseReader;

bool isSame(const std::optional<Decimal>& read, const std::optional<JudgedReading>& judged) {
  if (!read.has_value() || !judged.has_value()) return read.has_value() == judged.has_value();
  const double nearest = read->doubleValue();
  if (judged->kind == JudgedReading::Kind::kNotANumber) return nearest != nearest;
  return nearest == judged->number.nearestDouble();
}

bool isSame(const std::optional<Instant>& read, const std::optional<JudgedMoment>& judged) {
  if (!read.has_value() || !judged.has_value()) return read.has_value() == judged.has_value();
  return JudgedMoment{read->seconds, read->nanoseconds} == *judged;
}

bool isSame(const PlainProduct& read, const JudgedProduct& judged) {
  if (read.answersIntroductoryPrice != judged.answersOffer) return false;
  const std::optional<PlainDiscount>& offer = read.introductoryPrice;
  if (offer.has_value() != judged.offer.has_value()) return false;
  if (offer.has_value() && offer->paymentMode != judged.offer->mode) return false;
  if (offer.has_value() && !isSame(offer->price, judged.offer->price)) return false;
  return read.productIdentifier == judged.identifier && isSame(read.price, judged.price) &&
         read.priceLocaleCurrencyCode == judged.currency && read.localizedTitle == judged.title;
}

bool isSame(const PlainTransaction& read, const JudgedTransaction& judged) {
  const std::optional<std::string> originalIdentifier =
      read.originalTransaction.has_value() ? read.originalTransaction->transactionIdentifier
                                           : std::nullopt;
  return read.transactionIdentifier == judged.identifier &&
         originalIdentifier == judged.originalIdentifier &&
         isSame(read.transactionDate, judged.date) && read.quantity.value_or(0) == judged.quantity;
}

JudgedEntry entryOf(const QELInAppPurchaseItem& item) {
  return {item.productID,          item.purchaseDateIA5String, item.purchaseType,
          item.webOrderLineItemID, item.transactionID,         item.originalTransactionID,
          item.isFreeTrial,        item.isIntroductoryOffer};
}

void checkRead(const tool::Purchase& read, const JudgedPurchase& judged) {
  check(read.id == judged.id, "the id is as judged");
  check(read.product.has_value() == judged.product.has_value(), "a product is there as judged");
  check(read.transaction.has_value() == judged.transaction.has_value(),
        "a transaction is there as judged");
  if (read.product.has_value()) {
    check(isSame(*read.product, *judged.product), "the product is as judged");
    const bool canHaveOffers = read.product->hasDiscountClass &&
                               read.product->discountsAnswerPrice &&
                               read.product->discountsAnswerPaymentMode;
    check(canHaveOffers == judged.canHaveOffers, "the platform is as judged");
  }
  if (read.transaction.has_value()) {
    check(isSame(*read.transaction, *judged.transaction), "the transaction is as judged");
  }
  std::vector<JudgedEntry> entries;
  for (const QELInAppPurchaseItem& item : read.receipt) entries.push_back(entryOf(item));
  check(entries == judged.receipt, "the receipt is as judged");
}

// The value that a result holds, an integer in the form that was asked for.
bool isSame(const JudgedJson& json, const JudgedValue& judged, tool::Int64Form form) {
  if (const auto* text = std::get_if<std::string>(&judged)) {
    return json.kind == JudgedJson::Kind::kString && json.text == *text;
  }
  const JudgedJson::Kind kind =
      form == tool::Int64Form::kNumber ? JudgedJson::Kind::kNumber : JudgedJson::Kind::kString;
  return json.kind == kind && json.text == std::to_string(std::get<std::int64_t>(judged));
}

void checkEvent(const JudgedJson& event, const JudgedOutcome& judged, tool::Int64Form form) {
  check((event.kind == JudgedJson::Kind::kObject) == judged.event.has_value(),
        "there is an event as judged");
  if (!judged.event.has_value()) return;
  check(event.keys.size() == judged.event->size(), "an event has as many keys as judged");
  std::size_t place = 0;
  // A map's keys are sorted, as those of an event have to be.
  for (const auto& [key, value] : *judged.event) {
    check(event.keys[place] == key, "the keys of an event are as judged, and sorted");
    check(isSame(event.values[place], value, form), "the values of an event are as judged");
    ++place;
  }
}

void checkDiagnostics(const JudgedJson& diagnostics, const JudgedOutcome& judged) {
  check(diagnostics.values.size() == judged.messages.size(), "there are messages as judged");
  for (std::size_t i = 0; i < judged.messages.size(); ++i) {
    const JudgedJson& diagnostic = diagnostics.values[i];
    check(diagnostic.find("level")->text == "8", "the level is 8");
    check(diagnostic.find("code")->text == std::to_string(judged.messages[i].code),
          "codes are as judged");
    const std::vector<JudgedJson>& context = diagnostic.find("context")->values;
    const std::vector<JudgedValue>& judgedContext = judged.messages[i].context;
    check(context.size() == judgedContext.size(), "contexts are as many as judged");
    for (std::size_t j = 0; j < context.size(); ++j) {
      check(isSame(context[j], judgedContext[j], tool::Int64Form::kNumber),
            "contexts are as judged");
    }
  }
}

// Reads a result as any reader of JSON Lines would.
JudgedJson parsedResult(std::string_view written) {
  check(written.find('\n') == written.size() - 1, "a result is one line");
  const std::optional<JudgedJson> json = judgedJson(written);
  check(json.has_value(), "a result is JSON");
  return *json;
}

void checkAccepted(const tool::Purchase& purchase, const JudgedPurchase& judged) {
  checkRead(purchase, judged);
  tool::TextBuffer diagnostics;
  const tool::DiagnosticsCollector::Collection collection(diagnostics);
  const std::optional<EventParameters> event = plainPurchaseEvent(
      purchase.product.has_value() ? &*purchase.product : nullptr,
      purchase.transaction.has_value() ? &*purchase.transaction : nullptr, purchase.receipt);
  const JudgedOutcome judgedOfPurchase = judgedOutcome(judged);
  for (const tool::Int64Form form : {tool::Int64Form::kNumber, tool::Int64Form::kString}) {
    tool::TextBuffer written;
    tool::appendResult(purchase.id, event, diagnostics.text(), form, written);
    const JudgedJson result = parsedResult(written.text());
    const JudgedJson* const id = result.find("id");
    check((id != nullptr) == judged.id.has_value() && (id == nullptr || id->text == *judged.id),
          "the id comes back");
    checkEvent(*result.find("event"), judgedOfPurchase, form);
    checkDiagnostics(*result.find("diagnostics"), judgedOfPurchase);
  }
}

// The text under the first "id" of a line that holds one.
std::optional<std::string> idOf(const JudgedJson& line) {
  for (std::size_t i = 0; i < line.keys.size(); ++i) {
    const JudgedJson& value = line.values[i];
    if (line.keys[i] == "id" && value.kind == JudgedJson::Kind::kString) return value.text;
  }
  return std::nullopt;
}

void checkRejected(std::string_view line, const tool::JsonError& error) {
  check(!error.message.empty(), "an error says what is wrong");
  check(error.pointer.empty() || error.pointer.starts_with('/'), "a path is a JSON Pointer");
  const std::optional<std::string> id = tool::idOfUnreadableLine(line);
  if (const std::optional<JudgedJson> json = judgedJson(line)) {
    const bool isObject = json->kind == JudgedJson::Kind::kObject;
    if (isObject) check(id == idOf(*json), "the id of a rejected line comes back");
  }
  tool::TextBuffer written;
  tool::appendError(id, 17, error, written);
  const JudgedJson result = parsedResult(written.text());
  check(result.find("error")->find("message")->text == error.message, "the message comes back");
  check(result.find("error")->find("path")->text == error.pointer, "the path comes back");
}

void checkLine(PurchaseReader& reader, std::string_view line, bool ignoresUnknownKeys) {
  // The memory ends where the reader may no longer look, and what it may look at is no help.
  std::vector<char> memory(line.size() + tool::JsonReader::kPadding, '"');
  std::copy(line.begin(), line.end(), memory.begin());
  const std::string_view padded(memory.data(), line.size());

  const std::optional<JudgedPurchase> judged = judgedPurchase(line, ignoresUnknownKeys);
  try {
    const tool::Purchase& purchase = reader.read(padded);
    check(judged.has_value(), "a line is read only when the judge reads it");
    checkAccepted(purchase, *judged);
  } catch (const tool::JsonError& error) {
    check(!judged.has_value(), "a line is rejected only when the judge rejects it");
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
