#include "outcome.h"

#include <ostream>
#include <string>
#include <variant>

#include "support/plain_purchase.h"

namespace qel::testing {

Outcome outcomeOfPlainRecords(const OraclePurchase& purchase) {
  Outcome outcome;
  const PlainProduct product =
      plainProduct(purchase.product.value_or(OracleProduct()), purchase.platform);
  const PlainTransaction transaction =
      plainTransaction(purchase.transaction.value_or(OracleTransaction()));
  const PlainProductRecord productRecord(product);
  const PlainTransactionRecord transactionRecord(transaction);
  const LoggedProduct loggedProduct(productRecord, outcome.asked);
  const LoggedTransaction loggedTransaction(transactionRecord, outcome.asked);
  const std::vector<QELInAppPurchaseItem> receipt = plainReceipt(purchase);

  const ScopedRecordingMonitor monitor;
  const std::optional<EventParameters> event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(
          purchase.product.has_value() ? &loggedProduct : nullptr,
          purchase.transaction.has_value() ? &loggedTransaction : nullptr, listOf(receipt));
  if (event.has_value()) outcome.event = eventOf(*event);
  outcome.diagnostics = monitor->diagnostics();
  std::erase(outcome.asked, "product.hasDiscountClass");
  return outcome;
}

Outcome outcomeOfOracle(const OraclePurchase& purchase) {
  const OracleOutcome expected = oracleOutcome(purchase);
  Outcome outcome;
  if (expected.event.has_value())
    outcome.event.emplace(expected.event->begin(), expected.event->end());
  for (const OracleMessage& message : expected.messages) {
    std::vector<Diagnostic::Context> contexts;
    for (const OracleValue& context : message.context) {
      if (const auto* const text = std::get_if<std::string>(&context)) {
        contexts.emplace_back(*text);
      } else {
        contexts.emplace_back(static_cast<std::uint64_t>(std::get<std::int64_t>(context)));
      }
    }
    outcome.diagnostics.push_back(logged(message.code, contexts));
  }
  return outcome;
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  const auto write = [&out](const auto& content) { out << content; };
  if (!outcome.event.has_value()) out << "no event";
  for (const auto& [key, value] : outcome.event.value_or(Event())) {
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
  out << "\ncalled:";
  for (const std::string& operation : outcome.asked) out << " " << operation;
  return out;
}

}  // namespace qel::testing
