// Computes the event of a purchase over live objects of an app.
//
// The app's classes return texts by value, and a record returns views. A text must stay valid until
// the library's function returns, so each record keeps the texts that it returned. Make new records
// for each purchase.

#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "qel/purchase_event.h"

// The app's own classes, which know nothing of the library.
namespace shop {

class Item {
 public:
  std::string sku() const { return "monthly"; }
  std::string title() const { return "Monthly"; }
  std::string price() const { return "4.99"; }
  std::optional<std::string> offerPrice() const { return "1.99"; }
  std::string currency() const { return "EUR"; }
};

class Order {
 public:
  std::string number() const { return "1000"; }
  std::int64_t secondsSince1970() const { return 1552555613; }  // 2019-03-14T09:26:53Z
  std::int64_t count() const { return 1; }
};

}  // namespace shop

// Returns a view of `kept`. Sets it to `answer` on the first call, so that the view stays valid.
static qel::OptionalText keep(std::optional<std::string>& kept, std::string answer) {
  if (!kept.has_value()) kept = std::move(answer);
  return kept;
}

// The records refer to the app's objects, which must outlive them. A returned text is valid as long
// as the record that returned it.
//
// Threads: use a record on one thread at a time, because its const operations set the kept texts.

class OfferRecord final : public qel::StoreProductDiscount {
 public:
  explicit OfferRecord(const shop::Item& item) : item_(item) {}

  std::optional<qel::Decimal> price() const override {
    const std::optional<std::string> price = item_.offerPrice();
    if (!price.has_value()) return std::nullopt;
    return qel::Decimal::fromString(*price);
  }
  std::uint64_t paymentMode() const override { return 0; }  // pay as you go

 private:
  const shop::Item& item_;
};

class ProductRecord final : public qel::StoreProduct {
 public:
  explicit ProductRecord(const shop::Item& item) : item_(item), offer_(item) {}

  qel::OptionalText productIdentifier() const override { return keep(identifier_, item_.sku()); }
  std::optional<qel::Decimal> price() const override {
    return qel::Decimal::fromString(item_.price());
  }
  qel::OptionalText priceLocaleCurrencyCode() const override {
    return keep(currency_, item_.currency());
  }
  qel::OptionalText localizedTitle() const override { return keep(title_, item_.title()); }

  // This shop has introductory offers, and each of them has a price and a payment mode.
  bool hasDiscountClass() const override { return true; }
  bool discountsAnswerPrice() const override { return true; }
  bool discountsAnswerPaymentMode() const override { return true; }
  bool answersIntroductoryPrice() const override { return true; }
  const qel::StoreProductDiscount* introductoryPrice() const override {
    return item_.offerPrice().has_value() ? &offer_ : nullptr;
  }

 private:
  const shop::Item& item_;
  OfferRecord offer_;
  mutable std::optional<std::string> identifier_;
  mutable std::optional<std::string> currency_;
  mutable std::optional<std::string> title_;
};

class PaymentRecord final : public qel::StorePayment {
 public:
  explicit PaymentRecord(const shop::Order& order) : order_(order) {}

  std::int64_t quantity() const override { return order_.count(); }

 private:
  const shop::Order& order_;
};

class TransactionRecord final : public qel::StoreTransaction {
 public:
  explicit TransactionRecord(const shop::Order& order) : order_(order), payment_(order) {}

  qel::OptionalText transactionIdentifier() const override {
    return keep(number_, order_.number());
  }
  const qel::StoreTransaction* originalTransaction() const override { return nullptr; }
  std::optional<qel::Instant> transactionDate() const override {
    return qel::Instant(order_.secondsSince1970());
  }
  const qel::StorePayment* payment() const override { return &payment_; }

 private:
  const shop::Order& order_;
  PaymentRecord payment_;
  mutable std::optional<std::string> number_;
};

int main() {
  const shop::Item item;
  const shop::Order order;
  const qel::QELInAppPurchaseItem entry{.productID = "monthly",
                                        .transactionID = "1000",
                                        .originalTransactionID = "1000",
                                        .webOrderLineItemID = "77",
                                        .purchaseDateIA5String = "2019-03-14T09:26:53Z",
                                        .purchaseType = 3,  // auto-renewable subscription
                                        .isIntroductoryOffer = true};
  const qel::QELInAppPurchaseItems receipt = {entry};

  const ProductRecord product(item);
  const TransactionRecord transaction(order);
  const auto event =
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(&product, &transaction, receipt);
  if (!event.has_value()) return 1;
  for (const auto& [key, value] : *event) {
    std::cout << key << " = ";
    if (const auto text = value.stringValue())
      std::cout << *text << '\n';
    else
      std::cout << value.int64Value() << '\n';
  }
}
