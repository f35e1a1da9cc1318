// Matching over live entries, as an app calls it.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#import "live_doubles.h"
#import "qel/foundation.h"
#include "qel/receipt_matching.h"
#include "random_purchases.h"
#include "support/plain_purchase.h"

// The one entry of a list that releases it when it is asked for its product.
@interface EntryThatLeavesItsList : FakeEntry {
 @public
  NSMutableArray* list_;
}
@end

@implementation EntryThatLeavesItsList
- (NSString*)productID {
  // The list keeps its length: GNUstep reads beyond the end of a list that becomes shorter.
  [list_ replaceObjectAtIndex:0 withObject:[NSNull null]];
  return [super productID];
}
@end

namespace qel::testing {
namespace {

using Positions = std::vector<std::size_t>;

constexpr char kMarchInParis[] = "2019-03-14T10:26:53+01:00";
constexpr char kMay[] = "2019-05-14T09:26:53Z";

QELInAppPurchaseItem entryOf(std::optional<std::string> product, std::optional<std::string> date) {
  QELInAppPurchaseItem item;
  item.productID = std::move(product);
  item.purchaseDateIA5String = std::move(date);
  return item;
}

// A receipt of live entries.
class LiveReceipt {
 public:
  explicit LiveReceipt(std::vector<QELInAppPurchaseItem> items) : items_(std::move(items)) {
    @autoreleasepool {
      [list_ addObjectsFromArray:liveEntries(items_, &asked_)];
    }
  }
  ~LiveReceipt() { [list_ release]; }
  LiveReceipt(const LiveReceipt&) = delete;
  LiveReceipt& operator=(const LiveReceipt&) = delete;

  NSMutableArray* list() const { return list_; }
  const std::vector<QELInAppPurchaseItem>& items() const { return items_; }
  const Asked& asked() const { return asked_; }

  // The positions in the list of the entries that match, by identity; absent for nil.
  std::optional<Positions> matching(const std::optional<std::string>& product,
                                    const std::optional<Instant>& date) const {
    return positionsOf(QELMatchingInAppPurchaseItems(list_, liveString(product), liveDate(date)));
  }

  std::optional<Positions> positionsOf(NSArray* entries) const {
    if (entries == nil) return std::nullopt;
    Positions positions;
    for (id entry in entries) positions.push_back([list_ indexOfObjectIdenticalTo:entry]);
    return positions;
  }

