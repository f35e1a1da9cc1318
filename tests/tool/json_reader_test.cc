#include "json_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "padded_line.h"

namespace qel::tool {
namespace {

using testing::PaddedLine;

struct Point {
  std::optional<std::int64_t> x;
  std::string name;
};

constexpr JsonField<Point> kPointFields[] = {
    {"x", [](JsonValue& value, Point& point) { point.x = value.readInt64(); }},
    {"a/b~c", [](JsonValue& value, Point& point) {
       point.name = value.isAbsent() ? "absent" : value.readText().value_or("null");
     }}};

struct Drawing {
  std::optional<Point> origin;
  std::vector<Point> points;
};

constexpr JsonField<Drawing> kDrawingFields[] = {
    {"origin",
     [](JsonValue& value, Drawing& drawing) { value.readObject(kPointFields, drawing.origin); }},
    {"points", [](JsonValue& value, Drawing& drawing) {
       drawing.points.clear();
       value.readObjects(kPointFields, [&drawing](std::size_t) -> Point& {
         return drawing.points.emplace_back();
       });
     }}};

class JsonReaderTest : public ::testing::Test {
 protected:
  void read(std::string_view text) {
    const PaddedLine line(text);
    reader_.read(line.view(), kDrawingFields, drawing_);
  }

  // The pointer and the message of the error, a space between them.
  std::string errorOf(std::string_view text) {
    try {
      read(text);
    } catch (const JsonError& error) {
      return error.pointer + " " + error.message;
    }
    return "(no error)";
  }

  JsonReader reader_ = JsonReader(UnknownKeys::kAreErrors);
  Drawing drawing_;
};

TEST_F(JsonReaderTest, ReadsNestedObjectsAndArrays) {
  read(R"({"origin":{"x":1,"a/b~c":"o"},"points":[{"x":2},{"a/b~c":"p"}]})");
  EXPECT_EQ(drawing_.origin->x, 1);
  EXPECT_EQ(drawing_.origin->name, "o");
  ASSERT_EQ(drawing_.points.size(), 2U);
  EXPECT_EQ(drawing_.points[0].x, 2);
  EXPECT_EQ(drawing_.points[1].name, "p");
}

TEST_F(JsonReaderTest, CallsTheFieldsOfKeysThatAreNotThere) {
  read(R"({"origin":{}})");
  EXPECT_EQ(drawing_.origin->x, std::nullopt);
  EXPECT_EQ(drawing_.origin->name, "absent");
}

TEST_F(JsonReaderTest, TellsNullFromAbsent) {
  read(R"({"origin":{"a/b~c":null}})");
  EXPECT_EQ(drawing_.origin->name, "null");
}

TEST_F(JsonReaderTest, LeavesNothingOfTheTextBefore) {
  read(R"({"origin":{"x":1,"a/b~c":"o"},"points":[{"x":2}]})");
  read(R"({"origin":{"a/b~c":"o"}})");
  EXPECT_EQ(drawing_.origin->x, std::nullopt);
  EXPECT_TRUE(drawing_.points.empty());
  read("{}");
  EXPECT_FALSE(drawing_.origin.has_value());
}

TEST_F(JsonReaderTest, LeavesNothingOfABrokenTextBefore) {
  EXPECT_NE(errorOf(R"({"origin":{"x":1},"points":[{"x":2},7]})"), "(no error)");
  read("{}");
  EXPECT_FALSE(drawing_.origin.has_value());
  EXPECT_TRUE(drawing_.points.empty());
}

TEST_F(JsonReaderTest, ReadsKeysInAnyOrderAndWithEscapes) {
  read(R"({"points":[],"origin":{"a\u002fb~c":"o","\u0078":3}})");
  EXPECT_EQ(drawing_.origin->x, 3);
  EXPECT_EQ(drawing_.origin->name, "o");
}

TEST_F(JsonReaderTest, ReadsAlikeHoweverTheTextIsWritten) {
  const std::vector<std::string> texts = {
      R"({"origin":{"x":-5,"a/b~c":"o"},"points":[{},{"x":7},{"a/b~c":null}]})",
      R"({"origin": {"x": -5, "a/b~c": "o"}, "points": [{}, {"x": 7}, {"a/b~c": null}]})",
      R"( { "origin" : { "x" : -5 , "a/b~c" : "o" } , "points" : [ { } , { "x" : 7 } , { "a/b~c" : null } ] } )",
      R"({"points":[{},{"x":7},{"a/b~c":null}],"origin":{"a/b~c":"o","x":-5}})",
      R"({"origin":{"x":-5,"a\/b~c":"\u006f"},"points":[{},{"x":7},{"a/b~c":null}]})",
      "{\"origin\":{\"x\":-5,\"a/b~c\":\"o\"},\"points\":[{},{\"x\":7},{\"a/b~c\":null}]}\r"};
  for (const std::string& text : texts) {
    // Broken, and read in part: nothing of it may be left.
    EXPECT_NE(errorOf(R"({"origin":{"x":1,"a/b~c":"left"},"points":[{"x":2}]})"
                      "}"),
              "(no error)");
    read(text);
    ASSERT_TRUE(drawing_.origin.has_value()) << text;
    EXPECT_EQ(drawing_.origin->x, -5) << text;
    EXPECT_EQ(drawing_.origin->name, "o") << text;
    ASSERT_EQ(drawing_.points.size(), 3U) << text;
    EXPECT_FALSE(drawing_.points[0].x.has_value()) << text;
    EXPECT_EQ(drawing_.points[0].name, "absent") << text;
    EXPECT_EQ(drawing_.points[1].x, 7) << text;
    EXPECT_EQ(drawing_.points[2].name, "null") << text;
  }
}

TEST_F(JsonReaderTest, RejectsWhatIsNearlyCompact) {
  for (const char* const text : {R"({"origin":{"x":1},})",
                                 R"({"origin":{"x":1})",
                                 R"({"origin":{"x":1}}})",
                                 R"({"origin":{"x":1,}})",
                                 R"({"origin":{"x":1 2}})",
                                 R"({"origin":{"x":01}})",
                                 R"({"origin":{"x":+1}})",
                                 R"({"origin":{"x":}})",
                                 R"({"origin":{"x":1"a/b~c":"o"}})",
                                 R"({"origin":{"a/b~c":"o"x}})",
                                 R"({"origin":{"a/b~c":"o}})",
                                 R"({"origin":{"a/b~c":nul}})",
                                 R"({"points":[{},]})",
                                 R"({"points":[{}{}]})",
                                 R"({"points":[{}})",
                                 R"({"points":[{}]]})",
                                 R"({,"points":[]})",
                                 R"({"origin":{} "points":[]})",
                                 R"({"points":[]} {})",
                                 "{",
                                 "{}x",
                                 R"({"origin":{"a/b~c":"null}})",
                                 R"({"origin":{"a/b~c":"null},"points":[]})",
                                 R"({"origin":{"x":9223372036854775808}})",
                                 R"({"origin":{"x":1.0}})"}) {
    EXPECT_NE(errorOf(text), "(no error)") << text;
  }
}

