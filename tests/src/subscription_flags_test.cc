#include "subscription_flags.h"

#include <gtest/gtest.h>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// Entries of one subscription, in the order of their dates. A is its first purchase; B and C
// continue it.
class SubscriptionFlagsTest : public ::testing::Test {
 protected:
  SubscriptionFlagsTest() {
    parameters.set(ParameterKey::kProductId, QELValue::initWithString("monthly"));
  }

  void markPurchase(const QELInAppPurchaseItems& items, const QELInAppPurchaseItem& item) {
    QELMaybeAddSubscriptionParameters(parameters, items, item);
  }

  QELInAppPurchaseItem a = entryOf(kAutoRenewable, "monthly", kJanuary, "1000", "1000");
  QELInAppPurchaseItem b = entryOf(kAutoRenewable, "monthly", kFebruary, "2000", "1000");
  QELInAppPurchaseItem c = entryOf(kAutoRenewable, "monthly", kMarch, "3000", "1000");
  EventParameters parameters;
};

TEST_F(SubscriptionFlagsTest, EmptyListLeavesTheParametersUnchanged) {
  markPurchase({}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}}));
}

TEST_F(SubscriptionFlagsTest, FirstPurchaseIsNotFlaggedWhereverItStands) {
  markPurchase({a}, a);
  a.isFreeTrial = true;
  QELInAppPurchaseItem laterFirstPurchase = c;
  laterFirstPurchase.originalTransactionID = laterFirstPurchase.transactionID;
  markPurchase({a, b, laterFirstPurchase}, laterFirstPurchase);
  markPurchase({b}, laterFirstPurchase);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}}));
}

TEST_F(SubscriptionFlagsTest, PurchaseAfterAFreeTrialIsAConversion) {
  a.isFreeTrial = true;
  markPurchase({a, b}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_convert", 1}}));
}

TEST_F(SubscriptionFlagsTest, PurchaseAfterAPaidPeriodIsARenewal) {
  markPurchase({a, b}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, OnlyTheEntryJustBeforeDecides) {
  a.isFreeTrial = true;
  markPurchase({a, b, c}, c);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, OwnTrialMarkAndThatOfALaterEntryDoNotCount) {
  b.isFreeTrial = true;
  c.isFreeTrial = true;
  markPurchase({a, b, c}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, PurchaseThatStandsFirstIsARenewal) {
  b.isFreeTrial = true;
  markPurchase({b, c}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, PurchaseThatIsNotInTheListIsARenewal) {
  a.isFreeTrial = true;
  markPurchase({a}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, PurchaseThatIsNotInALongerListEndingInATrialIsARenewal) {
  b.isFreeTrial = true;
  markPurchase({a, b}, c);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, AbsentOriginalIdentifierIsNoFirstPurchase) {
  a.isFreeTrial = true;
  b.originalTransactionID = std::nullopt;
  markPurchase({a, b}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_convert", 1}}));
}

TEST_F(SubscriptionFlagsTest, AbsentTransactionIdentifierIsNoFirstPurchase) {
  a.isFreeTrial = true;
  b.transactionID = std::nullopt;
  markPurchase({a, b}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_convert", 1}}));
}

TEST_F(SubscriptionFlagsTest, TwoAbsentIdentifiersAreNoFirstPurchase) {
  b.transactionID = std::nullopt;
  b.originalTransactionID = std::nullopt;
  markPurchase({a, b}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, TwoEmptyIdentifiersAreEqual) {
  b.transactionID = "";
  b.originalTransactionID = "";
  markPurchase({a, b}, b);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}}));
}

// The entry before the second of the equal entries is b, a free trial: stopping at the second would
// give a conversion.
TEST_F(SubscriptionFlagsTest, SearchStopsAtTheFirstOfTwoEqualEntries) {
  b.isFreeTrial = true;
  const QELInAppPurchaseItem equalToB = b;
  markPurchase({a, b, equalToB}, equalToB);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_renew", 1}}));
}

TEST_F(SubscriptionFlagsTest, FirstOfTwoEqualEntriesAfterATrialIsAConversion) {
  a.isFreeTrial = true;
  const QELInAppPurchaseItem equalToB = b;
  markPurchase({a, b, equalToB}, equalToB);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"}, {"sub_convert", 1}}));
}

class EntryThatDiffersInOneFieldTest : public SubscriptionFlagsTest,
                                       public ::testing::WithParamInterface<FieldChange> {};

// A search that stopped at `other` would take the answer from a, which is the opposite one.
TEST_P(EntryThatDiffersInOneFieldTest, IsNotTheEntrySearchedFor) {
  const QELInAppPurchaseItem item = withWebOrder(b, "77");
  QELInAppPurchaseItem other = item;
  GetParam().change(other);
  a.isFreeTrial = !other.isFreeTrial;
  markPurchase({a, other, item}, item);
  EXPECT_TRUE(isEvent(parameters, {{"product_id", "monthly"},
                                   {other.isFreeTrial ? "sub_convert" : "sub_renew", 1}}));
}

INSTANTIATE_TEST_SUITE_P(Fields, EntryThatDiffersInOneFieldTest,
                         ::testing::ValuesIn(fieldChanges()), nameOfCase<FieldChange>);

TEST_F(SubscriptionFlagsTest, ConversionLeavesAnEarlierRenewalFlagInPlace) {
  parameters.set(ParameterKey::kSubRenew, QELValue::initWithInt64(7));
  a.isFreeTrial = true;
  markPurchase({a, b}, b);
  EXPECT_TRUE(
      isEvent(parameters, {{"product_id", "monthly"}, {"sub_convert", 1}, {"sub_renew", 7}}));
}

TEST_F(SubscriptionFlagsTest, RenewalReplacesAnotherValueOfItsFlag) {
  parameters.set(ParameterKey::kSubRenew, QELValue::initWithInt64(7));
  parameters.set(ParameterKey::kSubConvert, QELValue::initWithInt64(9));
  markPurchase({a, b}, b);
  EXPECT_TRUE(
      isEvent(parameters, {{"product_id", "monthly"}, {"sub_convert", 9}, {"sub_renew", 1}}));
}

}  // namespace
}  // namespace qel::testing
