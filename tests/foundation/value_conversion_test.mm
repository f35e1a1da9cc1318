#include "value_conversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#import "live_doubles.h"

namespace qel::foundation {
namespace {

using qel::testing::dateOfTime;

constexpr std::int64_t kReferenceDate = 978307200;

// What a price amounts to in units of ten to the -`places`, when it is multiplied out.
double scaled(const std::optional<Decimal>& decimal, std::int64_t factor) {
  return decimal.value()
      .decimalNumberByMultiplyingBy(Decimal::initWithLongLong(factor))
      .doubleValue();
}

NSDecimalNumber* number(unsigned long long mantissa, short exponent, bool isNegative = false) {
  return [NSDecimalNumber decimalNumberWithMantissa:mantissa
                                           exponent:exponent
                                         isNegative:isNegative];
}

TEST(DecimalFromTest, IsAbsentForNil) { EXPECT_FALSE(decimalFrom(nil).has_value()); }

// Through a double each of these would lose a unit: 829 hundredths are 8289999 micros there.
TEST(DecimalFromTest, KeepsEveryDigitOfAPrice) {
  @autoreleasepool {
    EXPECT_EQ(scaled(decimalFrom(number(829, -2)), 1000000), 8290000);
    EXPECT_EQ(scaled(decimalFrom(number(1512, -2)), 9000000), 136080000);
    EXPECT_EQ(scaled(decimalFrom(number(29, -2)), 7000000), 2030000);
    EXPECT_EQ(scaled(decimalFrom(number(15, -1, true)), 10), -15);
  }
}

TEST(DecimalFromTest, ReadsZero) {
  @autoreleasepool {
    EXPECT_EQ(decimalFrom([NSDecimalNumber zero])->doubleValue(), 0);
    EXPECT_EQ(decimalFrom(number(0, 5))->doubleValue(), 0);
  }
}

TEST(DecimalFromTest, ReadsNotANumber) {
  @autoreleasepool {
    EXPECT_TRUE(std::isnan(decimalFrom([NSDecimalNumber notANumber])->doubleValue()));
  }
}

// The 38th digit shows once the others are taken away by a factor that leaves it before the point.
TEST(DecimalFromTest, ReadsAllThirtyEightDigits) {
  @autoreleasepool {
    NSDecimalNumber* const digits =
        [NSDecimalNumber decimalNumberWithString:@"9007199254740993.0000000000000000000001"];
    // Halfway between two doubles, but for the last digit: without it the even neighbour is nearer.
    EXPECT_EQ(decimalFrom(digits)->doubleValue(), 9007199254740994.0);
    NSDecimalNumber* const shorter = [NSDecimalNumber decimalNumberWithString:@"9007199254740993"];
    EXPECT_EQ(decimalFrom(shorter)->doubleValue(), 9007199254740992.0);
  }
}

TEST(DecimalFromTest, ReadsTheWholeRangeOfExponents) {
  @autoreleasepool {
    EXPECT_EQ(decimalFrom(number(1, 127))->doubleValue(), 1e127);
    EXPECT_EQ(decimalFrom(number(1, -128))->doubleValue(), 1e-128);
    EXPECT_EQ(decimalFrom(number(12345678901234567890ULL, -100))->doubleValue(),
              12345678901234567890e-100);
    NSDecimalNumber* const greatest =
        [NSDecimalNumber decimalNumberWithString:@"99999999999999999999999999999999999999e127"];
    EXPECT_EQ(decimalFrom(greatest)->doubleValue(), 99999999999999999999999999999999999999e127);
  }
}

// Sets the user's decimal separator for as long as it lives.
class DecimalComma {
 public:
  DecimalComma() { [defaults_ setObject:@"," forKey:NSDecimalSeparator]; }
  ~DecimalComma() { [defaults_ removeObjectForKey:NSDecimalSeparator]; }
  DecimalComma(const DecimalComma&) = delete;
  DecimalComma& operator=(const DecimalComma&) = delete;

