#include "transaction_date.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace qel {

// How a failure shows an instant.
std::ostream& operator<<(std::ostream& out, const Instant& instant) {
  return out << instant.seconds() << " s " << instant.nanoseconds() << " ns";
}

}  // namespace qel

namespace qel::tool {
namespace {

// `date -u -d 2019-03-14T09:26:53Z +%s`
constexpr std::int64_t kSeconds = 1552555613;

TEST(TransactionDateTest, ReadsWholeSeconds) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53Z"), (Instant{kSeconds, 0}));
}

TEST(TransactionDateTest, ReadsOffsets) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T10:26:53+01:00"), (Instant{kSeconds, 0}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:07:21-00:19:32"), (Instant{kSeconds, 0}));
}

TEST(TransactionDateTest, ReadsAFraction) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.250Z"), (Instant{kSeconds, 250000000}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.5Z"), (Instant{kSeconds, 500000000}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.000000001Z"), (Instant{kSeconds, 1}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.999999999Z"), (Instant{kSeconds, 999999999}));
}

TEST(TransactionDateTest, ReadsAFractionBeforeAnOffset) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T10:26:53.25+01:00"), (Instant{kSeconds, 250000000}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:07:21.75-00:19:32"),
            (Instant{kSeconds, 750000000}));
}

TEST(TransactionDateTest, AFractionOfZeroIsAWholeSecond) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.0Z"), (Instant{kSeconds, 0}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.000000000000000Z"), (Instant{kSeconds, 0}));
}

TEST(TransactionDateTest, AFractionBeforeTheYear1970PassesForward) {
  // `date -u -d 1969-12-31T23:59:59Z +%s` is -1.
  EXPECT_EQ(parseTransactionDate("1969-12-31T23:59:59.250Z"), (Instant{-1, 250000000}));
}

TEST(TransactionDateTest, CutsAFractionToNanoseconds) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.1234567899Z"),
            (Instant{kSeconds, 123456789}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.9999999999Z"),
            (Instant{kSeconds, 999999999}));
}

TEST(TransactionDateTest, NeverCutsAFractionToAWholeSecond) {
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53.0000000001Z"), (Instant{kSeconds, 1}));
  EXPECT_EQ(parseTransactionDate("2019-03-14T09:26:53." + std::string(1000, '0') + "1Z"),
            (Instant{kSeconds, 1}));
}

TEST(TransactionDateTest, ReadsTheFirstAndTheLastSecond) {
  // `date -u -d ... +%s`
  EXPECT_EQ(parseTransactionDate("0001-01-01T00:00:00Z"), (Instant{-62135596800, 0}));
  EXPECT_EQ(parseTransactionDate("9999-12-31T23:59:59.9Z"), (Instant{253402300799, 900000000}));
}

class NoInstantTest : public ::testing::TestWithParam<const char*> {};

TEST_P(NoInstantTest, IsNothing) { EXPECT_EQ(parseTransactionDate(GetParam()), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(
    TransactionDate, NoInstantTest,
    ::testing::Values("", "now", "2019-03-14", "2019-03-14T09:26:53", "2019-03-14T09:26:53.",
                      "2019-03-14T09:26:53.Z", "2019-03-14T09:26:53.5", "2019-03-14T09:26:53,5Z",
                      "2019-03-14T09:26:53.-5Z", "2019-03-14T09:26:53.+5Z",
                      "2019-03-14T09:26:53. 5Z", "2019-03-14T09:26:53.5.5Z",
                      "2019-03-14T09:26:53.5ZZ", "2019-03-14T09:26:53.5Z ",
                      "2019-03-14T09:26:53.5e1Z", "2019-03-14T09:26:53Z.5", "2019-03-14T09:26.5Z",
                      "2019-03-14T09:26:53.5+0100", "2019-02-30T09:26:53.5Z",
                      "2019-03-14T24:00:00.5Z", "2019-03-14T09:26:60.5Z", "0000-01-01T00:00:00.5Z",
                      "10000-01-01T00:00:00Z", "2019-03-14t09:26:53.5z", "2019-03-14 09:26:53.5Z",
                      "2019-03-14T09:26:53.5+24:00"));

}  // namespace
}  // namespace qel::tool
