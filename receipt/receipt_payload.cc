#include "receipt_payload.h"

#include <utf8/core.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "ber_reader.h"

namespace qel::receipt {
namespace {

// The value of an attribute: the octets of its OCTET STRING, which are one encoded element. The
// functions return std::nullopt if there are no octets, or if the element is an empty string.
class AttributeValue {
 public:
  AttributeValue(const BerBytes& octets, std::vector<std::string>& unknownDates)
      : octets_(octets), unknownDates_(unknownDates) {}

  std::optional<std::int64_t> integer() const {
    const std::optional<BerElement> element = decoded();
    return element.has_value() ? std::optional(int64Of(*element)) : std::nullopt;
  }

  std::optional<std::string> integerDigits() const {
    const std::optional<BerElement> element = decoded();
    return element.has_value() ? std::optional(digitsOf(*element)) : std::nullopt;
  }

  std::optional<std::string> text() const {
    const std::optional<BerElement> element = decoded();
    if (!element.has_value()) return std::nullopt;
    if (!isText(*element)) failAsUnexpected(*element, "a UTF8String or an IA5String");
    const std::string_view text = element->content.bytes;
    if (!utf8::is_valid(text.begin(), text.end())) {
      throw BerError{element->content.offset, "expected UTF-8, found other bytes"};
    }
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
  }

  std::optional<std::string> date() const {
    const std::optional<std::string> written = text();
    if (!written.has_value()) return std::nullopt;
    std::optional<std::string> rewritten = rfc3339FromReceiptDate(*written);
    if (!rewritten.has_value()) unknownDates_.push_back(*written);
    return rewritten.has_value() ? rewritten : written;
  }

  bool flag() const { return integer().value_or(0) != 0; }

  const BerBytes& octets() const { return octets_; }

 private:
  // Returns whether the element is a string whose encoding is UTF-8 or a part of it.
  static bool isText(const BerElement& element) {
    constexpr int kUtf8String = 12;
    constexpr int kPrintableString = 19;
    constexpr int kIa5String = 22;
    constexpr int kVisibleString = 26;
    constexpr int kTags[] = {kUtf8String, kPrintableString, kIa5String, kVisibleString};
    return !element.isConstructed &&
           std::find(std::begin(kTags), std::end(kTags), element.tag) != std::end(kTags);
  }

  std::optional<BerElement> decoded() const {
    if (octets_.bytes.empty()) return std::nullopt;
    BerReader reader(octets_);
    const BerElement element = reader.next();
    reader.expectEnd();
    return element;
  }

  BerBytes octets_;
  std::vector<std::string>& unknownDates_;
};

// A type of attribute, and the function that reads its value into the record.
template <typename Record>
struct AttributeField {
  std::int64_t type;
  void (*read)(const AttributeValue& value, Record& record);
};

constexpr AttributeField<AppReceiptEntry> kEntryFields[] = {
    {1701,
     [](const AttributeValue& value, AppReceiptEntry& entry) { entry.quantity = value.integer(); }},
    {1702, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.productID = value.text(); }},
    {1703, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.transactionID = value.text(); }},
    {1704, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.purchaseDateIA5String = value.date(); }},
    {1705, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.originalTransactionID = value.text(); }},
    {1706, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.originalPurchaseDate = value.date(); }},
    {1707, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.purchaseType = value.integer(); }},
    {1708, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.expirationDate = value.date(); }},
    {1711,
     [](const AttributeValue& value, AppReceiptEntry& entry) {
       entry.item.webOrderLineItemID = value.integerDigits();
       if (entry.item.webOrderLineItemID == "0") entry.item.webOrderLineItemID.reset();
     }},
    {1712, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.cancellationDate = value.date(); }},
    {1713, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.isFreeTrial = value.flag(); }},
    {1719, [](const AttributeValue& value,
              AppReceiptEntry& entry) { entry.item.isIntroductoryOffer = value.flag(); }},
};