 private:
  NSUserDefaults* const defaults_ = [NSUserDefaults standardUserDefaults];
};

TEST(DecimalFromTest, TakesNoNoticeOfTheUsersLocale) {
  @autoreleasepool {
    const DecimalComma comma;
    NSDictionary* const user = [[NSUserDefaults standardUserDefaults] dictionaryRepresentation];
    ASSERT_TRUE([[number(499, -2) descriptionWithLocale:user] isEqual:@"4,99"]);
    EXPECT_EQ(scaled(decimalFrom(number(499, -2)), 100), 499);
  }
}

NSDate* dateAt(double sinceReferenceDate) {
  return [NSDate dateWithTimeIntervalSinceReferenceDate:sinceReferenceDate];
}

TEST(InstantFromTest, IsAbsentForNil) { EXPECT_FALSE(instantFrom(nil).has_value()); }

TEST(InstantFromTest, KeepsWholeSecondsAsTheyAre) {
  @autoreleasepool {
    for (const std::int64_t seconds : {std::int64_t{0}, std::int64_t{1552555613}, std::int64_t{-1},
                                       std::int64_t{-62135596800}, std::int64_t{253402300799}}) {
      EXPECT_EQ(instantFrom(dateAt(static_cast<double>(seconds - kReferenceDate))),
                (Instant{seconds, 0}));
    }
  }
}

TEST(InstantFromTest, KeepsTheFractionBeforeAndAfterTheReferenceDate) {
  @autoreleasepool {
    EXPECT_EQ(instantFrom(dateAt(10.25)), (Instant{kReferenceDate + 10, 250000000}));
    EXPECT_EQ(instantFrom(dateAt(-10.25)), (Instant{kReferenceDate - 11, 750000000}));
    EXPECT_EQ(instantFrom(dateAt(574248413.5)), (Instant{kReferenceDate + 574248413, 500000000}));
  }
}

TEST(InstantFromTest, NeverCutsASmallFractionToAWholeSecond) {
  @autoreleasepool {
    EXPECT_EQ(instantFrom(dateAt(1e-10)), (Instant{kReferenceDate, 1}));
    EXPECT_EQ(instantFrom(dateAt(std::numeric_limits<double>::denorm_min())),
              (Instant{kReferenceDate, 1}));
    EXPECT_EQ(instantFrom(dateAt(1 - 1e-10)), (Instant{kReferenceDate, 999999999}));
    EXPECT_EQ(instantFrom(dateAt(-1e-10)), (Instant{kReferenceDate - 1, 999999999}));
    EXPECT_EQ(instantFrom(dateAt(-1e-30)), (Instant{kReferenceDate - 1, 999999999}));
    const double nextAfterSecond = std::nextafter(574248413.0, 1e10);
    EXPECT_NE(instantFrom(dateAt(nextAfterSecond))->nanoseconds(), 0);
  }
}

// On the platform such a date equals no other.
TEST(InstantFromTest, TakesATimeThatIsNotANumberForADateOfNoPurchase) {
  @autoreleasepool {
    const std::optional<Instant> instant = instantFrom(dateOfTime(std::nan("")));
    ASSERT_TRUE(instant.has_value());
    EXPECT_NE(instant->nanoseconds(), 0);
  }
}

TEST(InstantFromTest, EndsAtTheFirstAndTheLastOfAllInstants) {
  @autoreleasepool {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const Instant last(std::numeric_limits<std::int64_t>::max());
    const Instant first(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(instantFrom(dateOfTime(kInfinity)), last);
    EXPECT_EQ(instantFrom(dateOfTime(1e300)), last);
    EXPECT_EQ(instantFrom(dateOfTime(-kInfinity)), first);
    EXPECT_EQ(instantFrom(dateOfTime(-1e300)), first);
    EXPECT_LT(instantFrom([NSDate distantPast]), instantFrom(dateAt(0)));
    EXPECT_GT(instantFrom([NSDate distantFuture]), instantFrom(dateAt(0)));
  }
}

}  // namespace
}  // namespace qel::foundation
