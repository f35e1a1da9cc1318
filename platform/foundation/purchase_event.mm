#import "qel/foundation.h"

#include <optional>
#include <utility>
#include <vector>

#include "qel/purchase_event.h"
#include "receipt_items.h"
#include "store_adapters.h"
#include "strong.h"
#include "text_conversion.h"

NSString* const kQELParameterInAppPurchaseInvalid = @"invalid";
NSString* const kQELParameterIsSubscriptionConversion = @"sub_convert";
NSString* const kQELParameterIsSubscriptionRenewal = @"sub_renew";

namespace qel::foundation {
namespace {

Strong<id> objectOf(const QELValue& value) {
  if (const OptionalText text = value.stringValue()) return Strong<id>(stringFrom(*text).get());
  return Strong<id>([NSNumber numberWithLongLong:value.int64Value()]);
}

Strong<NSDictionary*> dictionaryOf(const EventParameters& parameters) {
  auto result = Strong<NSMutableDictionary*>::adopt(
      [[NSMutableDictionary alloc] initWithCapacity:kParameterKeyTexts.size()]);
  for (const EventParameters::Entry& entry : parameters) {
    [result.get() setObject:objectOf(entry.value).get() forKey:stringFrom(entry.key).get()];
  }
  return Strong<NSDictionary*>(result.get());
}

std::optional<EventParameters> eventOf(id product, id transaction,
                                       NSArray<id<QELInAppPurchaseItem>>* receiptItems) {
  // The list is walked here and not by the component, which lets no exception through.
  const std::vector<QELInAppPurchaseItem> items = receiptItemsFrom(receiptItems);
  const QELInAppPurchaseItems references(items.begin(), items.end());
  const FoundationProduct productRecord(product);
  const FoundationTransaction transactionRecord(transaction);
  return QELInAppPurchaseEventParametersFromProductAndTransactionV2(
      product != nil ? &productRecord : nullptr, transaction != nil ? &transactionRecord : nullptr,
      references);
}

}  // namespace
}  // namespace qel::foundation

NSDictionary<NSString*, id>* QELInAppPurchaseEventParameters(
    SKProduct* product, SKPaymentTransaction* transaction,
    NSArray<id<QELInAppPurchaseItem>>* receiptItems) {
  qel::foundation::Strong<NSDictionary*> result;
  // What the store's objects and the receipt hand out ends here, however long the caller's own pool
  // lives. When an exception goes through, the caller's pool takes it over.
  @autoreleasepool {
    const std::optional<qel::EventParameters> event =
        qel::foundation::eventOf(product, transaction, receiptItems);
    if (event.has_value()) result = qel::foundation::dictionaryOf(*event);
  }
  return std::move(result).toPool();
}
