// The digest with CommonCrypto, which is part of Apple's systems.

#include <CommonCrypto/CommonDigest.h>

#include <cstddef>

#include "digest/digest_number.h"
#include "qel/digest.h"

// CommonCrypto deprecates MD5, because it protects nothing. Here it only makes identifiers, which
// must not change.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace qel {

std::uint64_t qel_64LSBMD5(std::string_view bytes) {
  // A length in CommonCrypto has 32 bits.
  constexpr std::size_t kMostBytesAtOnce = std::size_t{1} << 30;
  CC_MD5_CTX context;
  CC_MD5_Init(&context);
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, kMostBytesAtOnce);
    CC_MD5_Update(&context, part.data(), static_cast<CC_LONG>(part.size()));
    bytes.remove_prefix(part.size());
  }
  Md5Digest digest;
  static_assert(sizeof digest == CC_MD5_DIGEST_LENGTH);
  CC_MD5_Final(digest.data(), &context);
  return leastSignificantBits(digest);
}

}  // namespace qel
