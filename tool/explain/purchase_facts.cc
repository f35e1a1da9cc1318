#include "explain/purchase_facts.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "qel/measurement.h"
#include "qel/receipt_matching.h"

namespace qel::tool {
namespace {

// Records the messages of one purchase.
class DiagnosticsRecorder : public DiagnosticsMonitor {
 public:
  explicit DiagnosticsRecorder(std::vector<RecordedDiagnostic>& out) : out_(out) {}

  void logWithLevel(int, int messageCode, std::string_view message) override {
    record(messageCode, message, {});
  }
  void logWithLevel(int, int messageCode, std::string_view message,
                    const DiagnosticContext& context) override {
    record(messageCode, message, {&context});
  }
  void logWithLevel(int, int messageCode, std::string_view message,
                    const DiagnosticContext& context1, const DiagnosticContext& context2) override {
    record(messageCode, message, {&context1, &context2});
  }

 private:
  void record(int messageCode, std::string_view message,
              std::initializer_list<const DiagnosticContext*> contexts) {
    RecordedDiagnostic& diagnostic = out_.emplace_back();
    diagnostic.code = messageCode;
    diagnostic.message = message;
    for (const DiagnosticContext* const context : contexts) {
      if (const auto* const text = std::get_if<std::string_view>(context)) {
        diagnostic.context.emplace_back(std::string(*text));
      } else {
        diagnostic.context.emplace_back(std::get<std::uint64_t>(*context));
      }
    }
  }

