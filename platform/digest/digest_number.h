// The number that a digest denotes.

#ifndef QEL_PLATFORM_DIGEST_DIGEST_NUMBER_H_
#define QEL_PLATFORM_DIGEST_DIGEST_NUMBER_H_

#include <algorithm>
#include <array>
#include <cstdint>

namespace qel {

using Md5Digest = std::array<std::uint8_t, 16>;

// Returns the last eight bytes, most significant first.
inline std::uint64_t leastSignificantBits(const Md5Digest& digest) {
  std::uint64_t result = 0;
  std::for_each(digest.begin() + 8, digest.end(),
                [&result](std::uint8_t byte) { result = (result << 8) | byte; });
  return result;
}

}  // namespace qel

#endif  // QEL_PLATFORM_DIGEST_DIGEST_NUMBER_H_
