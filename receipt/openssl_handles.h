// Owns OpenSSL's objects and reads its errors.

#ifndef QEL_RECEIPT_OPENSSL_HANDLES_H_
#define QEL_RECEIPT_OPENSSL_HANDLES_H_

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/cms.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/x509.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace qel::receipt {

// OpenSSL's type of sizes.
using OpensslSize = long;  // NOLINT(google-runtime-int)

struct HandleDeleter {
  void operator()(ASN1_OCTET_STRING* string) const { ASN1_OCTET_STRING_free(string); }
  void operator()(BIGNUM* number) const { BN_free(number); }
  void operator()(BIO* bio) const { BIO_free_all(bio); }
  void operator()(CMS_ContentInfo* message) const { CMS_ContentInfo_free(message); }
  void operator()(X509* certificate) const { X509_free(certificate); }
  void operator()(X509_STORE* store) const { X509_STORE_free(store); }
  void operator()(char* text) const { OPENSSL_free(text); }
};

template <typename Object>
using Handle = std::unique_ptr<Object, HandleDeleter>;

// Throws std::bad_alloc unless `holds`: OpenSSL reports a failed allocation as a plain failure.
inline void requireMemory(bool holds) {
  if (!holds) throw std::bad_alloc();
}

// Removes from OpenSSL's queue, at its end, the errors that were added meanwhile: they belong to
// this library, the others to the caller.
class ErrorScope {
 public:
  ErrorScope() { ERR_set_mark(); }
  ~ErrorScope() { ERR_pop_to_mark(); }
  ErrorScope(const ErrorScope&) = delete;
  ErrorScope& operator=(const ErrorScope&) = delete;
};

// Returns the text of OpenSSL's last error.
inline std::string lastOpensslError() {
  const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
  return reason != nullptr ? reason : "unknown error";
}

inline std::string_view textOf(const ASN1_OCTET_STRING* string) {
  return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(string)),
          static_cast<std::size_t>(ASN1_STRING_length(string))};
}

}  // namespace qel::receipt

#endif  // QEL_RECEIPT_OPENSSL_HANDLES_H_
