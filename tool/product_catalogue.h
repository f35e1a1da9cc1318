// Reads a catalogue of products: what a receipt does not have.

#ifndef QEL_TOOL_PRODUCT_CATALOGUE_H_
#define QEL_TOOL_PRODUCT_CATALOGUE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "json_error.h"

namespace qel::tool {

// Prices are texts that Decimal::fromString reads.
struct CatalogueProduct {
  struct IntroductoryPrice {
    std::string price;
    // 0 pay as you go, 1 pay up front, 2 free trial.
    std::uint64_t mode = 0;
  };

  std::string price;
  std::string currency;
  std::optional<std::string> title;
  std::optional<IntroductoryPrice> introductoryPrice;
};

// Products by identifier.
using ProductCatalogue = std::unordered_map<std::string, CatalogueProduct>;

// Reads a catalogue in CSV (RFC 4180) or JSON.
//
// CSV has a header with the columns identifier, price and currency, and optionally title,
// introductoryPrice and introductoryMode, in any order. JSON is an array of objects with these
// keys. An empty text is absent. Throws JsonError; in CSV the pointer is a line and a column, such
// as "line 3, price".
ProductCatalogue readProductCatalogue(std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_PRODUCT_CATALOGUE_H_
