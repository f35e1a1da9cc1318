#include "purchase_reader.h"

#include <simdjson.h>

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <deque>
#include <iterator>
#include <memory>
#include <utility>

#include "json_text.h"
#include "written_instant.h"

namespace qel::tool {
namespace {

namespace json = simdjson::ondemand;

static_assert(PurchaseReader::kPadding >= simdjson::SIMDJSON_PADDING);

// How deep an ignored value may be nested.
constexpr int kGreatestDepth = 1000;

// An entry of the receipt, as the line gives it.
struct ReadEntry {
  OptionalText productID;
  OptionalText purchaseDateIA5String;
  std::optional<std::int64_t> purchaseType;
  OptionalText webOrderLineItemID;
  OptionalText transactionID;
  OptionalText originalTransactionID;
  bool isFreeTrial = false;
  bool isIntroductoryOffer = false;
};

// Keeps the memory of the text that was there before.
void assign(std::optional<std::string>& field, const OptionalText& text) {
  if (!text.has_value()) {
    field.reset();
  } else if (field.has_value()) {
    field->assign(*text);
  } else {
    field.emplace(*text);
  }
}

void assign(QELInAppPurchaseItem& item, const ReadEntry& entry) {
  assign(item.productID, entry.productID);
  assign(item.purchaseDateIA5String, entry.purchaseDateIA5String);
  item.purchaseType = entry.purchaseType;
  assign(item.webOrderLineItemID, entry.webOrderLineItemID);
  assign(item.transactionID, entry.transactionID);
  assign(item.originalTransactionID, entry.originalTransactionID);
  item.isFreeTrial = entry.isFreeTrial;
  item.isIntroductoryOffer = entry.isIntroductoryOffer;
}

[[noreturn]] void fail(std::string message) { throw LineError{{}, std::move(message)}; }

// The start of `text`, for a message: up to 60 bytes, and no part of a character.
std::string excerpt(std::string_view text) {
  constexpr std::size_t kSize = 60;
  if (text.size() <= kSize) return std::string(text);
  std::size_t size = kSize;
  while ((text[size] & 0xC0) == 0x80) --size;
  return std::string(text.substr(0, size)) + "...";
}

[[noreturn]] void failAsBroken(const char* what) { fail(std::string("broken JSON: ") + what); }

// What JSON has in the place where simdjson found something else.
const char* expectationOf(simdjson::error_code error) {
  switch (error) {
    case simdjson::UTF8_ERROR:
      return "expected UTF-8";
    case simdjson::UNCLOSED_STRING:
      return "expected a string to end with a quote";
    case simdjson::UNESCAPED_CHARS:
      return "expected the control characters of a string to be escaped";
    case simdjson::TAPE_ERROR:
      return "expected a value, a key, a comma, a colon or a closing bracket";
    case simdjson::INCOMPLETE_ARRAY_OR_OBJECT:
      return "expected one whole object, from { to }";
    default:
      return simdjson::error_message(error);
  }
}

constexpr const char* kNoWord = "expected true, false or null";
constexpr const char* kNoNumber = "expected a number in JSON syntax";

void failIf(simdjson::error_code error) {
  if (error != simdjson::SUCCESS) failAsBroken(expectationOf(error));
}

// Gives what simdjson gave, and fails where it did.
template <typename T>
T valueOrFail(simdjson::simdjson_result<T> result) {
  T value;
  failIf(std::move(result).get(value));
  return value;
}

const char* nameOf(json::json_type type) {
  switch (type) {
    case json::json_type::array:
      return "an array";
    case json::json_type::object:
      return "an object";
    case json::json_type::number:
      return "a number";
    case json::json_type::string:
      return "a string";
    case json::json_type::boolean:
      return "a boolean";
    case json::json_type::null:
      return "null";
  }
  return "something else";
}

[[noreturn]] void failAsWrongType(const char* expected, json::json_type found) {
  fail(std::string("expected ") + expected + ", found " + nameOf(found));
}

// A step of a JSON Pointer: /key, with ~ and / written as ~0 and ~1.
std::string pointerStep(std::string_view key) {
  std::string step = "/";
  for (const char character : key) {
    if (character == '~') {
      step += "~0";
    } else if (character == '/') {
      step += "~1";
    } else {
      step.push_back(character);
    }
  }
  return step;
}

std::string_view withoutTrailingSpace(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\n\r") + 1);
}

// What reading a value needs beside the value.
struct Source {
  explicit Source(bool doesIgnore) : ignoresUnknownKeys(doesIgnore) {}

