#include "qel/digest.h"

#include <md5.h>

#include <algorithm>
#include <array>

namespace qel {

std::uint64_t qel_64LSBMD5(std::string_view bytes) {
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  std::array<std::uint8_t, MD5_DIGEST_LENGTH> digest;
  MD5Final(digest.data(), &context);

  std::uint64_t result = 0;
  std::for_each(digest.begin() + 8, digest.end(),
                [&result](std::uint8_t byte) { result = (result << 8) | byte; });
  return result;
}

}  // namespace qel
