// The digest behind the deduplication identifier.

#ifndef QEL_PLATFORM_DIGEST_H_
#define QEL_PLATFORM_DIGEST_H_

#include <cstdint>
#include <string_view>

#include "qel/export.h"

namespace qel {

// The 64 least significant bits of the MD5 digest (RFC 1321) of `bytes`, the digest taken as the
// number that its printed hexadecimal form denotes: its last eight bytes, the most significant
// first. The text 100077monthly gives 0x114F509B0A08BCF9, the end of what md5sum prints for it.
//
// This reading is fixed for good: the same purchase must give the same identifier in every version.
QEL_EXPORT std::uint64_t qel_64LSBMD5(std::string_view bytes);

}  // namespace qel

#endif  // QEL_PLATFORM_DIGEST_H_
