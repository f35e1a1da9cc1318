// All calls of one purchase in one ordered log: to the store's records, to the monitor, and to each
// date formatter.

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <ostream>

#include "support/counting_date_formatter.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// The calls of a match that makes the formatter `number` and parses these dates.
Asked matchCalls(int number, std::initializer_list<const char*> dates) {
  Asked calls = {formatterInit(number)};
  for (const char* const date : dates) calls.push_back(formatterParse(number, date));
  calls.push_back(formatterEnd(number));
  return calls;
}

Asked messageCall(int code) { return {monitorCall(code)}; }

Asked inSequence(std::initializer_list<Asked> parts) {
  Asked calls;
  for (const Asked& part : parts) calls.insert(calls.end(), part.begin(), part.end());
  return calls;
}

class PurchaseCallsTest : public DateFormatterCountsTest {
 protected:
  PurchaseCallsTest() { formatterCounts().asked = &purchase.asked; }

  Purchase purchase;
  ScopedRecordingMonitor monitor = ScopedRecordingMonitor(&purchase.asked);
};

// A purchase, and the calls after those that the store's records receive first in every purchase.
struct PurchaseCase {
  const char* name;
  void (*prepare)(Purchase&);
  Asked callsFromReceiptOn;
  friend std::ostream& operator<<(std::ostream& out, const PurchaseCase& c) {
    return out << c.name;
  }
};

class MatchedPurchaseCallsTest : public PurchaseCallsTest,
                                 public ::testing::WithParamInterface<PurchaseCase> {};

TEST_P(MatchedPurchaseCallsTest, AreMadeInOrder) {
  GetParam().prepare(purchase);
  purchase.event();
  EXPECT_EQ(purchase.asked,
            inSequence({questionsOfEveryPurchase(), GetParam().callsFromReceiptOn}));
}

INSTANTIATE_TEST_SUITE_P(
    OneMatch, MatchedPurchaseCallsTest,
    ::testing::Values(
        PurchaseCase{"Consumable", [](Purchase&) {},
                     inSequence({matchCalls(1, {kMarch}), messageCall(40021)})},
        PurchaseCase{"EmptyTransactionIdentifier",
                     [](Purchase& purchase) { purchase.transaction.transactionIdentifier = ""; },
                     inSequence({messageCall(40003), matchCalls(1, {kMarch}), messageCall(40021)})},
        PurchaseCase{"EmptyReceipt", [](Purchase& purchase) { purchase.receipt = {}; },
                     messageCall(40020)},
        PurchaseCase{"MissingInReceipt",
                     [](Purchase& purchase) {
                       purchase.receipt = {entryOf(kConsumable, "gold", kApril, "1", "1")};
                     },
                     inSequence({matchCalls(1, {kApril}), messageCall(40020)})},
        PurchaseCase{"SubscriptionWithoutATransactionDate",
                     [](Purchase& purchase) {
                       makeMonthly(purchase, {firstMonth()});
                       purchase.transaction.transactionDate = std::nullopt;
                     },
                     inSequence({matchCalls(1, {kMarch}), messageCall(40023)})}),
    nameOfCase<PurchaseCase>);

INSTANTIATE_TEST_SUITE_P(
    TwoMatches, MatchedPurchaseCallsTest,
    ::testing::Values(
        PurchaseCase{"SubscriptionAmongOtherProducts",
                     [](Purchase& purchase) {
                       makeMonthly(purchase,
                                   {firstMonth(), entryOf(kConsumable, "coins", kApril, "1", "1")});
                     },
                     inSequence({matchCalls(1, {kMarch, kApril}), matchCalls(2, {kMarch}),
                                 messageCall(40008)})},
        PurchaseCase{"SubscriptionWithAnEmptyTransactionIdentifier",
                     [](Purchase& purchase) {
                       makeMonthly(purchase, {firstMonth()});
                       purchase.transaction.transactionIdentifier = std::nullopt;
                     },
                     inSequence({messageCall(40003), matchCalls(1, {kMarch}),
                                 matchCalls(2, {kMarch}), messageCall(40008)})},
        // Two comparisons find that the entries are in reverse: one for each order. The second
        // match reads them in the order of the first match's result.
        PurchaseCase{
            "RenewalBeforeItsTrialInTheReceipt",
            [](Purchase& purchase) {
              makeMonthly(purchase, {entryOf(kAutoRenewable, "monthly", kMarch, "2000", "1000"),
                                     entryOf(kAutoRenewable, "monthly", kJanuary, "1000", "1000")});
            },
            inSequence({matchCalls(1, {kMarch, kJanuary, kMarch, kJanuary, kMarch, kJanuary}),
                        matchCalls(2, {kJanuary, kMarch}), messageCall(40008)})},
        PurchaseCase{
            "TwoEntriesAtTheDate",
            [](Purchase& purchase) {
              makeMonthly(purchase, {firstMonth(), firstMonth()});
            },
            inSequence({matchCalls(1, {kMarch, kMarch, kMarch, kMarch}),
                        matchCalls(2, {kMarch, kMarch, kMarch, kMarch}), messageCall(40024)})},
        PurchaseCase{"FreeTrial",
                     [](Purchase& purchase) { makeMonthly(purchase, {freeTrial(firstMonth())}); },
                     inSequence({matchCalls(1, {kMarch}), matchCalls(2, {kMarch}),
                                 messageCall(40009), messageCall(40010)})},
        PurchaseCase{
            "PricedOffer", [](Purchase& purchase) { makeIntroductoryOffer(purchase, "1.99", 0); },
            inSequence({matchCalls(1, {kMarch}),
                        matchCalls(2, {kMarch}),
                        messageCall(40018),
                        messageCall(40010),
                        {"product.hasDiscountClass", "product.discountsAnswerPrice",
                         "product.discountsAnswerPaymentMode", "product.answersIntroductoryPrice",
                         "product.introductoryPrice", "discount.paymentMode", "discount.price",
                         "transaction.payment", "payment.quantity"}})}),
    nameOfCase<PurchaseCase>);

TEST_F(PurchaseCallsTest, OfARejectedPurchaseEndAtItsMessage) {
  purchase.product.productIdentifier = "";
  purchase.event();
  EXPECT_EQ(purchase.asked, inSequence({{"product.productIdentifier"}, messageCall(40027)}));
}

}  // namespace
}  // namespace qel::testing
