#include "json_reader.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <new>
#include <utility>

#include "json_fault.h"
#include "json_text.h"
#include "qel/decimal.h"

namespace qel::tool {
namespace {

namespace json = simdjson::ondemand;

static_assert(JsonReader::kPadding >= simdjson::SIMDJSON_PADDING);

// How deep an ignored value can be nested.
constexpr int kMaxDepth = 1000;

[[noreturn]] void fail(std::string message) { throw JsonError{{}, std::move(message)}; }

void failIf(simdjson::error_code error) {
  if (error != simdjson::SUCCESS) throw BrokenJson{error};
}

template <typename T>
T valueOrFail(simdjson::simdjson_result<T> result) {
  T value;
  failIf(std::move(result).get(value));
  return value;
}

const char* nameOf(json::json_type type) {
  switch (type) {
    case json::json_type::array:
      return "an array";
    case json::json_type::object:
      return "an object";
    case json::json_type::number:
      return "a number";
    case json::json_type::string:
      return "a string";
    case json::json_type::boolean:
      return "a boolean";
    case json::json_type::null:
      return "null";
  }
  return "something else";
}

[[noreturn]] void failAsWrongType(const char* expected, json::json_type found) {
  fail(std::string("expected ") + expected + ", found " + nameOf(found));
}

std::string_view withoutTrailingSpace(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t\n\r") + 1);
}

// Throws if `token`, whose type simdjson took from its first character, is not a number, true,
// false or null after all.
void checkToken(json::json_type type, std::string_view token) {
  const bool isWord = token == "true" || token == "false" || token == "null";
  if (type == json::json_type::number && !Decimal::isJsonNumber(token))
    throw BrokenJson{simdjson::NUMBER_ERROR};
  if (type == json::json_type::boolean && !isWord) throw BrokenJson{simdjson::T_ATOM_ERROR};
  if (type == json::json_type::null && !isWord) throw BrokenJson{simdjson::N_ATOM_ERROR};
}

// Returns the text of a raw string, given without its quotes.
std::string_view unescaped(JsonSource& source, std::string_view raw) {
  if (raw.find('\\') == std::string_view::npos) return raw;
  const std::size_t offset = source.unescaped.size();
  if (!unescapeJsonString(raw, source.unescaped)) {
    throw BrokenJson{simdjson::STRING_ERROR};
  }
  return std::string_view(source.unescaped).substr(offset);
}

// Returns the step of a JSON Pointer: /key, with ~ and / written as ~0 and ~1.
std::string pointerStep(std::string_view key) {
  std::string step = "/";
  for (const char character : key) {
    if (character == '~') {
      step += "~0";
    } else if (character == '/') {
      step += "~1";
    } else {
      step.push_back(character);
    }
  }
  return step;
}

}  // namespace

// --- JsonValue ---

std::string_view JsonValue::token() {
  if (compact_ == nullptr) return withoutTrailingSpace(value_.raw_json_token());
  if (token_.empty()) token_ = compact_->takeToken();
  return token_;
}

std::string_view JsonValue::numberToken() {
  const std::string_view number = token();
  if (Decimal::isJsonNumber(number)) return number;
  if (compact_ == nullptr) throw BrokenJson{simdjson::NUMBER_ERROR};
  compact_->stop();
  // Any number: what is read from here on is read again with simdjson.
  return "0";
}

void JsonValue::takeNull(const char* expected) {
  if (compact_ != nullptr) {
    if (token() != "null") compact_->stop();
    return;
  }
  const json::json_type found = valueOrFail(value_.type());
  checkToken(found, token());
  if (found != json::json_type::null) failAsWrongType(expected, found);
  failIf(value_.is_null().error());
}

void JsonValue::takeNullForInteger(const char* expected) {
  if (compact_ == nullptr && valueOrFail(value_.type()) == json::json_type::number) {
    fail(std::string("expected ") + expected + ", found " + excerpt(numberToken()));
  }
  takeNull(expected);
}

OptionalText JsonValue::readString(const char* expected) {
  if (compact_ != nullptr) {
    const OptionalText text = compact_->takeText();
    if (!text.has_value()) takeNull(expected);
    return text;
  }
  // From the opening quote to the next token of the text.
  const std::string_view token = value_.raw_json_token();
  if (!token.starts_with('"')) {
    takeNull(expected);
    return std::nullopt;
  }
  // Moves simdjson past the string.
  json::raw_json_string string;
  failIf(value_.get_raw_json_string().get(string));
  return unescaped(source_, token.substr(1, token.rfind('"') - 1));
}

OptionalText JsonValue::readText() {
  if (isAbsent_) return std::nullopt;
  return readString("a string");
}

std::optional<bool> JsonValue::readBool() {
  if (isAbsent_) return std::nullopt;
  const std::string_view word = token();
  if (word == "true") return true;
  if (word == "false") return false;
  takeNull("true or false");
  return std::nullopt;
}

template <typename Integer>
std::optional<Integer> JsonValue::readInteger(const char* expected) {
  if (isAbsent_) return std::nullopt;
  const std::string_view number = token();
  if (number == "-0") return 0;
  const char* const end = number.data() + number.size();
  Integer integer = 0;
  const auto [stop, error] = std::from_chars(number.data(), end, integer);
  if (isJsonInteger(number) && error == std::errc() && stop == end) return integer;
  takeNullForInteger(expected);
  return std::nullopt;
}

std::optional<std::int64_t> JsonValue::readInt64() {
  return readInteger<std::int64_t>("an integer from -9223372036854775808 to 9223372036854775807");
}

std::optional<std::uint64_t> JsonValue::readUint64() {
  return readInteger<std::uint64_t>("an integer from 0 to 18446744073709551615");
}

OptionalText JsonValue::readIntegerDigits() {
  if (isAbsent_) return std::nullopt;
  const std::string_view number = token();
  if (isJsonInteger(number)) return number == "-0" ? "0" : number;
  takeNullForInteger("an integer");
  return std::nullopt;
}

OptionalText JsonValue::readNumberOrText(const char* expected) {
  if (isAbsent_) return std::nullopt;
  if (compact_ != nullptr) {
    const OptionalText text = compact_->takeText();
    if (text.has_value()) return text;
    if (token() == "null") return std::nullopt;
    return numberToken();
  }
  if (valueOrFail(value_.type()) == json::json_type::number) return numberToken();
  return readString(expected);
}

bool JsonValue::openObject(json::object& object) {
  if (isAbsent_) return false;
  const simdjson::error_code error = value_.get_object().get(object);
  if (error == simdjson::INCORRECT_TYPE) {
    takeNull("an object");
    return false;
  }
  failIf(error);
  return true;
}

bool JsonValue::openArray(json::array& array) {
  if (isAbsent_) return false;
  const simdjson::error_code error = value_.get_array().get(array);
  if (error == simdjson::INCORRECT_TYPE) {
    takeNull("an array");
    return false;
  }
  failIf(error);
  return true;
}

void JsonValue::skip(int depth) {
  if (depth > kMaxDepth) fail("expected values nested at most 1000 deep");
  switch (valueOrFail(value_.type())) {
    case json::json_type::array: {
      for (auto element : valueOrFail(value_.get_array())) {
        JsonValue(source_, valueOrFail(element)).skip(depth + 1);
      }
      break;
    }
    case json::json_type::object: {
      json::object object = valueOrFail(value_.get_object());
      for (JsonMembers members(source_, object); !members.atEnd(); members.advance()) {
        // Unescaped, so that a broken key is an error.
        members.key();
        members.value().skip(depth + 1);
      }
      break;
    }
    case json::json_type::number:
      numberToken();
      break;
    case json::json_type::string:
      readText();
      break;
    case json::json_type::boolean:
    case json::json_type::null:
      readBool();
      break;
  }
}

// --- JsonMembers ---

JsonMembers::JsonMembers(JsonSource& source, json::object& object)
    : source_(source), position_(valueOrFail(object.begin())), end_(valueOrFail(object.end())) {
  load();
}

std::string_view JsonMembers::key() {
  const char* const start = member_.value_unsafe().key().raw();
  const char* const end = source_.text.data() + source_.text.size();
  const std::optional<std::string_view> raw =
      rawJsonString(std::string_view(start, static_cast<std::size_t>(end - start)));
  if (!raw.has_value()) throw BrokenJson{simdjson::UNCLOSED_STRING};
  return unescaped(source_, *raw);
}

// --- JsonReader ---

json::object JsonReader::open(std::string_view text) {
  source_.text = text;
  source_.unescaped.clear();
  source_.unescaped.reserve(text.size());
  const std::size_t capacity = std::min(std::bit_ceil(text.size()), parser_.max_capacity());
  if (parser_.capacity() < text.size() && parser_.allocate(capacity) != simdjson::SUCCESS) {
    throw std::bad_alloc();
  }
  document_ = valueOrFail(parser_.iterate(text.data(), text.size(), text.size() + kPadding));
  const json::json_type type = valueOrFail(document_.type());
  if (type != json::json_type::object) {
    checkToken(type, withoutTrailingSpace(valueOrFail(document_.raw_json_token())));
    failAsWrongType("an object", type);
  }
  return valueOrFail(document_.get_object());
}

void JsonReader::close() {
  // simdjson returns OUT_OF_BOUNDS if nothing follows the object.
  if (document_.current_location().error() != simdjson::OUT_OF_BOUNDS) {
    throw BrokenJson{simdjson::TRAILING_CONTENT};
  }
}

void JsonReader::failAsBroken(const BrokenJson& broken) const {
  const std::optional<std::string> fault = describeJsonFault(source_.text);
  fail(fault.value_or(std::string("broken JSON: ") + simdjson::error_message(broken.error)));
}

namespace json_reader_internal {

void rethrowWithin(JsonError error, std::string_view key) {
  error.pointer.insert(0, pointerStep(excerpt(key)));
  throw error;
}

void rethrowWithin(JsonError error, std::size_t index) {
  error.pointer.insert(0, "/" + std::to_string(index));
  throw error;
}

json::value valueOf(simdjson::simdjson_result<json::value>& element) {
  return valueOrFail(element);
}

void failAsDuplicate() { fail("duplicate key: expected each key once"); }

void failAsMissingObject() { failAsWrongType("an object", json::json_type::null); }

void readUnknown(JsonSource& source, JsonValue value, const std::string_view* keys,
                 std::size_t count) {
  if (source.unknownKeys == UnknownKeys::kAreIgnored) {
    value.skip();
    return;
  }
  std::string message = "unknown key: expected ";
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) message += i == count - 1 ? " or " : ", ";
    message += keys[i];
  }
  fail(std::move(message));
}

}  // namespace json_reader_internal

}  // namespace qel::tool
