// The oracle for the deduplication identifier: ICU for the text, OpenSSL for the digest.

#ifndef QEL_TESTS_REFERENCE_IDENTIFIER_ORACLE_H_
#define QEL_TESTS_REFERENCE_IDENTIFIER_ORACLE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::testing {

// `text` as the component's UTF-8 carries it: an unpaired surrogate takes the three bytes of its
// code point.
std::string carriedText(std::u16string_view text);

// The UTF-16 that `bytes` carry; nothing when they carry none.
std::optional<std::u16string> carriedUtf16(std::string_view bytes);

// `text` in UTF-8 by ICU's strict conversion; nothing when it holds an unpaired surrogate.
std::optional<std::string> strictUtf8(std::u16string_view text);

// The last eight bytes of the MD5 digest of `bytes`, the most significant first.
std::uint64_t oracleDigest(std::string_view bytes);

// The identifier of the three pieces.
std::uint64_t oracleDedupeId(const std::optional<std::string_view>& originalTransactionId,
                             const std::optional<std::string_view>& webOrderLineItemId,
                             const std::optional<std::string_view>& productId);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_IDENTIFIER_ORACLE_H_
