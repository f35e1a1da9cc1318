#include "qel/plain_records.h"

#include <gtest/gtest.h>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

TEST(PlainProductRecordTest, ReturnsTheFields) {
  const PlainProduct product{.productIdentifier = "coins",
                             .price = decimal("8.29"),
                             .priceLocaleCurrencyCode = "EUR",
                             .localizedTitle = "Coins",
                             .introductoryPrice = PlainDiscount{decimal("1.99"), 2}};
  const PlainProductRecord record(product);
  EXPECT_EQ(record.productIdentifier(), "coins");
  EXPECT_EQ(record.price()->doubleValue(), 8.29);
  EXPECT_EQ(record.priceLocaleCurrencyCode(), "EUR");
  EXPECT_EQ(record.localizedTitle(), "Coins");
  ASSERT_NE(record.introductoryPrice(), nullptr);
  EXPECT_EQ(record.introductoryPrice()->price()->doubleValue(), 1.99);
  EXPECT_EQ(record.introductoryPrice()->paymentMode(), 2U);
}

TEST(PlainProductRecordTest, HasNothingButAPlatformWithOffersByDefault) {
  const PlainProduct product;
  const PlainProductRecord record(product);
  EXPECT_EQ(record.productIdentifier(), std::nullopt);
  EXPECT_EQ(record.price(), std::nullopt);
  EXPECT_EQ(record.priceLocaleCurrencyCode(), std::nullopt);
  EXPECT_EQ(record.localizedTitle(), std::nullopt);
  EXPECT_EQ(record.introductoryPrice(), nullptr);
  EXPECT_TRUE(record.hasDiscountClass());
  EXPECT_TRUE(record.discountsAnswerPrice());
  EXPECT_TRUE(record.discountsAnswerPaymentMode());
  EXPECT_TRUE(record.answersIntroductoryPrice());
}

TEST(PlainProductRecordTest, ReturnsEachAvailabilityAnswer) {
  for (bool PlainProduct::*answer :
       {&PlainProduct::hasDiscountClass, &PlainProduct::discountsAnswerPrice,
        &PlainProduct::discountsAnswerPaymentMode, &PlainProduct::answersIntroductoryPrice}) {
    PlainProduct product;
    product.*answer = false;
    const PlainProductRecord record(product);
    EXPECT_EQ(record.hasDiscountClass(), product.hasDiscountClass);
    EXPECT_EQ(record.discountsAnswerPrice(), product.discountsAnswerPrice);
    EXPECT_EQ(record.discountsAnswerPaymentMode(), product.discountsAnswerPaymentMode);
    EXPECT_EQ(record.answersIntroductoryPrice(), product.answersIntroductoryPrice);
  }
}

TEST(PlainProductRecordTest, ShowsALaterChangeOfTheData) {
  PlainProduct product;
  const PlainProductRecord record(product);
  product.productIdentifier = "coins";
  product.introductoryPrice.emplace();
  EXPECT_EQ(record.productIdentifier(), "coins");
  EXPECT_NE(record.introductoryPrice(), nullptr);
}

TEST(PlainTransactionRecordTest, ReturnsTheFields) {
  const PlainTransaction transaction{.transactionIdentifier = "2000",
                                     .originalTransaction = PlainOriginalTransaction{"1000"},
                                     .transactionDate = kMarchInstant,
                                     .quantity = 3};
  const PlainTransactionRecord record(transaction);
  EXPECT_EQ(record.transactionIdentifier(), "2000");
  ASSERT_NE(record.originalTransaction(), nullptr);
  EXPECT_EQ(record.originalTransaction()->transactionIdentifier(), "1000");
  EXPECT_EQ(record.originalTransaction()->originalTransaction(), nullptr);
  EXPECT_EQ(record.originalTransaction()->transactionDate(), std::nullopt);
  EXPECT_EQ(record.originalTransaction()->payment(), nullptr);
  EXPECT_EQ(record.transactionDate(), kMarchInstant);
  EXPECT_EQ(quantityOf(record), 3);
}

TEST(PlainTransactionRecordTest, HasOneUnitAndNothingElseByDefault) {
  const PlainTransaction transaction;
  const PlainTransactionRecord record(transaction);
  EXPECT_EQ(record.transactionIdentifier(), std::nullopt);
  EXPECT_EQ(record.originalTransaction(), nullptr);
  EXPECT_EQ(record.transactionDate(), std::nullopt);
  EXPECT_EQ(quantityOf(record), 1);
}

TEST(PlainTransactionRecordTest, HasNoPaymentWithoutAQuantity) {
  const PlainTransaction transaction{.quantity = std::nullopt};
  EXPECT_EQ(PlainTransactionRecord(transaction).payment(), nullptr);
}

TEST(PlainPaymentRecordTest, ReadsAnAbsentQuantityAsZero) {
  const std::optional<std::int64_t> absent;
  EXPECT_EQ(PlainPaymentRecord(absent).quantity(), 0);
}

TEST(PlainPurchaseEventTest, IsTheEventOfTheRecords) {
  const PlainProduct product{
      .productIdentifier = "coins", .price = decimal("0.99"), .priceLocaleCurrencyCode = "USD"};
  const PlainTransaction transaction{.transactionIdentifier = "1", .quantity = 3};
  const QELInAppPurchaseItem entry = entryOf(kConsumable, "coins", kMarch, "1", "1");
  EXPECT_TRUE(isEvent(plainPurchaseEvent(&product, &transaction, QELInAppPurchaseItems{entry}),
                      {{"_did", kDedupeIdOf1coins},
                       {"currency", "USD"},
                       {"price", 990000},
                       {"product_id", "coins"},
                       {"quantity", 3},
                       {"value", 2970000}}));
}

TEST(PlainPurchaseEventTest, MissingRecordIsRejected) {
  const PlainProduct product{.productIdentifier = "coins"};
  const PlainTransaction transaction;
  const ScopedRecordingMonitor monitor;
  EXPECT_TRUE(isNothing(plainPurchaseEvent(nullptr, &transaction, {})));
  EXPECT_TRUE(isNothing(plainPurchaseEvent(&product, nullptr, {})));
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40026), logged(40028)}));
}

}  // namespace
}  // namespace qel::testing
