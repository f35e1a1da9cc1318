#import "platform_formatter.h"

NSDictionary<NSString*, id>* qel::bench::eventThroughPlatformFormatter(
    SKProduct* product, SKPaymentTransaction* transaction,
    NSArray<id<QELInAppPurchaseItem>>* receipt) {
  return QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction, receipt);
}
