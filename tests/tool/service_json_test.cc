#include "service_json.h"

#include <gtest/gtest.h>

#include <string>

#include "padded_line.h"

namespace qel::tool {
namespace {

using std::nullopt;
using testing::PaddedLine;

AppReceipt read(std::string_view json) { return readServiceAnswer(PaddedLine(json).view()); }

// Returns "POINTER: MESSAGE".
std::string failureOf(std::string_view json) {
  try {
    read(json);
  } catch (const JsonError& error) {
    return error.pointer + ": " + error.message;
  }
  return "no failure";
}

// Reads an answer with one entry.
AppReceiptEntry entryOf(const std::string& members) {
  return read(R"({"receipt":{"in_app":[{)" + members + "}]}}").entries.at(0);
}

std::string failureOfEntry(const std::string& members) {
  return failureOf(R"({"receipt":{"in_app":[{)" + members + "}]}}");
}

TEST(ServiceJsonTest, ReadsAnAnswer) {
  const AppReceipt receipt = read(R"({
    "status": 0, "environment": "Sandbox", "latest_receipt": "MIIT...", "pending_renewal_info": [],
    "receipt": {
      "receipt_type": "ProductionSandbox", "bundle_id": "com.example.app",
      "application_version": "3", "original_application_version": "1.0",
      "receipt_creation_date": "2020-07-14 19:36:41 Etc/GMT",
      "expiration_date": "2021-07-14 19:36:41 Etc/GMT",
      "in_app": [{
        "quantity": "1", "product_id": "monthly", "transaction_id": "2000",
        "original_transaction_id": "1000", "purchase_date": "2020-07-14 19:36:40 Etc/GMT",
        "purchase_date_ms": "1594755400000",
        "purchase_date_pst": "2020-07-14 12:36:40 America/Los_Angeles",
        "original_purchase_date": "2020-06-14 19:36:40 Etc/GMT",
        "expires_date": "2020-08-14 19:36:40 Etc/GMT",
        "cancellation_date": "2020-07-20 19:36:40 Etc/GMT",
        "web_order_line_item_id": "540000091200042",
        "is_trial_period": "true", "is_in_intro_offer_period": "true",
        "in_app_ownership_type": "PURCHASED"}]}})");
  EXPECT_EQ(receipt.environment, "Sandbox");
  EXPECT_EQ(receipt.bundleIdentifier, "com.example.app");
  EXPECT_EQ(receipt.appVersion, "3");
  EXPECT_EQ(receipt.originalAppVersion, "1.0");
  EXPECT_EQ(receipt.creationDate, "2020-07-14T19:36:41Z");
  EXPECT_EQ(receipt.expirationDate, "2021-07-14T19:36:41Z");
  EXPECT_EQ(receipt.unknownDates.size(), 0U);
  ASSERT_EQ(receipt.entries.size(), 1U);
  const AppReceiptEntry& entry = receipt.entries.front();
  EXPECT_EQ(entry.item, (QELInAppPurchaseItem{.productID = "monthly",
                                              .transactionID = "2000",
                                              .originalTransactionID = "1000",
                                              .webOrderLineItemID = "540000091200042",
                                              .purchaseDateIA5String = "2020-07-14T19:36:40Z",
                                              .isFreeTrial = true,
                                              .isIntroductoryOffer = true}));
  EXPECT_EQ(entry.quantity, 1);
  EXPECT_EQ(entry.originalPurchaseDate, "2020-06-14T19:36:40Z");
  EXPECT_EQ(entry.expirationDate, "2020-08-14T19:36:40Z");
  EXPECT_EQ(entry.cancellationDate, "2020-07-20T19:36:40Z");
}

TEST(ServiceJsonTest, MissingAndEmptyValuesAreAbsent) {
  for (
      const char* const members :
      {"", R"("quantity":"","product_id":"","purchase_date":"","web_order_line_item_id":"",
               "is_trial_period":"","purchase_date_ms":"")",
       R"("quantity":null,"product_id":null,"purchase_date":null,"web_order_line_item_id":null)"}) {
    const AppReceiptEntry entry = entryOf(members);
    EXPECT_EQ(entry.item, QELInAppPurchaseItem());
    EXPECT_EQ(entry.quantity, nullopt);
  }
}

TEST(ServiceJsonTest, NumbersCanBeNumbers) {
  const AppReceiptEntry entry = entryOf(R"("quantity":2,"web_order_line_item_id":77)");
  EXPECT_EQ(entry.quantity, 2);
  EXPECT_EQ(entry.item.webOrderLineItemID, "77");
}

