#include "qel/receipt_item.h"

#include <gtest/gtest.h>

#include <ostream>

#include "purchase_fixtures.h"

namespace qel::testing {
namespace {

// Changes one field of an entry.
struct FieldCase {
  const char* name;
  void (*change)(QELInAppPurchaseItem&);
  friend std::ostream& operator<<(std::ostream& out, const FieldCase& c) { return out << c.name; }
};

class ReceiptItemFieldTest : public ::testing::TestWithParam<FieldCase> {};

TEST_P(ReceiptItemFieldTest, MakesEntriesDiffer) {
  QELInAppPurchaseItem changed = firstMonth();
  GetParam().change(changed);
  EXPECT_NE(changed, firstMonth());
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ReceiptItemFieldTest,
    ::testing::Values(
        FieldCase{"ProductID", [](QELInAppPurchaseItem& item) { item.productID = "yearly"; }},
        FieldCase{"PurchaseDate",
                  [](QELInAppPurchaseItem& item) { item.purchaseDateIA5String = kApril; }},
        FieldCase{"PurchaseType",
                  [](QELInAppPurchaseItem& item) { item.purchaseType = kNonRenewing; }},
        FieldCase{"WebOrder", [](QELInAppPurchaseItem& item) { item.webOrderLineItemID = "78"; }},
        FieldCase{"WebOrderAbsent",
                  [](QELInAppPurchaseItem& item) { item.webOrderLineItemID = std::nullopt; }},
        FieldCase{"TransactionID", [](QELInAppPurchaseItem& item) { item.transactionID = "2"; }},
        FieldCase{"OriginalTransactionID",
                  [](QELInAppPurchaseItem& item) { item.originalTransactionID = "2"; }},
        FieldCase{"FreeTrial", [](QELInAppPurchaseItem& item) { item.isFreeTrial = true; }},
        FieldCase{"IntroductoryOffer",
                  [](QELInAppPurchaseItem& item) { item.isIntroductoryOffer = true; }}),
    nameOfCase<FieldCase>);

TEST(ReceiptItemTest, EntriesWithTheSameFieldsAreEqual) { EXPECT_EQ(firstMonth(), firstMonth()); }

TEST(ReceiptItemTest, EntryWithAbsentFieldsEqualsItself) {
  EXPECT_EQ(QELInAppPurchaseItem(), QELInAppPurchaseItem());
}

}  // namespace
}  // namespace qel::testing
