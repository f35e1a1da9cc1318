#include <openssl/pem.h>
#include <openssl/x509_vfy.h>

#include <ctime>
#include <utility>
#include <vector>

#include "qel/app_receipt.h"
#include "qel/rfc3339.h"
#include "receipt_payload.h"
#include "signed_data.h"

namespace qel {
namespace {

using receipt::Handle;

// Limits the time: a certificate chain is verified for each signer. Receipts have one signer.
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

[[noreturn]] void failWithoutCertificate() {
  fail("expected at least one certificate in PEM, or one in DER, found none");
}

// Reads certificates in PEM, or one in DER. Returns at least one. Throws VerificationFailure.
std::vector<Handle<X509>> readCertificates(std::string_view text) {
  if (text.empty()) failWithoutCertificate();
  if (text.size() > kMaxReceiptSize) {
    fail("expected at most " + std::to_string(kMaxReceiptSize) + " bytes of certificates, found " +
         std::to_string(text.size()));
  }
  std::vector<Handle<X509>> certificates;
  const Handle<BIO> pem = readerOf(text);
  while (Handle<X509> certificate{PEM_read_bio_X509(pem.get(), nullptr, nullptr, nullptr)}) {
    certificates.push_back(std::move(certificate));
  }
  const auto error = ERR_peek_last_error();
  const bool isAtEnd =
      ERR_GET_LIB(error) == ERR_LIB_PEM && ERR_GET_REASON(error) == PEM_R_NO_START_LINE;
  if (!isAtEnd) {
    fail("expected certificates in PEM, found that number " +
         std::to_string(certificates.size() + 1) + " is broken");
  }
  if (!certificates.empty()) return certificates;
  const Handle<BIO> der = readerOf(text);
  Handle<X509> certificate(d2i_X509_bio(der.get(), nullptr));
  if (certificate == nullptr) failWithoutCertificate();
  certificates.push_back(std::move(certificate));
  return certificates;
}

std::time_t creationTimeOf(CMS_ContentInfo& signedData) {
  const AppReceipt content = receipt::readPayload(receipt::contentOf(signedData));
  if (!content.creationDate.has_value()) fail("the receipt has no creation date");
  const std::optional<Instant> date = parseRfc3339(*content.creationDate);
  if (!date.has_value()) {
    fail("the receipt's creation date cannot be read: " + *content.creationDate);
  }
  // Some 32-bit systems count seconds in 32 bits, to 2038.
  if (!std::in_range<std::time_t>(date->seconds())) {
    fail("the receipt's creation date is outside the times of this system: " +
         *content.creationDate);
  }
  return static_cast<std::time_t>(date->seconds());
}

Handle<X509_STORE> trustedStore(std::string_view certificates, std::time_t time) {
  Handle<X509_STORE> store(X509_STORE_new());
  receipt::requireMemory(store != nullptr);
  for (const Handle<X509>& certificate : readCertificates(certificates)) {
    receipt::requireMemory(X509_STORE_add_cert(store.get(), certificate.get()) == 1);
  }
  X509_VERIFY_PARAM* const parameters = X509_STORE_get0_param(store.get());
  X509_VERIFY_PARAM_set_time(parameters, time);
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
  const Handle<X509_STORE> store = trustedStore(certificates, creationTimeOf(*signedData));
  if (CMS_verify(signedData.get(), nullptr, store.get(), nullptr, nullptr, CMS_BINARY) != 1) {
    fail(lastReason());
  }
}

}  // namespace

std::optional<std::string> describeCertificateFault(std::string_view certificates) noexcept {
  const receipt::ErrorScope errors;
  try {
    static_cast<void>(readCertificates(certificates));
    return std::nullopt;
  } catch (const VerificationFailure& failure) {
    return failure.reason;
  }
}

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
