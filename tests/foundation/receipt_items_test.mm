// The numbers of an entry, as an app's receipt parser may make them.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

#import "live_doubles.h"
#import "qel/foundation.h"

// An entry whose web order line item identifier is any object.
@interface EntryOfWebOrder : FakeEntry {
  NSNumber* webOrder_;
}
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values
                      webOrder:(NSNumber*)webOrder;
@end

@implementation EntryOfWebOrder
- (instancetype)initWithValues:(const qel::QELInAppPurchaseItem*)values
                      webOrder:(NSNumber*)webOrder {
  if ((self = [super initWithValues:values asked:nullptr]) != nil) webOrder_ = webOrder;
  return self;
}
- (NSNumber*)webOrderLineItemID {
  return webOrder_;
}
@end

namespace qel::testing {
namespace {

// The event of product "p", bought in transaction "1". The receipt's one entry carries `webOrder`
// and no purchase type.
NSDictionary* eventWithWebOrder(NSNumber* webOrder) {
  const OracleProduct productValues = {
      .identifier = "p", .price = oracleReading("0.99"), .currency = "EUR"};
  const OracleTransaction transactionValues = {
      .identifier = "1", .date = OracleInstant{1552555613, 0}, .quantity = 1};
  QELInAppPurchaseItem item = entryOf(kNonConsumable, "p", kMarch, "1", "1");
  item.purchaseType = std::nullopt;

  id const product = [[[FakeProduct alloc] initWithValues:&productValues
                                                    asked:nullptr] autorelease];
  id const transaction = [[[FakeTransaction alloc] initWithValues:&transactionValues
                                                            asked:nullptr] autorelease];
  id const entry = [[[EntryOfWebOrder alloc] initWithValues:&item webOrder:webOrder] autorelease];
  return QELInAppPurchaseEventParametersFromProductAndTransactionV2(product, transaction,
                                                                    @[ entry ]);
}

std::uint64_t identifierWithWebOrder(NSNumber* webOrder) {
  NSNumber* const identifier = [eventWithWebOrder(webOrder) objectForKey:@"_did"];
  return static_cast<std::uint64_t>([identifier longLongValue]);
}

// Each identifier below is the last 16 digits of what md5sum prints for the text "1", the string
// form of the number, and "p", such as: printf 118446744073709551615p | md5sum

TEST(WebOrderLineItemTest, EntersTheIdentifierUnsigned) {
  @autoreleasepool {
    NSNumber* const number = [NSNumber numberWithUnsignedLongLong:18446744073709551615u];
    EXPECT_EQ(identifierWithWebOrder(number), 0x478687BB792FFA45u);
  }
}

TEST(WebOrderLineItemTest, EntersTheIdentifierWithItsSign) {
  @autoreleasepool {
    EXPECT_EQ(identifierWithWebOrder([NSNumber numberWithLongLong:-1]), 0x0D44AB400F415790u);
    EXPECT_EQ(identifierWithWebOrder([NSNumber numberWithLongLong:INT64_MIN]), 0xA47290F9B2CB7501u);
  }
}

TEST(WebOrderLineItemTest, EntersTheIdentifierBeyond64Bits) {
  @autoreleasepool {
    // By string form: all digits, or with an exponent, as GNUstep writes a decimal of this size.
    const std::map<std::string, std::uint64_t> expected = {
        {"18446744073709551616", 0xE8E5BCC7AFB36A6C},
        {"18446744073709551617", 0x2A0F3185407A9951},
        {"1.8446744073709551616E19", 0x560B7EE317AA6762},
        {"1.8446744073709551617E19", 0x7F31D1193FE393EB}};
    NSDecimalNumber* const first = liveDecimal("18446744073709551616");
    NSDecimalNumber* const second = liveDecimal("18446744073709551617");
    EXPECT_EQ(identifierWithWebOrder(first), expected.at(textOfLiveString([first stringValue])));
    EXPECT_EQ(identifierWithWebOrder(second), expected.at(textOfLiveString([second stringValue])));
    EXPECT_NE(identifierWithWebOrder(first), identifierWithWebOrder(second));
  }
}

TEST(WebOrderLineItemTest, EntersTheIdentifierWithItsFraction) {
  @autoreleasepool {
    EXPECT_EQ(identifierWithWebOrder(liveDecimal("1.5")), 0x14B42C44B342D9ABu);
  }
}

TEST(WebOrderLineItemTest, IsAskedForItsStringAlone) {
  @autoreleasepool {
    NSNumber* const number =
        [[[FakeNumber alloc] initWithText:@"340282366920938463463374607431768211456"] autorelease];
    EXPECT_EQ(identifierWithWebOrder(number), 0xD2DD8421E501C4ABu);
  }
}

TEST(WebOrderLineItemTest, IsPresentWithoutAString) {
  @autoreleasepool {
    NSNumber* const number = [[[FakeNumber alloc] initWithText:nil] autorelease];
    // The text is empty: printf 1p | md5sum
    EXPECT_EQ(identifierWithWebOrder(number), 0x1AD98B5790B91C77u);
    // Presence alone makes the entry one of a subscription.
    EXPECT_NE([eventWithWebOrder(number) objectForKey:@"subscription"], nil);
    EXPECT_EQ([eventWithWebOrder(nil) objectForKey:@"subscription"], nil);
  }
}

}  // namespace
}  // namespace qel::testing
