// Purchase events. Start here.
//
// When the store reports a finished in-app purchase, the function below computes the parameters of
// one event from the store's records and the receipt. It keeps no state between calls.

#ifndef QEL_PURCHASE_EVENT_H_
#define QEL_PURCHASE_EVENT_H_

#include <optional>
#include <string_view>

#include "qel/event_parameters.h"
#include "qel/export.h"
#include "qel/receipt_item.h"
#include "qel/store_records.h"

namespace qel {

// Keys of an event: "invalid", "sub_convert" and "sub_renew". ParameterKey lists all of them.
QEL_EXPORT extern const std::string_view kQELParameterInAppPurchaseInvalid;
QEL_EXPORT extern const std::string_view kQELParameterIsSubscriptionConversion;
QEL_EXPORT extern const std::string_view kQELParameterIsSubscriptionRenewal;

}  // namespace qel

// Returns the parameters of the event for one purchase. Returns std::nullopt if the product, its
// identifier or the transaction is missing, or if the event would lack "price", "value" or
// "currency". Every event has these three and "product_id". A purchase that the receipt
// does not confirm is an event with "invalid".
//
// `product` and `transaction` may be null, and `receiptItems` may be empty. The operations of the
// records are called during the call only. The list must not change during the call.
//
// Rejections and decisions are logged to QELMeasurement::monitor(). Three cases are not logged: an
// event without a price, value or currency; a single entry that is not of a subscription and whose
// type is neither 0 nor 1; and an introductory offer whose price cannot be read, so that the
// product's price stays.
//
// Lets no exception through: if a record or the monitor throws, or memory runs out, the program
// ends with std::terminate.
//
// Threads: any, several calls at once, each with its own arguments. The result belongs to the
// caller.
[[nodiscard]] QEL_EXPORT std::optional<qel::EventParameters>
QELInAppPurchaseEventParametersFromProductAndTransactionV2(
    const qel::StoreProduct* product, const qel::StoreTransaction* transaction,
    qel::QELInAppPurchaseItemsView receiptItems) noexcept;

#endif  // QEL_PURCHASE_EVENT_H_
