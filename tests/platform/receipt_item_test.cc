#include "qel/receipt_item.h"

#include <gtest/gtest.h>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

class ReceiptItemFieldTest : public ::testing::TestWithParam<FieldChange> {};

TEST_P(ReceiptItemFieldTest, MakesEntriesDiffer) {
  QELInAppPurchaseItem changed = firstMonth();
  GetParam().change(changed);
  EXPECT_NE(changed, firstMonth());
}

INSTANTIATE_TEST_SUITE_P(Fields, ReceiptItemFieldTest, ::testing::ValuesIn(fieldChanges()),
                         nameOfCase<FieldChange>);

TEST(ReceiptItemTest, EntriesWithTheSameFieldsAreEqual) { EXPECT_EQ(firstMonth(), firstMonth()); }

TEST(ReceiptItemTest, EntryWithAbsentFieldsEqualsItself) {
  EXPECT_EQ(QELInAppPurchaseItem(), QELInAppPurchaseItem());
}

}  // namespace
}  // namespace qel::testing
