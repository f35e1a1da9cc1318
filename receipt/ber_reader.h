// Reads elements of ASN.1 in BER or DER (ITU-T X.690).

#ifndef QEL_RECEIPT_BER_READER_H_
#define QEL_RECEIPT_BER_READER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qel::receipt {

// Thrown by the functions below.
struct BerError {
  std::size_t offset = 0;
  std::string message;
};

// A piece of a text.
struct BerBytes {
  std::string_view bytes;
  // Offset of the first byte in the text.
  std::size_t offset = 0;
};

// A tag of the class universal; ASN.1 calls the type by `name`.
struct BerType {
  int tag;
  const char* name;
};

struct BerElement {
  // Number of the tag, if its class is universal.
  std::optional<int> tag;
  bool isConstructed = false;
  // Without the marker that ends an indefinite length.
  BerBytes content;
  // Offset of the header.
  std::size_t offset = 0;
  // The whole element.
  std::string_view encoding;
};

// Reads elements that follow one another.
class BerReader {
 public:
  explicit BerReader(const BerBytes& elements) : rest_(elements) {}

  bool atEnd() const { return rest_.bytes.empty(); }

  // Offset of the next element, or of the end.
  std::size_t offset() const { return rest_.offset; }

  // Reads the next element. Throws BerError if there is none, or if it is broken, such as by a
  // length past the end or by more than 32 levels of indefinite lengths.
  BerElement next();

  // Reads the next element, which must have this type.
  BerElement next(const BerType& type);

  // Throws BerError if there is another element.
  void expectEnd() const;

 private:
  BerBytes rest_;
};

inline constexpr BerType kInteger = {2, "INTEGER"};
inline constexpr BerType kOctetString = {4, "OCTET STRING"};
inline constexpr BerType kSequence = {16, "SEQUENCE"};
inline constexpr BerType kSet = {17, "SET"};

// Returns a description of the element for messages, such as "SEQUENCE of 12 bytes".
std::string describe(const BerElement& element);

// Throws BerError: expected `expected`, found the element.
[[noreturn]] void failAsUnexpected(const BerElement& element, const std::string& expected);

// Returns the octets of an OCTET STRING. Those of a string in pieces are joined in `joined`.
BerBytes octetsOf(const BerElement& element, std::string& joined);

// Returns the value of an INTEGER, which must fit into 64 bits.
std::int64_t int64Of(const BerElement& element);

// Returns the decimal digits of an INTEGER of at most 64 bytes, after a minus sign if it is
// negative.
std::string digitsOf(const BerElement& element);

}  // namespace qel::receipt

#endif  // QEL_RECEIPT_BER_READER_H_
