// Unsigned integers of several 64-bit limbs, the least significant limb first, for exact decimals.
//
// Everything is built on multiplyLimbs, which has two versions: one for compilers with a 128-bit
// integer type, and one in standard C++ for all others, such as those for 32-bit processors.

#ifndef QEL_PLATFORM_PORTABLE_WIDE_INTEGER_H_
#define QEL_PLATFORM_PORTABLE_WIDE_INTEGER_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qel {

using Limb = std::uint64_t;
constexpr int kLimbBits = 64;

// Powers of ten up to this one fit one limb.
constexpr int kLimbDigits = 19;

// multiplyLimbs in standard C++: four products of 32-bit halves.
constexpr std::array<Limb, 2> multiplyLimbsInHalves(Limb left, Limb right) {
  constexpr Limb kHalf = 0xFFFF'FFFF;
  const Limb lowLow = (left & kHalf) * (right & kHalf);
  const Limb lowHigh = (left & kHalf) * (right >> 32);
  const Limb highLow = (left >> 32) * (right & kHalf);
  const Limb highHigh = (left >> 32) * (right >> 32);
  const Limb middle = (lowLow >> 32) + (lowHigh & kHalf) + (highLow & kHalf);
  return {(middle << 32) | (lowLow & kHalf),
          highHigh + (lowHigh >> 32) + (highLow >> 32) + (middle >> 32)};
}

// Returns the 128-bit product.
#ifdef __SIZEOF_INT128__
constexpr std::array<Limb, 2> multiplyLimbs(Limb left, Limb right) {
  __extension__ using Uint128 = unsigned __int128;
  const Uint128 product = Uint128{left} * right;
  return {static_cast<Limb>(product), static_cast<Limb>(product >> kLimbBits)};
}
#else
constexpr std::array<Limb, 2> multiplyLimbs(Limb left, Limb right) {
  return multiplyLimbsInHalves(left, right);
}
#endif

// Adds `left` times `right` and `carry` to `sum`. Returns the carry, which always fits a limb.
constexpr Limb addProduct(Limb& sum, Limb left, Limb right, Limb carry) {
  auto [low, high] = multiplyLimbs(left, right);
  low += carry;
  high += static_cast<Limb>(low < carry);
  sum += low;
  return high + static_cast<Limb>(sum < low);
}

// Multiplies `integer` by `factor` and adds `addend`, in place. The result must fit.
constexpr void multiplyAndAdd(std::span<Limb> integer, Limb factor, Limb addend) {
  for (Limb& limb : integer) {
    Limb result = 0;
    addend = addProduct(result, limb, factor, addend);
    limb = result;
  }
}

// Divides `integer` by `divisor` in place and returns the remainder.
constexpr std::uint32_t divide(std::span<Limb> integer, std::uint32_t divisor) {
  Limb remainder = 0;
  for (std::size_t i = integer.size(); i-- > 0;) {
    const Limb high = (remainder << 32) | (integer[i] >> 32);
    const Limb low = ((high % divisor) << 32) | (integer[i] & 0xFFFF'FFFF);
    integer[i] = ((high / divisor) << 32) | (low / divisor);
    remainder = low % divisor;
  }
  return static_cast<std::uint32_t>(remainder);
}

// Returns the exact product.
template <std::size_t kSize>
constexpr std::array<Limb, 2 * kSize> multiply(const std::array<Limb, kSize>& left,
                                               const std::array<Limb, kSize>& right) {
  std::array<Limb, 2 * kSize> product = {};
  for (std::size_t i = 0; i < kSize; ++i) {
    Limb carry = 0;
    for (std::size_t j = 0; j < kSize; ++j) {
      carry = addProduct(product[i + j], left[i], right[j], carry);
    }
    product[i + kSize] = carry;
  }
  return product;
}

constexpr bool isZero(std::span<const Limb> integer) {
  return std::all_of(integer.begin(), integer.end(), [](Limb limb) { return limb == 0; });
}

}  // namespace qel

#endif  // QEL_PLATFORM_PORTABLE_WIDE_INTEGER_H_
