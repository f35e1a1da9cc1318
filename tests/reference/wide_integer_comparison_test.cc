// Compares the wide integers with GMP.

#include <gmpxx.h>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "portable/wide_integer.h"
#include "random_source.h"

namespace qel::testing {
namespace {

template <std::size_t kSize>
mpz_class gmpInteger(const std::array<Limb, kSize>& integer) {
  mpz_class result;
  mpz_import(result.get_mpz_t(), kSize, -1, sizeof(Limb), 0, 0, integer.data());
  return result;
}

mpz_class gmpInteger(Limb limb) { return gmpInteger(std::array{limb}); }

// Expects that `integer` equals `expected`. Prints without GMP's streams, which exist for one C++
// library only.
void expectEqual(const mpz_class& integer, const mpz_class& expected) {
  ASSERT_TRUE(integer == expected) << integer.get_str() << " is not " << expected.get_str();
}

// A limb of random length, or one with ones in whole halves: most carries come from those.
Limb randomLimb(std::mt19937_64& random) {
  constexpr std::array<Limb, 6> kSpecial = {
      0, 1, 0xFFFF'FFFF, 0x1'0000'0000, 0xFFFF'FFFF'0000'0000, 0xFFFF'FFFF'FFFF'FFFF};
  if (randomBetween(random, 0, 3) == 0)
    return kSpecial.at(randomBetween(random, std::size_t{0}, kSpecial.size() - 1));
  return random() >> randomBetween(random, 0, kLimbBits - 1);
}

template <std::size_t kSize>
std::array<Limb, kSize> randomInteger(std::mt19937_64& random) {
  std::array<Limb, kSize> integer;
  for (Limb& limb : integer) limb = randomLimb(random);
  return integer;
}

TEST(WideIntegerComparisonTest, ProductsOfTwoLimbsAreExactInBothVersions) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 1'000'000; ++i) {
    const Limb left = randomLimb(random);
    const Limb right = randomLimb(random);
    const std::array<Limb, 2> product = multiplyLimbs(left, right);
    expectEqual(gmpInteger(product), gmpInteger(left) * gmpInteger(right));
    ASSERT_EQ(multiplyLimbsInHalves(left, right), product) << left << ' ' << right;
  }
}

TEST(WideIntegerComparisonTest, ProductsAreExact) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 200'000; ++i) {
    const auto left = randomInteger<4>(random);
    const auto right = randomInteger<4>(random);
    expectEqual(gmpInteger(multiply(left, right)), gmpInteger(left) * gmpInteger(right));
  }
}

TEST(WideIntegerComparisonTest, MultiplyingByALimbAndAddingOneIsExact) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 200'000; ++i) {
    auto integer = randomInteger<4>(random);
    integer.back() = 0;
    const mpz_class before = gmpInteger(integer);
    const Limb factor = randomLimb(random);
    const Limb addend = randomLimb(random);
    multiplyAndAdd(integer, factor, addend);
    expectEqual(gmpInteger(integer), before * gmpInteger(factor) + gmpInteger(addend));
  }
}

TEST(WideIntegerComparisonTest, QuotientsAndRemaindersAreExact) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 200'000; ++i) {
    auto integer = randomInteger<4>(random);
    const mpz_class before = gmpInteger(integer);
    const auto divisor = static_cast<std::uint32_t>(randomLimb(random) | 1);
    const std::uint32_t remainder = divide(integer, divisor);
    expectEqual(gmpInteger(integer), before / divisor);
    expectEqual(remainder, before % divisor);
  }
}

}  // namespace
}  // namespace qel::testing
