#include "purchase_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "padded_line.h"

namespace qel::tool {
namespace {

using testing::PaddedLine;

constexpr std::int64_t kLeastSigned = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kGreatestSigned = std::numeric_limits<std::int64_t>::max();

// `text` with `value` in place of its only @.
std::string withValue(std::string_view text, std::string_view value) {
  std::string line(text);
  return line.replace(line.find('@'), 1, value);
}

std::string inQuotes(std::string_view text) { return withValue(R"("@")", text); }

// Reads lines, and keeps the last one in memory for as long as its purchase is looked at.
class Reader {
 public:
  explicit Reader(UnknownKeys unknownKeys = UnknownKeys::kAreErrors) : reader_(unknownKeys) {}

  const Purchase& read(std::string_view line, char padding = ' ') {
    line_ = PaddedLine(line, padding);
    return reader_.read(line_.view());
  }

  // The path and the message of the error that `line` gives, a space between them. Without the
  // column, which json_fault_test.cc tests.
  std::string errorOf(std::string_view line, char padding = ' ') {
    static const std::regex kColumn("^broken JSON at column [0-9]+:");
    try {
      read(line, padding);
    } catch (const JsonError& error) {
      return error.pointer + " " + std::regex_replace(error.message, kColumn, "broken JSON:");
    }
    return "(no error)";
  }