  std::vector<RecordedDiagnostic>& out_;
};

std::optional<EventParameters> eventOf(const std::optional<PlainProduct>& product,
                                       const std::optional<PlainTransaction>& transaction,
                                       const QELInAppPurchaseItems& receipt) {
  return plainPurchaseEvent(product.has_value() ? &*product : nullptr,
                            transaction.has_value() ? &*transaction : nullptr, receipt);
}

// Returns the event of `purchase` with other values for what is missing. The purchase must have a
// product and a transaction.
std::optional<EventParameters> eventWith(const std::vector<MissingInput>& supplied,
                                         const Purchase& purchase) {
  std::optional<PlainProduct> product = purchase.product;
  std::optional<PlainTransaction> transaction = purchase.transaction;
  for (const MissingInput input : supplied) {
    switch (input) {
      case MissingInput::kCurrency:
        // No currency (ISO 4217).
        product->priceLocaleCurrencyCode = "XXX";
        break;
      case MissingInput::kPrice:
        product->price = Decimal::initWithLongLong(1);
        break;
      case MissingInput::kQuantity:
        transaction->quantity = 1;
        break;
    }
  }
  return eventOf(product, transaction, purchase.receipt);
}

// Returns the inputs that the purchase does not have and needs. They are found by trying: the
// library itself says which it needs.
std::vector<MissingInput> missingInputs(const Purchase& purchase) {
  std::vector<MissingInput> missing;
  if (!purchase.product->priceLocaleCurrencyCode.has_value()) {
    missing.push_back(MissingInput::kCurrency);
  }
  if (!purchase.product->price.has_value()) missing.push_back(MissingInput::kPrice);
  if (purchase.transaction->quantity.value_or(0) == 0) missing.push_back(MissingInput::kQuantity);

  const std::vector<MissingInput> candidates = missing;
  for (const MissingInput candidate : candidates) {
    std::vector<MissingInput> fewer;
    std::copy_if(missing.begin(), missing.end(), std::back_inserter(fewer),
                 [candidate](MissingInput input) { return input != candidate; });
    if (eventWith(fewer, purchase).has_value()) missing = std::move(fewer);
  }
  return missing;
}

bool hasAnyCode(const PurchaseFacts& facts, std::initializer_list<DiagnosticCode> codes) {
  return std::any_of(codes.begin(), codes.end(),
                     [&facts](DiagnosticCode code) { return facts.hasCode(code); });
}

// Finds the entry that the purchase is reported as, and the one before it. The codes say whether
// that is the entry at the transaction's date, the only entry of the product, or none.
void findReportedEntry(PurchaseFacts& facts) {
  using Code = DiagnosticCode;
  const bool hasNone =
      hasAnyCode(facts, {Code::kNilProduct, Code::kEmptyProductId, Code::kNilTransaction,
                         Code::kRestoredNonConsumable, Code::kMissingInReceipt,
                         Code::kSubscriptionMissingInReceipt, Code::kDuplicateTransactionDate});
  if (hasNone) return;
  facts.isFoundByDate = facts.isDateCompared();
  const QELInAppPurchaseItems& found = facts.isFoundByDate ? facts.atDate : facts.ofProduct;
  if (found.empty()) return;
  facts.reported = &found.front().get();
  const auto position = std::find_if(
      facts.ofProduct.begin(), facts.ofProduct.end(),
      [&facts](const QELInAppPurchaseItem& entry) { return &entry == facts.reported; });
  if (position != facts.ofProduct.begin()) facts.previous = &std::prev(position)->get();
}

}  // namespace

bool PurchaseFacts::hasCode(DiagnosticCode code) const {
  return std::any_of(
      diagnostics.begin(), diagnostics.end(),
      [code](const RecordedDiagnostic& diagnostic) { return code == diagnostic.code; });
}

bool PurchaseFacts::isDateCompared() const {
  using Code = DiagnosticCode;
  return hasAnyCode(*this, {Code::kAutoRenewable, Code::kFreeTrial, Code::kRepurchasedFreeTrial,
                            Code::kIntroductoryOffer, Code::kNonRenewingSubscription,
                            Code::kSubscriptionMissingInReceipt, Code::kDuplicateTransactionDate});
}

bool PurchaseFacts::isMarked(ParameterKey flag) const {
  return classified.has_value() && classified->find(flag) != nullptr;
}

OptionalText PurchaseFacts::productIdentifier() const {
  return purchase.product.has_value() ? OptionalText(purchase.product->productIdentifier)
                                      : std::nullopt;
}

OptionalText PurchaseFacts::currency() const {
  return purchase.product.has_value() ? OptionalText(purchase.product->priceLocaleCurrencyCode)
                                      : std::nullopt;
}

OptionalText PurchaseFacts::transactionIdentifier() const {
  return purchase.transaction.has_value()
             ? OptionalText(purchase.transaction->transactionIdentifier)
             : std::nullopt;
}

OptionalText PurchaseFacts::originalTransactionIdentifier() const {
  if (!purchase.transaction.has_value()) return std::nullopt;
  const std::optional<PlainOriginalTransaction>& original =
      purchase.transaction->originalTransaction;
  return original.has_value() ? OptionalText(original->transactionIdentifier) : std::nullopt;
}

std::optional<Instant> PurchaseFacts::transactionDate() const {
  return purchase.transaction.has_value() ? purchase.transaction->transactionDate : std::nullopt;
}

PurchaseFacts factsOf(const Purchase& purchase) {
  PurchaseFacts facts{.purchase = purchase};
  QELMeasurement::setMonitor(std::make_shared<DiagnosticsRecorder>(facts.diagnostics));
  facts.event = eventOf(purchase.product, purchase.transaction, purchase.receipt);
  QELMeasurement::setMonitor(nullptr);

  facts.classified = facts.event;
  const bool isRejected = facts.hasCode(DiagnosticCode::kNilProduct) ||
                          facts.hasCode(DiagnosticCode::kEmptyProductId) ||
                          facts.hasCode(DiagnosticCode::kNilTransaction);
  if (!facts.event.has_value() && !isRejected) {
    facts.missing = missingInputs(purchase);
    facts.classified = eventWith(facts.missing, purchase);
  }

  facts.ofProduct =
      QELMatchingInAppPurchaseItems(purchase.receipt, facts.productIdentifier(), std::nullopt)
          .value_or(QELInAppPurchaseItems());
  facts.atDate =
      QELMatchingInAppPurchaseItems(facts.ofProduct, std::nullopt, facts.transactionDate())
          .value_or(QELInAppPurchaseItems());
  findReportedEntry(facts);
  return facts;
}

}  // namespace qel::tool
