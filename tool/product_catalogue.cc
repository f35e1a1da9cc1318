#include "product_catalogue.h"

#include <csv.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "byte_order_mark.h"
#include "excerpt.h"
#include "json_reader.h"
#include "qel/decimal.h"

namespace qel::tool {
namespace {

// A row as it is written. An empty text is absent.
struct Row {
  std::string identifier;
  std::string price;
  std::string currency;
  std::string title;
  std::string introductoryPrice;
  std::string introductoryMode;
};

struct Column {
  std::string_view name;
  std::string Row::*text;
  bool isRequired;
};

constexpr Column kColumns[] = {
    {"identifier", &Row::identifier, true},
    {"price", &Row::price, true},
    {"currency", &Row::currency, true},
    {"title", &Row::title, false},
    {"introductoryPrice", &Row::introductoryPrice, false},
    {"introductoryMode", &Row::introductoryMode, false},
};

constexpr const char* kExpectedColumns =
    "expected the columns identifier, price and currency, and optionally title, introductoryPrice "
    "and introductoryMode";

[[noreturn]] void fail(const std::string& where, const std::string& message) {
  throw JsonError{where, message};
}

void checkPrice(const std::string& price, const std::string& where) {
  if (Decimal::fromString(price).has_value()) return;
  fail(where, "expected a price such as 4.99, found " + foundText(price));
}

std::uint64_t modeOf(const std::string& text, const std::string& where) {
  constexpr std::uint64_t kLast = 2;
  std::uint64_t mode = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, mode);
  if (error != std::errc() || stop != end || mode > kLast) {
    fail(where, "expected 0 (pay as you go), 1 (pay up front) or 2 (free trial), found " +
                    foundText(text));
  }
  return mode;
}

// Adds the product of a row. `where` is the place of the row; the place of a column is appended.
void add(Row&& row, const std::string& where, ProductCatalogue& catalogue) {
  for (const Column& column : kColumns) {
    if (column.isRequired && (row.*column.text).empty()) {
      fail(where + std::string(column.name), "expected a text, found none");
    }
  }
  checkPrice(row.price, where + "price");
  CatalogueProduct product;
  if (!row.introductoryPrice.empty()) {
    checkPrice(row.introductoryPrice, where + "introductoryPrice");
    product.introductoryPrice = {row.introductoryPrice,
                                 modeOf(row.introductoryMode, where + "introductoryMode")};
  } else if (!row.introductoryMode.empty()) {
    fail(where + "introductoryPrice", "expected a price, because there is a mode, found none");
  }
  product.price = std::move(row.price);
  product.currency = std::move(row.currency);
  if (!row.title.empty()) product.title = std::move(row.title);
  if (!catalogue.emplace(row.identifier, std::move(product)).second) {
    fail(where + "identifier",
         "expected each product once, found twice " + foundText(row.identifier));
  }
}

// --- CSV ---

// The records of a CSV text.
struct Records {
  std::vector<std::vector<std::string>> records;
  // Line of the start of each record.
  std::vector<std::size_t> lines;
  std::vector<std::string> fields;
};

void takeField(void* text, std::size_t size, void* records) {
  static_cast<Records*>(records)->fields.emplace_back(static_cast<const char*>(text), size);
}

void takeRecord(int /*terminator*/, void* data) {
  auto* const records = static_cast<Records*>(data);
  records->records.push_back(std::exchange(records->fields, {}));
}

Records readCsv(std::string_view text) {
  csv_parser parser = {};
  if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
  const std::unique_ptr<csv_parser, decltype(&csv_free)> owner(&parser, csv_free);
  Records records;
  std::size_t line = 1;
  while (!text.empty()) {
    // Line by line, so that the line of each record is known.
    const std::string_view next = text.substr(0, text.find('\n') + 1);
    const std::string_view piece = next.empty() ? text : next;
    const std::size_t parsed =
        csv_parse(&parser, piece.data(), piece.size(), takeField, takeRecord, &records);
    if (parsed != piece.size()) {
      fail("line " + std::to_string(line), "expected CSV (RFC 4180), found a misplaced quote");
    }
    records.lines.resize(records.records.size(), line);
    text.remove_prefix(piece.size());
    ++line;
  }
  if (csv_fini(&parser, takeField, takeRecord, &records) != 0) {
    fail("line " + std::to_string(line),
         "expected CSV (RFC 4180), found a quote that is not closed");
  }
  records.lines.resize(records.records.size(), line - 1);
  return records;
}

// Returns the column of each field of the header.
std::vector<const Column*> columnsOf(const std::vector<std::string>& header) {
  std::vector<const Column*> columns;
  for (const std::string& name : header) {
    const auto* const column =
        std::find_if(std::begin(kColumns), std::end(kColumns),
                     [&name](const Column& candidate) { return candidate.name == name; });
    if (column == std::end(kColumns)) {
      fail("line 1", std::string(kExpectedColumns) + ", found " + foundText(name));
    }
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
      fail("line 1", "expected each column once, found twice " + name);
    }
    columns.push_back(column);
  }
  for (const Column& column : kColumns) {
    if (column.isRequired && std::find(columns.begin(), columns.end(), &column) == columns.end()) {
      fail("line 1", std::string(kExpectedColumns) + ", found no " + std::string(column.name));
    }
  }
  return columns;
}