 private:
  PurchaseReader reader_;
  PaddedLine line_{""};
};

std::string errorOf(std::string_view line) { return Reader().errorOf(line); }

// Whether two decimals are the same number, as far as a double and the product with a million tell.
double asDouble(const std::optional<Decimal>& decimal) { return decimal.value().doubleValue(); }

// --- A whole purchase ---

constexpr std::string_view kWholePurchase =
    R"({"id":"one","product":{"productIdentifier":"monthly","price":"4.99",)"
    R"("priceLocale":{"currencyCode":"EUR"},"localizedTitle":"Monthly",)"
    R"("introductoryPrice":{"price":1.99,"paymentMode":1}},)"
    R"("transaction":{"transactionIdentifier":"2000",)"
    R"("originalTransaction":{"transactionIdentifier":"1000"},)"
    R"("transactionDate":"2019-03-14T10:26:53.250+01:00","payment":{"quantity":3}},)"
    R"("receipt":[{"productID":"monthly","purchaseDateIA5String":"2019-03-14T09:26:53Z",)"
    R"("purchaseType":3,"webOrderLineItemID":77,"transactionID":"2000",)"
    R"("originalTransactionID":"1000","isFreeTrial":true,"isIntroductoryOffer":true},{}],)"
    R"("platform":{"SKProductDiscount":{"price":true,"paymentMode":false}}})";

void expectWholePurchase(const Purchase& purchase) {
  EXPECT_EQ(purchase.id, "one");

  const std::optional<PlainProduct>& product = purchase.product;
  ASSERT_TRUE(product.has_value());
  EXPECT_EQ(product->productIdentifier, "monthly");
  EXPECT_EQ(asDouble(product->price), 4.99);
  EXPECT_EQ(product->priceLocaleCurrencyCode, "EUR");
  EXPECT_EQ(product->localizedTitle, "Monthly");
  EXPECT_TRUE(product->hasDiscountClass);
  EXPECT_TRUE(product->discountsAnswerPrice);
  EXPECT_FALSE(product->discountsAnswerPaymentMode);
  EXPECT_TRUE(product->answersIntroductoryPrice);
  ASSERT_TRUE(product->introductoryPrice.has_value());
  EXPECT_EQ(asDouble(product->introductoryPrice->price), 1.99);
  EXPECT_EQ(product->introductoryPrice->paymentMode, 1U);

  const std::optional<PlainTransaction>& transaction = purchase.transaction;
  ASSERT_TRUE(transaction.has_value());
  EXPECT_EQ(transaction->transactionIdentifier, "2000");
  ASSERT_TRUE(transaction->originalTransaction.has_value());
  EXPECT_EQ(transaction->originalTransaction->transactionIdentifier, "1000");
  // `date -u -d 2019-03-14T09:26:53Z +%s`
  EXPECT_EQ(transaction->transactionDate, (Instant{1552555613, 250000000}));
  ASSERT_TRUE(transaction->quantity.has_value());
  EXPECT_EQ(transaction->quantity, 3);

  ASSERT_EQ(purchase.receipt.size(), 2U);
  QELInAppPurchaseItem entry;
  entry.productID = "monthly";
  entry.purchaseDateIA5String = "2019-03-14T09:26:53Z";
  entry.purchaseType = 3;
  entry.webOrderLineItemID = "77";
  entry.transactionID = "2000";
  entry.originalTransactionID = "1000";
  entry.isFreeTrial = true;
  entry.isIntroductoryOffer = true;
  EXPECT_EQ(purchase.receipt[0].get(), entry);
  EXPECT_EQ(purchase.receipt[1].get(), QELInAppPurchaseItem());
}

void expectEmptyPurchase(const Purchase& purchase) {
  EXPECT_EQ(purchase.id, std::nullopt);
  EXPECT_FALSE(purchase.product.has_value());
  EXPECT_FALSE(purchase.transaction.has_value());
  EXPECT_TRUE(purchase.receipt.empty());
}

TEST(PurchaseReaderTest, LinesOfAnotherKindAreErrorsWithAdvice) {
  const std::string unknownKey =
      " unknown key: expected id, product, transaction, receipt or platform";
  const std::string service =
      "; qel-purchase receipt --purchases reads answers of the store's validation service";
  Reader reader;
  EXPECT_EQ(reader.errorOf(R"({"status":0,"receipt":{}})"), "/status" + unknownKey + service);
  EXPECT_EQ(reader.errorOf(R"({"latest_receipt_info":[]})"),
            "/latest_receipt_info" + unknownKey + service);
  EXPECT_EQ(reader.errorOf(R"({"receipt":{"in_app":[]}})"),
            "/receipt expected an array, found an object" + service);
  EXPECT_EQ(reader.errorOf(R"({"file":"a.der","receipt":[]})"),
            "/file" + unknownKey + "; qel-purchase receipt writes purchases with --purchases only");
  EXPECT_EQ(reader.errorOf(R"({"name":"a"})"), "/name" + unknownKey);
  EXPECT_EQ(reader.errorOf(R"({"receipt":0})"), "/receipt expected an array, found a number");
}

TEST(PurchaseReaderTest, ReadsEveryKey) {
  Reader reader;
  expectWholePurchase(reader.read(kWholePurchase));
}

TEST(PurchaseReaderTest, ReadsKeysInAnyOrder) {
  Reader reader;
  expectWholePurchase(reader.read(
      R"({"platform":{"SKProductDiscount":{"paymentMode":false,"price":true}},)"
      R"("receipt":[{"isIntroductoryOffer":true,"isFreeTrial":true,)"
      R"("originalTransactionID":"1000","transactionID":"2000","webOrderLineItemID":77,)"
      R"("purchaseType":3,"purchaseDateIA5String":"2019-03-14T09:26:53Z","productID":"monthly"},{}],)"
      R"("transaction":{"payment":{"quantity":3},"transactionDate":"2019-03-14T09:26:53.25Z",)"
      R"("originalTransaction":{"transactionIdentifier":"1000"},"transactionIdentifier":"2000"},)"
      R"("product":{"introductoryPrice":{"paymentMode":1,"price":"1.99"},)"
      R"("localizedTitle":"Monthly","priceLocale":{"currencyCode":"EUR"},"price":4.99,)"
      R"("productIdentifier":"monthly"},"id":"one"})"));
}

TEST(PurchaseReaderTest, ReadsKeysThatAreWrittenWithEscapes) {
  Reader reader;
  const Purchase& purchase = reader.read(
      R"({"\u0069d":"one","pr\u006fduct":{"\u0070rice":"4.99"},"receipt":[{"productI\u0044":"a"}]})");
  EXPECT_EQ(purchase.id, "one");
  EXPECT_EQ(asDouble(purchase.product->price), 4.99);
  EXPECT_EQ(purchase.receipt[0].get().productID, "a");
}

TEST(PurchaseReaderTest, ReadsWhiteSpaceAnywhereBetweenTokens) {
  Reader reader;
  const Purchase& purchase = reader.read(
      " \t\r{ \"id\" : \"one\" ,\t\"transaction\" :{\"payment\": { \"quantity\" : 3 } } ,"
      "\"receipt\" : [ { \"purchaseType\" : 3 , \"isFreeTrial\" : true } , { } ] } \t\r");
  EXPECT_EQ(purchase.id, "one");
  EXPECT_EQ(purchase.transaction->quantity, 3);
  ASSERT_EQ(purchase.receipt.size(), 2U);
  EXPECT_EQ(purchase.receipt[0].get().purchaseType, 3);
  EXPECT_TRUE(purchase.receipt[0].get().isFreeTrial);
}

TEST(PurchaseReaderTest, DoesNotReadWhatFollowsTheLineInMemory) {
  for (const char padding : {'0', '}', ']', '"', '\\', ' ', '\0', '\xFF'}) {
    Reader reader;
    expectWholePurchase(reader.read(kWholePurchase, padding));
    EXPECT_NE(reader.errorOf(R"({"transaction":{"payment":{"quantity":1)", padding), "(no error)")
        << padding;
    EXPECT_NE(reader.errorOf(R"({"id":"one)", padding), "(no error)") << padding;
    EXPECT_NE(reader.errorOf(R"({"id":"one")", padding), "(no error)") << padding;
  }
}

TEST(PurchaseReaderTest, ForgetsThePurchaseBefore) {
  Reader reader;
  reader.read(kWholePurchase);
  expectEmptyPurchase(reader.read("{}"));
  reader.read(kWholePurchase);
  const Purchase& purchase =
      reader.read(R"({"product":{},"transaction":{},"receipt":[{"productID":"b"},{}]})");
  EXPECT_EQ(purchase.product->productIdentifier, std::nullopt);
  EXPECT_EQ(purchase.product->price, std::nullopt);
  EXPECT_FALSE(purchase.product->answersIntroductoryPrice);
  EXPECT_TRUE(purchase.product->discountsAnswerPaymentMode);
  EXPECT_EQ(purchase.transaction->quantity, std::nullopt);
  QELInAppPurchaseItem entry;
  entry.productID = "b";
  EXPECT_EQ(purchase.receipt[0].get(), entry);
  EXPECT_EQ(purchase.receipt[1].get(), QELInAppPurchaseItem());
}

TEST(PurchaseReaderTest, ReadsOnAfterAnError) {
  Reader reader;
  EXPECT_NE(reader.errorOf(R"({"id":"x","receipt":[{"productID":"a"},{"productID":1}]})"),
            "(no error)");
  expectEmptyPurchase(reader.read("{}"));
  expectWholePurchase(reader.read(kWholePurchase));
}

TEST(PurchaseReaderTest, ReadsALineMuchLongerThanTheOneBefore) {
  Reader reader;
  reader.read("{}");
  const std::string title(1000000, 'x');
  const Purchase& purchase = reader.read(withValue(R"({"product":{"localizedTitle":"@"}})", title));
  EXPECT_EQ(purchase.product->localizedTitle, title);
}

// --- Absent values ---

TEST(PurchaseReaderTest, EveryKeyOfALineMayBeLeftOut) {
  Reader reader;
  expectEmptyPurchase(reader.read("{}"));
}

TEST(PurchaseReaderTest, NullIsAbsentForEveryKeyOfALine) {
  Reader reader;
  expectEmptyPurchase(reader.read(
      R"({"id":null,"product":null,"transaction":null,"receipt":null,"platform":null})"));
}

TEST(PurchaseReaderTest, AnEmptyProductAnswersNothing) {
  Reader reader;
  const std::optional<PlainProduct>& product = reader.read(R"({"product":{}})").product;
  ASSERT_TRUE(product.has_value());
  EXPECT_EQ(product->productIdentifier, std::nullopt);
  EXPECT_EQ(product->price, std::nullopt);
  EXPECT_EQ(product->priceLocaleCurrencyCode, std::nullopt);
  EXPECT_EQ(product->localizedTitle, std::nullopt);
}

TEST(PurchaseReaderTest, NullIsAbsentForEveryKeyOfAProduct) {
  Reader reader;
  const std::optional<PlainProduct>& product =
      reader
          .read(R"({"product":{"productIdentifier":null,"price":null,"priceLocale":null,)"
                R"("localizedTitle":null}})")
          .product;
  ASSERT_TRUE(product.has_value());
  EXPECT_EQ(product->productIdentifier, std::nullopt);
  EXPECT_EQ(product->price, std::nullopt);
  EXPECT_EQ(product->priceLocaleCurrencyCode, std::nullopt);
  EXPECT_EQ(product->localizedTitle, std::nullopt);
}

TEST(PurchaseReaderTest, ALocaleMayHaveNoCurrencyCode) {
  Reader reader;
  for (const char* const locale : {"{}", R"({"currencyCode":null})"}) {
    const Purchase& purchase = reader.read(withValue(R"({"product":{"priceLocale":@}})", locale));
    EXPECT_EQ(purchase.product->priceLocaleCurrencyCode, std::nullopt) << locale;
  }
}

TEST(PurchaseReaderTest, AnEmptyTextIsPresent) {
  Reader reader;
  const Purchase& purchase =
      reader.read(R"({"id":"","product":{"productIdentifier":"","localizedTitle":"",)"
                  R"("priceLocale":{"currencyCode":""}},"receipt":[{"transactionID":""}]})");
  EXPECT_EQ(purchase.id, "");
  EXPECT_EQ(purchase.product->productIdentifier, "");
  EXPECT_EQ(purchase.product->localizedTitle, "");
  EXPECT_EQ(purchase.product->priceLocaleCurrencyCode, "");
  EXPECT_EQ(purchase.receipt[0].get().transactionID, "");
}

TEST(PurchaseReaderTest, EveryKeyOfATransactionMayBeLeftOutOrNull) {
  Reader reader;
  for (const char* const value :
       {"{}", R"({"transactionIdentifier":null,"originalTransaction":null,)"
              R"("transactionDate":null,"payment":null})"}) {
    const std::optional<PlainTransaction>& transaction =
        reader.read(withValue(R"({"transaction":@})", value)).transaction;
    ASSERT_TRUE(transaction.has_value());
    EXPECT_EQ(transaction->transactionIdentifier, std::nullopt);
    EXPECT_FALSE(transaction->originalTransaction.has_value());
    EXPECT_EQ(transaction->transactionDate, std::nullopt);
    EXPECT_EQ(transaction->quantity, std::nullopt);
  }
}

TEST(PurchaseReaderTest, AnOriginalTransactionAndAPaymentMayBeEmpty) {
  Reader reader;
  for (const char* const value :
       {R"({"originalTransaction":{},"payment":{}})",
        R"({"originalTransaction":{"transactionIdentifier":null},"payment":{"quantity":null}})"}) {
    const std::optional<PlainTransaction>& transaction =
        reader.read(withValue(R"({"transaction":@})", value)).transaction;
    ASSERT_TRUE(transaction->originalTransaction.has_value());
    EXPECT_EQ(transaction->originalTransaction->transactionIdentifier, std::nullopt);
    ASSERT_TRUE(transaction->quantity.has_value());
    EXPECT_EQ(transaction->quantity, 0);
  }
}

TEST(PurchaseReaderTest, NullIsAbsentForEveryKeyOfAnEntry) {
  Reader reader;
  const Purchase& purchase = reader.read(
      R"({"receipt":[{"productID":null,"purchaseDateIA5String":null,"purchaseType":null,)"
      R"("webOrderLineItemID":null,"transactionID":null,"originalTransactionID":null,)"
      R"("isFreeTrial":null,"isIntroductoryOffer":null}]})");
  ASSERT_EQ(purchase.receipt.size(), 1U);
  EXPECT_EQ(purchase.receipt[0].get(), QELInAppPurchaseItem());
}

TEST(PurchaseReaderTest, ADateOfAnEntryMayBeAnyText) {
  Reader reader;
  const Purchase& purchase =
      reader.read(R"({"receipt":[{"purchaseDateIA5String":"last \u0000week"}]})");
  EXPECT_EQ(purchase.receipt[0].get().purchaseDateIA5String, std::string("last \0week", 10));
}

TEST(PurchaseReaderTest, AReceiptMayBeEmpty) {
  Reader reader;
  EXPECT_TRUE(reader.read(R"({"receipt":[]})").receipt.empty());
}

// --- Introductory offers and what the platform knows of them ---

TEST(PurchaseReaderTest, WithoutTheKeyAProductDoesNotAnswerIntroductoryPrice) {
  Reader reader;
  const Purchase& purchase = reader.read(R"({"product":{}})");
  EXPECT_FALSE(purchase.product->answersIntroductoryPrice);
  EXPECT_FALSE(purchase.product->introductoryPrice.has_value());
}

TEST(PurchaseReaderTest, WithNullAProductAnswersIntroductoryPriceWithNothing) {
  Reader reader;
  const Purchase& purchase = reader.read(R"({"product":{"introductoryPrice":null}})");
  EXPECT_TRUE(purchase.product->answersIntroductoryPrice);
  EXPECT_FALSE(purchase.product->introductoryPrice.has_value());
}

TEST(PurchaseReaderTest, AnOfferMayHaveNoPriceAndItsPaymentModeIsThenZero) {
  Reader reader;
  for (const char* const offer : {"{}", R"({"price":null,"paymentMode":null})"}) {
    const Purchase& purchase =
        reader.read(withValue(R"({"product":{"introductoryPrice":@}})", offer));
    EXPECT_TRUE(purchase.product->answersIntroductoryPrice);
    ASSERT_TRUE(purchase.product->introductoryPrice.has_value());
    EXPECT_EQ(purchase.product->introductoryPrice->price, std::nullopt);
    EXPECT_EQ(purchase.product->introductoryPrice->paymentMode, 0U);
  }
}

struct PlatformCase {
  const char* name;
  const char* keys;  // of the line, beside the product
  bool hasDiscountClass;
  bool discountsAnswerPrice;
  bool discountsAnswerPaymentMode;
};

std::ostream& operator<<(std::ostream& out, const PlatformCase& platform) {
  return out << platform.keys;
}

class PlatformTest : public ::testing::TestWithParam<PlatformCase> {};

TEST_P(PlatformTest, TellsWhatDiscountRecordsAnswer) {
  const PlatformCase& expected = GetParam();
  Reader reader;
  for (const char* const line : {R"({"product":{}@})", R"({"id":"x"@,"product":{}})"}) {
    const std::optional<PlainProduct>& product =
        reader.read(withValue(line, expected.keys)).product;
    ASSERT_TRUE(product.has_value());
    EXPECT_EQ(product->hasDiscountClass, expected.hasDiscountClass);
    if (!expected.hasDiscountClass) continue;
    EXPECT_EQ(product->discountsAnswerPrice, expected.discountsAnswerPrice);
    EXPECT_EQ(product->discountsAnswerPaymentMode, expected.discountsAnswerPaymentMode);
  }
}

INSTANTIATE_TEST_SUITE_P(
    PurchaseReader, PlatformTest,
    ::testing::Values(
        PlatformCase{"NoKey", "", true, true, true},
        PlatformCase{"Null", R"(,"platform":null)", true, true, true},
        PlatformCase{"Empty", R"(,"platform":{})", true, true, true},
        PlatformCase{"NoClass", R"(,"platform":{"SKProductDiscount":null})", false, false, false},
        PlatformCase{"EmptyClass", R"(,"platform":{"SKProductDiscount":{}})", true, true, true},
        PlatformCase{"NoPrice", R"(,"platform":{"SKProductDiscount":{"price":false}})", true, false,
                     true},
        PlatformCase{"NoPaymentMode", R"(,"platform":{"SKProductDiscount":{"paymentMode":false}})",
                     true, true, false},
        PlatformCase{"Neither",
                     R"(,"platform":{"SKProductDiscount":{"price":false,"paymentMode":false}})",
                     true, false, false},
        PlatformCase{"NullOperations",
                     R"(,"platform":{"SKProductDiscount":{"price":null,"paymentMode":null}})", true,
                     true, true}),
    [](const auto& test) { return std::string(test.param.name); });

// --- Wrong types ---

// A key that takes one type of value.
struct TypedKey {
  const char* name;
  const char* line;  // with @ for the value
  const char* path;
  const char* expected;
  std::string_view accepted;  // the first letters of the types that it takes, null apart
};

std::ostream& operator<<(std::ostream& out, const TypedKey& key) { return out << key.line; }

constexpr const char* kSigned = "an integer from -9223372036854775808 to 9223372036854775807";
constexpr const char* kUnsigned = "an integer from 0 to 18446744073709551615";
constexpr const char* kPrice =
    "a price: a JSON number, as such or in a string, of at most 38 digits and an exponent from "
    "-128 to 127, or the string \"NaN\"";

constexpr TypedKey kTypedKeys[] = {
    {"Id", R"({"id":@})", "/id", "a string", "s"},
    {"Product", R"({"product":@})", "/product", "an object", "o"},
    {"ProductIdentifier", R"({"product":{"productIdentifier":@}})", "/product/productIdentifier",
     "a string", "s"},
    {"Price", R"({"product":{"price":@}})", "/product/price", kPrice, "sn"},
    {"PriceLocale", R"({"product":{"priceLocale":@}})", "/product/priceLocale", "an object", "o"},
    {"CurrencyCode", R"({"product":{"priceLocale":{"currencyCode":@}}})",
     "/product/priceLocale/currencyCode", "a string", "s"},
    {"LocalizedTitle", R"({"product":{"localizedTitle":@}})", "/product/localizedTitle", "a string",
     "s"},
    {"IntroductoryPrice", R"({"product":{"introductoryPrice":@}})", "/product/introductoryPrice",
     "an object", "o"},
    {"OfferPrice", R"({"product":{"introductoryPrice":{"price":@}}})",
     "/product/introductoryPrice/price", kPrice, "sn"},
    {"OfferPaymentMode", R"({"product":{"introductoryPrice":{"paymentMode":@}}})",
     "/product/introductoryPrice/paymentMode", kUnsigned, "n"},
    {"Transaction", R"({"transaction":@})", "/transaction", "an object", "o"},
    {"TransactionIdentifier", R"({"transaction":{"transactionIdentifier":@}})",
     "/transaction/transactionIdentifier", "a string", "s"},
    {"OriginalTransaction", R"({"transaction":{"originalTransaction":@}})",
     "/transaction/originalTransaction", "an object", "o"},
    {"OriginalTransactionIdentifier",
     R"({"transaction":{"originalTransaction":{"transactionIdentifier":@}}})",
     "/transaction/originalTransaction/transactionIdentifier", "a string", "s"},
    {"TransactionDate", R"({"transaction":{"transactionDate":@}})", "/transaction/transactionDate",
     "a string", "s"},
    {"Payment", R"({"transaction":{"payment":@}})", "/transaction/payment", "an object", "o"},
    {"Quantity", R"({"transaction":{"payment":{"quantity":@}}})", "/transaction/payment/quantity",
     kSigned, "n"},
    {"Receipt", R"({"receipt":@})", "/receipt", "an array", "a"},
    {"EntryProductID", R"({"receipt":[{"productID":@}]})", "/receipt/0/productID", "a string", "s"},
    {"EntryPurchaseDate", R"({"receipt":[{"purchaseDateIA5String":@}]})",
     "/receipt/0/purchaseDateIA5String", "a string", "s"},
    {"EntryPurchaseType", R"({"receipt":[{"purchaseType":@}]})", "/receipt/0/purchaseType", kSigned,
     "n"},
    {"EntryWebOrder", R"({"receipt":[{"webOrderLineItemID":@}]})", "/receipt/0/webOrderLineItemID",
     "an integer", "n"},
    {"EntryTransactionID", R"({"receipt":[{"transactionID":@}]})", "/receipt/0/transactionID",
     "a string", "s"},
    {"EntryOriginalTransactionID", R"({"receipt":[{"originalTransactionID":@}]})",
     "/receipt/0/originalTransactionID", "a string", "s"},
    {"EntryIsFreeTrial", R"({"receipt":[{"isFreeTrial":@}]})", "/receipt/0/isFreeTrial",
     "true or false", "b"},
    {"EntryIsIntroductoryOffer", R"({"receipt":[{"isIntroductoryOffer":@}]})",
     "/receipt/0/isIntroductoryOffer", "true or false", "b"},
    {"Platform", R"({"platform":@})", "/platform", "an object", "o"},
    {"DiscountClass", R"({"platform":{"SKProductDiscount":@}})", "/platform/SKProductDiscount",
     "an object", "o"},
    {"DiscountsAnswerPrice", R"({"platform":{"SKProductDiscount":{"price":@}}})",
     "/platform/SKProductDiscount/price", "true or false", "b"},
    {"DiscountsAnswerPaymentMode", R"({"platform":{"SKProductDiscount":{"paymentMode":@}}})",
     "/platform/SKProductDiscount/paymentMode", "true or false", "b"},
};

class TypedKeyTest : public ::testing::TestWithParam<TypedKey> {
 protected:
  // Without advice.
  static std::string errorOfValue(std::string_view value) {
    const std::string error = errorOf(withValue(GetParam().line, value));
    return error.substr(0, error.find(';'));
  }
};

TEST_P(TypedKeyTest, RejectsValuesOfEveryOtherType) {
  const struct {
    char type;
    const char* value;
    const char* name;
  } samples[] = {{'a', "[]", "an array"},    {'o', "{}", "an object"},
                 {'n', "1", "a number"},     {'s', "\"1\"", "a string"},
                 {'b', "true", "a boolean"}, {'b', "false", "a boolean"},
                 {'n', "-1", "a number"},    {'a', "[1,{}]", "an array"}};
  const TypedKey& key = GetParam();
  for (const auto& sample : samples) {
    if (key.accepted.find(sample.type) != std::string_view::npos) continue;
    EXPECT_EQ(errorOfValue(sample.value),
              std::string(key.path) + " expected " + key.expected + ", found " + sample.name);
  }
}

TEST_P(TypedKeyTest, AcceptsNull) { EXPECT_EQ(errorOfValue("null"), "(no error)"); }

TEST_P(TypedKeyTest, RejectsWordsThatAreNone) {
  for (const char* const value : {"nul", "nulll", "nULL"}) {
    EXPECT_EQ(errorOfValue(value),
              std::string(" broken JSON: expected true, false or null, found ") + value);
  }
}

TEST_P(TypedKeyTest, RejectsTheKeyWhenItComesTwice) {
  const TypedKey& key = GetParam();
  // The object that holds the key once more, at the end of it: {"price":null,"price":null}.
  const std::string once = withValue(key.line, "null");
  const std::string name = std::string(key.path).substr(std::string(key.path).rfind('/') + 1);
  const std::string member = withValue(R"("@":null)", name);
  std::string twice = once;
  twice.replace(twice.rfind(member), member.size(), member + ',' + member);
  EXPECT_EQ(errorOf(twice), std::string(key.path) + " duplicate key: expected each key once");
}

INSTANTIATE_TEST_SUITE_P(PurchaseReader, TypedKeyTest, ::testing::ValuesIn(kTypedKeys),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(PurchaseReaderTest, AnEntryOfAReceiptMustBeAnObject) {
  EXPECT_EQ(errorOf(R"({"receipt":[{},null]})"), "/receipt/1 expected an object, found null");
  EXPECT_EQ(errorOf(R"({"receipt":["a"]})"), "/receipt/0 expected an object, found a string");
  EXPECT_EQ(errorOf(R"({"receipt":[{},{},[]]})"), "/receipt/2 expected an object, found an array");
}

TEST(PurchaseReaderTest, ALineMustBeAnObject) {
  EXPECT_EQ(errorOf("[]"), " expected an object, found an array");
  EXPECT_EQ(errorOf("1"), " expected an object, found a number");
  EXPECT_EQ(errorOf("\"a\""), " expected an object, found a string");
  EXPECT_EQ(errorOf("true"), " expected an object, found a boolean");
  EXPECT_EQ(errorOf("null"), " expected an object, found null");
}

// --- Numbers ---

TEST(PurchaseReaderTest, ReadsSignedIntegersUpToTheirLimits) {
  Reader reader;
  const struct {
    const char* written;
    std::int64_t integer;
  } cases[] = {{"0", 0},
               {"-0", 0},
               {"-1", -1},
               {"9223372036854775807", kGreatestSigned},
               {"-9223372036854775808", kLeastSigned}};
  for (const auto& [written, integer] : cases) {
    EXPECT_EQ(reader.read(withValue(R"({"transaction":{"payment":{"quantity":@}}})", written))
                  .transaction->quantity,
              integer);
    const QELInAppPurchaseItem& typed =
        reader.read(withValue(R"({"receipt":[{"purchaseType":@}]})", written)).receipt[0];
    EXPECT_EQ(typed.purchaseType, integer);
  }
}

TEST(PurchaseReaderTest, RejectsSignedIntegersPastTheirLimits) {
  for (const char* const written :
       {"9223372036854775808", "-9223372036854775809", "18446744073709551616", "1.0", "1e0", "0.5",
        "99999999999999999999999999999999999999999999999999"}) {
    const std::string message = std::string(" expected ") + kSigned + ", found " + written;
    EXPECT_EQ(errorOf(withValue(R"({"transaction":{"payment":{"quantity":@}}})", written)),
              "/transaction/payment/quantity" + message);
    EXPECT_EQ(errorOf(withValue(R"({"receipt":[{"purchaseType":@}]})", written)),
              "/receipt/0/purchaseType" + message);
  }
}

// The digits enter the identifier, so that no size is too large.
TEST(PurchaseReaderTest, ReadsTheDigitsOfAWebOrderLineItemOfAnySize) {
  Reader reader;
  const std::string huge(400, '9');
  const struct {
    std::string written;
    std::string digits;
  } cases[] = {{"0", "0"},
               {"-0", "0"},
               {"-1", "-1"},
               {"9223372036854775808", "9223372036854775808"},
               {"18446744073709551616", "18446744073709551616"},
               {" 77 ", "77"},
               {huge, huge},
               {"-" + huge, "-" + huge}};
  for (const auto& [written, digits] : cases) {
    const Purchase& purchase = reader.read(
        withValue(R"({"receipt":[{"webOrderLineItemID":@,"productID":"coins"}]})", written));
    EXPECT_EQ(purchase.receipt[0].get().webOrderLineItemID, digits);
    EXPECT_EQ(purchase.receipt[0].get().productID, "coins");
  }
}

TEST(PurchaseReaderTest, RejectsAWebOrderLineItemThatIsNoInteger) {
  for (const char* const written : {"1.0", "1e0", "1E2", "0.5", "-0.0"}) {
    EXPECT_EQ(errorOf(withValue(R"({"receipt":[{},{"webOrderLineItemID":@}]})", written)),
              std::string("/receipt/1/webOrderLineItemID expected an integer, found ") + written);
  }
  for (const char* const written : {"01", "-", "1.", "1x", "0x10"}) {
    EXPECT_EQ(errorOf(withValue(R"({"receipt":[{},{"webOrderLineItemID":@}]})", written)),
              std::string(" broken JSON: expected a number in JSON syntax, found ") + written);
  }
}

TEST(PurchaseReaderTest, ReadsPaymentModesUpToTheirLimits) {
  Reader reader;
  constexpr std::string_view kLine = R"({"product":{"introductoryPrice":{"paymentMode":@}}})";
  const auto paymentMode = [&](const char* written) {
    return reader.read(withValue(kLine, written)).product->introductoryPrice->paymentMode;
  };
  EXPECT_EQ(paymentMode("0"), 0U);
  EXPECT_EQ(paymentMode("2"), 2U);
  EXPECT_EQ(paymentMode("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(paymentMode("-0"), 0U);
  for (const char* const written : {"-1", "18446744073709551616", "2.0", "2e0"}) {
    EXPECT_EQ(errorOf(withValue(kLine, written)),
              std::string("/product/introductoryPrice/paymentMode expected ") + kUnsigned +
                  ", found " + written);
  }
}

TEST(PurchaseReaderTest, RejectsNumbersThatJsonDoesNotHave) {
  for (const char* const written : {"01", "-", "1.", "1e", "0x10", "1_0", "1a", "-Infinity"}) {
    for (const char* const line :
         {R"({"transaction":{"payment":{"quantity":@}}})", R"({"product":{"price":@}})"}) {
      EXPECT_EQ(errorOf(withValue(line, written)),
                std::string(" broken JSON: expected a number in JSON syntax, found ") + written);
    }
  }
  for (const char* const written : {"+1", ".5", "NaN", "Infinity"}) {
    const std::string error = errorOf(withValue(R"({"product":{"price":@}})", written));
    EXPECT_TRUE(error.find(" broken JSON: ") != std::string::npos) << written << ": " << error;
  }
}

// --- Prices ---

constexpr std::string_view kPriceLine = R"({"product":{"price":@}})";

// The price in micros, exactly as an event would have it, before the conversion to an integer.
double micros(const std::string& value) {
  Reader reader;
  return reader.read(withValue(kPriceLine, value))
      .product->price.value()
      .decimalNumberByMultiplyingBy(Decimal::initWithLongLong(1000000))
      .doubleValue();
}

TEST(PurchaseReaderTest, ReadsAPriceDigitByDigitFromANumberAndFromAString) {
  // A double takes the product below a whole number: 8289999.999999999.
  EXPECT_EQ(micros("8.29"), 8290000);
  EXPECT_EQ(micros("\"8.29\""), 8290000);
  EXPECT_EQ(micros("-8.29"), -8290000);
  EXPECT_EQ(micros("82.9e-1"), 8290000);
  EXPECT_EQ(micros("\"0.829E+1\""), 8290000);
  EXPECT_EQ(micros("0"), 0);
}

TEST(PurchaseReaderTest, ReadsAPriceThatIsWrittenWithEscapes) {
  EXPECT_EQ(micros(R"("\u0038.29")"), 8290000);
}

TEST(PurchaseReaderTest, ReadsTheStringNaNAsNotANumber) {
  const double notANumber = micros("\"NaN\"");
  EXPECT_NE(notANumber, notANumber);
}

TEST(PurchaseReaderTest, ReadsPricesUpToTheLimitsOfADecimal) {
  // 38 digits; the exponents -128 and 127, also where the digits shift them.
  for (const char* const price :
       {"99999999999999999999999999999999999999", "0.00000000000000000000000000000000000001",
        "1e127", "10e126", "1e164", "12345678901234567890123456789012345678e127", "1e-128",
        "10e-129", "0e999999999999999999999"}) {
    EXPECT_EQ(errorOf(withValue(kPriceLine, price)), "(no error)") << price;
    EXPECT_EQ(errorOf(withValue(kPriceLine, inQuotes(price))), "(no error)") << price;
  }
}

TEST(PurchaseReaderTest, RejectsPricesPastTheLimitsOfADecimal) {
  for (const char* const price :
       {"999999999999999999999999999999999999999", "100000000000000000000000000000000000001",
        "1e165", "1e-129", "1e999999999999999999999", "1e-999999999999999999999"}) {
    const std::string message =
        std::string("/product/price expected ") + kPrice + ", found " + price;
    EXPECT_EQ(errorOf(withValue(kPriceLine, price)), message);
    EXPECT_EQ(errorOf(withValue(kPriceLine, inQuotes(price))), message);
  }
}

TEST(PurchaseReaderTest, RejectsStringsThatAreNoPrice) {
  const std::string expected = std::string("/product/price expected ") + kPrice + ", found ";
  for (const char* const price :
       {"nan", "NAN", "-NaN", "Infinity", "4,99", "+1", "01", ".5", "1.", "$1", "0x1", "٤"}) {
    EXPECT_EQ(errorOf(withValue(kPriceLine, inQuotes(price))), expected + price);
  }
  for (const char* const price : {"", " 1", "1 "}) {
    EXPECT_EQ(errorOf(withValue(kPriceLine, inQuotes(price))), expected + inQuotes(price));
  }
}

TEST(PurchaseReaderTest, SaysTheSameOfAnOffersPrice) {
  EXPECT_EQ(errorOf(R"({"product":{"introductoryPrice":{"price":"free"}}})"),
            std::string("/product/introductoryPrice/price expected ") + kPrice + ", found free");
}

// --- Dates ---

TEST(PurchaseReaderTest, RejectsATransactionDateInAnyOtherForm) {
  const std::string line = R"({"transaction":{"transactionDate":"@"}})";
  const std::string expected =
      "/transaction/transactionDate expected a date of the years 0001 to 9999 such as "
      "2019-03-14T09:26:53Z or 2019-03-14T10:26:53.250+01:00, found ";
  for (const char* const date : {"2019-03-14", "0000-03-14T09:26:53Z", "2019-02-30T09:26:53Z",
                                 "2019-03-14T09:26:53", "2019-03-14T09:26:53.Z", "yesterday"}) {
    EXPECT_EQ(errorOf(withValue(line, date)), expected + date);
  }
  EXPECT_EQ(errorOf(withValue(line, "")), expected + "\"\"");
}

// --- Long values in messages ---

TEST(PurchaseReaderTest, ShowsTheStartOfALongValue) {
  const std::string sixty(60, '9');
  const std::string message = std::string("/product/price expected ") + kPrice + ", found ";
  EXPECT_EQ(errorOf(withValue(kPriceLine, sixty)), message + sixty);
  EXPECT_EQ(errorOf(withValue(kPriceLine, sixty + '9')), message + sixty + "...");
}

TEST(PurchaseReaderTest, CutsALongValueBetweenCharacters) {
  const std::string message = std::string("/product/price expected ") + kPrice + ", found ";
  const std::string fiftyEight(58, 'x');
  EXPECT_EQ(errorOf(withValue(kPriceLine, inQuotes(fiftyEight + "é🚀"))),
            message + fiftyEight + "é...");
  EXPECT_EQ(errorOf(withValue(kPriceLine, inQuotes(fiftyEight + "🚀é"))),
            message + fiftyEight + "...");
}

// --- Unknown and duplicate keys ---

struct LevelCase {
  const char* name;
  const char* line;  // with @ for more members of the object at this level
  const char* path;
  const char* keys;  // those that are known at this level
};

std::string unknownKey(const LevelCase& level, const std::string& path) {
  return std::string(level.path) + path + " unknown key: expected " + level.keys;
}

std::ostream& operator<<(std::ostream& out, const LevelCase& level) { return out << level.line; }

class LevelTest : public ::testing::TestWithParam<LevelCase> {};

TEST_P(LevelTest, RejectsAnUnknownKey) {
  EXPECT_EQ(errorOf(withValue(GetParam().line, R"("unknown":1)")),
            unknownKey(GetParam(), "/unknown"));
}

TEST_P(LevelTest, RejectsAKeyThatDiffersInLetterCaseOrLength) {
  for (const char* const key : {"ID", "Id", "i", "idd", "", "Price", "pric", "prices", "productid",
                                "PRODUCTID", "quantit", "quantity "}) {
    EXPECT_EQ(errorOf(withValue(GetParam().line, withValue(R"("@":null)", key))),
              unknownKey(GetParam(), std::string("/") + key));
  }
}

TEST_P(LevelTest, WritesThePathAsAJsonPointer) {
  EXPECT_EQ(errorOf(withValue(GetParam().line, R"("a/b~c~1/\u002f\n":1)")),
            unknownKey(GetParam(), "/a~1b~0c~01~1~1\n"));
}

TEST_P(LevelTest, IgnoresUnknownKeysWhenAsked) {
  const char* const members =
      R"("unknown":1,"more":{"a":[1,-2.5e3,"\ud800",true,false,null,{"b":{}}]},"unknown":[])";
  EXPECT_EQ(Reader(UnknownKeys::kAreIgnored).errorOf(withValue(GetParam().line, members)),
            "(no error)");
}

TEST_P(LevelTest, FindsBrokenJsonInAnIgnoredValue) {
  const char* const values[] = {
      "01",    "[1,]",  R"({"a"})", R"({"a":1,})", "tru", "nul", "falsee", R"("\q")",
      "[1 2]", "{1:2}", "[{]}",     R"({"\q":1})", "+1",  "'a'", "[,]",    R"({"a":})"};
  for (const char* const value : values) {
    const std::string error =
        Reader(UnknownKeys::kAreIgnored)
            .errorOf(withValue(GetParam().line, withValue(R"("unknown":@)", value)));
    EXPECT_NE(error.find("broken JSON: "), std::string::npos) << value << ": " << error;
  }
}

INSTANTIATE_TEST_SUITE_P(
    PurchaseReader, LevelTest,
    ::testing::Values(
        LevelCase{"Line", "{@}", "", "id, product, transaction, receipt or platform"},
        LevelCase{"Product", R"({"product":{@}})", "/product",
                  "productIdentifier, price, priceLocale, localizedTitle or introductoryPrice"},
        LevelCase{"PriceLocale", R"({"product":{"priceLocale":{@}}})", "/product/priceLocale",
                  "currencyCode"},
        LevelCase{"IntroductoryPrice", R"({"product":{"introductoryPrice":{@}}})",
                  "/product/introductoryPrice", "price or paymentMode"},
        LevelCase{"Transaction", R"({"transaction":{@}})", "/transaction",
                  "transactionIdentifier, originalTransaction, transactionDate or payment"},
        LevelCase{"OriginalTransaction", R"({"transaction":{"originalTransaction":{@}}})",
                  "/transaction/originalTransaction", "transactionIdentifier"},
        LevelCase{"Payment", R"({"transaction":{"payment":{@}}})", "/transaction/payment",
                  "quantity"},
        LevelCase{"Entry", R"({"receipt":[{},{@}]})", "/receipt/1",
                  "productID, purchaseDateIA5String, purchaseType, webOrderLineItemID, "
                  "transactionID, originalTransactionID, isFreeTrial or isIntroductoryOffer"},
        LevelCase{"Platform", R"({"platform":{@}})", "/platform", "SKProductDiscount"},
        LevelCase{"DiscountClass", R"({"platform":{"SKProductDiscount":{@}}})",
                  "/platform/SKProductDiscount", "price or paymentMode"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(PurchaseReaderTest, KeysInAnyOrderAreRead) {
  Reader reader(UnknownKeys::kAreErrors);
  const Purchase& purchase =
      reader.read(R"({"transaction":{"payment":{"quantity":3},"transactionIdentifier":"t"},)"
                  R"("product":{"localizedTitle":"n","productIdentifier":"p"},"id":"i"})");
  EXPECT_EQ(purchase.id, "i");
  EXPECT_EQ(purchase.product->productIdentifier, "p");
  EXPECT_EQ(purchase.product->localizedTitle, "n");
  EXPECT_EQ(purchase.transaction->transactionIdentifier, "t");
  EXPECT_EQ(purchase.transaction->quantity, 3);
}

TEST(PurchaseReaderTest, AWordOrANumberThatIsBrokenOffIsBrokenWhereverItStands) {
  const std::string word = " broken JSON: expected true, false or null, found ";
  const std::string number = " broken JSON: expected a number in JSON syntax, found ";
  EXPECT_EQ(errorOf("nul"), word + "nul");
  EXPECT_EQ(errorOf(" tru "), word + "tru");
  EXPECT_EQ(errorOf("1.x"), number + "1.x");
  for (const char* const value : {"nul", "tru", "falsee", "nulll"}) {
    for (const char* const line : {R"({"id":@})", R"({"product":@})", R"({"product":{"price":@}})",
                                   R"({"receipt":[@]})", R"({"receipt":[{"isFreeTrial":@}]})"}) {
      EXPECT_EQ(errorOf(withValue(line, value)), word + value) << line;
    }
  }
  EXPECT_EQ(errorOf(R"({"id":1e})"), number + "1e");
  EXPECT_EQ(errorOf(R"({"receipt":-})"), number + "-");
}

TEST(PurchaseReaderTest, AKeyWrittenOnceWithAndOnceWithoutEscapesIsADuplicate) {
  EXPECT_EQ(errorOf(R"({"id":"a","\u0069d":"b"})"), "/id duplicate key: expected each key once");
}

TEST(PurchaseReaderTest, AKeyMayComeAgainInAnotherObject) {
  EXPECT_EQ(errorOf(R"({"product":{"price":1,"introductoryPrice":{"price":1}},)"
                    R"("receipt":[{"productID":"a"},{"productID":"a"}]})"),
            "(no error)");
}

TEST(PurchaseReaderTest, DuplicatesAreRejectedAlsoWhereUnknownKeysAreIgnored) {
  EXPECT_EQ(Reader(UnknownKeys::kAreIgnored).errorOf(R"({"id":"a","x":1,"x":2,"id":"b"})"),
            "/id duplicate key: expected each key once");
}

TEST(PurchaseReaderTest, KnownKeysAreReadBesideIgnoredOnes) {
  Reader reader(UnknownKeys::kAreIgnored);
  const Purchase& purchase =
      reader.read(R"({"x":{"id":"inner"},"id":"outer","receipt":[{"y":1,"productID":"a"}],"z":0})");
  EXPECT_EQ(purchase.id, "outer");
  EXPECT_EQ(purchase.receipt[0].get().productID, "a");
}

// --- Nesting ---

std::string nested(const char* open, const char* close, int depth) {
  std::string value;
  for (int i = 0; i < depth; ++i) value += open;
  value += "0";
  for (int i = 0; i < depth; ++i) value += close;
  return value;
}

TEST(PurchaseReaderTest, IgnoresValuesNestedAThousandDeep) {
  Reader reader(UnknownKeys::kAreIgnored);
  EXPECT_EQ(reader.errorOf(withValue(R"({"x":@})", nested("[", "]", 1000))), "(no error)");
  EXPECT_EQ(reader.errorOf(withValue(R"({"x":@})", nested(R"({"a":)", "}", 1000))), "(no error)");
}

TEST(PurchaseReaderTest, RejectsValuesNestedDeeper) {
  Reader reader(UnknownKeys::kAreIgnored);
  for (const int depth : {1001, 2000, 100000}) {
    EXPECT_EQ(reader.errorOf(withValue(R"({"x":@})", nested("[", "]", depth))),
              "/x expected values nested at most 1000 deep")
        << depth;
    EXPECT_EQ(reader.errorOf(withValue(R"({"x":@})", nested(R"({"a":)", "}", depth))),
              "/x expected values nested at most 1000 deep")
        << depth;
  }
}

TEST(PurchaseReaderTest, DeepNestingIsAnUnknownKeyOrAWrongTypeFirst) {
  const std::string deep = nested("[", "]", 100000);
  EXPECT_EQ(errorOf(withValue(R"({"x":@})", deep)),
            "/x unknown key: expected id, product, transaction, receipt or platform");
  EXPECT_EQ(errorOf(withValue(R"({"product":@})", deep)),
            "/product expected an object, found an array");
  EXPECT_EQ(errorOf(deep), " expected an object, found an array");
}

// --- Surrogates and UTF-8 ---

TEST(PurchaseReaderTest, CarriesUnpairedSurrogatesThrough) {
  Reader reader;
  const Purchase& purchase = reader.read(
      R"({"id":"\udfff","product":{"localizedTitle":"a\ud800b"},"receipt":[{"productID":"\uD83D"}]})");
  EXPECT_EQ(purchase.id, "\xED\xBF\xBF");
  EXPECT_EQ(purchase.product->localizedTitle,
            "a\xED\xA0\x80"
            "b");
  EXPECT_EQ(purchase.receipt[0].get().productID, "\xED\xA0\xBD");
}

TEST(PurchaseReaderTest, KeepsEveryTextWithEscapesOfALine) {
  Reader reader;
  std::string entries;
  for (int i = 0; i < 200; ++i) {
    if (i > 0) entries += ',';
    entries += withValue(R"({"productID":"\n@\t"})", std::to_string(i));
  }
  const Purchase& purchase = reader.read(
      R"({"id":"\u00e9","product":{"localizedTitle":"\ud83d\ude80"},"receipt":[)" + entries + "]}");
  EXPECT_EQ(purchase.id, "é");
  EXPECT_EQ(purchase.product->localizedTitle, "🚀");
  ASSERT_EQ(purchase.receipt.size(), 200U);
  EXPECT_EQ(purchase.receipt[0].get().productID, "\n0\t");
  EXPECT_EQ(purchase.receipt[199].get().productID, "\n199\t");
}

TEST(PurchaseReaderTest, RejectsWhatIsNoUtf8) {
  for (const char* const bytes : {"\xFF", "\xC3", "\x80", "\xC0\x80", "\xE2\x82", "\xED\xA0\x80",
                                  "\xF4\x90\x80\x80", "\xF0\x80\x80\x80", "\xF8\x88\x80\x80\x80"}) {
    EXPECT_EQ(errorOf(withValue(R"({"id":"@"})", bytes)), " broken JSON: expected UTF-8");
    EXPECT_EQ(errorOf(withValue(R"({"product":{"@":1}})", bytes)), " broken JSON: expected UTF-8");
    EXPECT_EQ(errorOf(withValue("{}@", bytes)), " broken JSON: expected UTF-8");
  }
}

TEST(PurchaseReaderTest, RejectsControlCharactersInStrings) {
  for (const char control : {'\0', '\x01', '\t', '\r', '\x1F'}) {
    EXPECT_EQ(errorOf(withValue(R"({"id":"@"})", std::string(1, control))),
              " broken JSON: expected the control characters of a string to be escaped")
        << static_cast<int>(control);
  }
}

TEST(PurchaseReaderTest, RejectsEscapesThatJsonDoesNotHave) {
  const char* const escapes[][2] = {{R"(\q)", R"(\q)"},
                                    {R"(\x41)", R"(\x)"},
                                    {R"(\u12)", R"(\u12)"},
                                    {R"(\u12g4)", R"(\u12g4)"},
                                    {R"(\')", R"(\')"}};
  for (const auto& [escape, found] : escapes) {
    EXPECT_EQ(errorOf(withValue(R"({"id":"@"})", escape)),
              std::string(R"( broken JSON: expected an escape that JSON has: )"
                          R"(\" \\ \/ \b \f \n \r \t or \uXXXX, found )") +
                  found);
  }
}

// --- Broken JSON ---

class BrokenLineTest : public ::testing::TestWithParam<const char*> {};

TEST_P(BrokenLineTest, IsAnError) {
  const std::string error = errorOf(GetParam());
  EXPECT_NE(error.find("broken JSON: expected "), std::string::npos) << error;
}

INSTANTIATE_TEST_SUITE_P(
    PurchaseReader, BrokenLineTest,
    ::testing::Values(
        "{", "}", "{}}", "{}{}", "{} {}", "{}[]", "{},", "{}1", "{}x", "{]", "{:1}", "{,}",
        "{\"id\"}", "{\"id\":}", "{\"id\" \"a\"}", "{\"id\":\"a\"", "{\"id\":\"a\",}",
        "{\"id\":\"a\" \"product\":{}}", "{\"id\":\"a\"]", "{\"id\":\"a\",,\"product\":{}}",
        "{id:\"a\"}", "{'id':'a'}", "{\"id\":\"a", "{\"id\":\"a\\", "{\"id", "{\"receipt\":[}",
        "{\"receipt\":[]", "{\"receipt\":[{}", "{\"receipt\":[{},]}", "{\"receipt\":[,{}]}",
        "{\"receipt\":[{} {}]}", "{\"receipt\":[{}}]", "{\"receipt\":[{}}", "{\"product\":{]}",
        "{\"product\":{\"price\":1]}", "{\"product\":{\"price\":1", "{\"product\":{\"price\":1}",
        "{\"product\":{\"price\":1 2}}", "{\"product\":{\"price\":\"1\"2}}",
        "{\"receipt\":[{\"isFreeTrial\":tru}]}", "{\"receipt\":[{\"isFreeTrial\":truee}]}",
        "{\"receipt\":[{\"isFreeTrial\":fals}]}", "{\"receipt\":[{\"isFreeTrial\":nul}]}", "{/**/}",
        "{} //", "\xEF\xBB\xBF{}", "x", "\\", "\"", "{\"id\":\"a\"}\\"));

TEST(PurchaseReaderTest, RejectsNulBytes) {
  for (const std::string& line :
       {std::string("\0", 1), std::string("{}\0", 3), std::string("\0{}", 3),
        std::string("{\"id\":\0\"a\"}", 11),
        std::string("{\"transaction\":{\"payment\":{\"quantity\":1\0}}}", 43)}) {
    EXPECT_NE(errorOf(line).find("broken JSON: expected "), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace qel::tool
