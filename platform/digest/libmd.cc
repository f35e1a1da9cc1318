// The digest with libmd, which offers the digest functions of BSD systems elsewhere.

#include <md5.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "digest/digest_number.h"
#include "qel/digest.h"

namespace qel {
namespace {

// The last block ends with the size of the text in bits, in eight bytes, the least significant
// first. At least one byte of padding comes before it (RFC 1321, sections 3.1 and 3.2).
constexpr std::size_t kSizePosition = MD5_BLOCK_LENGTH - 8;

// Returns `word` with its four bytes in reverse order.
std::uint32_t reversedBytes(std::uint32_t word) {
  return word << 24 | (word & 0xFF00) << 8 | (word >> 8 & 0xFF00) | word >> 24;
}

// Digests a text that leaves room for the padding in one block, as nearly all identifiers do. One
// transformation is faster than the functions below, which collect a text of any size in blocks.
std::uint64_t digestInOneBlock(std::string_view bytes) {
  std::array<std::uint8_t, MD5_BLOCK_LENGTH> block = {};
  std::copy(bytes.begin(), bytes.end(), block.begin());
  block[bytes.size()] = 0x80;
  const std::size_t bits = bytes.size() * 8;
  block[kSizePosition] = static_cast<std::uint8_t>(bits);
  block[kSizePosition + 1] = static_cast<std::uint8_t>(bits >> 8);
  MD5_CTX context;
  MD5Init(&context);
  MD5Transform(context.state, block.data());
  return std::uint64_t{reversedBytes(context.state[2])} << 32 | reversedBytes(context.state[3]);
}

}  // namespace

std::uint64_t qel_64LSBMD5(std::string_view bytes) {
  if (bytes.size() < kSizePosition) return digestInOneBlock(bytes);

  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  Md5Digest digest;
  static_assert(sizeof digest == MD5_DIGEST_LENGTH);
  MD5Final(digest.data(), &context);
  return leastSignificantBits(digest);
}

}  // namespace qel
