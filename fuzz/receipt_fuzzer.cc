// Fuzzes the reading of receipts. An input is read as a receipt, and as the content of one.

#include <optional>
#include <string>
#include <variant>

#include "fuzz_target.h"
#include "qel/app_receipt.h"
#include "receipt_attributes.h"
#include "receipt_maker.h"
#include "receipt_oracle.h"
#include "receipt_payload.h"

namespace qel::testing {
namespace {

void checkContent(std::string_view input) {
  std::optional<OracleReceipt> read;
  try {
    read = attributesOf(receipt::readPayload(input));
  } catch (const ReceiptError& error) {
    check(error.path.starts_with("/content"), "an error of the content is in the content");
    check(error.offset <= input.size(), "an error is at a byte of the content");
    check(!error.message.empty(), "an error says what was found");
  }
  check(read == oracleReceipt(input), "a content is read or rejected as by the oracle");
}

void checkReceipt(std::string_view input) {
  static const std::string kCertificates = ReceiptSigner().root();
  const AppReceiptResult result = readAppReceipt(input);
  const ReceiptVerification verification = verifyReceiptSignature(input, kCertificates);
  check(!verification.isVerified, "a signature of another signer is not verified");
  check(!verification.failure.empty(), "what is not verified has a reason");
  if (const auto* const error = std::get_if<ReceiptError>(&result)) {
    check(!error->message.empty(), "an error says what was found");
    return;
  }
  // The oracle does not read base64.
  if (!input.starts_with('0')) return;
  const std::optional<std::string> content = oracleContent(input);
  check(content.has_value(), "the oracle finds the content of a receipt");
  check(attributesOf(std::get<AppReceipt>(result)) == oracleReceipt(*content),
        "a receipt is read as by the oracle");
}

}  // namespace

void fuzz(std::string_view input) {
  checkContent(input);
  checkReceipt(input);
}

}  // namespace qel::testing
