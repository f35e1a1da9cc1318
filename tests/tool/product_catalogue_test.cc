#include "product_catalogue.h"

#include <gtest/gtest.h>

#include <string>

namespace qel::tool {
namespace {

using std::nullopt;

// Returns "WHERE: MESSAGE".
std::string failureOf(std::string_view text) {
  try {
    readProductCatalogue(text);
  } catch (const JsonError& error) {
    return error.pointer + ": " + error.message;
  }
  return "no failure";
}

void expectSample(const ProductCatalogue& catalogue) {
  ASSERT_EQ(catalogue.size(), 2U);
  const CatalogueProduct& monthly = catalogue.at("monthly");
  EXPECT_EQ(monthly.price, "4.99");
  EXPECT_EQ(monthly.currency, "EUR");
  EXPECT_EQ(monthly.title, "Monthly, \"best\"");
  ASSERT_TRUE(monthly.introductoryPrice.has_value());
  EXPECT_EQ(monthly.introductoryPrice->price, "0");
  EXPECT_EQ(monthly.introductoryPrice->mode, 2U);
  const CatalogueProduct& coins = catalogue.at("coins");
  EXPECT_EQ(coins.price, "0.990");
  EXPECT_EQ(coins.title, nullopt);
  EXPECT_FALSE(coins.introductoryPrice.has_value());
}

TEST(ProductCatalogueTest, ReadsCsv) {
  const std::string text =
      "identifier,price,currency,title,introductoryPrice,introductoryMode\n"
      "monthly,4.99,EUR,\"Monthly, \"\"best\"\"\",0,2\n"
      "coins,0.990,EUR,,,\n";
  expectSample(readProductCatalogue(text));
  expectSample(readProductCatalogue("\xEF\xBB\xBF" + text));
  expectSample(readProductCatalogue(text.substr(0, text.size() - 1)));
  std::string withCarriageReturns;
  for (const char c : text) withCarriageReturns += c == '\n' ? "\r\n" : std::string(1, c);
  expectSample(readProductCatalogue(withCarriageReturns));
}

TEST(ProductCatalogueTest, ColumnsOfCsvAreInAnyOrder) {
  const ProductCatalogue catalogue = readProductCatalogue("currency,identifier,price\nEUR,a,1\n");
  EXPECT_EQ(catalogue.at("a").price, "1");
  EXPECT_TRUE(readProductCatalogue("currency,identifier,price\n").empty());
}

TEST(ProductCatalogueTest, ReadsJson) {
  expectSample(readProductCatalogue(
      R"( [{"identifier":"monthly","price":4.99,"currency":"EUR","title":"Monthly, \"best\"",
            "introductoryPrice":0,"introductoryMode":2},
           {"identifier":"coins","price":"0.990","currency":"EUR","title":null}])"));
  EXPECT_TRUE(readProductCatalogue("[]").empty());
}

TEST(ProductCatalogueTest, ErrorsOfCsvNameTheLineAndTheColumn) {
  const std::string header = "identifier,price,currency\n";
  const std::string expected =
      "line 1: expected the columns identifier, price and currency, and optionally title, "
      "introductoryPrice and introductoryMode";
  EXPECT_EQ(failureOf(""), expected + ", found nothing");
  EXPECT_EQ(failureOf("identifier,price\n"), expected + ", found no currency");
  EXPECT_EQ(failureOf("identifier,cost,currency\n"), expected + ", found cost");
  EXPECT_EQ(failureOf("identifier,price,currency,price\n"),
            "line 1: expected each column once, found twice price");
  EXPECT_EQ(failureOf(header + "a,1,EUR\nb,2\n"), "line 3: expected 3 fields, found 2");
  EXPECT_EQ(failureOf(header + "a,cheap,EUR\n"),
            "line 2, price: expected a price such as 4.99, found cheap");
  EXPECT_EQ(failureOf(header + "a,1,\n"), "line 2, currency: expected a text, found none");
  EXPECT_EQ(failureOf(header + "a,1,EUR\na,2,EUR\n"),
            "line 3, identifier: expected each product once, found twice a");
  EXPECT_EQ(failureOf(header + "a,1,E\"UR\n"),
            "line 2: expected CSV (RFC 4180), found a misplaced quote");
  EXPECT_EQ(failureOf(header + "a,1,\"EUR\n"),
            "line 3: expected CSV (RFC 4180), found a quote that is not closed");
}

TEST(ProductCatalogueTest, AnIntroductoryPriceNeedsAMode) {
  const std::string header = "identifier,price,currency,introductoryPrice,introductoryMode\n";
  const std::string mode =
      "line 2, introductoryMode: expected 0 (pay as you go), 1 (pay up front) or 2 (free trial), "
      "found ";
  EXPECT_EQ(failureOf(header + "a,1,EUR,0.5,\n"), mode + "\"\"");
  EXPECT_EQ(failureOf(header + "a,1,EUR,0.5,3\n"), mode + "3");
  EXPECT_EQ(failureOf(header + "a,1,EUR,0.5,free\n"), mode + "free");
  EXPECT_EQ(failureOf(header + "a,1,EUR,x,0\n"),
            "line 2, introductoryPrice: expected a price such as 4.99, found x");
  EXPECT_EQ(failureOf(header + "a,1,EUR,,0\n"),
            "line 2, introductoryPrice: expected a price, because there is a mode, found none");
}

TEST(ProductCatalogueTest, OtherTextsAreNamed) {
  EXPECT_EQ(failureOf(R"({"identifier":"a","price":1,"currency":"EUR"})"),
            ": expected a JSON array of products, or CSV, found a JSON object");
  for (const char* const mark : {"\xFF\xFE", "\xFE\xFF"}) {
    EXPECT_EQ(failureOf(std::string(mark) + "a"),
              ": expected a catalogue in UTF-8, but it is UTF-16 or UTF-32 text; convert it to "
              "UTF-8, for example with iconv -f UTF-16 -t UTF-8, or -f UTF-32");
  }
}

TEST(ProductCatalogueTest, ErrorsOfJsonHaveAPointer) {
  EXPECT_EQ(failureOf(R"([{"identifier":"a","price":"1","currency":"EUR"},{"identifier":3}])"),
            "/1/identifier: expected a string, found a number");
  EXPECT_EQ(failureOf(R"([{"identifier":"a","price":"1"}])"),
            "/0/currency: expected a text, found none");
  EXPECT_NE(failureOf("[{"), "no failure");
  EXPECT_NE(failureOf("[]]"), "no failure");
  EXPECT_NE(failureOf(R"([{"name":"a"}])"), "no failure");
}

}  // namespace
}  // namespace qel::tool