 private:
  const std::vector<QELInAppPurchaseItem> items_;
  Asked asked_;
  NSMutableArray* const list_ = [[NSMutableArray alloc] init];
};

// Entries of two products, not in the order of their dates.
std::vector<QELInAppPurchaseItem> twoProducts() {
  return {entryOf("monthly", kMay), entryOf("coins", kMarch), entryOf("monthly", kApril),
          entryOf("monthly", kMarchInParis), entryOf("coins", kApril)};
}

TEST(ReceiptMatchingTest, TakesTheEntriesOfAProductEarliestFirst) {
  @autoreleasepool {
    const LiveReceipt receipt(twoProducts());
    EXPECT_EQ(receipt.matching("monthly", std::nullopt), (Positions{3, 2, 0}));
    EXPECT_EQ(receipt.matching("coins", std::nullopt), (Positions{1, 4}));
  }
}

TEST(ReceiptMatchingTest, TakesTheEntriesOfAMoment) {
  @autoreleasepool {
    const LiveReceipt receipt(twoProducts());
    // Entries of equal dates keep their order.
    EXPECT_EQ(receipt.matching(std::nullopt, kMarchInstant), (Positions{1, 3}));
    EXPECT_EQ(receipt.matching("", kMarchInstant), (Positions{1, 3}));
  }
}

TEST(ReceiptMatchingTest, TakesTheEntriesOfAProductAtAMoment) {
  @autoreleasepool {
    const LiveReceipt receipt(twoProducts());
    EXPECT_EQ(receipt.matching("monthly", kMarchInstant), (Positions{3}));
    EXPECT_EQ(receipt.matching("coins", kAprilInstant), (Positions{4}));
  }
}

TEST(ReceiptMatchingTest, TellsNoneFromNil) {
  @autoreleasepool {
    const LiveReceipt receipt(twoProducts());
    EXPECT_EQ(receipt.matching("weekly", std::nullopt), Positions{});
    EXPECT_EQ(receipt.matching("Monthly", std::nullopt), Positions{});
    EXPECT_EQ(receipt.matching("weekly", kMarchInstant), Positions{});
    EXPECT_EQ(receipt.matching(std::nullopt, Instant{0, 0}), Positions{});
  }
}

TEST(ReceiptMatchingTest, PutsEntriesWithoutADateFirst) {
  @autoreleasepool {
    const LiveReceipt receipt({entryOf("monthly", kMarch), entryOf("monthly", std::nullopt),
                               entryOf(std::nullopt, kMarch), entryOf("monthly", "2019-03-14")});
    EXPECT_EQ(receipt.matching("monthly", std::nullopt), (Positions{1, 3, 0}));
    EXPECT_EQ(receipt.matching("monthly", kMarchInstant), (Positions{0}));
    EXPECT_EQ(receipt.matching(std::nullopt, kMarchInstant), (Positions{0, 2}));
  }
}

TEST(ReceiptMatchingTest, NeverMatchesAFractionOfASecond) {
  @autoreleasepool {
    const LiveReceipt receipt(twoProducts());
    EXPECT_EQ(receipt.matching(std::nullopt, Instant{kMarchInstant.seconds(), 250000000}),
              Positions{});
    EXPECT_EQ(receipt.matching("monthly", Instant{kMarchInstant.seconds(), 500000000}),
              Positions{});
  }
}

TEST(ReceiptMatchingTest, MatchesNothingByADateThatIsNotANumber) {
  @autoreleasepool {
    const LiveReceipt receipt(twoProducts());
    NSDate* const date = dateOfTime(std::nan(""));
    EXPECT_EQ(receipt.positionsOf(QELMatchingInAppPurchaseItems(receipt.list(), nil, date)),
              Positions{});
    EXPECT_EQ(receipt.positionsOf(QELMatchingInAppPurchaseItems(receipt.list(), @"monthly", date)),
              Positions{});
  }
}

TEST(ReceiptMatchingTest, TakesAnEntryThatStandsTwiceTwice) {
  @autoreleasepool {
    const LiveReceipt receipt({entryOf("monthly", kApril), entryOf("monthly", kMarch)});
    [receipt.list() addObject:[receipt.list() objectAtIndex:0]];
    EXPECT_EQ(receipt.matching("monthly", std::nullopt), (Positions{1, 0, 0}));
  }
}

TEST(ReceiptMatchingTest, GivesNilWithoutEntries) {
  @autoreleasepool {
    NSDate* const date = liveDate(kMarchInstant);
    EXPECT_EQ(QELMatchingInAppPurchaseItems(nil, @"monthly", date), nil);
    EXPECT_EQ(QELMatchingInAppPurchaseItems(@[], @"monthly", date), nil);
    EXPECT_EQ(QELMatchingInAppPurchaseItems(nil, nil, nil), nil);
  }
}

TEST(ReceiptMatchingTest, GivesNilAndAsksNothingWithoutAnIdentifierOrADate) {
  @autoreleasepool {
    // Raises an exception on every call.
    NSArray* const noEntries = @[ @"no entry" ];
    EXPECT_EQ(QELMatchingInAppPurchaseItems(noEntries, nil, nil), nil);
    EXPECT_EQ(QELMatchingInAppPurchaseItems(noEntries, @"", nil), nil);
    const LiveReceipt receipt(twoProducts());
    EXPECT_EQ(receipt.matching(std::nullopt, std::nullopt), std::nullopt);
    EXPECT_EQ(receipt.asked(), Asked{});
  }
}

TEST(ReceiptMatchingTest, AsksEachEntryForItsDateAndThenItsProduct) {
  @autoreleasepool {
    const LiveReceipt receipt({entryOf("coins", kApril), entryOf("monthly", kMarch)});
    receipt.matching("monthly", std::nullopt);
    const Asked expected = {"entry.purchaseDateIA5String", "entry.productID",
                            "entry.purchaseDateIA5String", "entry.productID"};
    EXPECT_EQ(receipt.asked(), expected);
  }
}

// The name of the exception that matching in `list` lets through; empty for none.
std::string raisedFor(NSArray* list) {
  return raisedBy([list] { QELMatchingInAppPurchaseItems(list, @"monthly", nil); });
}

TEST(ReceiptMatchingTest, AsksTheEntriesFromFirstToLast) {
  @autoreleasepool {
    const LiveReceipt receipt({entryOf("monthly", kApril)});
    // The second entry raises, after the first was asked.
    [receipt.list() addObject:@"no entry"];
    EXPECT_EQ(raisedFor(receipt.list()), "NSInvalidArgumentException");
    EXPECT_EQ(receipt.asked(), (Asked{"entry.purchaseDateIA5String", "entry.productID"}));
  }
}

TEST(ReceiptMatchingTest, LetsThroughWhatTheListAndTheEntriesRaise) {
  const QELInAppPurchaseItem item = entryOf("monthly", kMarch);
  NSMutableArray* const list = [[NSMutableArray alloc] init];
  id const entry = [[EntryThatGrowsItsList alloc] initWithValues:&item list:list];
  [list addObject:entry];
  @autoreleasepool {
    EXPECT_EQ(raisedFor(list), "NSGenericException");
    EXPECT_EQ(raisedFor(@[ @"no entry" ]), "NSInvalidArgumentException");
    EXPECT_EQ(raisedFor(@[]), "");
  }
  // Nothing of the list was kept.
  EXPECT_EQ([list retainCount], 1u);
  [list release];
  EXPECT_EQ([entry retainCount], 1u);
  [entry release];
}

// For GNUstep a list with a replaced entry is not changed, so that matching goes on with the entry.
TEST(ReceiptMatchingTest, KeepsAnEntryThatLeavesTheListWhileItIsAsked) {
  const QELInAppPurchaseItem item = entryOf("monthly", kMarch);
  @autoreleasepool {
    NSMutableArray* const list = [NSMutableArray array];
    EntryThatLeavesItsList* const entry = [[EntryThatLeavesItsList alloc] initWithValues:&item
                                                                                   asked:nullptr];
    entry->list_ = list;
    [list addObject:entry];
    [entry release];
    NSArray* const matching = QELMatchingInAppPurchaseItems(list, @"monthly", nil);
    EXPECT_EQ([list objectAtIndex:0], [NSNull null]);
    ASSERT_EQ([matching count], 1u);
    EXPECT_EQ([matching objectAtIndex:0], entry);
    EXPECT_EQ([entry retainCount], 1u);
  }
}

TEST(ReceiptMatchingTest, ReturnsAListThatOutlivesTheReceipt) {
  @autoreleasepool {
    NSArray* matching = nil;
    const std::vector<QELInAppPurchaseItem> items = twoProducts();
    NSMutableArray* list = nil;
    @autoreleasepool {
      list = [liveEntries(items) retain];
      matching = [QELMatchingInAppPurchaseItems(list, @"coins", nil) retain];
    }
    [list release];
    ASSERT_EQ([matching count], 2u);
    EXPECT_EQ([[matching objectAtIndex:0] retainCount], 1u);
    EXPECT_TRUE([[[matching lastObject] productID] isEqual:@"coins"]);
    [matching release];
  }
}

TEST(ReceiptMatchingTest, GivesTheSameThroughLiveEntriesAsThroughPlainOnes) {
  constexpr int kPurchases = 20000;
  const std::uint64_t seed = std::random_device()();
  std::cout << kPurchases << " purchases, seed " << seed << std::endl;
  RandomPurchases purchases(seed);
  for (int i = 0; i < kPurchases; ++i) {
    @autoreleasepool {
      const OraclePurchase purchase = purchases.next();
      const OracleText product = purchase.product.value_or(OracleProduct()).identifier;
      const std::optional<Instant> date =
          plainInstant(purchase.transaction.value_or(OracleTransaction()).date);

      const LiveReceipt receipt(plainReceipt(purchase));
      const QELInAppPurchaseItems references(receipt.items().begin(), receipt.items().end());
      const auto matchingRecords = QELMatchingInAppPurchaseItems(references, product, date);
      std::optional<Positions> expected;
      if (matchingRecords.has_value()) {
        expected.emplace();
        for (const QELInAppPurchaseItem& item : *matchingRecords) {
          expected->push_back(static_cast<std::size_t>(&item - receipt.items().data()));
        }
      }
      ASSERT_EQ(receipt.matching(product, date), expected)
          << "purchase " << i << " of the seed " << seed;
    }
  }
}

}  // namespace
}  // namespace qel::testing
