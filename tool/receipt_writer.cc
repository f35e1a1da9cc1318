#include "receipt_writer.h"

#include <utf8/checked.h>

#include <iterator>

#include "json_text.h"

namespace qel::tool {
namespace {

// Appends the members of an object, and its braces.
class ObjectWriter {
 public:
  explicit ObjectWriter(TextBuffer& out) : out_(out) { out_.append('{'); }

  void close() { out_.append('}'); }

  // Appends a key, after which a value must be appended.
  void key(std::string_view key) {
    if (!isFirst_) out_.append(',');
    isFirst_ = false;
    out_.append('"');
    out_.append(key);
    out_.append("\":");
  }

  // An absent value leaves its key out.
  void text(std::string_view name, const OptionalText& value) {
    if (!value.has_value()) return;
    key(name);
    appendJsonString(*value, UnpairedSurrogates::kEscape, out_);
  }

  void integer(std::string_view name, const std::optional<std::int64_t>& value) {
    if (!value.has_value()) return;
    key(name);
    out_.append(*value);
  }

  // A value in the syntax of JSON.
  void raw(std::string_view name, std::string_view value) {
    key(name);
    out_.append(value);
  }

 private:
  TextBuffer& out_;
  bool isFirst_ = true;
};

// Returns the name of a file, which can be any bytes, with U+FFFD in place of those not of UTF-8.
std::string validUtf8(std::string_view name) {
  std::string valid;
  utf8::replace_invalid(name.begin(), name.end(), std::back_inserter(valid));
  return valid;
}

std::string_view wordOf(bool flag) { return flag ? "true" : "false"; }

// Appends the fields of an entry in the keys that `events` reads.
void appendItem(const QELInAppPurchaseItem& item, ObjectWriter& object) {
  object.text("productID", item.productID);
  object.text("purchaseDateIA5String", item.purchaseDateIA5String);
  object.integer("purchaseType", item.purchaseType);
  if (item.webOrderLineItemID.has_value()) {
    object.raw("webOrderLineItemID", *item.webOrderLineItemID);
  }
  object.text("transactionID", item.transactionID);
  object.text("originalTransactionID", item.originalTransactionID);
  object.raw("isFreeTrial", wordOf(item.isFreeTrial));
  object.raw("isIntroductoryOffer", wordOf(item.isIntroductoryOffer));
}

void appendEntry(const AppReceiptEntry& entry, TextBuffer& out) {
  ObjectWriter object(out);
  appendItem(entry.item, object);
  object.integer("quantity", entry.quantity);
  object.text("originalPurchaseDate", entry.originalPurchaseDate);
  object.text("expirationDate", entry.expirationDate);
  object.text("cancellationDate", entry.cancellationDate);
  object.close();
}

void appendProduct(const std::optional<std::string>& identifier, const CatalogueProduct* product,
                   TextBuffer& out) {
  ObjectWriter object(out);
  object.text("productIdentifier", identifier);
  if (product != nullptr) {
    object.text("price", product->price);
    object.key("priceLocale");
    ObjectWriter locale(out);
    locale.text("currencyCode", product->currency);
    locale.close();
    object.text("localizedTitle", product->title);
    object.key("introductoryPrice");
    if (product->introductoryPrice.has_value()) {
      ObjectWriter offer(out);
      offer.text("price", product->introductoryPrice->price);
      offer.key("paymentMode");
      out.append(product->introductoryPrice->mode);
      offer.close();
    } else {
      out.append("null");
    }
  }
  object.close();
}

void appendTransaction(const AppReceiptEntry& entry, bool hasDate, TextBuffer& out) {
  const QELInAppPurchaseItem& item = entry.item;
  ObjectWriter object(out);
  object.text("transactionIdentifier", item.transactionID);
  if (item.originalTransactionID.has_value() && item.originalTransactionID != item.transactionID) {
    object.key("originalTransaction");
    ObjectWriter original(out);
    original.text("transactionIdentifier", item.originalTransactionID);
    original.close();
  }
  if (hasDate) object.text("transactionDate", item.purchaseDateIA5String);
  object.key("payment");
  ObjectWriter payment(out);
  // A payment is for one unit unless it says otherwise.
  payment.integer("quantity", entry.quantity.value_or(1));
  payment.close();
  object.close();
}

}  // namespace

void appendReceipt(std::string_view file, std::string_view signature, const AppReceipt& receipt,
                   TextBuffer& out) {
  ObjectWriter object(out);
  object.text("file", validUtf8(file));
  object.text("signature", signature);
  object.text("environment", receipt.environment);
  object.text("bundleIdentifier", receipt.bundleIdentifier);
  object.text("appVersion", receipt.appVersion);
  object.text("originalAppVersion", receipt.originalAppVersion);
  object.text("creationDate", receipt.creationDate);
  object.text("expirationDate", receipt.expirationDate);
  object.key("receipt");
  out.append('[');
  for (std::size_t i = 0; i < receipt.entries.size(); ++i) {
    if (i > 0) out.append(',');
    appendEntry(receipt.entries[i], out);
  }
  out.append(']');
  object.close();
  out.append('\n');
}

void appendReceiptError(std::string_view file, const ReceiptError& error, TextBuffer& out) {
  ObjectWriter object(out);
  object.text("file", validUtf8(file));
  object.key("error");
  ObjectWriter details(out);
  details.text("path", error.path);
  details.key("offset");
  out.append(error.offset);
  details.text("message", error.message);
  details.close();
  object.close();
  out.append('\n');
}

void appendPurchase(const AppReceipt& receipt, std::size_t index, const PurchaseEntries& entries,
                    const CatalogueProduct* product, TextBuffer& out) {
  const AppReceiptEntry& entry = receipt.entries[index];
  ObjectWriter object(out);
  object.text("id", entry.item.transactionID);
  object.key("product");
  appendProduct(entry.item.productID, product, out);
  object.key("transaction");
  appendTransaction(entry, entries.dateOf(index).has_value(), out);
  object.key("receipt");
  char separator = '[';
  for (const std::size_t i : entries.of(index)) {
    out.append(separator);
    separator = ',';
    ObjectWriter item(out);
    appendItem(receipt.entries[i].item, item);
    item.close();
  }
  out.append("]}\n");
}

}  // namespace qel::tool
