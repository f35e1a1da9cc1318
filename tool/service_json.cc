#include "service_json.h"

#include <charconv>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "excerpt.h"
#include "json_reader.h"

namespace qel::tool {
namespace {

// A date as the service writes it: as a text, and as milliseconds since 1970-01-01T00:00:00Z.
struct ServiceDate {
  std::optional<std::string> text;
  std::optional<std::int64_t> milliseconds;
};

struct ServiceEntry {
  AppReceiptEntry entry;
  ServiceDate purchase;
  ServiceDate originalPurchase;
  ServiceDate expiration;
  ServiceDate cancellation;
};

struct ServiceReceipt {
  AppReceipt receipt;
  ServiceDate creation;
  ServiceDate expiration;
  std::vector<ServiceEntry> entries;
  bool hasEntries = false;
};

struct ServiceAnswer {
  ServiceReceipt receipt;
  std::optional<std::string> environment;
  std::vector<ServiceEntry> latestEntries;
  bool hasLatestEntries = false;
  std::optional<std::int64_t> status;
};

// Returns a text. An empty one is absent.
std::optional<std::string> readPresentText(JsonValue& value) {
  const OptionalText text = value.readText();
  return isEmpty(text) ? std::nullopt : std::optional<std::string>(*text);
}

// Returns an integer that the service writes as a string.
std::optional<std::int64_t> readInteger(JsonValue& value) {
  constexpr const char* kExpected = "an integer of 64 bits, as such or in a string";
  const OptionalText written = value.readNumberOrText(kExpected);
  if (isEmpty(written)) return std::nullopt;
  std::int64_t integer = 0;
  const char* const end = written->data() + written->size();
  const auto [stop, error] = std::from_chars(written->data(), end, integer);
  if (error != std::errc() || stop != end) {
    throw JsonError{{}, std::string("expected ") + kExpected + ", found " + foundText(*written)};
  }
  return integer;
}

// Returns the digits of an identifier. The identifier 0 is absent.
std::optional<std::string> readIdentifierDigits(JsonValue& value) {
  constexpr const char* kExpected =
      "an integer of at least 0 without leading zeros, as such or in a string";
  const OptionalText written = value.readNumberOrText(kExpected);
  if (isEmpty(written) || written == "0") return std::nullopt;
  const bool isNumber = written->find_first_not_of("0123456789") == std::string_view::npos;
  if (!isNumber || written->front() == '0') {
    throw JsonError{{}, std::string("expected ") + kExpected + ", found " + foundText(*written)};
  }
  return std::string(*written);
}

// Returns a boolean that the service writes as a string.
bool readFlag(JsonValue& value) {
  const OptionalText written = value.readText();
  if (isEmpty(written) || written == "false") return false;
  if (written == "true") return true;
  throw JsonError{{}, R"(expected "true" or "false", found )" + foundText(*written)};
}

constexpr JsonField<ServiceEntry> kEntryFields[] = {
    {"quantity",
     [](JsonValue& value, ServiceEntry& entry) { entry.entry.quantity = readInteger(value); }},
    {"product_id",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.entry.item.productID = readPresentText(value);
     }},
    {"transaction_id",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.entry.item.transactionID = readPresentText(value);
     }},
    {"original_transaction_id",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.entry.item.originalTransactionID = readPresentText(value);
     }},
    {"purchase_date",
     [](JsonValue& value, ServiceEntry& entry) { entry.purchase.text = readPresentText(value); }},
    {"purchase_date_ms",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.purchase.milliseconds = readInteger(value);
     }},
    {"original_purchase_date",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.originalPurchase.text = readPresentText(value);
     }},
    {"original_purchase_date_ms",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.originalPurchase.milliseconds = readInteger(value);
     }},
    {"expires_date",
     [](JsonValue& value, ServiceEntry& entry) { entry.expiration.text = readPresentText(value); }},
    {"expires_date_ms",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.expiration.milliseconds = readInteger(value);
     }},
    {"cancellation_date",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.cancellation.text = readPresentText(value);
     }},
    {"cancellation_date_ms",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.cancellation.milliseconds = readInteger(value);
     }},
    {"web_order_line_item_id",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.entry.item.webOrderLineItemID = readIdentifierDigits(value);
     }},
    {"is_trial_period",
     [](JsonValue& value, ServiceEntry& entry) { entry.entry.item.isFreeTrial = readFlag(value); }},
    {"is_in_intro_offer_period",
     [](JsonValue& value, ServiceEntry& entry) {
       entry.entry.item.isIntroductoryOffer = readFlag(value);
     }},
};

// Reads a list of entries. Returns whether there is one.
bool readEntries(JsonValue& value, std::vector<ServiceEntry>& entries) {
  entries.clear();
  if (value.isAbsent()) return false;
  value.readObjects(kEntryFields, [&entries](std::size_t index) -> ServiceEntry& {
    if (index == kMaxReceiptEntries) {
      throw JsonError{
          {}, "expected at most " + std::to_string(kMaxReceiptEntries) + " entries, found more"};
    }
    return entries.emplace_back();
  });
  return true;
}