TEST_F(JsonReaderTest, PointsToTheValueOfAnError) {
  EXPECT_EQ(errorOf(R"({"origin":{"a/b~c":1}})"),
            "/origin/a~1b~0c expected a string, found a number");
  EXPECT_EQ(errorOf(R"({"points":[{},{"x":true}]})"),
            "/points/1/x expected an integer from -9223372036854775808 to 9223372036854775807, "
            "found a boolean");
  EXPECT_EQ(errorOf(R"({"points":[{},null]})"), "/points/1 expected an object, found null");
  EXPECT_EQ(errorOf(R"({"points":7})"), "/points expected an array, found a number");
}

TEST_F(JsonReaderTest, RejectsUnknownAndDuplicateKeys) {
  EXPECT_EQ(errorOf(R"({"origin":{"y":1}})"), "/origin/y unknown key: expected x or a/b~c");
  EXPECT_EQ(errorOf(R"({"origin":{},"origin":{}})"),
            "/origin duplicate key: expected each key once");
}

TEST_F(JsonReaderTest, ShortensALongUnknownKey) {
  const std::string key(100, 'k');
  EXPECT_EQ(errorOf("{\"" + key + "\":1}"),
            "/" + key.substr(0, 60) + "... unknown key: expected origin or points");
}

TEST_F(JsonReaderTest, ReadsIgnoredValuesToTheirEnd) {
  reader_ = JsonReader(UnknownKeys::kAreIgnored);
  read(R"({"z":[{"y":[1,"a",null,true]}],"origin":{"x":1}})");
  EXPECT_EQ(drawing_.origin->x, 1);
  EXPECT_EQ(errorOf(R"({"z":[01]})"),
            " broken JSON at column 7: expected a number in JSON syntax, found 01");
}

}  // namespace
}  // namespace qel::tool
