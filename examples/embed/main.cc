#include <iostream>

#include "qel/plain_records.h"

int main() {
  const qel::PlainProduct product{.productIdentifier = "coins.100",
                                  .price = qel::Decimal::fromString("8.29"),
                                  .priceLocaleCurrencyCode = "EUR",
                                  .localizedTitle = "100 coins"};
  const qel::PlainTransaction transaction{.transactionIdentifier = "1000000512", .quantity = 2};
  const qel::QELInAppPurchaseItem entry{.productID = "coins.100",
                                        .transactionID = "1000000512",
                                        .originalTransactionID = "1000000512",
                                        .purchaseDateIA5String = "2019-03-14T09:26:53Z",
                                        .purchaseType = 1};  // consumable
  const qel::QELInAppPurchaseItems receipt = {entry};

  const auto event = qel::plainPurchaseEvent(&product, &transaction, receipt);
  if (!event.has_value()) return 1;
  for (const auto& [key, value] : *event) {
    std::cout << key << " = ";
    if (const auto text = value.stringValue())
      std::cout << *text << '\n';
    else
      std::cout << value.int64Value() << '\n';
  }
}
