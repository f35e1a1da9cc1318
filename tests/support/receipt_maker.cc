#include "receipt_maker.h"

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace qel::testing {
namespace {

struct Deleter {
  void operator()(BIO* bio) const { BIO_free_all(bio); }
  void operator()(CMS_ContentInfo* message) const { CMS_ContentInfo_free(message); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
};

template <typename Object>
using Owned = std::unique_ptr<Object, Deleter>;

// Throws if OpenSSL failed.
void require(bool succeeded) {
  if (succeeded) return;
  const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
  throw std::runtime_error(reason != nullptr ? reason : "OpenSSL failed");
}

template <typename Object>
Owned<Object> owned(Object* object) {
  require(object != nullptr);
  return Owned<Object>(object);
}

std::string bytesOf(BIO* bio) {
  char* data = nullptr;
  const auto size = BIO_get_mem_data(bio, &data);
  return {data, static_cast<std::size_t>(size)};
}

// Returns the length field of a header.
std::string lengthOf(std::size_t size) {
  if (size < 0x80) return std::string(1, static_cast<char>(size));
  std::string digits;
  for (; size > 0; size >>= 8) digits.insert(digits.begin(), static_cast<char>(size & 0xFF));
  return static_cast<char>(0x80 | digits.size()) + digits;
}

void addExtension(X509* certificate, int type, const char* value) {
  const auto extension = owned(X509V3_EXT_conf_nid(nullptr, nullptr, type, value));
  require(X509_add_ext(certificate, extension.get(), -1) == 1);
}

void setName(X509_NAME* name, const std::string& text) {
  require(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                     reinterpret_cast<const unsigned char*>(text.c_str()), -1, -1,
                                     0) == 1);
}

struct Identity {
  Owned<EVP_PKEY> key;
  Owned<X509> certificate;
};

// Makes a certificate. A root issues itself: `issuer` is null.
Identity makeIdentity(const std::string& name, const Identity* issuer, bool isAuthority,
                      const char* start, const char* end) {
  static int serial = 0;
  Identity identity = {owned(EVP_EC_gen("P-256")), owned(X509_new())};
  X509* const certificate = identity.certificate.get();
  require(X509_set_version(certificate, X509_VERSION_3) == 1);
  require(ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++serial) == 1);
  require(ASN1_TIME_set_string(X509_getm_notBefore(certificate), start) == 1);
  require(ASN1_TIME_set_string(X509_getm_notAfter(certificate), end) == 1);
  // Two signers have different names, so that a chain has one issuer only.
  setName(X509_get_subject_name(certificate), name + std::to_string(serial));
  const X509* const issuing = issuer != nullptr ? issuer->certificate.get() : certificate;
  require(X509_set_issuer_name(certificate, X509_get_subject_name(issuing)) == 1);
  require(X509_set_pubkey(certificate, identity.key.get()) == 1);
  addExtension(certificate, NID_basic_constraints,
               isAuthority ? "critical,CA:TRUE" : "critical,CA:FALSE");
  addExtension(certificate, NID_key_usage,
               isAuthority ? "critical,keyCertSign" : "critical,digitalSignature");
  EVP_PKEY* const issuingKey = issuer != nullptr ? issuer->key.get() : identity.key.get();
  require(X509_sign(certificate, issuingKey, EVP_sha1()) > 0);
  return identity;
}

std::string pemOf(X509* certificate) {
  const auto out = owned(BIO_new(BIO_s_mem()));
  require(PEM_write_bio_X509(out.get(), certificate) == 1);
  return bytesOf(out.get());
}

}  // namespace

std::string element(unsigned char tag, std::string_view content) {
  return static_cast<char>(tag) + lengthOf(content.size()) + std::string(content);
}

std::string indefinite(unsigned char tag, std::string_view content) {
  return std::string{static_cast<char>(tag), '\x80'} + std::string(content) + std::string(2, '\0');
}

std::string octetsInPieces(std::string_view octets, std::size_t size) {
  std::string pieces;
  for (std::size_t i = 0; i < octets.size(); i += size) {
    pieces += element(kOctetStringTag, octets.substr(i, size));
  }
  constexpr unsigned char kConstructed = 0x20;
  return indefinite(kOctetStringTag | kConstructed, pieces);
}

std::string integerElement(std::int64_t value) {
  std::string bytes;
  for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  const auto isRedundant = [&bytes] {
    return bytes.size() > 1 && (bytes[0] == '\0' || bytes[0] == '\xFF') &&
           ((bytes[0] ^ bytes[1]) & 0x80) == 0;
  };
  while (isRedundant()) bytes.erase(0, 1);
  return element(kIntegerTag, bytes);
}

std::string utf8Element(std::string_view text) { return element(kUtf8StringTag, text); }

std::string ia5Element(std::string_view text) { return element(kIa5StringTag, text); }

std::string attribute(std::int64_t type, std::string_view value) {
  return element(kSequenceTag,
                 integerElement(type) + integerElement(1) + element(kOctetStringTag, value));
}

std::string attributeSet(const std::vector<std::string>& attributes) {
  std::string content;
  for (const std::string& encoded : attributes) content += encoded;
  return element(kSetTag, content);
}

std::string base64Of(std::string_view bytes) {
  std::string text(bytes.size() / 3 * 4 + 5, '\0');
  const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                   reinterpret_cast<const unsigned char*>(bytes.data()),
                                   static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(size));
  return text;
}

struct ReceiptSigner::Certificates {
  Identity root = makeIdentity("Root", nullptr, true, "20200101000000Z", "20400101000000Z");
  Identity intermediate =
      makeIdentity("Intermediate", &root, true, "20200101000000Z", "20400101000000Z");
  Identity leaf =
      makeIdentity("Receipt Signing", &intermediate, false, "20230101000000Z", "20250101000000Z");
};

ReceiptSigner::ReceiptSigner() : certificates_(std::make_unique<Certificates>()) {}
ReceiptSigner::~ReceiptSigner() = default;

std::string ReceiptSigner::sign(std::string_view content, const SigningForm& form) const {
  const unsigned stream = form.isIndefinite ? CMS_STREAM : 0;
  const unsigned flags = CMS_BINARY | CMS_PARTIAL | CMS_NOSMIMECAP | stream;
  const auto message = owned(CMS_sign(nullptr, nullptr, nullptr, nullptr, flags));
  require(CMS_add1_cert(message.get(), certificates_->intermediate.certificate.get()) == 1);
  require(CMS_add1_signer(message.get(), certificates_->leaf.certificate.get(),
                          certificates_->leaf.key.get(), form.digest, flags) != nullptr);
  const auto data = owned(BIO_new_mem_buf(content.data(), static_cast<int>(content.size())));
  const auto out = owned(BIO_new(BIO_s_mem()));
  if (form.isIndefinite) {
    require(i2d_CMS_bio_stream(out.get(), message.get(), data.get(), static_cast<int>(flags)) == 1);
  } else {
    require(CMS_final(message.get(), data.get(), nullptr, flags) == 1);
    require(i2d_CMS_bio(out.get(), message.get()) == 1);
  }
  return bytesOf(out.get());
}

std::string ReceiptSigner::root() const { return pemOf(certificates_->root.certificate.get()); }

std::string ReceiptSigner::intermediate() const {
  return pemOf(certificates_->intermediate.certificate.get());
}

std::string ReceiptSigner::rootInDer() const {
  const auto out = owned(BIO_new(BIO_s_mem()));
  require(i2d_X509_bio(out.get(), certificates_->root.certificate.get()) == 1);
  return bytesOf(out.get());
}

}  // namespace qel::testing