constexpr JsonField<ServiceReceipt> kReceiptFields[] = {
    {"bundle_id",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.receipt.bundleIdentifier = readPresentText(value);
     }},
    {"application_version",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.receipt.appVersion = readPresentText(value);
     }},
    {"original_application_version",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.receipt.originalAppVersion = readPresentText(value);
     }},
    {"receipt_creation_date",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.creation.text = readPresentText(value);
     }},
    {"receipt_creation_date_ms",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.creation.milliseconds = readInteger(value);
     }},
    {"expiration_date",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.expiration.text = readPresentText(value);
     }},
    {"expiration_date_ms",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.expiration.milliseconds = readInteger(value);
     }},
    {"in_app",
     [](JsonValue& value, ServiceReceipt& receipt) {
       receipt.hasEntries = readEntries(value, receipt.entries);
     }},
};

constexpr JsonField<ServiceAnswer> kAnswerFields[] = {
    {"status", [](JsonValue& value, ServiceAnswer& answer) { answer.status = readInteger(value); }},
    {"environment",
     [](JsonValue& value, ServiceAnswer& answer) { answer.environment = readPresentText(value); }},
    {"receipt", [](JsonValue& value,
                   ServiceAnswer& answer) { value.readObject(kReceiptFields, answer.receipt); }},
    {"latest_receipt_info",
     [](JsonValue& value, ServiceAnswer& answer) {
       answer.hasLatestEntries = readEntries(value, answer.latestEntries);
     }},
};

std::optional<std::string> dateOf(const ServiceDate& date, AppReceipt& receipt) {
  std::optional<std::string> written;
  if (date.text.has_value()) written = rfc3339FromReceiptDate(*date.text);
  if (!written.has_value() && date.milliseconds.has_value()) {
    // Rounded down, as dates before 1970 need it.
    const bool isRoundedUp = *date.milliseconds % 1000 < 0;
    written = rfc3339FromUnixTime(*date.milliseconds / 1000 - (isRoundedUp ? 1 : 0));
  }
  if (!written.has_value() && date.text.has_value()) receipt.unknownDates.push_back(*date.text);
  return written.has_value() ? written : date.text;
}

AppReceiptEntry entryOf(ServiceEntry& read, AppReceipt& receipt) {
  AppReceiptEntry entry = std::move(read.entry);
  entry.item.purchaseDateIA5String = dateOf(read.purchase, receipt);
  entry.originalPurchaseDate = dateOf(read.originalPurchase, receipt);
  entry.expirationDate = dateOf(read.expiration, receipt);
  entry.cancellationDate = dateOf(read.cancellation, receipt);
  return entry;
}

// Puts the latest entries in place of those of the same purchases, and the others at the end.
void addLatest(std::vector<ServiceEntry>& entries, std::vector<ServiceEntry>& latest) {
  std::map<std::pair<std::string, std::string>, std::size_t> places;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const QELInAppPurchaseItem& item = entries[i].entry.item;
    if (item.transactionID.has_value()) {
      places.emplace(std::pair(*item.transactionID, item.productID.value_or("")), i);
    }
  }
  for (ServiceEntry& entry : latest) {
    const QELInAppPurchaseItem& item = entry.entry.item;
    const auto place =
        item.transactionID.has_value()
            ? places.find(std::pair(*item.transactionID, item.productID.value_or("")))
            : places.end();
    if (place != places.end()) {
      entries[place->second] = std::move(entry);
    } else {
      entries.push_back(std::move(entry));
    }
  }
}

}  // namespace

AppReceipt readServiceAnswer(std::string_view json) {
  JsonReader reader(UnknownKeys::kAreIgnored);
  ServiceAnswer answer;
  reader.read(json, kAnswerFields, answer);
  if (!answer.receipt.hasEntries && !answer.hasLatestEntries) {
    const std::string status = answer.status.has_value() ? " (the service's status is " +
                                                               std::to_string(*answer.status) + ")"
                                                         : "";
    throw JsonError{
        {}, "expected the list receipt.in_app or latest_receipt_info, found neither" + status};
  }
  addLatest(answer.receipt.entries, answer.latestEntries);

  AppReceipt receipt = std::move(answer.receipt.receipt);
  receipt.environment = std::move(answer.environment);
  receipt.creationDate = dateOf(answer.receipt.creation, receipt);
  receipt.expirationDate = dateOf(answer.receipt.expiration, receipt);
  receipt.entries.reserve(answer.receipt.entries.size());
  for (ServiceEntry& entry : answer.receipt.entries) {
    receipt.entries.push_back(entryOf(entry, receipt));
  }
  return receipt;
}

}  // namespace qel::tool
