#include <openssl/pem.h>
#include <openssl/x509_vfy.h>

#include "qel/app_receipt.h"
#include "qel/rfc3339.h"
#include "receipt_payload.h"
#include "signed_data.h"

namespace qel {
namespace {

using receipt::Handle;

// Limits the time: each signer takes a verification of a chain. Receipts have one signer.
constexpr int kMaxSigners = 8;

// Thrown with the reason.
struct VerificationFailure {
  std::string reason;
};

[[noreturn]] void fail(const std::string& reason) { throw VerificationFailure{reason}; }

Handle<BIO> readerOf(std::string_view bytes) {
  Handle<BIO> reader(BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
  receipt::requireMemory(reader != nullptr);
  return reader;
}

void add(const Handle<X509>& certificate, X509_STORE& store) {
  receipt::requireMemory(X509_STORE_add_cert(&store, certificate.get()) == 1);
}

// Adds certificates in PEM, or one in DER.
void addCertificates(std::string_view certificates, X509_STORE& store) {
  if (certificates.empty() || certificates.size() > kMaxReceiptSize) {
    fail("expected certificates in PEM or DER, found " + std::to_string(certificates.size()) +
         " bytes");
  }
  const Handle<BIO> pem = readerOf(certificates);
  int count = 0;
  while (const Handle<X509> certificate{PEM_read_bio_X509(pem.get(), nullptr, nullptr, nullptr)}) {
    add(certificate, store);
    ++count;
  }
  if (count > 0) return;
  const Handle<BIO> der = readerOf(certificates);
  const Handle<X509> certificate(d2i_X509_bio(der.get(), nullptr));
  if (certificate == nullptr) fail("expected certificates in PEM or DER, found none");
  add(certificate, store);
}

std::int64_t creationSecondsOf(CMS_ContentInfo& signedData) {
  const AppReceipt content = receipt::readPayload(receipt::contentOf(signedData));
  if (!content.creationDate.has_value()) fail("the receipt has no creation date");
  const std::optional<Instant> date = parseRfc3339(*content.creationDate);
  if (!date.has_value()) {
    fail("the receipt's creation date cannot be read: " + *content.creationDate);
  }
  return date->seconds();
}

Handle<X509_STORE> trustedStore(std::string_view certificates, std::int64_t seconds) {
  Handle<X509_STORE> store(X509_STORE_new());
  receipt::requireMemory(store != nullptr);
  addCertificates(certificates, *store);
  X509_VERIFY_PARAM* const parameters = X509_STORE_get0_param(store.get());
  X509_VERIFY_PARAM_set_time(parameters, seconds);
  // Level 0 allows SHA-1.
  X509_VERIFY_PARAM_set_auth_level(parameters, 0);
  // The default is the use for e-mail, which the store's certificates do not have.
  X509_VERIFY_PARAM_set_purpose(parameters, X509_PURPOSE_ANY);
  // Ends a chain at a given certificate that is not a root, too.
  X509_VERIFY_PARAM_set_flags(parameters, X509_V_FLAG_PARTIAL_CHAIN);
  return store;
}

// Returns OpenSSL's reason, and its details, such as that a certificate has expired.
std::string lastReason() {
  const char* details = nullptr;
  int flags = 0;
  const auto error = ERR_peek_last_error_all(nullptr, nullptr, nullptr, &details, &flags);
  const char* const reason = ERR_reason_error_string(error);
  std::string text = reason != nullptr ? reason : "unknown error";
  if ((flags & ERR_TXT_STRING) != 0 && details != nullptr && *details != '\0') {
    text += std::string(": ") + details;
  }
  return text;
}

void verify(std::string_view bytes, std::string_view certificates) {
  const Handle<CMS_ContentInfo> signedData = receipt::readSignedData(bytes);
  if (sk_CMS_SignerInfo_num(CMS_get0_SignerInfos(signedData.get())) > kMaxSigners) {
    fail("the receipt has more than " + std::to_string(kMaxSigners) + " signers");
  }
  const Handle<X509_STORE> store = trustedStore(certificates, creationSecondsOf(*signedData));
  if (CMS_verify(signedData.get(), nullptr, store.get(), nullptr, nullptr, CMS_BINARY) != 1) {
    fail(lastReason());
  }
}

}  // namespace

ReceiptVerification verifyReceiptSignature(std::string_view bytes,
                                           std::string_view certificates) noexcept {
  const receipt::ErrorScope errors;
  try {
    verify(bytes, certificates);
    return {.isVerified = true, .failure = {}};
  } catch (const VerificationFailure& failure) {
    return {.isVerified = false, .failure = failure.reason};
  } catch (const ReceiptError& error) {
    return {.isVerified = false, .failure = "the receipt cannot be read: " + error.message};
  }
}

}  // namespace qel
