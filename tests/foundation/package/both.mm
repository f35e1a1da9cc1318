// Calls the functions of both interfaces in one program. Exits with 0 if each has its own overload
// and all report to one monitor.

#import "qel/foundation.h"

#include <memory>
#include <optional>
#include <string_view>

#include "qel/measurement.h"
#include "qel/purchase_event.h"
#include "qel/receipt_matching.h"

namespace {

// Counts the messages of rejected purchases without a product.
class AppMonitor : public qel::DiagnosticsMonitor {
 public:
  int count = 0;

  void logWithLevel(int, int messageCode, std::string_view) override {
    if (messageCode == 40026) ++count;
  }
  void logWithLevel(int, int, std::string_view, const qel::DiagnosticContext&) override {}
  void logWithLevel(int, int, std::string_view, const qel::DiagnosticContext&,
                    const qel::DiagnosticContext&) override {}
};

}  // namespace

int main() {
  const auto monitor = std::make_shared<AppMonitor>();
  qel::QELMeasurement::setMonitor(monitor);
  @autoreleasepool {
    const auto event = QELInAppPurchaseEventParametersFromProductAndTransactionV2(
        nullptr, nullptr, qel::QELInAppPurchaseItemsView());
    if (event.has_value()) return 1;

    SKProduct* const product = nil;
    SKPaymentTransaction* const transaction = nil;
    NSArray<id<QELInAppPurchaseItem>>* const receipt = nil;
    NSDictionary<NSString*, id>* const dictionary =
        QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, receipt);
    if (dictionary != nil) return 1;

    const auto items =
        QELMatchingInAppPurchaseItems(qel::QELInAppPurchaseItemsView(), "monthly", std::nullopt);
    if (items.has_value()) return 1;
    if (QELMatchingInAppPurchaseItems(receipt, @"monthly", nil) != nil) return 1;

    if (![kQELParameterInAppPurchaseInvalid isEqual:@"invalid"]) return 1;
    if (qel::kQELParameterInAppPurchaseInvalid != "invalid") return 1;
  }
  return monitor->count == 2 ? 0 : 1;
}
