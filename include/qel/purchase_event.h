// Purchase events: the one header to start at.
//
// When the store reports a finished in-app purchase, the function below turns what the store and
// the receipt say about it into the parameters of one event. It keeps nothing between calls.

#ifndef QEL_PURCHASE_EVENT_H_
#define QEL_PURCHASE_EVENT_H_

#include <optional>
#include <string_view>

#include "qel/event_parameters.h"
#include "qel/export.h"
#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel {

// Keys of an event that the rest of the library looks up: "invalid", "sub_convert" and "sub_renew".
QEL_EXPORT extern const std::string_view kQELParameterInAppPurchaseInvalid;
QEL_EXPORT extern const std::string_view kQELParameterIsSubscriptionConversion;
QEL_EXPORT extern const std::string_view kQELParameterIsSubscriptionRenewal;

}  // namespace qel

// Builds the parameters of the event for one purchase, or returns nothing when the records cannot
// yield a sound event.
//
// `product` and `transaction` may be null, and `receiptItems` may be empty. The store's records are
// asked during the call only; the receipt's list must not change during it. An event always holds
// "product_id", "price", "value" and "currency"; a purchase that the receipt does not confirm is an
// event with "invalid", not nothing.
//
// Rejections and decisions are reported to QELMeasurement::monitor(). Three cases are silent: an
// event that in the end lacks its price, value or currency, for which nothing is returned (a free
// trial and an offer bring a price of their own); a receipt's single entry that is neither a
// subscription nor of a type that the store names; and an offer that cannot be asked for its price,
// which leaves the product's.
//
// Lets no exception through: if a record or the monitor throws, or memory runs out, the program
// ends with std::terminate.
//
// Threads: any, several calls at once, each with its own arguments. The result belongs to the
// caller.
QEL_EXPORT std::optional<qel::EventParameters>
QELInAppPurchaseEventParametersFromProductAndTransactionV2(
    const qel::StoreProduct* product, const qel::StoreTransaction* transaction,
    qel::QELInAppPurchaseItemsView receiptItems) noexcept;

#endif  // QEL_PURCHASE_EVENT_H_
