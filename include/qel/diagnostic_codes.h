// The codes of the diagnostics, by name.
//
// docs/diagnostics.md describes each code in full: when it is logged, what the event then has,
// usual causes, and what to check.
//
// Example, in a monitor:
//   void logWithLevel(int level, int messageCode, std::string_view message) override {
//     if (messageCode == qel::DiagnosticCode::kFreeTrial) ++freeTrials_;
//   }

#ifndef QEL_DIAGNOSTIC_CODES_H_
#define QEL_DIAGNOSTIC_CODES_H_

namespace qel {

// What a message to the diagnostics monitor says. A later version may add codes; a code never gets
// another meaning.
enum class DiagnosticCode : int {
  // A warning: the transaction has no identifier. The next code says what the purchase is.
  kEmptyTransactionId = 40003,
  // Invalid: a non-consumable that was bought before.
  kRestoredNonConsumable = 40005,
  // A one-off purchase without "_did": the two transaction identifiers of the receipt's entry
  // differ, or one is absent.
  kMismatchedTransactionIds = 40007,
  // A purchase of a subscription at its regular price.
  kAutoRenewable = 40008,
  // A free trial.
  kFreeTrial = 40009,
  // The last code of every valid free trial and introductory offer, also of a first purchase.
  kAutoRenewableRenewal = 40010,
  // Invalid: a free trial that continues or repeats an earlier transaction.
  kRepurchasedFreeTrial = 40011,
  // A subscription at an introductory price.
  kIntroductoryOffer = 40018,
  // Invalid: the receipt has no entry of the product. Context: the product's identifier.
  kMissingInReceipt = 40020,
  // A consumable.
  kConsumable = 40021,
  // A non-consumable.
  kNonConsumable = 40022,
  // Invalid: a subscription without an entry at the transaction's date. Context: the product's
  // identifier.
  kSubscriptionMissingInReceipt = 40023,
  // Invalid: the product has several entries at the transaction's date. Contexts: the product's
  // identifier and the number of entries.
  kDuplicateTransactionDate = 40024,
  // A non-renewing subscription.
  kNonRenewingSubscription = 40025,
  // No event: there is no product.
  kNilProduct = 40026,
  // No event: the product has no identifier.
  kEmptyProductId = 40027,
  // No event: there is no transaction.
  kNilTransaction = 40028,
};

// Compares a code with the number that a monitor receives.
constexpr bool operator==(DiagnosticCode code, int messageCode) {
  return static_cast<int>(code) == messageCode;
}

}  // namespace qel

#endif  // QEL_DIAGNOSTIC_CODES_H_
