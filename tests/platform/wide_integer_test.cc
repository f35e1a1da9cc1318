#include "portable/wide_integer.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

constexpr Limb kOnes = 0xFFFF'FFFF'FFFF'FFFF;

// --- Products of two limbs ---

struct LimbProductCase {
  const char* name;
  Limb left;
  Limb right;
  std::array<Limb, 2> product;
  friend std::ostream& operator<<(std::ostream& out, const LimbProductCase& c) {
    return out << c.name;
  }
};

class LimbProductTest : public ::testing::TestWithParam<LimbProductCase> {};

// The version of the compiler's 128-bit integers, where it has them.
TEST_P(LimbProductTest, IsExact) {
  const LimbProductCase& c = GetParam();
  EXPECT_EQ(multiplyLimbs(c.left, c.right), c.product);
  EXPECT_EQ(multiplyLimbs(c.right, c.left), c.product);
}

TEST_P(LimbProductTest, OfHalvesIsExact) {
  const LimbProductCase& c = GetParam();
  EXPECT_EQ(multiplyLimbsInHalves(c.left, c.right), c.product);
  EXPECT_EQ(multiplyLimbsInHalves(c.right, c.left), c.product);
}

// The expected products are those of python3: divmod(left * right, 2**64).
INSTANTIATE_TEST_SUITE_P(
    WideInteger, LimbProductTest,
    ::testing::Values(
        LimbProductCase{"Zero", 0, kOnes, {0, 0}}, LimbProductCase{"One", 1, kOnes, {kOnes, 0}},
        LimbProductCase{"Money", 829, 1000000, {829000000, 0}},
        LimbProductCase{"OnesOfALowHalf", 0xFFFF'FFFF, 0xFFFF'FFFF, {0xFFFF'FFFE'0000'0001, 0}},
        LimbProductCase{"TwoTo32Squared", 0x1'0000'0000, 0x1'0000'0000, {0, 1}},
        LimbProductCase{
            "HighByLowHalf", 0xFFFF'FFFF'0000'0000, 0xFFFF'FFFF, {0x1'0000'0000, 0xFFFF'FFFE}},
        LimbProductCase{"Ones", kOnes, kOnes, {1, kOnes - 1}},
        // The middle halves carry 2 into the upper limb, the most that they can.
        LimbProductCase{"GreatestCarryOfTheMiddle",
                        0x7FFF'FFFF'FFFF'FFFF,
                        0x7FFF'FFFF'FFFF'FFFF,
                        {1, 0x3FFF'FFFF'FFFF'FFFF}},
        LimbProductCase{"FourDifferentHalves",
                        0x0123'4567'89AB'CDEF,
                        0xFEDC'BA98'7654'3210,
                        {0x2236'D88F'E561'8CF0, 0x0121'FA00'AD77'D742}}),
    nameOfCase<LimbProductCase>);

// --- Wide integers ---

TEST(WideIntegerTest, MultiplyAndAddCarriesThroughEveryLimb) {
  std::array<Limb, 3> integer = {kOnes, kOnes, 0};
  multiplyAndAdd(integer, 10, 9);
  EXPECT_EQ(integer, (std::array<Limb, 3>{kOnes, kOnes, 9}));
}

TEST(WideIntegerTest, MultiplyAndAddByTheGreatestFactorAndAddend) {
  std::array<Limb, 3> integer = {kOnes, kOnes, 0};
  multiplyAndAdd(integer, kOnes, kOnes);
  EXPECT_EQ(integer, (std::array<Limb, 3>{0, 0, kOnes}));
}

// 10^38 + 3 by 10^9.
TEST(WideIntegerTest, DivideCarriesRemaindersDown) {
  std::array<Limb, 2> integer = {0x098A'2240'0000'0003, 0x4B3B'4CA8'5A86'C47A};
  EXPECT_EQ(divide(integer, 1000000000), 3U);
  EXPECT_EQ(integer, (std::array<Limb, 2>{0x6D72'17CA'A000'0000, 0x1'431E'0FAE}));
}

TEST(WideIntegerTest, DivideByTheGreatestDivisor) {
  std::array<Limb, 2> integer = {kOnes - 1, kOnes};
  EXPECT_EQ(divide(integer, 0xFFFF'FFFF), 0xFFFF'FFFEU);
  EXPECT_EQ(integer, (std::array<Limb, 2>{0x0000'0001'0000'0000, 0x0000'0001'0000'0001}));
}

// (2^256 - 1)^2 is 2^512 - 2^257 + 1.
TEST(WideIntegerTest, ProductOfAllOnesIsExact) {
  const std::array<Limb, 4> ones = {kOnes, kOnes, kOnes, kOnes};
  EXPECT_EQ(multiply(ones, ones),
            (std::array<Limb, 8>{1, 0, 0, 0, kOnes - 1, kOnes, kOnes, kOnes}));
}

TEST(WideIntegerTest, ProductOfPowersOfTwoIsExact) {
  EXPECT_EQ(multiply<2>({0, 1}, {0, 1U << 7}), (std::array<Limb, 4>{0, 0, 1U << 7, 0}));
}

TEST(WideIntegerTest, IsZeroOnlyIfEveryLimbIs) {
  EXPECT_TRUE(isZero(std::array<Limb, 3>{}));
  EXPECT_FALSE(isZero(std::array<Limb, 3>{1, 0, 0}));
  EXPECT_FALSE(isZero(std::array<Limb, 3>{0, 0, 1}));
}

}  // namespace
}  // namespace qel::testing
