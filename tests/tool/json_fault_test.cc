#include "json_fault.h"

#include <gtest/gtest.h>

namespace qel::tool {
namespace {

using namespace std::string_view_literals;

struct FaultCase {
  std::string_view text;
  const char* fault;
};

TEST(JsonFaultTest, DescribesTheFirstFault) {
  const FaultCase cases[] = {
      {""sv, "1: expected a value, found the end of the line"},
      {"x"sv, "1: expected a value, found x"},
      {"\uFEFF{}"sv, "1: expected a value, found U+FEFF, a byte order mark"},
      {"{}\uFEFF"sv, "3: expected nothing after the object, found U+FEFF, a byte order mark"},
      {"  é"sv, "3: expected a value, found é"},
      {"{"sv, "2: expected a key in quotes or }, found the end of the line"},
      {"}"sv, "1: expected a value, found }"},
      {"{} "sv, nullptr},
      {"{},"sv, "3: expected nothing after the object, found ,"},
      {"{}x"sv, "3: expected nothing after the object, found x"},
      {"{} {}"sv, "4: expected nothing after the object, found {"},
      {"{]"sv, "2: expected a key in quotes or }, found ]"},
      {"{,}"sv, "2: expected a key in quotes or }, found ,"},
      {R"({"a"})"sv, "5: expected a colon, found }"},
      {R"({"a" "b"})"sv, "6: expected a colon, found \""},
      {R"({"a":})"sv, "6: expected a value, found }"},
      {R"({"a":1)"sv, "7: expected a comma or }, found the end of the line"},
      {R"({"a":1]})"sv, "7: expected a comma or }, found ]"},
      {R"({"a":1,})"sv, "8: expected a key in quotes, found }"},
      {R"({"a":1,,"b":2})"sv, "8: expected a key in quotes, found ,"},
      {R"({"é":1 "b":2})"sv, "8: expected a comma or }, found \""},
      {R"({"a":[1 2]})"sv, "9: expected a comma or ], found 2"},
      {R"({"a":[1,]})"sv, "9: expected a value, found ]"},
      {R"({"a":[,]})"sv, "7: expected a value, found ,"},
      {R"({"a":[{]})"sv, "8: expected a key in quotes or }, found ]"},
      {R"({"a":[{}})"sv, "9: expected a comma or ], found }"},
      {R"({"a":{"b":[]},"c")"sv, "18: expected a colon, found the end of the line"},
      {R"({"a":tru})"sv, "6: expected true, false or null, found tru"},
      {R"({"a":nulll})"sv, "6: expected true, false or null, found nulll"},
      {R"({"a":-})"sv, "6: expected a number in JSON syntax, found -"},
      {R"({"a":01})"sv, "6: expected a number in JSON syntax, found 01"},
      {R"({"a":1"b"})"sv, "7: expected a comma or }, found \""},
      {R"({"a":+1})"sv, "6: expected a value, found +"},
      {R"({"a":"b)"sv, "6: expected a string to end with a quote"},
      {R"({"a)"sv, "2: expected a string to end with a quote"},
      {"{\"a\":\"\t\"}"sv, "7: expected the control characters of a string to be escaped"},
      {"{\"\0\":1}"sv, "3: expected the control characters of a string to be escaped"},
      {"{\"a\":\"é\xFF\"}"sv, "8: expected UTF-8"},
      {"\xC3"sv, "1: expected UTF-8"},
      {"{\0}"sv, "2: expected a key in quotes or }, found \0"},
  };
  for (const auto& [text, fault] : cases) {
    const std::optional<std::string> described = describeJsonFault(text);
    if (fault == nullptr) {
      EXPECT_EQ(described, std::nullopt) << text;
    } else {
      ASSERT_TRUE(described.has_value()) << text;
      // The text of the last case has a NUL.
      EXPECT_STREQ(described->c_str(), ("broken JSON at column " + std::string(fault)).c_str());
    }
  }
}

TEST(JsonFaultTest, FindsEachEscapeThatJsonDoesNotHave) {
  for (const std::string_view escape : {R"(\q)"sv, R"(\')"sv, R"(\u)"sv, R"(\u12)"sv, R"(\u12g4)"sv,
                                        R"(\u-123)"sv, R"(\é)"sv, R"(\u006Ǘ)"sv}) {
    const std::string text = R"({"a":"\\\n)" + std::string(escape) + R"("})";
    EXPECT_EQ(describeJsonFault(text),
              R"(broken JSON at column 11: expected an escape that JSON has: )"
              R"(\" \\ \/ \b \f \n \r \t or \uXXXX, found )" +
                  std::string(escape))
        << text;
  }
}

TEST(JsonFaultTest, FindsNothingInJson) {
  for (const std::string_view text :
       {R"({})"sv, R"( {"a":[], "b":{"c":[{},[1,-2.5e3]]}, "":null} )"sv, R"([1,"a",true])"sv,
        R"({"a":"\" \\ \/ \b \f \n \r \t \u00e9 \ud800 \ud83d\ude80 é"})"sv}) {
    EXPECT_EQ(describeJsonFault(text), std::nullopt) << text;
  }
}

TEST(JsonFaultTest, ReadsDeepNesting) {
  constexpr std::size_t kDepth = 1'000'000;
  const std::string open(kDepth, '[');
  EXPECT_EQ(describeJsonFault(open + std::string(kDepth, ']')), std::nullopt);
  EXPECT_EQ(describeJsonFault(open),
            "broken JSON at column 1000001: expected a value, found the end of the line");
}

}  // namespace
}  // namespace qel::tool
