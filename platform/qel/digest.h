// The digest behind the deduplication identifier.

#ifndef QEL_PLATFORM_DIGEST_H_
#define QEL_PLATFORM_DIGEST_H_

#include <cstdint>
#include <string_view>

#include "qel/export.h"

namespace qel {

// Returns the 64 least significant bits of the MD5 digest (RFC 1321) of `bytes`: its last eight
// bytes, most significant first, as md5sum prints them. The text 100077monthly has
// 0x114F509B0A08BCF9.
//
// This never changes: the same purchase must have the same identifier in every version.
[[nodiscard]] QEL_EXPORT std::uint64_t qel_64LSBMD5(std::string_view bytes);

}  // namespace qel

#endif  // QEL_PLATFORM_DIGEST_H_