constexpr AttributeField<AppReceipt> kReceiptFields[] = {
    {0,
     [](const AttributeValue& value, AppReceipt& receipt) { receipt.environment = value.text(); }},
    {2, [](const AttributeValue& value,
           AppReceipt& receipt) { receipt.bundleIdentifier = value.text(); }},
    {3,
     [](const AttributeValue& value, AppReceipt& receipt) { receipt.appVersion = value.text(); }},
    {12,
     [](const AttributeValue& value, AppReceipt& receipt) { receipt.creationDate = value.date(); }},
    {19, [](const AttributeValue& value,
            AppReceipt& receipt) { receipt.originalAppVersion = value.text(); }},
    {21, [](const AttributeValue& value,
            AppReceipt& receipt) { receipt.expirationDate = value.date(); }},
};

constexpr std::int64_t kEntryType = 17;

// Throws the error of an attribute as one of the content.
[[noreturn]] void rethrowWithin(const std::string& path, const BerError& error) {
  throw ReceiptError{path, error.offset, error.message};
}

// Calls `read(type, octets)` for each attribute of the SET that `bytes` are. `path` is its place.
template <typename Read>
void readAttributes(const BerBytes& bytes, const std::string& path, const Read& read) {
  try {
    BerReader reader(bytes);
    const BerElement set = reader.next(kSet);
    reader.expectEnd();
    for (BerReader attributes(set.content); !attributes.atEnd();) {
      BerReader fields(attributes.next(kSequence).content);
      const std::int64_t type = int64Of(fields.next(kInteger));
      fields.next(kInteger);
      std::string joined;
      const BerBytes octets = octetsOf(fields.next(kOctetString), joined);
      fields.expectEnd();
      read(type, octets);
    }
  } catch (const BerError& error) {
    rethrowWithin(path, error);
  }
}

// The attributes of one SET that `fields` names. Each may occur once.
template <typename Record, std::size_t kCount>
class AttributeTable {
 public:
  explicit AttributeTable(const AttributeField<Record> (&fields)[kCount]) : fields_(fields) {}

  // Reads the attribute into the record, if its type is in the table. `path` is the place of the
  // SET.
  void read(std::int64_t type, const AttributeValue& value, const std::string& path,
            Record& record) {
    const auto* const field =
        std::find_if(std::begin(fields_), std::end(fields_),
                     [type](const auto& candidate) { return candidate.type == type; });
    if (field == std::end(fields_)) return;
    try {
      bool& isSeen = isSeen_[field - std::begin(fields_)];
      if (isSeen) {
        throw BerError{value.octets().offset, "expected each attribute once, found it twice"};
      }
      isSeen = true;
      field->read(value, record);
    } catch (const BerError& error) {
      rethrowWithin(path + "/" + std::to_string(type), error);
    }
  }

 private:
  const AttributeField<Record> (&fields_)[kCount];
  bool isSeen_[kCount] = {};
};

void readEntry(const BerBytes& octets, AppReceipt& receipt) {
  const std::string path = "/content/17/" + std::to_string(receipt.entries.size());
  if (receipt.entries.size() == kMaxReceiptEntries) {
    throw ReceiptError{
        path, octets.offset,
        "expected at most " + std::to_string(kMaxReceiptEntries) + " entries, found more"};
  }
  AppReceiptEntry& entry = receipt.entries.emplace_back();
  AttributeTable table(kEntryFields);
  readAttributes(octets, path, [&](std::int64_t type, const BerBytes& value) {
    table.read(type, AttributeValue(value, receipt.unknownDates), path, entry);
  });
}

}  // namespace

AppReceipt readPayload(std::string_view content) {
  const std::string path = "/content";
  BerBytes attributes = {content, 0};
  std::string joined;
  try {
    BerReader reader(attributes);
    const BerElement element = reader.next();
    reader.expectEnd();
    if (element.tag == kOctetString.tag) attributes = octetsOf(element, joined);
  } catch (const BerError& error) {
    rethrowWithin(path, error);
  }

  AppReceipt receipt;
  AttributeTable table(kReceiptFields);
  readAttributes(attributes, path, [&](std::int64_t type, const BerBytes& value) {
    if (type == kEntryType) {
      // An empty value holds no entry.
      if (!value.bytes.empty()) readEntry(value, receipt);
    } else {
      table.read(type, AttributeValue(value, receipt.unknownDates), path, receipt);
    }
  });
  return receipt;
}

}  // namespace qel::receipt