  const bool ignoresUnknownKeys;
  std::string_view line;
  // The texts that had escapes. No longer than the line in all, so the views of it stay valid.
  std::string unescaped;
};

// What the raw text of a string, without its quotes, stands for.
std::string_view unescaped(Source& source, std::string_view raw) {
  if (raw.find('\\') == std::string_view::npos) return raw;
  const std::size_t offset = source.unescaped.size();
  if (!unescapeJsonString(raw, source.unescaped)) {
    failAsBroken(R"(expected an escape that JSON has: \" \\ \/ \b \f \n \r \t or \uXXXX)");
  }
  const std::string_view all = source.unescaped;
  return all.substr(offset);
}

std::string_view keyText(Source& source, json::raw_json_string key) {
  const char* const start = key.raw();
  const char* const end = source.line.data() + source.line.size();
  const std::optional<std::string_view> raw =
      rawJsonString(std::string_view(start, static_cast<std::size_t>(end - start)));
  if (!raw.has_value()) failAsBroken(expectationOf(simdjson::UNCLOSED_STRING));
  return unescaped(source, *raw);
}

json::json_type typeOf(json::value& value) { return valueOrFail(value.type()); }

// Fails unless a value that begins like a word or a number of JSON is one.
void checkToken(json::json_type type, std::string_view token) {
  const bool isWord = token == "true" || token == "false" || token == "null";
  if (type == json::json_type::number && !isJsonNumber(token)) failAsBroken(kNoNumber);
  if (type == json::json_type::boolean && !isWord) failAsBroken(kNoWord);
  if (type == json::json_type::null && !isWord) failAsBroken(kNoWord);
}

// Takes null for a value that is absent, and fails for any other: it is not what is expected.
void takeNull(json::value& value, const char* expected) {
  const json::json_type found = typeOf(value);
  checkToken(found, withoutTrailingSpace(value.raw_json_token()));
  if (found != json::json_type::null) failAsWrongType(expected, found);
  failIf(value.is_null().error());
}

// The readers of single values leave the destination as it is for null: absent, or its default.
// They write to it in place, for the same reason that Members does.

void readString(Source& source, json::value& value, const char* expected, OptionalText& text) {
  // From the opening quote to the next token of the line.
  const std::string_view token = value.raw_json_token();
  if (!token.starts_with('"')) {
    takeNull(value, expected);
    return;
  }
  json::raw_json_string string;
  failIf(value.get_raw_json_string().get(string));
  text = unescaped(source, token.substr(1, token.rfind('"') - 1));
}

void read(Source& source, json::value& value, OptionalText& text) {
  readString(source, value, "a string", text);
}

void read(Source&, json::value& value, bool& boolean) {
  if (value.get_bool().get(boolean) == simdjson::SUCCESS) return;
  takeNull(value, "true or false");
}

std::string_view numberToken(json::value& value) {
  const std::string_view token = withoutTrailingSpace(value.raw_json_token());
  if (!isJsonNumber(token)) failAsBroken(kNoNumber);
  return token;
}

// Takes null, and fails for any other value that is no integer of the expected range.
void takeNullForInteger(json::value& value, const char* expected) {
  if (typeOf(value) == json::json_type::number) {
    fail(std::string("expected ") + expected + ", found " + excerpt(numberToken(value)));
  }
  takeNull(value, expected);
}

// `Destination` is the integer, or an optional one.
template <typename Destination>
requires std::assignable_from<Destination&, std::int64_t>
void read(Source&, json::value& value, Destination& destination) {
  std::int64_t integer = 0;
  if (value.get_int64().get(integer) == simdjson::SUCCESS) {
    destination = integer;
  } else {
    takeNullForInteger(value, "an integer from -9223372036854775808 to 9223372036854775807");
  }
}

void read(Source&, json::value& value, std::uint64_t& integer) {
  if (value.get_uint64().get(integer) == simdjson::SUCCESS) return;
  takeNullForInteger(value, "an integer from 0 to 18446744073709551615");
}

// Reads an integer of any size as its decimal digits, with a minus sign if it is negative.
void readIntegerDigits(json::value& value, OptionalText& digits) {
  constexpr const char* kExpected = "an integer";
  const std::string_view token = withoutTrailingSpace(value.raw_json_token());
  if (!isJsonNumber(token)) {
    takeNullForInteger(value, kExpected);
    return;
  }
  const bool isInteger = token.find_first_of(".eE") == std::string_view::npos;
  if (!isInteger) takeNullForInteger(value, kExpected);
  digits = token == "-0" ? "0" : token;
}

void read(Source& source, json::value& value, std::optional<Decimal>& decimal) {
  constexpr const char* kExpected =
      "a price: a JSON number, as such or in a string, of at most 38 digits and an exponent from "
      "-128 to 127, or the string \"NaN\"";
  OptionalText written;
  if (typeOf(value) == json::json_type::number) {
    written = numberToken(value);
  } else {
    readString(source, value, kExpected, written);
  }
  if (!written.has_value()) return;
  decimal = Decimal::fromString(*written);
  if (!decimal.has_value()) {
    fail(std::string("expected ") + kExpected + ", found " + excerpt(*written));
  }
}

void read(Source& source, json::value& value, std::optional<Instant>& instant) {
  OptionalText written;
  read(source, value, written);
  if (!written.has_value()) return;
  instant = instantFromText(*written);
  if (!instant.has_value()) {
    fail("expected a date such as 2019-03-14T09:26:53Z or 2019-03-14T10:26:53.250+01:00, found " +
         excerpt(*written));
  }
}

// A key of an object, and how its value is read into the record that the object stands for.
template <typename Record>
struct Field {
  std::string_view key;
  void (*read)(Source& source, json::value& value, Record& record);
};

// Reads a value into a member of a record.
template <auto kMember, typename Record>
void into(Source& source, json::value& value, Record& record) {
  read(source, value, record.*kMember);
}

// The members of an object, one after the other.
class Members {
 public:
  explicit Members(json::object& object)
      : current_(valueOrFail(object.begin())), end_(valueOrFail(object.end())) {
    load();
  }

