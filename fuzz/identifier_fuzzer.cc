// Fuzzes the deduplication identifier and the encoding of its text. An input is up to three lines:
// the original transaction identifier, the web order line item identifier, and the product
// identifier, which takes all the rest. A ~ means absent text.

#include <optional>
#include <string>

#include "fuzz_target.h"
#include "identifier_oracle.h"
#include "micros_and_dedupe_id.h"
#include "qel/text.h"

namespace qel::testing {
namespace {

OptionalText textOrAbsent(std::string_view line) {
  return line == "~" ? std::nullopt : OptionalText(line);
}

void checkEncoding(std::string_view bytes) {
  const std::optional<std::string> encoded = utf8DataWithoutLoss(std::string(bytes));
  const std::optional<std::u16string> carried = carriedUtf16(bytes);
  const std::optional<std::string> expected =
      carried.has_value() ? strictUtf8(*carried) : std::nullopt;
  check(encoded == expected, "text is encoded as expected");
  if (encoded.has_value()) {
    check(utf8DataWithoutLoss(*encoded) == encoded, "encoded text stays as it is");
  }
}

}  // namespace

void fuzz(std::string_view input) {
  checkEncoding(input);
  const OptionalText original = textOrAbsent(takeLine(input));
  const OptionalText webOrder = textOrAbsent(takeLine(input));
  const OptionalText product = textOrAbsent(input);
  check(QELTransactionDedupeID(original, webOrder, product) ==
            oracleDedupeId(original, webOrder, product),
        "the identifier is as expected");
}

}  // namespace qel::testing
