// The oracle for JSON (RFC 8259): strict and slow.

#ifndef QEL_TESTS_REFERENCE_JSON_ORACLE_H_
#define QEL_TESTS_REFERENCE_JSON_ORACLE_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::testing {

struct OracleJson {
  enum class Kind { kNull, kBoolean, kNumber, kString, kArray, kObject };

  Kind kind = Kind::kNull;
  // A number, true or false as it is written, or the content of a string in UTF-8. An unpaired
  // surrogate has the three bytes of its code point.
  std::string text;
  // The values of an array or an object, in their order.
  std::vector<OracleJson> values;
  // The keys of an object, one for each value. A key may occur more than once.
  std::vector<std::string> keys;

  // Returns the first value under `key`, or null if there is none.
  const OracleJson* find(std::string_view key) const;
};

// Parses `text`. Returns std::nullopt if it is not exactly one value in UTF-8.
std::optional<OracleJson> oracleJson(std::string_view text);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_JSON_ORACLE_H_
