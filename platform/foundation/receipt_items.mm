#include "receipt_items.h"

#include "text_conversion.h"
#include "value_conversion.h"

namespace qel::foundation {
namespace {

QELInAppPurchaseItem itemFrom(id<QELInAppPurchaseItem> item) {
  QELInAppPurchaseItem result;
  result.productID = textFrom([item productID]);
  result.purchaseDateIA5String = textFrom([item purchaseDateIA5String]);
  if (NSNumber* const type = [item purchaseType]) result.purchaseType = [type intValue];
  if (NSNumber* const webOrder = [item webOrderLineItemID]) {
    result.webOrderLineItemID = textFrom([webOrder stringValue]).value_or(std::string());
  }
  result.transactionID = textFrom([item transactionID]);
  result.originalTransactionID = textFrom([item originalTransactionID]);
  result.isFreeTrial = [item isFreeTrial];
  result.isIntroductoryOffer = [item isIntroductoryOffer];
  return result;
}

}  // namespace

std::vector<QELInAppPurchaseItem> receiptItemsFrom(NSArray<id<QELInAppPurchaseItem>>* items) {
  std::vector<QELInAppPurchaseItem> result;
  result.reserve([items count]);
  for (id<QELInAppPurchaseItem> item in items) result.push_back(itemFrom(item));
  return result;
}

}  // namespace qel::foundation
