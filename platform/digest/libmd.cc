// The digest with libmd, a small library of Linux and the BSDs.

#include <md5.h>

#include "digest/digest_number.h"
#include "qel/digest.h"

namespace qel {

std::uint64_t qel_64LSBMD5(std::string_view bytes) {
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  Md5Digest digest;
  static_assert(sizeof digest == MD5_DIGEST_LENGTH);
  MD5Final(digest.data(), &context);
  return leastSignificantBits(digest);
}

}  // namespace qel
