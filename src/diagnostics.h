// The messages of the library, and how they reach the diagnostics monitor.

#ifndef QEL_SRC_DIAGNOSTICS_H_
#define QEL_SRC_DIAGNOSTICS_H_

#include <memory>
#include <string_view>

#include "qel/diagnostic_codes.h"
#include "qel/measurement.h"

namespace qel {

// Returns the message of `code`, empty if there is no such code.
constexpr std::string_view messageOf(DiagnosticCode code) {
  using enum DiagnosticCode;
  switch (code) {
    case kEmptyTransactionId:
      return "Transaction ID cannot be nil or empty.";
    case kRestoredNonConsumable:
      return "Restore/repurchase of non-consumable item will be reported as invalid";
    case kMismatchedTransactionIds:
      return "Transaction with mismatched transaction ID and original transaction ID will be "
             "reported as consumable";
    case kAutoRenewable:
      return "Transaction of auto-renewable subscription will be reported";
    case kFreeTrial:
      return "Transaction of free-trial auto-renewable subscription will be reported";
    case kAutoRenewableRenewal:
      return "Transaction of auto-renewable subscription renewal will be reported";
    case kRepurchasedFreeTrial:
      return "Repurchase of free-trial auto-renewable subscription will be reported as invalid";
    case kIntroductoryOffer:
      return "Transaction of introductory offer will be reported";
    case kMissingInReceipt:
      return "Transaction missing in receipt will be reported as invalid";
    case kConsumable:
      return "Transaction of consumable item will be reported";
    case kNonConsumable:
      return "Transaction of non-consumable item will be reported";
    case kSubscriptionMissingInReceipt:
      return "Subscription transaction missing in receipt will be reported as invalid";
    case kDuplicateTransactionDate:
      return "Subscription transaction with duplicate transaction date will be reported as invalid";
    case kNonRenewingSubscription:
      return "Transaction of non-renewing subscription will be reported";
    case kNilProduct:
      return "IAP Transaction cannot be created from nil product";
    case kEmptyProductId:
      return "IAP Transaction cannot be created from empty or nil product ID";
    case kNilTransaction:
      return "IAP Transaction cannot be created from nil transaction";
  }
  return {};
}

// Sends the message of `code` to the monitor, with up to two context values. Gets the monitor
// afresh for each message. Does nothing if none is installed.
template <typename... Context>
void log(DiagnosticCode code, const Context&... context) {
  constexpr int kLevel = 8;
  if (const std::shared_ptr<DiagnosticsMonitor> monitor = QELMeasurement::monitor()) {
    monitor->logWithLevel(kLevel, static_cast<int>(code), messageOf(code),
                          DiagnosticContext(context)...);
  }
}

}  // namespace qel

#endif  // QEL_SRC_DIAGNOSTICS_H_