  bool atEnd() const { return !(current_ != end_); }
  json::raw_json_string key() const { return member_.value_unsafe().key(); }
  json::value& value() { return member_.value_unsafe().value(); }

  // The value must have been read.
  void advance() {
    ++current_;
    load();
  }

 private:
  void load() {
    if (atEnd()) return;
    // Constructed in its place: copying what has just been written word by word stalls the
    // processor, for longer than the rest of reading a member takes.
    std::construct_at(&member_, *current_);
    failIf(member_.error());
  }

  json::object_iterator current_;
  json::object_iterator end_;
  simdjson::simdjson_result<json::field> member_;
};

// Whether the raw key is `key`, letter for letter.
bool isKey(json::raw_json_string raw, std::string_view key) {
  return std::memcmp(raw.raw(), key.data(), key.size()) == 0 && raw.raw()[key.size()] == '"';
}

// Reads an ignored value to its end, so that what is no JSON is found there too.
void skip(Source& source, json::value& value, int depth) {
  if (depth > kGreatestDepth) fail("expected values nested at most 1000 deep");
  switch (typeOf(value)) {
    case json::json_type::array:
      for (auto element : valueOrFail(value.get_array())) {
        json::value elementValue = valueOrFail(element);
        skip(source, elementValue, depth + 1);
      }
      break;
    case json::json_type::object:
      for (auto field : valueOrFail(value.get_object())) {
        json::field member = valueOrFail(std::move(field));
        keyText(source, member.key());
        skip(source, member.value(), depth + 1);
      }
      break;
    case json::json_type::number:
      numberToken(value);
      break;
    case json::json_type::string: {
      OptionalText text;
      read(source, value, text);
      break;
    }
    case json::json_type::boolean:
    case json::json_type::null: {
      bool boolean = false;
      read(source, value, boolean);
      break;
    }
  }
}

// Reads the values of an object's members into a record. A key may stand once.
template <const auto& kFields, typename Record>
class FieldsReader {
 public:
  FieldsReader(Source& source, json::object& object, Record& record)
      : source_(source), members_(object), record_(record) {}

  void read() { read(std::make_index_sequence<std::size(kFields)>()); }

 private:
  // Members mostly come in the order of the table. Expecting that, each is compared with one key,
  // whose size is known when this is compiled. Then come those in another order.
  template <std::size_t... kIndex>
  void read(std::index_sequence<kIndex...>) {
    ((isNext<kIndex>() ? readField<kIndex>() : void()), ...);
    while (!members_.atEnd()) {
      const std::string_view key = keyText(source_, members_.key());
      const bool isKnown =
          ((key == kFields[kIndex].key ? (readField<kIndex>(), true) : false) || ...);
      if (!isKnown) readUnknown();
    }
  }

  template <std::size_t kIndex>
  bool isNext() const {
    return !members_.atEnd() && isKey(members_.key(), kFields[kIndex].key);
  }

  template <std::size_t kIndex>
  void readField() {
    constexpr std::uint64_t kBit = std::uint64_t{1} << kIndex;
    readMember([this](json::value& value) {
      if ((seen_ & kBit) != 0) fail("duplicate key: expected each key once");
      seen_ |= kBit;
      kFields[kIndex].read(source_, value, record_);
    });
  }

