// Reads an app's receipt: the file that the store gives to an app on a device.
//
// Example:
//   const qel::AppReceiptResult result = qel::readAppReceipt(bytesOfFile);
//   if (const auto* error = std::get_if<qel::ReceiptError>(&result)) return report(*error);
//   for (const qel::AppReceiptEntry& entry : std::get<qel::AppReceipt>(result).entries) ...
//
// None of these functions lets an exception through: if memory runs out, the program ends with
// std::terminate.
//
// Threads: any, several calls at once.

#ifndef QEL_APP_RECEIPT_H_
#define QEL_APP_RECEIPT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "qel/export.h"
#include "qel/receipt_item.h"

namespace qel {

// A field of a receipt is absent if its attribute is missing or its value is empty.
//
// Dates are in UTC in the form of RFC 3339, 2019-03-14T09:26:53Z, if the receipt has them in a form
// that rfc3339FromReceiptDate() reads. Others are unchanged.

// One in-app purchase.
struct AppReceiptEntry {
  // What the functions of qel::purchase read. A web order line item identifier of 0 is absent: the
  // store writes it for purchases that are not of a subscription.
  QELInAppPurchaseItem item;

  std::optional<std::int64_t> quantity = std::nullopt;
  std::optional<std::string> originalPurchaseDate = std::nullopt;
  // The end of the subscription's period.
  std::optional<std::string> expirationDate = std::nullopt;
  std::optional<std::string> cancellationDate = std::nullopt;
};

struct AppReceipt {
  // The store's environment, such as "Production".
  std::optional<std::string> environment = std::nullopt;
  std::optional<std::string> bundleIdentifier = std::nullopt;
  std::optional<std::string> appVersion = std::nullopt;
  std::optional<std::string> originalAppVersion = std::nullopt;
  std::optional<std::string> creationDate = std::nullopt;
  std::optional<std::string> expirationDate = std::nullopt;

  // In the order of the receipt, which need not be that of the dates.
  std::vector<AppReceiptEntry> entries = {};

  // The dates, of the receipt and of its entries, that are not in the form of RFC 3339.
  std::vector<std::string> unknownDates = {};
};

// Why bytes cannot be read as a receipt.
struct ReceiptError {
  // Where: "" is the input as a whole, "/content" the content of the signed data, "/content/2" its
  // attribute of type 2, and "/content/17/3/1704" the attribute of type 1704 of the entry with
  // index 3.
  std::string path;

  // Offset in bytes. If `path` is empty: in the input, after base64 is decoded. Otherwise: in the
  // content. In a string that BER splits into pieces, counts from the start of the joined string.
  std::size_t offset = 0;

  // What was expected, and what was found.
  std::string message;
};

using AppReceiptResult = std::variant<AppReceipt, ReceiptError>;

// Limits of a receipt. More is an error.
inline constexpr std::size_t kMaxReceiptSize = std::size_t{64} << 20;  // bytes
inline constexpr std::size_t kMaxReceiptEntries = 100'000;

// Reads a receipt: a CMS SignedData (RFC 5652) in DER or BER, or the base64 (RFC 4648) of one in
// either alphabet, with or without white space and padding, or in PEM (RFC 7468). Ignores
// attributes of types that have no field above. An attribute that occurs twice is an error. Does
// not verify the signature.
//
// Time and memory are proportional to the size of `bytes`.
[[nodiscard]] QEL_EXPORT AppReceiptResult readAppReceipt(std::string_view bytes) noexcept;

struct ReceiptVerification {
  bool isVerified = false;
  // Why the receipt is not verified.
  std::string failure;
};

// Verifies the signatures of a receipt, and the certificate chain of each signer up to one of
// `certificates`. The chain must be valid at the receipt's creation date. `certificates` is PEM, or
// one certificate in DER; they are trusted, also if they are not roots. Accepts SHA-1, which the
// store used for many years, and any key usage. Checks no revocation.
[[nodiscard]] QEL_EXPORT ReceiptVerification
verifyReceiptSignature(std::string_view bytes, std::string_view certificates) noexcept;

// Returns why verifyReceiptSignature() cannot use `certificates`: what was expected, and what was
// found. Returns std::nullopt if it can.
[[nodiscard]] QEL_EXPORT std::optional<std::string> describeCertificateFault(
    std::string_view certificates) noexcept;

// Returns the form of RFC 3339, in UTC, of a date in one of the forms that stores write:
//   2022-04-15T18:52:22+0100      an offset without a colon, or of hours only
//   2022-04-15T17:52:22.686Z      a fraction of a second, which is dropped
//   2020-07-14 19:36:40 Etc/GMT   a space, and Etc/GMT, GMT or UTC as the zone
// A date in the form of RFC 3339 (see qel/rfc3339.h) is returned unchanged. Returns std::nullopt
// for any other text, such as a date without a zone, and for a year outside 0001 to 9999.
[[nodiscard]] QEL_EXPORT std::optional<std::string> rfc3339FromReceiptDate(
    std::string_view text) noexcept;

// Returns the timestamp in the form of RFC 3339, in UTC, of seconds since 1970-01-01T00:00:00Z.
// Returns std::nullopt for a year outside 0001 to 9999.
[[nodiscard]] QEL_EXPORT std::optional<std::string> rfc3339FromUnixTime(
    std::int64_t seconds) noexcept;

}  // namespace qel

#endif  // QEL_APP_RECEIPT_H_
