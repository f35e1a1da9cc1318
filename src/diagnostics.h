// The messages of the component, and how they reach the diagnostics monitor.

#ifndef QEL_SRC_DIAGNOSTICS_H_
#define QEL_SRC_DIAGNOSTICS_H_

#include <memory>
#include <string_view>

#include "qel/measurement.h"

namespace qel {

// A message for the monitor: a unique code and a fixed text.
struct DiagnosticMessage {
  int code;
  std::string_view text;
};

// All messages of the component in one table, so that codes stay unique.
namespace message {

inline constexpr DiagnosticMessage kEmptyTransactionId = {40003,
                                                          "Transaction ID cannot be nil or empty."};
inline constexpr DiagnosticMessage kRestoredNonConsumable = {
    40005, "Restore/repurchase of non-consumable item will be reported as invalid"};
inline constexpr DiagnosticMessage kMismatchedTransactionIds = {
    40007,
    "Transaction with mismatched transaction ID and original transaction ID will be reported as "
    "consumable"};
inline constexpr DiagnosticMessage kAutoRenewable = {
    40008, "Transaction of auto-renewable subscription will be reported"};
inline constexpr DiagnosticMessage kFreeTrial = {
    40009, "Transaction of free-trial auto-renewable subscription will be reported"};
// Logged for every valid free trial and introductory offer, also for a first purchase.
inline constexpr DiagnosticMessage kAutoRenewableRenewal = {
    40010, "Transaction of auto-renewable subscription renewal will be reported"};
inline constexpr DiagnosticMessage kRepurchasedFreeTrial = {
    40011, "Repurchase of free-trial auto-renewable subscription will be reported as invalid"};
inline constexpr DiagnosticMessage kIntroductoryOffer = {
    40018, "Transaction of introductory offer will be reported"};
inline constexpr DiagnosticMessage kMissingInReceipt = {
    40020, "Transaction missing in receipt will be reported as invalid"};
inline constexpr DiagnosticMessage kConsumable = {
    40021, "Transaction of consumable item will be reported"};
inline constexpr DiagnosticMessage kNonConsumable = {
    40022, "Transaction of non-consumable item will be reported"};
inline constexpr DiagnosticMessage kSubscriptionMissingInReceipt = {
    40023, "Subscription transaction missing in receipt will be reported as invalid"};
inline constexpr DiagnosticMessage kDuplicateTransactionDate = {
    40024, "Subscription transaction with duplicate transaction date will be reported as invalid"};
inline constexpr DiagnosticMessage kNonRenewingSubscription = {
    40025, "Transaction of non-renewing subscription will be reported"};
inline constexpr DiagnosticMessage kNilProduct = {
    40026, "IAP Transaction cannot be created from nil product"};
inline constexpr DiagnosticMessage kEmptyProductId = {
    40027, "IAP Transaction cannot be created from empty or nil product ID"};
inline constexpr DiagnosticMessage kNilTransaction = {
    40028, "IAP Transaction cannot be created from nil transaction"};

}  // namespace message

// Sends `message` to the monitor, with up to two context values. Gets the monitor afresh for each
// message. Does nothing if none is installed.
template <typename... Context>
void log(const DiagnosticMessage& message, const Context&... context) {
  constexpr int kLevel = 8;
  if (const std::shared_ptr<DiagnosticsMonitor> monitor = QELMeasurement::monitor()) {
    monitor->logWithLevel(kLevel, message.code, message.text, DiagnosticContext(context)...);
  }
}

}  // namespace qel

#endif  // QEL_SRC_DIAGNOSTICS_H_
