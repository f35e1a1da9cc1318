#include "signed_data.h"

#include <openssl/evp.h>
#include <openssl/objects.h>

#include <utility>

#include "ber_reader.h"
#include "qel/app_receipt.h"

namespace qel::receipt {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

[[noreturn]] void fail(std::size_t offset, const std::string& message) {
  throw ReceiptError{"", offset, message};
}

// Returns a digit of either alphabet of base64 (RFC 4648) in the first one, which has + and /.
// Returns NUL for any other character.
char base64Digit(char character) {
  if (character == '-') return '+';
  if (character == '_') return '/';
  const bool isDigit =
      (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
      (character >= '0' && character <= '9') || character == '+' || character == '/';
  return isDigit ? character : '\0';
}

// Returns the start and the end of the base64 in a text: what is between the first and the last
// line of PEM (RFC 7468), which may follow other text, or the whole text.
std::pair<std::size_t, std::size_t> base64Range(std::string_view text) {
  const std::size_t begin = text.find("-----BEGIN ");
  if (begin == std::string_view::npos) return {0, text.size()};
  const std::string_view label = text.substr(begin, text.find('\n', begin) - begin);
  if (label.find("CERTIFICATE") != std::string_view::npos) {
    fail(begin, "expected a receipt, found a certificate in PEM");
  }
  if (label.find(" KEY") != std::string_view::npos) {
    fail(begin, "expected a receipt, found a key in PEM");
  }
  const std::size_t start = text.find('\n', begin);
  const std::size_t end = text.find("-----END ", begin);
  if (start == std::string_view::npos || end == std::string_view::npos || end < start) {
    fail(begin, "expected PEM with a line that starts with -----END, found none");
  }
  const std::size_t newline = text.find('\n', end);
  const std::size_t next = text.find_first_not_of(kWhiteSpace, newline);
  if (newline != std::string_view::npos && next != std::string_view::npos) {
    fail(next, "expected one receipt in PEM, found more behind it");
  }
  return {start, end};
}

// Returns a visible ASCII character itself, and the number of any other byte.
std::string nameOfByte(char byte) {
  if (byte > ' ' && byte < '\x7F') return std::string(1, byte);
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto number = static_cast<unsigned char>(byte);
  return std::string("the byte 0x") + kDigits[number >> 4] + kDigits[number & 0xF];
}

// Returns the digits of a base64 text, without white space and padding.
std::string base64DigitsOf(std::string_view text) {
  const auto [start, end] = base64Range(text);
  std::string digits;
  digits.reserve(end - start);
  std::size_t padding = 0;
  for (std::size_t i = start; i < end; ++i) {
    if (kWhiteSpace.find(text[i]) != std::string_view::npos) continue;
    const char digit = base64Digit(text[i]);
    if (text[i] == '=') {
      if (++padding > 2) fail(i, "expected at most two = at the end of base64, found more");
    } else if (digit == '\0') {
      fail(i, "expected a receipt in DER, BER or base64, found " + nameOfByte(text[i]) +
                  ", which is not of base64");
    } else if (padding > 0) {
      fail(i, "expected one receipt, found a digit behind the = at its end");
    } else {
      digits += digit;
    }
  }
  if (digits.size() % 4 == 1) {
    fail(text.size(),
         "expected a receipt in DER, BER or base64, found a text that ends after the first of 4 "
         "digits of base64");
  }
  return digits;
}

std::string decodedBase64(std::string_view text) {
  std::string digits = base64DigitsOf(text);
  const std::size_t size = digits.size() / 4 * 3 + (digits.size() % 4 * 3) / 4;
  // The decoder wants padding, and decodes it to zeros.
  digits.resize((digits.size() + 3) / 4 * 4, '=');
  std::string decoded(digits.size() / 4 * 3, '\0');
  const int decodedSize = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(decoded.data()),
                                          reinterpret_cast<const unsigned char*>(digits.data()),
                                          static_cast<int>(digits.size()));
  if (decodedSize < 0) fail(0, "expected base64, found another text");
  decoded.resize(size);
  return decoded;
}

// Throws ReceiptError if the outermost element is not that of a CMS structure, or if its length is
// not that of `encoding`.
void checkOutermostElement(std::string_view encoding) {
  constexpr int kObjectIdentifier = 6;
  try {
    BerReader reader({encoding, 0});
    const BerElement first = BerReader(reader.next(kSequence).content).next();
    if (first.tag != kObjectIdentifier) {
      failAsUnexpected(first, "the OBJECT IDENTIFIER that a CMS structure (RFC 5652) starts with");
    }
    const std::size_t end = encoding.find_last_not_of(kWhiteSpace) + 1;
    if (!reader.atEnd() && reader.offset() < end) reader.expectEnd();
  } catch (const BerError& error) {
    fail(error.offset, error.message);
  }
}

// Decodes DER or BER.
Handle<CMS_ContentInfo> decoded(std::string_view encoding) {
  checkOutermostElement(encoding);
  const auto* position = reinterpret_cast<const unsigned char*>(encoding.data());
  Handle<CMS_ContentInfo> message(
      d2i_CMS_ContentInfo(nullptr, &position, static_cast<OpensslSize>(encoding.size())));
  if (message == nullptr) {
    fail(0, "expected a CMS structure (RFC 5652), found one that is broken: " + lastOpensslError());
  }
  return message;
}

}  // namespace

Handle<CMS_ContentInfo> readSignedData(std::string_view bytes) {
  if (bytes.size() > kMaxReceiptSize) {
    fail(kMaxReceiptSize, "expected at most " + std::to_string(kMaxReceiptSize) + " bytes, found " +
                              std::to_string(bytes.size()));
  }
  if (bytes.find_first_not_of(kWhiteSpace) == std::string_view::npos) {
    fail(0, "expected a receipt, found nothing");
  }
  // The tag of a SEQUENCE, which is also the digit 0 of base64. No receipt in base64 starts with 0.
  constexpr char kSequenceTag = 0x30;
  Handle<CMS_ContentInfo> message =
      bytes.front() == kSequenceTag ? decoded(bytes) : decoded(decodedBase64(bytes));
  const int type = OBJ_obj2nid(CMS_get0_type(message.get()));
  if (type != NID_pkcs7_signed) {
    const char* const name = OBJ_nid2ln(type);
    fail(0,
         std::string("expected signed data, found ") + (name != nullptr ? name : "another type"));
  }
  ASN1_OCTET_STRING** const content = CMS_get0_content(message.get());
  if (content == nullptr || *content == nullptr) {
    fail(0, "expected signed data with its content, found none");
  }
  return message;
}

std::string_view contentOf(CMS_ContentInfo& signedData) {
  return textOf(*CMS_get0_content(&signedData));
}

}  // namespace qel::receipt
