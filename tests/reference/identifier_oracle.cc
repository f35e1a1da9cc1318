#include "identifier_oracle.h"

#include <openssl/evp.h>
#include <unicode/ustring.h>

#include <array>
#include <cstddef>
#include <sstream>

namespace qel::testing {
namespace {

bool isHigh(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLow(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Appends the UTF-8 of `codePoint`, also of a surrogate.
void appendEncoded(std::string& bytes, std::uint32_t codePoint) {
  const auto put = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(byte); };
  const auto putLater = [&put](std::uint32_t bits) { put(0x80 + bits % 64); };
  if (codePoint < 0x80) {
    put(codePoint);
  } else if (codePoint < 0x800) {
    put(0xC0 + codePoint / 64);
    putLater(codePoint);
  } else if (codePoint < 0x10000) {
    put(0xE0 + codePoint / 4096);
    putLater(codePoint / 64);
    putLater(codePoint);
  } else {
    put(0xF0 + codePoint / 262144);
    putLater(codePoint / 4096);
    putLater(codePoint / 64);
    putLater(codePoint);
  }
}

void appendUtf16(std::u16string& text, std::uint32_t codePoint) {
  if (codePoint < 0x10000) {
    text += static_cast<char16_t>(codePoint);
  } else {
    text += static_cast<char16_t>(0xD800 + (codePoint - 0x10000) / 1024);
    text += static_cast<char16_t>(0xDC00 + (codePoint - 0x10000) % 1024);
  }
}

// Returns the number of bytes of a character that begins with `lead`, from its high bits alone.
std::size_t sizeByLead(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC0) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return 4;
}

}  // namespace

std::string carriedText(std::u16string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPair = isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1]);
    if (isPair) {
      const std::uint32_t high = text[i] - 0xD800u;
      const std::uint32_t low = text[i + 1] - 0xDC00u;
      appendEncoded(bytes, 0x10000 + high * 1024 + low);
      ++i;
    } else {
      appendEncoded(bytes, text[i]);
    }
  }
  return bytes;
}

std::optional<std::u16string> carriedUtf16(std::string_view bytes) {
  std::u16string text;
  while (!bytes.empty()) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t size = sizeByLead(lead);
    if (size == 1) {
      text += static_cast<char16_t>(lead);
      bytes.remove_prefix(1);
      continue;
    }
    if (size == 0 || size > bytes.size()) return std::nullopt;

    constexpr std::array<unsigned, 5> kLeadValues = {0, 0, 0x20, 0x10, 0x10};
    std::uint32_t codePoint = lead % kLeadValues[size];
    for (const char later : bytes.substr(1, size - 1)) {
      codePoint = codePoint * 64 + static_cast<unsigned char>(later) % 64;
    }
    // Encoding the character again finds bits that were dropped above, and overlong encodings.
    std::string written;
    if (codePoint <= 0x10FFFF) appendEncoded(written, codePoint);
    if (written != bytes.substr(0, size)) return std::nullopt;
    appendUtf16(text, codePoint);
    bytes.remove_prefix(size);
  }
  return text;
}

std::optional<std::string> strictUtf8(std::u16string_view text) {
  std::string bytes(text.size() * 3, '\0');
  std::int32_t size = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strToUTF8(bytes.data(), static_cast<std::int32_t>(bytes.size()), &size, text.data(),
              static_cast<std::int32_t>(text.size()), &error);
  if (error > U_ZERO_ERROR) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

std::uint64_t oracleDigest(std::string_view bytes) {
  std::array<unsigned char, 16> digest = {};
  EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_md5(), nullptr);
  std::uint64_t number = 0;
  for (std::size_t i = 8; i < digest.size(); ++i) number = number * 256 + digest[i];
  return number;
}

std::uint64_t oracleDedupeId(const std::optional<std::string_view>& originalTransactionId,
                             const std::optional<std::string_view>& webOrderLineItemId,
                             const std::optional<std::string_view>& productId) {
  if (originalTransactionId.value_or("").empty() || productId.value_or("").empty()) return ~0ull;
  std::ostringstream joined;
  joined.imbue(std::locale::classic());
  joined << *originalTransactionId;
  if (webOrderLineItemId.has_value()) joined << *webOrderLineItemId;
  joined << *productId;

  const std::optional<std::u16string> text = carriedUtf16(joined.str());
  if (!text.has_value()) return 0;
  const std::optional<std::string> bytes = strictUtf8(*text);
  return bytes.has_value() ? oracleDigest(*bytes) : 0;
}

}  // namespace qel::testing
