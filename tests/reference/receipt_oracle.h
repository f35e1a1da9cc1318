// An oracle for receipts: a decoder that shares no code, and no library, with the reader.

#ifndef QEL_TESTS_REFERENCE_RECEIPT_ORACLE_H_
#define QEL_TESTS_REFERENCE_RECEIPT_ORACLE_H_

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::testing {

// Attributes by type. Integers are decimal digits; flags are "1", and absent if they are 0.
using OracleAttributes = std::map<int, std::string>;

struct OracleReceipt {
  OracleAttributes attributes;
  std::vector<OracleAttributes> entries;
  std::size_t unknownDates = 0;

  bool operator==(const OracleReceipt&) const = default;
};

// Returns the receipt of a content, or std::nullopt if the content is broken.
std::optional<OracleReceipt> oracleReceipt(std::string_view content);

// Returns the content of signed data in DER or BER, or std::nullopt if there is none. Looks only at
// what leads to the content.
std::optional<std::string> oracleContent(std::string_view signedData);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_RECEIPT_ORACLE_H_