ProductCatalogue readCsvCatalogue(std::string_view text) {
  Records records = readCsv(text);
  if (records.records.empty()) fail("line 1", std::string(kExpectedColumns) + ", found nothing");
  const std::vector<const Column*> columns = columnsOf(records.records.front());
  ProductCatalogue catalogue;
  for (std::size_t i = 1; i < records.records.size(); ++i) {
    std::vector<std::string>& fields = records.records[i];
    const std::string where = "line " + std::to_string(records.lines[i]);
    if (fields.size() != columns.size()) {
      fail(where, "expected " + std::to_string(columns.size()) + " fields, found " +
                      std::to_string(fields.size()));
    }
    Row row;
    for (std::size_t j = 0; j < fields.size(); ++j) row.*columns[j]->text = std::move(fields[j]);
    add(std::move(row), where + ", ", catalogue);
  }
  return catalogue;
}

// --- JSON ---

std::string readText(JsonValue& value) { return std::string(value.readText().value_or("")); }

std::string readNumber(JsonValue& value) {
  return std::string(value.readNumberOrText("a number, as such or in a string").value_or(""));
}

constexpr JsonField<Row> kRowFields[] = {
    {"identifier", [](JsonValue& value, Row& row) { row.identifier = readText(value); }},
    {"price", [](JsonValue& value, Row& row) { row.price = readNumber(value); }},
    {"currency", [](JsonValue& value, Row& row) { row.currency = readText(value); }},
    {"title", [](JsonValue& value, Row& row) { row.title = readText(value); }},
    {"introductoryPrice",
     [](JsonValue& value, Row& row) { row.introductoryPrice = readNumber(value); }},
    {"introductoryMode",
     [](JsonValue& value, Row& row) { row.introductoryMode = readNumber(value); }},
};

struct Rows {
  std::vector<Row> rows;
};

constexpr JsonField<Rows> kRowsFields[] = {
    {"",
     [](JsonValue& value, Rows& rows) {
       value.readObjects(kRowFields,
                         [&rows](std::size_t) -> Row& { return rows.rows.emplace_back(); });
     }},
};

ProductCatalogue readJsonCatalogue(std::string_view text) {
  // The reader reads objects. With an empty key, JSON Pointers begin with one more slash.
  std::string object = "{\"\":" + std::string(text) + "}";
  object.reserve(object.size() + JsonReader::kPadding);
  Rows rows;
  try {
    JsonReader(UnknownKeys::kAreErrors).read(object, kRowsFields, rows);
  } catch (JsonError& error) {
    if (!error.pointer.empty()) error.pointer.erase(0, 1);
    throw;
  }
  ProductCatalogue catalogue;
  for (std::size_t i = 0; i < rows.rows.size(); ++i) {
    add(std::move(rows.rows[i]), "/" + std::to_string(i) + "/", catalogue);
  }
  return catalogue;
}

}  // namespace

ProductCatalogue readProductCatalogue(std::string_view text) {
  if (startsWithUtf16Mark(text)) {
    fail("", std::string("expected a catalogue in UTF-8, but ") + kItIsUtf16);
  }
  text = withoutByteOrderMark(text);
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  const char first = start != std::string_view::npos ? text[start] : '\0';
  if (first == '{') fail("", "expected a JSON array of products, or CSV, found a JSON object");
  return first == '[' ? readJsonCatalogue(text) : readCsvCatalogue(text);
}

}  // namespace qel::tool
