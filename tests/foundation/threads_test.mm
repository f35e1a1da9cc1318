// Several threads report purchases at once, on threads that the platform did not make, and each
// gets its own events.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#import "live_purchase.h"
#include "random_purchases.h"

// Counts the messages.
@interface MessageCounter : NSObject <QELDiagnosticsMonitor> {
 @public
  std::atomic<int> count_;
}
@end

@implementation MessageCounter
- (void)logWithLevel:(NSInteger)level messageCode:(NSInteger)code message:(NSString*)message {
  ++count_;
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context {
  ++count_;
}
- (void)logWithLevel:(NSInteger)level
         messageCode:(NSInteger)code
             message:(NSString*)message
             context:(id)context1
             context:(id)context2 {
  ++count_;
}
@end

namespace qel::testing {
namespace {

constexpr int kThreads = 4;
constexpr int kPurchases = 2000;
constexpr std::uint64_t kSeed = 20190314;

// The same purchases every time.
std::vector<OraclePurchase> purchases() {
  RandomPurchases random(kSeed);
  std::vector<OraclePurchase> values;
  for (int i = 0; i < kPurchases; ++i) values.push_back(random.next());
  return values;
}

// The events of all purchases, null for none, which the caller owns.
NSArray* eventsOf(const std::vector<OraclePurchase>& values) {
  NSMutableArray* const events = [[NSMutableArray alloc] init];
  for (const OraclePurchase& purchase : values) {
    @autoreleasepool {
      NSDictionary* const event = LivePurchase(purchase).event();
      [events addObject:event != nil ? event : static_cast<id>([NSNull null])];
    }
  }
  return events;
}

TEST(ThreadsTest, EachGetsItsOwnEventsAndAllMessagesArrive) {
  const std::vector<OraclePurchase> values = purchases();
  MessageCounter* const monitor = [[MessageCounter alloc] init];
  QELSetDiagnosticsMonitor(monitor);
  NSArray* const expected = eventsOf(values);
  const int messages = monitor->count_;
  EXPECT_GT(messages, kPurchases / 2);

  std::vector<NSArray*> events(kThreads);
  std::vector<std::thread> threads;
  for (NSArray*& ofThread : events) {
    threads.emplace_back([&values, &ofThread] { ofThread = eventsOf(values); });
  }
  for (std::thread& thread : threads) thread.join();
  QELSetDiagnosticsMonitor(nil);

  EXPECT_EQ(monitor->count_, (1 + kThreads) * messages);
  for (NSArray* ofThread : events) {
    EXPECT_TRUE([ofThread isEqual:expected]);
    [ofThread release];
  }
  [expected release];
  [monitor release];
}

TEST(ThreadsTest, TheMonitorMayBeReplacedMeanwhile) {
  const std::vector<OraclePurchase> values = purchases();
  std::atomic<bool> isDone = false;
  std::thread replacing([&isDone] {
    while (!isDone) {
      @autoreleasepool {
        MessageCounter* const monitor = [[MessageCounter alloc] init];
        QELSetDiagnosticsMonitor(monitor);
        [monitor release];
        QELSetDiagnosticsMonitor(nil);
      }
    }
  });
  NSArray* const events = eventsOf(values);
  isDone = true;
  replacing.join();
  NSArray* const expected = eventsOf(values);
  EXPECT_TRUE([events isEqual:expected]);
  [events release];
  [expected release];
}

}  // namespace
}  // namespace qel::testing
