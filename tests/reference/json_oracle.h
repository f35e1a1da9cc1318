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
  // A number, true or false as it is written, or what a string stands for: in UTF-8, an unpaired
  // surrogate as the three bytes of its code point.
  std::string text;
  // The values of an array or an object, in their order.
  std::vector<OracleJson> values;
  // The keys of an object, one for each value; a key may come more than once.
  std::vector<std::string> keys;

  // The first value under `key`, null when there is none.
  const OracleJson* find(std::string_view key) const;
};

// The one value that `text` holds; nothing when it is not JSON in UTF-8 from end to end.
std::optional<OracleJson> oracleJson(std::string_view text);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_JSON_ORACLE_H_
