// Makes receipts: encodes their content, and signs it with certificates of a test's own.

#ifndef QEL_TESTS_SUPPORT_RECEIPT_MAKER_H_
#define QEL_TESTS_SUPPORT_RECEIPT_MAKER_H_

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qel::testing {

// Tags of ASN.1.
inline constexpr unsigned char kIntegerTag = 0x02;
inline constexpr unsigned char kOctetStringTag = 0x04;
inline constexpr unsigned char kUtf8StringTag = 0x0C;
inline constexpr unsigned char kIa5StringTag = 0x16;
inline constexpr unsigned char kSequenceTag = 0x30;
inline constexpr unsigned char kSetTag = 0x31;

// Returns an element in DER.
std::string element(unsigned char tag, std::string_view content);

// Returns an element of indefinite length. `tag` must be of a constructed type.
std::string indefinite(unsigned char tag, std::string_view content);

// Returns an OCTET STRING that BER splits into pieces of `size` bytes.
std::string octetsInPieces(std::string_view octets, std::size_t size);

std::string integerElement(std::int64_t value);
std::string utf8Element(std::string_view text);
std::string ia5Element(std::string_view text);

// Returns an attribute: a SEQUENCE of its type, the version 1, and `value` in an OCTET STRING.
std::string attribute(std::int64_t type, std::string_view value);

// Returns a SET of the attributes.
std::string attributeSet(const std::vector<std::string>& attributes);

std::string base64Of(std::string_view bytes);

// How a receipt is signed.
struct SigningForm {
  // The digest: EVP_sha1() or EVP_sha256(), for example.
  const EVP_MD* digest = EVP_sha256();
  // BER with indefinite lengths, otherwise DER.
  bool isIndefinite = false;
};

// A root certificate, an intermediate one that the root issued, and one for signing that the
// intermediate one issued. The one for signing is valid from 2023 to 2025, the others from 2020 to
// 2040.
class ReceiptSigner {
 public:
  ReceiptSigner();
  ~ReceiptSigner();

  // Returns signed data whose content is `content`. It has all certificates but the root.
  std::string sign(std::string_view content, const SigningForm& form) const;

  // Certificates in PEM, and the root in DER.
  std::string root() const;
  std::string intermediate() const;
  std::string rootInDer() const;

 private:
  struct Certificates;
  std::unique_ptr<Certificates> certificates_;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_RECEIPT_MAKER_H_
