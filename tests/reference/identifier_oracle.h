// The oracle for the deduplication identifier: ICU for the text, OpenSSL for the digest.

#ifndef QEL_TESTS_REFERENCE_IDENTIFIER_ORACLE_H_
#define QEL_TESTS_REFERENCE_IDENTIFIER_ORACLE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::testing {

// Returns `text` in the component's form of UTF-8: an unpaired surrogate has the three bytes of its
// code point.
std::string carriedText(std::u16string_view text);

// Returns the UTF-16 of `bytes` in that form, or std::nullopt if they are not in it.
std::optional<std::u16string> carriedUtf16(std::string_view bytes);

// Returns `text` in UTF-8 by ICU's strict conversion, or std::nullopt if it has an unpaired
// surrogate.
std::optional<std::string> strictUtf8(std::u16string_view text);

// Returns the last eight bytes of the MD5 digest of `bytes`, the most significant first.
std::uint64_t oracleDigest(std::string_view bytes);

// Returns the deduplication identifier of the three texts.
std::uint64_t oracleDedupeId(const std::optional<std::string_view>& originalTransactionId,
                             const std::optional<std::string_view>& webOrderLineItemId,
                             const std::optional<std::string_view>& productId);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_IDENTIFIER_ORACLE_H_
