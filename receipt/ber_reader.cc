#include "ber_reader.h"

#include <openssl/asn1.h>
#include <openssl/bn.h>

#include <algorithm>
#include <iterator>

#include "openssl_handles.h"

namespace qel::receipt {
namespace {

constexpr int kMaxIndefiniteLevels = 32;
constexpr std::size_t kEndOfContentsSize = 2;

const unsigned char* unsignedBytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

struct Header {
  std::optional<int> tag;
  bool isConstructed = false;
  // Absent if it is indefinite.
  std::optional<std::size_t> contentSize;
  // Of the header itself.
  std::size_t size = 0;

  // Returns whether it is the marker that ends an indefinite length: two bytes of 0.
  bool isEndOfContents() const {
    return tag == V_ASN1_EOC && !isConstructed && contentSize == 0 && size == kEndOfContentsSize;
  }
};

// Reads the header at the start of `bytes`.
Header readHeader(const BerBytes& bytes) {
  const unsigned char* position = unsignedBytes(bytes.bytes);
  OpensslSize length = 0;
  int tag = 0;
  int tagClass = 0;
  const int flags = ASN1_get_object(&position, &length, &tag, &tagClass,
                                    static_cast<OpensslSize>(bytes.bytes.size()));
  constexpr int kIsBroken = 0x80;
  constexpr int kIsIndefinite = 0x01;
  const auto size = static_cast<std::size_t>(position - unsignedBytes(bytes.bytes));
  if ((flags & kIsBroken) != 0) {
    // The position moves over a header only if nothing but the length is wrong.
    const std::size_t left = bytes.bytes.size() - size;
    if (size > 0 && length > 0 && static_cast<std::size_t>(length) > left) {
      throw BerError{bytes.offset, "expected an element of ASN.1, found a length of " +
                                       std::to_string(length) + " bytes where " +
                                       std::to_string(left) + " are left"};
    }
    throw BerError{bytes.offset, "expected an element of ASN.1, found a broken or cut header"};
  }
  Header header;
  // OpenSSL accepts small tags in the form of large ones, which BER does not allow.
  const bool isLargeTag = (bytes.bytes.front() & V_ASN1_PRIMITIVE_TAG) == V_ASN1_PRIMITIVE_TAG;
  if (tagClass == V_ASN1_UNIVERSAL && !isLargeTag) header.tag = tag;
  header.isConstructed = (flags & V_ASN1_CONSTRUCTED) != 0;
  if ((flags & kIsIndefinite) == 0) header.contentSize = static_cast<std::size_t>(length);
  header.size = size;
  return header;
}

// Returns the size of a content of indefinite length, without its end marker. Its elements are at
// the start of `bytes`.
std::size_t indefiniteSize(BerBytes bytes, int level) {
  if (level > kMaxIndefiniteLevels) {
    throw BerError{bytes.offset, "expected at most " + std::to_string(kMaxIndefiniteLevels) +
                                     " levels of indefinite lengths, found more"};
  }
  std::size_t total = 0;
  const auto take = [&bytes, &total](std::size_t size) {
    bytes.bytes.remove_prefix(size);
    bytes.offset += size;
    total += size;
  };
  for (;;) {
    if (bytes.bytes.empty()) {
      throw BerError{bytes.offset, "expected the end of an indefinite length, found the end"};
    }
    const Header header = readHeader(bytes);
    if (header.isEndOfContents()) return total;
    take(header.size);
    take(header.contentSize.has_value() ? *header.contentSize
                                        : indefiniteSize(bytes, level + 1) + kEndOfContentsSize);
  }
}

// Returns the bytes of an INTEGER, most significant first, in two's complement.
std::string_view integerBytes(const BerElement& element) {
  if (element.tag != kInteger.tag || element.isConstructed || element.content.bytes.empty()) {
    failAsUnexpected(element, "an INTEGER");
  }
  return element.content.bytes;
}

bool isNegative(std::string_view integer) { return (integer.front() & 0x80) != 0; }

}  // namespace

BerElement BerReader::next() {
  if (atEnd()) throw BerError{rest_.offset, "expected another element of ASN.1, found the end"};
  const Header header = readHeader(rest_);
  BerBytes content = {rest_.bytes.substr(header.size), rest_.offset + header.size};
  std::size_t size = 0;
  if (header.contentSize.has_value()) {
    content.bytes = content.bytes.substr(0, *header.contentSize);
    size = header.size + *header.contentSize;
  } else {
    content.bytes = content.bytes.substr(0, indefiniteSize(content, 1));
    size = header.size + content.bytes.size() + kEndOfContentsSize;
  }
  const BerElement element = {header.tag, header.isConstructed, content, rest_.offset,
                              rest_.bytes.substr(0, size)};
  rest_.bytes.remove_prefix(size);
  rest_.offset += size;
  return element;
}

BerElement BerReader::next(const BerType& type) {
  if (atEnd()) {
    throw BerError{rest_.offset, std::string("expected ") + type.name + ", found the end"};
  }
  const BerElement element = next();
  const bool isStructure = type.tag == kSequence.tag || type.tag == kSet.tag;
  if (element.tag != type.tag || (isStructure && !element.isConstructed)) {
    failAsUnexpected(element, type.name);
  }
  return element;
}

void BerReader::expectEnd() const {
  if (atEnd()) return;
  throw BerError{rest_.offset,
                 "expected the end, found " + std::to_string(rest_.bytes.size()) + " more bytes"};
}

std::string describe(const BerElement& element) {
  if (!element.tag.has_value()) return "an element of another tag class";
  return std::string(element.isConstructed ? "constructed " : "") + ASN1_tag2str(*element.tag) +
         " of " + std::to_string(element.content.bytes.size()) + " bytes";
}

void failAsUnexpected(const BerElement& element, const std::string& expected) {
  throw BerError{element.offset, "expected " + expected + ", found " + describe(element)};
}

BerBytes octetsOf(const BerElement& element, std::string& joined) {
  if (!element.isConstructed) return element.content;
  const unsigned char* position = unsignedBytes(element.encoding);
  const Handle<ASN1_OCTET_STRING> octets(
      d2i_ASN1_OCTET_STRING(nullptr, &position, static_cast<OpensslSize>(element.encoding.size())));
  if (octets == nullptr) {
    throw BerError{element.offset,
                   "expected an OCTET STRING, found a broken one in pieces: " + lastOpensslError()};
  }
  joined = textOf(octets.get());
  return {joined, element.content.offset};
}

std::int64_t int64Of(const BerElement& element) {
  std::string_view bytes = integerBytes(element);
  // BER allows more leading sign bytes than the value needs.
  const char sign = isNegative(bytes) ? '\xFF' : '\0';
  const auto isRedundant = [sign](std::string_view rest) {
    return rest.size() > 1 && rest[0] == sign && ((rest[0] ^ rest[1]) & 0x80) == 0;
  };
  while (isRedundant(bytes)) bytes.remove_prefix(1);
  if (bytes.size() > sizeof(std::int64_t)) failAsUnexpected(element, "an INTEGER of 64 bits");
  std::uint64_t value = sign == '\0' ? 0 : ~std::uint64_t{0};
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return static_cast<std::int64_t>(value);
}

std::string digitsOf(const BerElement& element) {
  constexpr std::size_t kMaxSize = 64;
  const std::string_view bytes = integerBytes(element);
  if (bytes.size() > kMaxSize) failAsUnexpected(element, "an INTEGER of at most 64 bytes");
  const auto size = static_cast<int>(bytes.size());
  const Handle<BIGNUM> number(BN_bin2bn(unsignedBytes(bytes), size, nullptr));
  const Handle<BIGNUM> wrap(BN_new());
  requireMemory(number != nullptr && wrap != nullptr);
  if (isNegative(bytes)) {
    requireMemory(BN_set_bit(wrap.get(), 8 * size) == 1 &&
                  BN_sub(number.get(), number.get(), wrap.get()) == 1);
  }
  const Handle<char> digits(BN_bn2dec(number.get()));
  requireMemory(digits != nullptr);
  return digits.get();
}

}  // namespace qel::receipt
