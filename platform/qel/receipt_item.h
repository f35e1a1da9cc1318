// The in-app purchase entries of a receipt.

#ifndef QEL_PLATFORM_RECEIPT_ITEM_H_
#define QEL_PLATFORM_RECEIPT_ITEM_H_

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "qel/export.h"
#include "qel/text.h"

namespace qel {

// One in-app purchase entry of an app's receipt. Entries are equal if all their fields are. Absent
// fields are equal here, so that an entry always equals itself.
struct QELInAppPurchaseItem {
  std::optional<std::string> productID = std::nullopt;

  std::optional<std::string> transactionID = std::nullopt;

  // The transaction that began the subscription. Equals transactionID on a first purchase.
  std::optional<std::string> originalTransactionID = std::nullopt;

  // The string form of the number that the store gives to each billed period of a subscription, in
  // decimal digits: "1000000045678902". If it is present, even as "0" or empty, the entry counts as
  // one of a subscription. May be any text, which enters the deduplication identifier unchanged.
  std::optional<std::string> webOrderLineItemID = std::nullopt;

  // The purchase date as the receipt has it, usually an RFC 3339 timestamp: 2019-03-14T09:26:53Z.
  // May be any text.
  std::optional<std::string> purchaseDateIA5String = std::nullopt;

  // 0 non-consumable, 1 consumable, 2 non-renewing subscription, 3 auto-renewable subscription.
  // Only the low 32 bits count, as a signed integer. Absent counts as 0.
  std::optional<std::int64_t> purchaseType = std::nullopt;

  bool isFreeTrial = false;

  // Bought at an introductory price.
  bool isIntroductoryOffer = false;

  // Written out, because clang compiles a defaulted comparison into functions of the standard
  // library that a shared library would export.
  friend bool operator==(const QELInAppPurchaseItem& left, const QELInAppPurchaseItem& right) {
    return OptionalText(left.productID) == right.productID &&
           OptionalText(left.transactionID) == right.transactionID &&
           OptionalText(left.originalTransactionID) == right.originalTransactionID &&
           OptionalText(left.webOrderLineItemID) == right.webOrderLineItemID &&
           OptionalText(left.purchaseDateIA5String) == right.purchaseDateIA5String &&
           left.purchaseType == right.purchaseType && left.isFreeTrial == right.isFreeTrial &&
           left.isIntroductoryOffer == right.isIntroductoryOffer;
  }
};

// Returns the fields of `item` that are present, and the flags that are set, for people to read:
// {productID: monthly, transactionID: 2000, purchaseType: 3, isFreeTrial}
[[nodiscard]] QEL_EXPORT std::string toString(const QELInAppPurchaseItem& item);

template <typename Traits>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                             const QELInAppPurchaseItem& item) {
  return out << toString(item);
}

// Lists refer to entries of the caller, who keeps them alive and unchanged while a list is in use.
// An entry can be in a list more than once.
using QELInAppPurchaseItemRef = std::reference_wrapper<const QELInAppPurchaseItem>;
using QELInAppPurchaseItems = std::vector<QELInAppPurchaseItemRef>;

// A list for reading. An empty span stands for an absent list too.
using QELInAppPurchaseItemsView = std::span<const QELInAppPurchaseItemRef>;

}  // namespace qel

#endif  // QEL_PLATFORM_RECEIPT_ITEM_H_
