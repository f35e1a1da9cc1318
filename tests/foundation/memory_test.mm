// A million calls leave nothing behind and release nothing that is not theirs. Under the address
// sanitizer the allocations themselves are watched too.

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <vector>

#import "live_purchase.h"
#include "random_purchases.h"

namespace qel::testing {
namespace {

constexpr int kCalls = 1000000;

// Bytes that are allocated and not freed; 0 where a sanitizer has taken the place of malloc. Freed
// blocks that malloc keeps for the thread would count too; ctest turns that off for this program.
std::size_t bytesInUse() { return mallinfo2().uordblks; }

// Calls for each of `purchases` in turn, `calls` times in all, each in a pool of its own.
void callForEach(const std::vector<std::unique_ptr<LivePurchase>>& purchases, int calls) {
  for (int i = 0; i < calls; ++i) {
    const LivePurchase& purchase = *purchases[static_cast<std::size_t>(i) % purchases.size()];
    @autoreleasepool {
      purchase.event();
    }
  }
}

TEST(MemoryTest, AMillionCallsLeaveNothingBehindAndReleaseNothingOfOthers) {
  registerDiscountClass({});
  constexpr std::uint64_t kSeed = 20190314;
  constexpr int kPurchases = 1000;
  RandomPurchases random(kSeed);
  std::vector<std::unique_ptr<LivePurchase>> purchases;
  for (int i = 0; i < kPurchases; ++i) {
    purchases.push_back(std::make_unique<LivePurchase>(random.next()));
  }
  // The platform keeps what it has looked up, so the first rounds may add to it.
  callForEach(purchases, 2 * kPurchases);
  const std::size_t before = bytesInUse();
  callForEach(purchases, kCalls);
  const std::size_t after = bytesInUse();
  std::cout << kCalls << " calls: " << before << " bytes in use before, " << after << " after"
            << std::endl;
  EXPECT_LE(after, before + 1024);
  for (const auto& purchase : purchases) ASSERT_TRUE(purchase->isOwnedAsBefore());
}

TEST(MemoryTest, MessagesToTheMonitorLeaveNothingBehind) {
  std::vector<Diagnostic> diagnostics;
  FakeMonitor* const monitor = [[FakeMonitor alloc] initWithList:&diagnostics];
  QELSetDiagnosticsMonitor(monitor);
  const auto callThrice = [&] {
    for (int i = 0; i < 3; ++i) {
      QELInAppPurchaseEventParametersFromProductAndTransactionV2(nil, nil, nil);
    }
    diagnostics.clear();
  };
  callThrice();
  const std::size_t before = bytesInUse();
  for (int i = 0; i < kCalls / 100; ++i) callThrice();
  EXPECT_LE(bytesInUse(), before + 1024);
  QELSetDiagnosticsMonitor(nil);
  EXPECT_EQ([monitor retainCount], 1u);
  [monitor release];
}

}  // namespace
}  // namespace qel::testing
