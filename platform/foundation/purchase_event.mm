#import "qel/foundation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base_parameters.h"
#include "event_builder.h"
#include "qel/event_parameters.h"
#include "qel/receipt_item.h"
#include "qel/value.h"
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

using Keys = std::array<Strong<NSString*>, kParameterKeyTexts.size()>;

// Returns the texts of the keys, in the order of ParameterKey. They are created once and never
// freed: creating them for each event took a quarter of its time.
const Keys& keys() {
  static const Keys* const result = [] {
    auto* const made = new Keys;
    std::transform(kParameterKeyTexts.begin(), kParameterKeyTexts.end(), made->begin(), stringFrom);
    return made;
  }();
  return *result;
}

Strong<NSDictionary*> dictionaryOf(const EventParameters& parameters) {
  auto result = Strong<NSMutableDictionary*>::adopt(
      [[NSMutableDictionary alloc] initWithCapacity:kParameterKeyTexts.size()]);
  for (std::size_t i = 0; i < keys().size(); ++i) {
    const QELValuePtr value = parameters.find(static_cast<ParameterKey>(i));
    if (value != nullptr) [result.get() setObject:objectOf(*value).get() forKey:keys()[i].get()];
  }
  return Strong<NSDictionary*>(result.get());
}

std::optional<EventParameters> eventOf(id product, id transaction,
                                       NSArray<id<QELInAppPurchaseItem>>* receiptItems) {
  const FoundationProduct productRecord(product);
  const FoundationTransaction transactionRecord(transaction);
  const std::optional<std::string_view> productIdentifier = checkInputs(
      product != nil ? &productRecord : nullptr, transaction != nil ? &transactionRecord : nullptr);
  if (!productIdentifier.has_value()) return std::nullopt;

  // Read here, because an exception of the list may propagate, and none may leave buildEvent.
  const std::vector<QELInAppPurchaseItem> items = receiptItemsFrom(receiptItems);
  const QELInAppPurchaseItems references(items.begin(), items.end());
  return buildEvent(*productIdentifier, productRecord, transactionRecord, references);
}

}  // namespace
}  // namespace qel::foundation

NSDictionary<NSString*, id>* QELInAppPurchaseEventParametersFromProductAndTransactionV2(
    SKProduct* product, SKPaymentTransaction* transaction,
    NSArray<id<QELInAppPurchaseItem>>* receiptItems) {
  qel::foundation::Strong<NSDictionary*> result;
  // Frees temporary objects of the store and the receipt here, even if the caller's pool lives
  // long. If an exception propagates, the caller's pool frees them.
  @autoreleasepool {
    const std::optional<qel::EventParameters> event =
        qel::foundation::eventOf(product, transaction, receiptItems);
    if (event.has_value()) result = qel::foundation::dictionaryOf(*event);
  }
  return std::move(result).toPool();
}