TEST(ServiceJsonTest, TheWebOrderLineItemIdentifier0IsAbsent) {
  EXPECT_EQ(entryOf(R"("web_order_line_item_id":"0")").item.webOrderLineItemID, nullopt);
}

TEST(ServiceJsonTest, MillisecondsReplaceADateWithoutACertainMeaning) {
  const std::string local = R"("purchase_date":"2020-07-14 12:36:40 America/Los_Angeles")";
  EXPECT_EQ(entryOf(local).item.purchaseDateIA5String, "2020-07-14 12:36:40 America/Los_Angeles");
  EXPECT_EQ(entryOf(local + R"(,"purchase_date_ms":"1594755400999")").item.purchaseDateIA5String,
            "2020-07-14T19:36:40Z");
  EXPECT_EQ(entryOf(R"("purchase_date_ms":"-1")").item.purchaseDateIA5String,
            "1969-12-31T23:59:59Z");
  EXPECT_EQ(entryOf(R"("purchase_date_ms":"9223372036854775807")").item.purchaseDateIA5String,
            nullopt);
  EXPECT_EQ(entryOf(R"("purchase_date_ms":"-9223372036854775808")").item.purchaseDateIA5String,
            nullopt);
}

TEST(ServiceJsonTest, UnknownDatesAreCounted) {
  EXPECT_EQ(read(R"({"receipt":{"receipt_creation_date":"yesterday","in_app":[
                     {"purchase_date":"today","expires_date":"1594755400000"}]}})")
                .unknownDates.size(),
            3U);
}

TEST(ServiceJsonTest, LatestEntriesReplaceThoseOfTheSamePurchase) {
  const AppReceipt receipt = read(R"({
    "receipt": {"in_app": [
      {"transaction_id": "1", "product_id": "a", "quantity": "1"},
      {"transaction_id": "1", "product_id": "b", "quantity": "1"},
      {"product_id": "c", "quantity": "1"}]},
    "latest_receipt_info": [
      {"transaction_id": "2", "product_id": "a", "quantity": "2"},
      {"transaction_id": "1", "product_id": "b", "quantity": "2"},
      {"product_id": "c", "quantity": "2"}]})");
  std::string all;
  for (const AppReceiptEntry& entry : receipt.entries) {
    all += entry.item.transactionID.value_or("-") + *entry.item.productID +
           std::to_string(*entry.quantity) + " ";
  }
  EXPECT_EQ(all, "1a1 1b2 -c1 2a2 -c2 ");
}

TEST(ServiceJsonTest, OneListIsEnough) {
  EXPECT_EQ(read(R"({"latest_receipt_info":[{"product_id":"a"}]})").entries.size(), 1U);
  EXPECT_EQ(read(R"({"receipt":{"in_app":[]}})").entries.size(), 0U);
}

TEST(ServiceJsonTest, AnswersWithoutAListAreErrors) {
  const std::string expected =
      ": expected the list receipt.in_app or latest_receipt_info, found "
      "neither";
  EXPECT_EQ(failureOf("{}"), expected);
  EXPECT_EQ(failureOf(R"({"receipt":{}})"), expected);
  EXPECT_EQ(failureOf(R"({"status":21002})"), expected + " (the service's status is 21002)");
}

TEST(ServiceJsonTest, ErrorsHaveAPointer) {
  EXPECT_EQ(failureOfEntry(R"("quantity":"two")"),
            "/receipt/in_app/0/quantity: expected an integer of 64 bits, as such or in a string, "
            "found two");
  EXPECT_EQ(failureOfEntry(R"("quantity":1.5)"),
            "/receipt/in_app/0/quantity: expected an integer of 64 bits, as such or in a string, "
            "found 1.5");
  for (const char* const identifier : {"x", "-1", "007"}) {
    EXPECT_EQ(failureOfEntry(std::string(R"("web_order_line_item_id":")") + identifier + "\""),
              std::string("/receipt/in_app/0/web_order_line_item_id: expected an integer of at "
                          "least 0 without leading zeros, as such "
                          "or in a string, found ") +
                  identifier);
  }
  EXPECT_EQ(failureOfEntry(R"("is_trial_period":"yes")"),
            "/receipt/in_app/0/is_trial_period: expected \"true\" or \"false\", found yes");
  EXPECT_EQ(failureOf(R"({"latest_receipt_info":{}})"),
            "/latest_receipt_info: expected an array, found an object");
  EXPECT_NE(failureOf(R"({"receipt":)"), "no failure");
}

}  // namespace
}  // namespace qel::tool
