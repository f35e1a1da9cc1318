#include "examples.h"

#include <cstddef>
#include <fstream>
#include <stdexcept>

#include "reference/json_oracle.h"
#include "reference/purchase_line_oracle.h"

namespace qel::testing {
namespace {

std::vector<std::string> linesOf(const std::string& path) {
  std::ifstream file(QEL_SOURCE_DIR "/" + path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  if (lines.empty()) throw std::runtime_error("there are no lines in " + path);
  return lines;
}

Outcome goldenOutcome(const OracleJson& result) {
  Outcome outcome;
  const OracleJson& event = *result.find("event");
  if (event.kind == OracleJson::Kind::kObject) outcome.event.emplace();
  for (std::size_t i = 0; i < event.keys.size(); ++i) {
    const OracleJson& value = event.values[i];
    (*outcome.event)[event.keys[i]] = value.kind == OracleJson::Kind::kString
                                          ? ParameterContent(value.text)
                                          : std::int64_t{std::stoll(value.text)};
  }
  for (const OracleJson& diagnostic : result.find("diagnostics")->values) {
    Diagnostic& expected = outcome.diagnostics.emplace_back();
    expected.level = std::stoi(diagnostic.find("level")->text);
    expected.code = std::stoi(diagnostic.find("code")->text);
    expected.message = diagnostic.find("message")->text;
    for (const OracleJson& context : diagnostic.find("context")->values) {
      expected.context.push_back(context.kind == OracleJson::Kind::kString
                                     ? Diagnostic::Context(context.text)
                                     : std::uint64_t{std::stoull(context.text)});
    }
  }
  return outcome;
}

}  // namespace

std::vector<Example> examplePurchases() {
  const std::vector<std::string> purchases = linesOf("examples/purchases.jsonl");
  const std::vector<std::string> results = linesOf("tests/golden/purchases.jsonl");
  std::vector<Example> examples;
  for (std::size_t i = 0; i < purchases.size(); ++i) {
    const OraclePurchase purchase = oraclePurchase(purchases[i], false).value();
    const OracleJson result = oracleJson(results.at(i)).value();
    if (result.find("id")->text != purchase.id) {
      throw std::runtime_error("line " + std::to_string(i + 1) + ": the golden id differs");
    }
    examples.push_back({*purchase.id, purchase, goldenOutcome(result)});
  }
  return examples;
}

}  // namespace qel::testing
