#include "qel/purchase_event.h"

#include <gtest/gtest.h>

#include <set>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

class PurchaseEventTest : public ::testing::Test {
 protected:
  Purchase purchase;
  ScopedRecordingMonitor monitor;
};

TEST(ExportedKeysTest, HaveTheTextsThatEventsCarry) {
  EXPECT_EQ(kQELParameterInAppPurchaseInvalid, "invalid");
  EXPECT_EQ(kQELParameterIsSubscriptionConversion, "sub_convert");
  EXPECT_EQ(kQELParameterIsSubscriptionRenewal, "sub_renew");
}

TEST_F(PurchaseEventTest, ResultIsLookedUpByAnExportedKey) {
  purchase.receipt = {};
  const std::optional<EventParameters> event = purchase.event();
  ASSERT_TRUE(event.has_value());
  const QELValuePtr invalid = event->find(kQELParameterInAppPurchaseInvalid);
  ASSERT_NE(invalid, nullptr);
  EXPECT_EQ(invalid->int64Value(), 1);
}

}  // namespace
}  // namespace qel::testing