  void readUnknown() {
    readMember([this](json::value& value) {
      if (!source_.ignoresUnknownKeys) failAsUnknown();
      skip(source_, value, 0);
    });
  }

  [[noreturn]] static void failAsUnknown() {
    std::string message = "unknown key: expected ";
    for (const auto& field : kFields) {
      if (&field != std::begin(kFields)) message += &field == std::end(kFields) - 1 ? " or " : ", ";
      message += field.key;
    }
    fail(std::move(message));
  }

  template <typename Read>
  void readMember(Read readValue) {
    const json::raw_json_string key = members_.key();
    try {
      readValue(members_.value());
    } catch (LineError& error) {
      error.path.insert(0, pointerStep(keyText(source_, key)));
      throw;
    }
    members_.advance();
  }

  Source& source_;
  Members members_;
  Record& record_;
  std::uint64_t seen_ = 0;
};

template <const auto& kFields, typename Record>
void readFields(Source& source, json::object object, Record& record) {
  FieldsReader<kFields, Record>(source, object, record).read();
}

// Reads an object into `record`, which must be fresh. Gives false, and leaves it so, for null.
template <const auto& kFields, typename Record>
bool readObject(Source& source, json::value& value, Record& record) {
  json::object object;
  const simdjson::error_code error = value.get_object().get(object);
  if (error == simdjson::INCORRECT_TYPE) {
    takeNull(value, "an object");
    return false;
  }
  failIf(error);
  readFields<kFields>(source, object, record);
  return true;
}

template <const auto& kFields, typename Record>
void readOptionalObject(Source& source, json::value& value, std::optional<Record>& record) {
  if (!readObject<kFields>(source, value, record.emplace())) record.reset();
}

// The tables of keys, each in the order in which lines mostly give them.

constexpr Field<ReadDiscount> kDiscountFields[] = {
    {"price", into<&ReadDiscount::readPrice>},
    {"paymentMode", into<&ReadDiscount::readPaymentMode>},
};

struct ReadLocale {
  OptionalText currencyCode;
};

constexpr Field<ReadLocale> kLocaleFields[] = {
    {"currencyCode", into<&ReadLocale::currencyCode>},
};

constexpr Field<ReadProduct> kProductFields[] = {
    {"productIdentifier", into<&ReadProduct::readProductIdentifier>},
    {"price", into<&ReadProduct::readPrice>},
    {"priceLocale",
     [](Source& source, json::value& value, ReadProduct& product) {
       ReadLocale locale;
       readObject<kLocaleFields>(source, value, locale);
       product.readCurrencyCode = locale.currencyCode;
     }},
    {"localizedTitle", into<&ReadProduct::readLocalizedTitle>},
    {"introductoryPrice",
     [](Source& source, json::value& value, ReadProduct& product) {
       product.readAnswersIntroductoryPrice = true;
       readOptionalObject<kDiscountFields>(source, value, product.readIntroductoryPrice);
     }},
};

constexpr Field<ReadOriginalTransaction> kOriginalTransactionFields[] = {
    {"transactionIdentifier", into<&ReadOriginalTransaction::readTransactionIdentifier>},
};

constexpr Field<ReadPayment> kPaymentFields[] = {
    {"quantity", into<&ReadPayment::readQuantity>},
};

constexpr Field<ReadTransaction> kTransactionFields[] = {
    {"transactionIdentifier", into<&ReadTransaction::readTransactionIdentifier>},
    {"originalTransaction",
     [](Source& source, json::value& value, ReadTransaction& transaction) {
       readOptionalObject<kOriginalTransactionFields>(source, value,
                                                      transaction.readOriginalTransaction);
     }},
    {"transactionDate", into<&ReadTransaction::readTransactionDate>},
    {"payment",
     [](Source& source, json::value& value, ReadTransaction& transaction) {
       readOptionalObject<kPaymentFields>(source, value, transaction.readPayment);
     }},
};

constexpr Field<ReadEntry> kEntryFields[] = {
    {"productID", into<&ReadEntry::productID>},
    {"purchaseDateIA5String", into<&ReadEntry::purchaseDateIA5String>},
    {"purchaseType", into<&ReadEntry::purchaseType>},
    {"webOrderLineItemID",
     [](Source&, json::value& value, ReadEntry& entry) {
       readIntegerDigits(value, entry.webOrderLineItemID);
     }},
    {"transactionID", into<&ReadEntry::transactionID>},
    {"originalTransactionID", into<&ReadEntry::originalTransactionID>},
    {"isFreeTrial", into<&ReadEntry::isFreeTrial>},
    {"isIntroductoryOffer", into<&ReadEntry::isIntroductoryOffer>},
};

constexpr Field<ReadPlatform> kDiscountClassFields[] = {
    {"price", into<&ReadPlatform::discountsAnswerPrice>},
    {"paymentMode", into<&ReadPlatform::discountsAnswerPaymentMode>},
};

constexpr Field<ReadPlatform> kPlatformFields[] = {
    {"SKProductDiscount",
     [](Source& source, json::value& value, ReadPlatform& platform) {
       platform.hasDiscountClass = readObject<kDiscountClassFields>(source, value, platform);
     }},
};

// A line, with memory for the entries of its receipt that is kept for the next one.
struct ReadLine {
  Purchase purchase;
  ReadPlatform platform;
  std::deque<QELInAppPurchaseItem> entries;
};

QELInAppPurchaseItem& entryAt(ReadLine& line, std::size_t index) {
  return index < line.entries.size() ? line.entries[index] : line.entries.emplace_back();
}

void readReceipt(Source& source, json::value& value, ReadLine& line) {
  json::array array;
  const simdjson::error_code error = value.get_array().get(array);
  if (error == simdjson::INCORRECT_TYPE) {
    takeNull(value, "an array");
    return;
  }
  failIf(error);
  QELInAppPurchaseItems& receipt = line.purchase.receipt;
  for (auto element : array) {
    try {
      json::value object = valueOrFail(element);
      ReadEntry entry;
      if (!readObject<kEntryFields>(source, object, entry)) {
        failAsWrongType("an object", json::json_type::null);
      }
      QELInAppPurchaseItem& item = entryAt(line, receipt.size());
      assign(item, entry);
      receipt.emplace_back(item);
    } catch (LineError& lineError) {
      lineError.path.insert(0, "/" + std::to_string(receipt.size()));
      throw;
    }
  }
}

constexpr Field<ReadLine> kLineFields[] = {
    {"id", [](Source& source, json::value& value,
              ReadLine& line) { read(source, value, line.purchase.id); }},
    {"product",
     [](Source& source, json::value& value, ReadLine& line) {
       readOptionalObject<kProductFields>(source, value, line.purchase.product);
     }},
    {"transaction",
     [](Source& source, json::value& value, ReadLine& line) {
       readOptionalObject<kTransactionFields>(source, value, line.purchase.transaction);
     }},
    {"receipt", readReceipt},
    {"platform", [](Source& source, json::value& value,
                    ReadLine& line) { readObject<kPlatformFields>(source, value, line.platform); }},
};

}  // namespace

class PurchaseReader::Impl {
 public:
  explicit Impl(UnknownKeys unknownKeys) : source_(unknownKeys == UnknownKeys::kAreIgnored) {}

