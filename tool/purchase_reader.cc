#include "purchase_reader.h"

#include <algorithm>
#include <iterator>

#include "transaction_date.h"

namespace qel::tool {
namespace {

// Sets `field`, and keeps the memory of its earlier text.
void assign(std::optional<std::string>& field, const OptionalText& text) {
  if (!text.has_value()) {
    field.reset();
  } else if (field.has_value()) {
    field->assign(*text);
  } else {
    field.emplace(*text);
  }
}

std::optional<Decimal> readPrice(JsonValue& value) {
  constexpr const char* kExpected =
      "a price: a JSON number, as such or in a string, of at most 38 digits and an exponent from "
      "-128 to 127, or the string \"NaN\"";
  const OptionalText written = value.readNumberOrText(kExpected);
  if (!written.has_value()) return std::nullopt;
  const std::optional<Decimal> price = Decimal::fromString(*written);
  if (!price.has_value()) {
    throw JsonError{{}, std::string("expected ") + kExpected + ", found " + foundText(*written)};
  }
  return price;
}

std::optional<Instant> readDate(JsonValue& value) {
  const OptionalText written = value.readText();
  if (!written.has_value()) return std::nullopt;
  const std::optional<Instant> date = parseTransactionDate(*written);
  if (!date.has_value()) {
    throw JsonError{{},
                    "expected a date of the years 0001 to 9999 such as 2019-03-14T09:26:53Z or "
                    "2019-03-14T10:26:53.250+01:00, found " +
                        foundText(*written)};
  }
  return date;
}

// --- The tables of keys, each in the order in which lines usually have them ---

using Record = PurchaseReader::Record;

constexpr JsonField<PlainDiscount> kDiscountFields[] = {
    {"price", [](JsonValue& value, PlainDiscount& discount) { discount.price = readPrice(value); }},
    {"paymentMode",
     [](JsonValue& value, PlainDiscount& discount) {
       discount.paymentMode = value.readUint64().value_or(0);
     }},
};

constexpr JsonField<PlainProduct> kLocaleFields[] = {
    {"currencyCode",
     [](JsonValue& value, PlainProduct& product) {
       assign(product.priceLocaleCurrencyCode, value.readText());
     }},
};

constexpr JsonField<PlainProduct> kProductFields[] = {
    {"productIdentifier",
     [](JsonValue& value, PlainProduct& product) {
       assign(product.productIdentifier, value.readText());
     }},
    {"price", [](JsonValue& value, PlainProduct& product) { product.price = readPrice(value); }},
    {"priceLocale",
     [](JsonValue& value, PlainProduct& product) {
       if (!value.readObject(kLocaleFields, product)) product.priceLocaleCurrencyCode.reset();
     }},
    {"localizedTitle",
     [](JsonValue& value, PlainProduct& product) {
       assign(product.localizedTitle, value.readText());
     }},
    {"introductoryPrice",
     [](JsonValue& value, PlainProduct& product) {
       // Without the key, the product does not answer the operation.
       product.answersIntroductoryPrice = !value.isAbsent();
       value.readObject(kDiscountFields, product.introductoryPrice);
     }},
};

constexpr JsonField<PlainOriginalTransaction> kOriginalTransactionFields[] = {
    {"transactionIdentifier",
     [](JsonValue& value, PlainOriginalTransaction& original) {
       assign(original.transactionIdentifier, value.readText());
     }},
};

constexpr JsonField<PlainTransaction> kPaymentFields[] = {
    {"quantity",
     [](JsonValue& value, PlainTransaction& transaction) {
       transaction.quantity = value.readInt64().value_or(0);
     }},
};

constexpr JsonField<PlainTransaction> kTransactionFields[] = {
    {"transactionIdentifier",
     [](JsonValue& value, PlainTransaction& transaction) {
       assign(transaction.transactionIdentifier, value.readText());
     }},
    {"originalTransaction",
     [](JsonValue& value, PlainTransaction& transaction) {
       value.readObject(kOriginalTransactionFields, transaction.originalTransaction);
     }},
    {"transactionDate",
     [](JsonValue& value, PlainTransaction& transaction) {
       transaction.transactionDate = readDate(value);
     }},
    {"payment",
     [](JsonValue& value, PlainTransaction& transaction) {
       if (!value.readObject(kPaymentFields, transaction)) transaction.quantity.reset();
     }},
};

constexpr JsonField<QELInAppPurchaseItem> kEntryFields[] = {
    {"productID", [](JsonValue& value,
                     QELInAppPurchaseItem& item) { assign(item.productID, value.readText()); }},
    {"purchaseDateIA5String",
     [](JsonValue& value, QELInAppPurchaseItem& item) {
       assign(item.purchaseDateIA5String, value.readText());
     }},
    {"purchaseType",
     [](JsonValue& value, QELInAppPurchaseItem& item) { item.purchaseType = value.readInt64(); }},
    {"webOrderLineItemID",
     [](JsonValue& value, QELInAppPurchaseItem& item) {
       assign(item.webOrderLineItemID, value.readIntegerDigits());
     }},
    {"transactionID",
     [](JsonValue& value, QELInAppPurchaseItem& item) {
       assign(item.transactionID, value.readText());
     }},
    {"originalTransactionID",
     [](JsonValue& value, QELInAppPurchaseItem& item) {
       assign(item.originalTransactionID, value.readText());
     }},
    {"isFreeTrial",
     [](JsonValue& value, QELInAppPurchaseItem& item) {
       item.isFreeTrial = value.readBool().value_or(false);
     }},
    {"isIntroductoryOffer",
     [](JsonValue& value, QELInAppPurchaseItem& item) {
       item.isIntroductoryOffer = value.readBool().value_or(false);
     }},
};

// PlainProduct has the fields of the platform, so the platform is read into one.
constexpr JsonField<PlainProduct> kDiscountClassFields[] = {
    {"price",
     [](JsonValue& value, PlainProduct& platform) {
       platform.discountsAnswerPrice = value.readBool().value_or(true);
     }},
    {"paymentMode",
     [](JsonValue& value, PlainProduct& platform) {
       platform.discountsAnswerPaymentMode = value.readBool().value_or(true);
     }},
};

constexpr JsonField<PlainProduct> kPlatformFields[] = {
    {"SKProductDiscount",
     [](JsonValue& value, PlainProduct& platform) {
       // Null means that the class does not exist, an absent key that it does.
       platform.hasDiscountClass =
           value.readObject(kDiscountClassFields, platform) || value.isAbsent();
     }},
};

void readReceipt(JsonValue& value, Record& record) {
  QELInAppPurchaseItems& receipt = record.purchase.receipt;
  receipt.clear();
  value.readObjects(kEntryFields, [&record, &receipt](std::size_t index) -> QELInAppPurchaseItem& {
    if (index == record.entries.size()) record.entries.emplace_back();
    receipt.emplace_back(record.entries[index]);
    return record.entries[index];
  });
}

void readPlatform(JsonValue& value, Record& record) {
  record.platform = PlainProduct();
  value.readObject(kPlatformFields, record.platform);
}

constexpr JsonField<Record> kPurchaseFields[] = {
    {"id", [](JsonValue& value, Record& record) { record.purchase.id = value.readText(); }},
    {"product", [](JsonValue& value,
                   Record& record) { value.readObject(kProductFields, record.purchase.product); }},
    {"transaction",
     [](JsonValue& value, Record& record) {
       value.readObject(kTransactionFields, record.purchase.transaction);
     }},
    {"receipt", readReceipt},
    {"platform", readPlatform},
};

// Returns what to do if the error shows that the line is of another kind. Returns "" otherwise.
std::string_view adviceAbout(const JsonError& error) {
  constexpr std::string_view kServiceKeys[] = {"/environment", "/latest_receipt",
                                               "/latest_receipt_info", "/pending_renewal_info",
                                               "/status"};
  const bool isServiceKey = std::find(std::begin(kServiceKeys), std::end(kServiceKeys),
                                      error.pointer) != std::end(kServiceKeys);
  const bool isServiceReceipt =
      error.pointer == "/receipt" && error.message == "expected an array, found an object";
  if (isServiceKey || isServiceReceipt) {
    return "; qel-purchase receipt --purchases reads answers of the store's validation service";
  }
  if (error.pointer == "/file") {
    return "; qel-purchase receipt writes purchases with --purchases only";
  }
  return "";
}

}  // namespace

const Purchase& PurchaseReader::read(std::string_view line) {
  try {
    reader_.read(line, kPurchaseFields, record_);
  } catch (JsonError& error) {
    error.message += adviceAbout(error);
    throw;
  }
  if (std::optional<PlainProduct>& product = record_.purchase.product) {
    product->hasDiscountClass = record_.platform.hasDiscountClass;
    product->discountsAnswerPrice = record_.platform.discountsAnswerPrice;
    product->discountsAnswerPaymentMode = record_.platform.discountsAnswerPaymentMode;
  }
  return record_.purchase;
}

}  // namespace qel::tool
