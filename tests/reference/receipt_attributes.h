// A receipt in the form of its oracle.

#ifndef QEL_TESTS_REFERENCE_RECEIPT_ATTRIBUTES_H_
#define QEL_TESTS_REFERENCE_RECEIPT_ATTRIBUTES_H_

#include "qel/app_receipt.h"
#include "receipt_oracle.h"

namespace qel::testing {

// Returns what was read, by the attributes' types.
inline OracleReceipt attributesOf(const AppReceipt& receipt) {
  const auto setText = [](OracleAttributes& attributes, int type,
                          const std::optional<std::string>& text) {
    if (text.has_value()) attributes[type] = *text;
  };
  const auto setInteger = [](OracleAttributes& attributes, int type,
                             const std::optional<std::int64_t>& integer) {
    if (integer.has_value()) attributes[type] = std::to_string(*integer);
  };
  OracleReceipt read;
  read.unknownDates = receipt.unknownDates.size();
  setText(read.attributes, 0, receipt.environment);
  setText(read.attributes, 2, receipt.bundleIdentifier);
  setText(read.attributes, 3, receipt.appVersion);
  setText(read.attributes, 12, receipt.creationDate);
  setText(read.attributes, 19, receipt.originalAppVersion);
  setText(read.attributes, 21, receipt.expirationDate);
  for (const AppReceiptEntry& entry : receipt.entries) {
    OracleAttributes& attributes = read.entries.emplace_back();
    setInteger(attributes, 1701, entry.quantity);
    setText(attributes, 1702, entry.item.productID);
    setText(attributes, 1703, entry.item.transactionID);
    setText(attributes, 1704, entry.item.purchaseDateIA5String);
    setText(attributes, 1705, entry.item.originalTransactionID);
    setText(attributes, 1706, entry.originalPurchaseDate);
    setInteger(attributes, 1707, entry.item.purchaseType);
    setText(attributes, 1708, entry.expirationDate);
    setText(attributes, 1711, entry.item.webOrderLineItemID);
    setText(attributes, 1712, entry.cancellationDate);
    if (entry.item.isFreeTrial) attributes[1713] = "1";
    if (entry.item.isIntroductoryOffer) attributes[1719] = "1";
  }
  return read;
}

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_RECEIPT_ATTRIBUTES_H_