  const Purchase& read(std::string_view line) {
    prepare(line);
    const std::size_t capacity = std::min(std::bit_ceil(line.size()), parser_.max_capacity());
    if (parser_.capacity() < line.size() && parser_.allocate(capacity) != simdjson::SUCCESS) {
      fail("the line is longer than can be read");
    }
    json::document document =
        valueOrFail(parser_.iterate(line.data(), line.size(), line.size() + kPadding));
    const json::json_type type = valueOrFail(document.type());
    if (type != json::json_type::object) {
      checkToken(type, withoutTrailingSpace(valueOrFail(document.raw_json_token())));
      failAsWrongType("an object", type);
    }
    readFields<kLineFields>(source_, valueOrFail(document.get_object()), line_);
    // Past the last token there is no location.
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
      failAsBroken("expected nothing after the object");
    }

    Purchase& purchase = line_.purchase;
    if (purchase.product.has_value()) purchase.product->platform = line_.platform;
    return purchase;
  }

 private:
  // Forgets the line before, but not its memory.
  void prepare(std::string_view line) {
    source_.line = line;
    source_.unescaped.clear();
    source_.unescaped.reserve(line.size());
    line_.purchase.id.reset();
    line_.purchase.product.reset();
    line_.purchase.transaction.reset();
    line_.purchase.receipt.clear();
    line_.platform = ReadPlatform();
  }

  Source source_;
  json::parser parser_;
  ReadLine line_;
};

PurchaseReader::PurchaseReader(UnknownKeys unknownKeys)
    : impl_(std::make_unique<Impl>(unknownKeys)) {}
PurchaseReader::~PurchaseReader() = default;

const Purchase& PurchaseReader::read(std::string_view line) { return impl_->read(line); }

}  // namespace qel::tool
