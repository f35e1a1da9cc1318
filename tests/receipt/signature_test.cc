#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "qel/app_receipt.h"
#include "receipt_maker.h"

namespace qel {
namespace {

using testing::attribute;
using testing::attributeSet;
using testing::base64Of;
using testing::ia5Element;
using testing::ReceiptSigner;
using testing::utf8Element;

const ReceiptSigner& signer() {
  static const ReceiptSigner kSigner;
  return kSigner;
}

std::string contentOfDate(const char* creationDate) {
  return attributeSet(
      {attribute(2, utf8Element("com.example.app")), attribute(12, ia5Element(creationDate))});
}

std::string receiptOfDate(const char* creationDate) {
  return signer().sign(contentOfDate(creationDate), {});
}

// Returns "verified" or the failure.
std::string verification(std::string_view receipt, std::string_view certificates) {
  const ReceiptVerification result = verifyReceiptSignature(receipt, certificates);
  EXPECT_EQ(result.isVerified, result.failure.empty());
  return result.isVerified ? "verified" : result.failure;
}

TEST(SignatureTest, DerAndBerOfAnyDigestAreVerified) {
  const std::string content = contentOfDate("2024-03-15T10:00:05Z");
  for (const EVP_MD* const digest : {EVP_sha1(), EVP_sha256()}) {
    for (const bool isIndefinite : {false, true}) {
      const std::string receipt =
          signer().sign(content, {.digest = digest, .isIndefinite = isIndefinite});
      EXPECT_EQ(verification(receipt, signer().root()), "verified");
      EXPECT_EQ(verification(base64Of(receipt), signer().root()), "verified");
    }
  }
}

TEST(SignatureTest, CertificatesCanBeSeveralOrInDerOrNoRoot) {
  const std::string receipt = receiptOfDate("2024-03-15T10:00:05Z");
  const ReceiptSigner other;
  EXPECT_EQ(verification(receipt, other.root() + signer().root()), "verified");
  EXPECT_EQ(verification(receipt, signer().rootInDer()), "verified");
  EXPECT_EQ(verification(receipt, signer().intermediate()), "verified");
}

TEST(SignatureTest, AChainToAnotherRootIsNotVerified) {
  const ReceiptSigner other;
  EXPECT_EQ(verification(receiptOfDate("2024-03-15T10:00:05Z"), other.root()),
            "certificate verify error: Verify error: unable to get local issuer certificate");
}

TEST(SignatureTest, TheChainIsCheckedAtTheCreationDate) {
  EXPECT_EQ(verification(receiptOfDate("2023-01-01T00:00:00Z"), signer().root()), "verified");
  EXPECT_EQ(verification(receiptOfDate("2024-12-31T23:59:59Z"), signer().root()), "verified");
  EXPECT_EQ(verification(receiptOfDate("2022-12-31T23:59:59Z"), signer().root()),
            "certificate verify error: Verify error: certificate is not yet valid");
  EXPECT_EQ(verification(receiptOfDate("2025-01-01T00:00:01Z"), signer().root()),
            "certificate verify error: Verify error: certificate has expired");
}

TEST(SignatureTest, WithoutACreationDateNothingIsVerified) {
  EXPECT_EQ(verification(receiptOfDate(""), signer().root()), "the receipt has no creation date");
  EXPECT_EQ(verification(receiptOfDate("yesterday"), signer().root()),
            "the receipt's creation date cannot be read: yesterday");
}

TEST(SignatureTest, AChangedContentIsNotVerified) {
  std::string receipt = receiptOfDate("2024-03-15T10:00:05Z");
  receipt.replace(receipt.find("com.example.app"), 3, "net");
  ASSERT_TRUE(std::holds_alternative<AppReceipt>(readAppReceipt(receipt)));
  EXPECT_EQ(verification(receipt, signer().root()), "content verify error");
}

TEST(SignatureTest, CertificatesMustBeReadable) {
  const std::string root = signer().root();
  std::string broken = root;
  broken.replace(broken.find("MII"), 3, "***");
  const std::string none = "expected at least one certificate in PEM, or one in DER, found none";
  const std::pair<std::string, std::string> cases[] = {
      {"", none},
      {"no certificate", none},
      {"-----BEGIN PUBLIC KEY-----\nAAAA\n-----END PUBLIC KEY-----\n", none},
      {broken, "expected certificates in PEM, found that number 1 is broken"},
      {root + broken, "expected certificates in PEM, found that number 2 is broken"},
      {root + root.substr(0, root.size() / 2),
       "expected certificates in PEM, found that number 2 is broken"},
      {std::string(kMaxReceiptSize + 1, 'A'),
       "expected at most 67108864 bytes of certificates, found 67108865"},
  };
  const std::string receipt = receiptOfDate("2024-03-15T10:00:05Z");
  for (const auto& [certificates, fault] : cases) {
    EXPECT_EQ(describeCertificateFault(certificates), fault);
    EXPECT_EQ(verification(receipt, certificates), fault);
  }
  EXPECT_EQ(describeCertificateFault({}), none);
  EXPECT_EQ(describeCertificateFault(root + signer().intermediate()), std::nullopt);
  EXPECT_EQ(describeCertificateFault(signer().rootInDer()), std::nullopt);
}

TEST(SignatureTest, UnreadableReceiptsAreNotVerified) {
  EXPECT_EQ(verification("*", signer().root()),
            "the receipt cannot be read: expected a receipt in DER, BER or base64, found *, "
            "which is not of base64");
}

// Whichever byte changes: what is still verified has the content that was signed.
TEST(SignatureTest, ChangesNeverVerifyAnotherContent) {
  const std::string receipt = receiptOfDate("2024-03-15T10:00:05Z");
  const std::string root = signer().root();
  int verified = 0;
  for (std::size_t i = 0; i < receipt.size(); ++i) {
    std::string changed = receipt;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    if (!verifyReceiptSignature(changed, root).isVerified) continue;
    ++verified;
    const AppReceiptResult result = readAppReceipt(changed);
    ASSERT_TRUE(std::holds_alternative<AppReceipt>(result));
    EXPECT_EQ(std::get<AppReceipt>(result).bundleIdentifier, "com.example.app") << i;
    EXPECT_EQ(std::get<AppReceipt>(result).creationDate, "2024-03-15T10:00:05Z") << i;
  }
  // No signature covers a few bytes, such as those of the versions.
  EXPECT_GT(verified, 0);
  EXPECT_LT(verified, static_cast<int>(receipt.size() / 20));
}

}  // namespace
}  // namespace qel
