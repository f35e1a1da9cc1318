// The number of allocations of an event.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "support/counted_allocations.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

TEST(EventCostTest, RenewalTakesFourAllocations) {
  const PlainProduct product = {.productIdentifier = "monthly",
                                .price = decimal("4.99"),
                                .priceLocaleCurrencyCode = "EUR",
                                .localizedTitle = "Monthly"};
  const PlainTransaction transaction = {.transactionIdentifier = "1001",
                                        .transactionDate = kMarchInstant};
  // The joined identifiers are longer than what a string holds in itself.
  const std::vector<QELInAppPurchaseItem> entries = {
      withWebOrder(entryOf(kAutoRenewable, "monthly", kFebruary, "1000", "1000"), "76"),
      withWebOrder(entryOf(kAutoRenewable, "monthly", kMarch, "1001", "1000"), "1000000000077")};
  const QELInAppPurchaseItems receipt = listOf(entries);

  const std::size_t before = allocationCount();
  const std::optional<EventParameters> event = plainPurchaseEvent(&product, &transaction, receipt);
  // One for all values, two for lists of matching entries, and one for the text of "_did".
  EXPECT_EQ(allocationCount() - before, 4U);
  ASSERT_TRUE(event.has_value());
  EXPECT_TRUE(event->contains(ParameterKey::kSubRenew));
}

}  // namespace
}  // namespace qel::testing
