#include "result_writer.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace qel::tool {
namespace {

std::string result(const OptionalText& id, const std::optional<EventParameters>& event,
                   std::string_view diagnostics = "", ResultForm form = {}) {
  TextBuffer out;
  appendResult(id, event, diagnostics, form, out);
  return std::string(out.text());
}

std::string error(const OptionalText& id, std::uint64_t line, const JsonError& lineError) {
  TextBuffer out;
  appendError(id, {std::nullopt, line}, lineError, UnpairedSurrogates::kEscape, out);
  return std::string(out.text());
}

EventParameters eventOfIntegers() {
  EventParameters event;
  event.set(ParameterKey::kValue,
            QELValue::initWithInt64(std::numeric_limits<std::int64_t>::min()));
  event.set(ParameterKey::kPrice,
            QELValue::initWithInt64(std::numeric_limits<std::int64_t>::max()));
  event.set(ParameterKey::kCurrency, QELValue::initWithString("EUR"));
  event.set(ParameterKey::kDedupeId, QELValue::initWithInt64(-1));
  event.set(ParameterKey::kQuantity, QELValue::initWithInt64(0));
  return event;
}

TEST(ResultWriterTest, WritesNullWithoutAnEvent) {
  EXPECT_EQ(result(std::nullopt, std::nullopt), "{\"event\":null,\"diagnostics\":[]}\n");
}

TEST(ResultWriterTest, WritesAnEmptyEventAsAnEmptyObject) {
  EXPECT_EQ(result(std::nullopt, EventParameters()), "{\"event\":{},\"diagnostics\":[]}\n");
}

TEST(ResultWriterTest, WritesTheIdFirst) {
  EXPECT_EQ(result("a", std::nullopt), "{\"id\":\"a\",\"event\":null,\"diagnostics\":[]}\n");
}

TEST(ResultWriterTest, WritesAnEmptyId) {
  EXPECT_EQ(result("", std::nullopt), "{\"id\":\"\",\"event\":null,\"diagnostics\":[]}\n");
}

TEST(ResultWriterTest, WritesKeysSortedAndIntegersExactly) {
  EXPECT_EQ(result(std::nullopt, eventOfIntegers()),
            R"({"event":{"_did":-1,"currency":"EUR","price":9223372036854775807,"quantity":0,)"
            R"("value":-9223372036854775808},"diagnostics":[]})"
            "\n");
}

TEST(ResultWriterTest, WritesIntegersAsStringsWhenAsked) {
  EXPECT_EQ(result(std::nullopt, eventOfIntegers(), "", {.int64 = Int64Form::kString}),
            R"({"event":{"_did":"-1","currency":"EUR","price":"9223372036854775807",)"
            R"("quantity":"0","value":"-9223372036854775808"},"diagnostics":[]})"
            "\n");
}

TEST(ResultWriterTest, WritesTheDeduplicationIdentifierAsAStringWhenAsked) {
  EXPECT_EQ(result(std::nullopt, eventOfIntegers(), "", {.int64 = Int64Form::kDidAsString}),
            R"({"event":{"_did":"-1","currency":"EUR","price":9223372036854775807,"quantity":0,)"
            R"("value":-9223372036854775808},"diagnostics":[]})"
            "\n");
}

TEST(ResultWriterTest, ReplacesUnpairedSurrogatesWhenAsked) {
  EventParameters event;
  event.set(ParameterKey::kProductName, QELValue::initWithString("\xED\xB0\x80 b"));
  EXPECT_EQ(result("\xED\xA0\x80", event, "", {.surrogates = UnpairedSurrogates::kReplace}),
            "{\"id\":\"\uFFFD\",\"event\":{\"product_name\":\"\uFFFD b\"},\"diagnostics\":[]}\n");
}

TEST(ResultWriterTest, EscapesIdAndValues) {
  EventParameters event;
  event.set(ParameterKey::kProductName, QELValue::initWithString("a\"b\\c\n\xED\xA0\x80"));
  EXPECT_EQ(result("x\ty", event),
            R"({"id":"x\ty","event":{"product_name":"a\"b\\c\n\ud800"},"diagnostics":[]})"
            "\n");
}

TEST(ResultWriterTest, AppendsToWhatIsThere) {
  TextBuffer out;
  out.append("before\n");
  appendResult(std::nullopt, std::nullopt, "", {}, out);
  appendError(std::nullopt, {"a\"b", 2}, {"", "m"}, UnpairedSurrogates::kEscape, out);
  EXPECT_EQ(out.text(),
            "before\n{\"event\":null,\"diagnostics\":[]}\n"
            "{\"error\":{\"file\":\"a\\\"b\",\"line\":2,\"path\":\"\",\"message\":\"m\"}}\n");
}

TEST(ResultWriterTest, WritesAnErrorWithItsLinePathAndMessage) {
  EXPECT_EQ(error("a", 17, {"/receipt/0/purchaseType", "expected \"this\""}),
            R"({"id":"a","error":{"line":17,"path":"/receipt/0/purchaseType",)"
            R"("message":"expected \"this\""}})"
            "\n");
}

TEST(ResultWriterTest, WritesTheGreatestLineNumber) {
  EXPECT_EQ(error(std::nullopt, std::numeric_limits<std::uint64_t>::max(), {"", ""}),
            "{\"error\":{\"line\":18446744073709551615,\"path\":\"\",\"message\":\"\"}}\n");
}

}  // namespace
}  // namespace qel::tool
