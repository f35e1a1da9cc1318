// Reads JSON objects (RFC 8259) into records, by tables of fields.
//
// A table names each key of an object and the function that reads its value:
//
//   constexpr JsonField<PlainDiscount> kDiscountFields[] = {
//       {"price", readDiscountPrice},
//       {"paymentMode", [](JsonValue& value, PlainDiscount& discount) {
//          discount.paymentMode = value.readUint64().value_or(0);
//        }}};
//
// The function is called for every field of the table: with an absent value if the object does not
// have the key. So what a record holds afterwards depends on the object alone, and records can be
// reused, which saves allocations.
//
// An unpaired surrogate, which JSON can escape but UTF-8 cannot encode, is read as the three bytes
// of its code point.

#ifndef QEL_TOOL_JSON_READER_H_
#define QEL_TOOL_JSON_READER_H_

#include <simdjson.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "compact_json.h"
#include "excerpt.h"
#include "json_error.h"
#include "qel/text.h"

namespace qel::tool {

enum class UnknownKeys { kAreErrors, kAreIgnored };

// The text that is being read.
struct JsonSource {
  UnknownKeys unknownKeys = UnknownKeys::kAreErrors;
  std::string_view text;

  // Unescaped strings, in one buffer. It has room for the whole text, so that views of it stay
  // valid.
  std::string unescaped;
};

// Thrown where simdjson cannot read on. JsonReader turns it into a JsonError that says where the
// text is broken.
struct BrokenJson {
  simdjson::error_code error;
};

class JsonValue;

// A key of an object, and the function that reads its value into the record of the object.
template <typename Record>
struct JsonField {
  std::string_view key;
  void (*read)(JsonValue& value, Record& record);
};

// A value of the text. The functions that read it throw JsonError if it has another type. They
// treat null and an absent value alike.
class JsonValue {
 public:
  // An absent value.
  explicit JsonValue(JsonSource& source) : source_(source) {}

  JsonValue(JsonSource& source, simdjson::ondemand::value value)
      : source_(source), value_(value), isAbsent_(false) {}

  // The value that `compact` reads next. If it has another type than the one that is read,
  // `compact` stops, and there is no error.
  JsonValue(JsonSource& source, CompactJson& compact)
      : source_(source), compact_(&compact), isAbsent_(false) {}

  bool isAbsent() const { return isAbsent_; }

  // Return std::nullopt for null and for an absent value.

  // The view is valid as long as the text and the source.
  OptionalText readText();
  std::optional<bool> readBool();
  std::optional<std::int64_t> readInt64();
  std::optional<std::uint64_t> readUint64();

  // Returns the decimal digits of an integer of any size, after a minus sign if it is negative.
  OptionalText readIntegerDigits();

  // Returns a number as it is written, or a string. `expected` describes the value for errors.
  OptionalText readNumberOrText(const char* expected);

  // Reads an object into `record`, calling every field of `fields`. Returns false, and calls none,
  // if there is no object. Unknown and duplicate keys are errors; unknown ones can be ignored.
  template <typename Record, std::size_t kCount>
  bool readObject(const JsonField<Record> (&fields)[kCount], Record& record);

  // Reads an object into `record`, which becomes empty if there is no object.
  template <typename Record, std::size_t kCount>
  void readObject(const JsonField<Record> (&fields)[kCount], std::optional<Record>& record);

  // Reads an array of objects. Calls `recordAt(index)`, which returns the record of an element.
  template <typename Record, std::size_t kCount, typename RecordAt>
  void readObjects(const JsonField<Record> (&fields)[kCount], const RecordAt& recordAt);

  // Reads the value to its end and ignores it.
  void skip(int depth = 0);

 private:
  std::string_view token();
  std::string_view numberToken();
  OptionalText readString(const char* expected);

  // Reads null. Throws JsonError for any other value: "expected ..., found ...".
  void takeNull(const char* expected);
  // The same, with the digits of a number that is not the expected one.
  void takeNullForInteger(const char* expected);

  template <typename Integer>
  std::optional<Integer> readInteger(const char* expected);

  bool openObject(simdjson::ondemand::object& object);
  bool openArray(simdjson::ondemand::array& array);

  template <typename Record, std::size_t kCount>
  bool readCompactObject(const JsonField<Record> (&fields)[kCount], Record& record);
  template <typename Record, std::size_t kCount, typename RecordAt>
  void readCompactObjects(const JsonField<Record> (&fields)[kCount], const RecordAt& recordAt);

  JsonSource& source_;
  simdjson::ondemand::value value_;
  // Reads the value instead of simdjson if it is not null.
  CompactJson* compact_ = nullptr;
  // The token that was taken from `compact_`; empty if none was.
  std::string_view token_;
  bool isAbsent_ = true;
};

// The members of an object, one after the other.
class JsonMembers {
 public:
  JsonMembers(JsonSource& source, simdjson::ondemand::object& object);

  bool atEnd() const { return isAtEnd_; }

  // Returns whether the key of the member is `key`, written without escapes.
  bool hasRawKey(std::string_view key) const {
    // A key of a table is shorter than the padding, so this reads no further.
    const char* const raw = member_.value_unsafe().key().raw();
    return raw[key.size()] == '"' && std::memcmp(raw, key.data(), key.size()) == 0;
  }

  // Returns the key, without escapes.
  std::string_view key();

  JsonValue value() { return JsonValue(source_, member_.value_unsafe().value()); }

  // Goes to the next member.
  void advance() {
    ++position_;
    load();
  }

 private:
  void load() {
    isAtEnd_ = !(position_ != end_);
    if (isAtEnd_) return;
    // Constructed in place: copying what was just written word by word stalls the processor (store
    // forwarding) for longer than the rest of reading a member takes.
    std::construct_at(&member_, *position_);
    if (member_.error() != simdjson::SUCCESS) throw BrokenJson{member_.error()};
  }

  JsonSource& source_;
  simdjson::ondemand::object_iterator position_;
  simdjson::ondemand::object_iterator end_;
  simdjson::simdjson_result<simdjson::ondemand::field> member_;
  bool isAtEnd_ = false;
};

// Reads texts that hold one object each. Reuses its memory from text to text.
//
// Threads: a reader serves one thread at a time.
class JsonReader {
 public:
  // So many bytes after the end of a text must be readable. Their values do not matter.
  static constexpr std::size_t kPadding = 64;

  explicit JsonReader(UnknownKeys unknownKeys) { source_.unknownKeys = unknownKeys; }

  // Reads the object that `text` holds into `record`. Views of the text stay valid until the next
  // call, or until the bytes of `text` change. Throws JsonError.
  template <typename Record, std::size_t kCount>
  void read(std::string_view text, const JsonField<Record> (&fields)[kCount], Record& record);

 private:
  // Returns false if the text has another form than CompactJson reads, or is wrong. Then the values
  // of the record are unspecified.
  template <typename Record, std::size_t kCount>
  bool readCompact(std::string_view text, const JsonField<Record> (&fields)[kCount],
                   Record& record);

  simdjson::ondemand::object open(std::string_view text);
  void close();
  [[noreturn]] void failAsBroken(const BrokenJson& broken) const;

  JsonSource source_;
  simdjson::ondemand::parser parser_;
  simdjson::ondemand::document document_;
};

// --- Templates ---

namespace json_reader_internal {

// Throws `error` with the step of `key`, or of an index, before its pointer.
[[noreturn]] void rethrowWithin(JsonError error, std::string_view key);
[[noreturn]] void rethrowWithin(JsonError error, std::size_t index);

// Returns the value of an element of an array. Throws JsonError if the array is broken there.
simdjson::ondemand::value valueOf(simdjson::simdjson_result<simdjson::ondemand::value>& element);

[[noreturn]] void failAsDuplicate();
[[noreturn]] void failAsMissingObject();

// Reads a member with an unknown key. `keys` lists the known ones, for the error.
void readUnknown(JsonSource& source, JsonValue value, const std::string_view* keys,
                 std::size_t count);

// Returns the index of the field of the member's key, or kCount. Members usually come in the order
// of the table, so the fields from `expected` on are tried first.
template <typename Record, std::size_t kCount>
std::size_t fieldOf(JsonMembers& members, const JsonField<Record> (&fields)[kCount],
                    std::size_t expected) {
  for (std::size_t i = expected; i < kCount; ++i) {
    if (members.hasRawKey(fields[i].key)) return i;
  }
  const std::string_view key = members.key();
  std::size_t i = 0;
  while (i < kCount && fields[i].key != key) ++i;
  return i;
}

template <typename Record, std::size_t kCount>
void readMembers(JsonSource& source, simdjson::ondemand::object& object,
                 const JsonField<Record> (&fields)[kCount], Record& record) {
  std::uint64_t seen = 0;
  static_assert(kCount < 64);
  std::size_t expected = 0;
  for (JsonMembers members(source, object); !members.atEnd(); members.advance()) {
    const std::size_t index = fieldOf(members, fields, expected);
    try {
      JsonValue value = members.value();
      if (index == kCount) {
        std::string_view keys[kCount];
        for (std::size_t i = 0; i < kCount; ++i) keys[i] = fields[i].key;
        readUnknown(source, value, keys, kCount);
        continue;
      }
      if ((seen >> index & 1) != 0) failAsDuplicate();
      seen |= std::uint64_t{1} << index;
      fields[index].read(value, record);
    } catch (const JsonError& error) {
      rethrowWithin(error, members.key());
    }
    expected = index + 1;
  }
  JsonValue absent(source);
  for (std::size_t i = 0; i < kCount; ++i) {
    if ((seen >> i & 1) == 0) fields[i].read(absent, record);
  }
}

}  // namespace json_reader_internal

template <typename Record, std::size_t kCount>
bool JsonValue::readCompactObject(const JsonField<Record> (&fields)[kCount], Record& record) {
  if (!compact_->take('{')) {
    takeNull("an object");
    return false;
  }
  JsonValue absent(source_);
  bool isFirst = true;
  for (const JsonField<Record>& field : fields) {
    if (compact_->takeKey(field.key, isFirst)) {
      isFirst = false;
      JsonValue value(source_, *compact_);
      field.read(value, record);
    } else {
      field.read(absent, record);
    }
  }
  // Also stops at a key that is unknown, or out of order.
  if (!compact_->take('}')) compact_->stop();
  return true;
}

template <typename Record, std::size_t kCount, typename RecordAt>
void JsonValue::readCompactObjects(const JsonField<Record> (&fields)[kCount],
                                   const RecordAt& recordAt) {
  if (!compact_->take('[')) return takeNull("an array");
  bool isMore = !compact_->take(']');
  for (std::size_t index = 0; isMore; ++index) {
    if (!readCompactObject(fields, recordAt(index))) compact_->stop();
    isMore = compact_->take(',');
    if (isMore) compact_->take(' ');
    if (!isMore && !compact_->take(']')) compact_->stop();
  }
}

template <typename Record, std::size_t kCount>
bool JsonValue::readObject(const JsonField<Record> (&fields)[kCount], Record& record) {
  if (compact_ != nullptr) return readCompactObject(fields, record);
  simdjson::ondemand::object object;
  if (!openObject(object)) return false;
  json_reader_internal::readMembers(source_, object, fields, record);
  return true;
}

template <typename Record, std::size_t kCount>
void JsonValue::readObject(const JsonField<Record> (&fields)[kCount],
                           std::optional<Record>& record) {
  if (!record.has_value()) record.emplace();
  if (!readObject(fields, *record)) record.reset();
}

template <typename Record, std::size_t kCount, typename RecordAt>
void JsonValue::readObjects(const JsonField<Record> (&fields)[kCount], const RecordAt& recordAt) {
  if (compact_ != nullptr) return readCompactObjects(fields, recordAt);
  simdjson::ondemand::array array;
  if (!openArray(array)) return;
  std::size_t index = 0;
  for (simdjson::simdjson_result<simdjson::ondemand::value> element : array) {
    try {
      JsonValue value(source_, json_reader_internal::valueOf(element));
      if (!value.readObject(fields, recordAt(index))) json_reader_internal::failAsMissingObject();
    } catch (const JsonError& error) {
      json_reader_internal::rethrowWithin(error, index);
    }
    ++index;
  }
}

template <typename Record, std::size_t kCount>
bool JsonReader::readCompact(std::string_view text, const JsonField<Record> (&fields)[kCount],
                             Record& record) {
  try {
    CompactJson compact(text);
    return JsonValue(source_, compact).readObject(fields, record) && compact.isAtEnd();
  } catch (const JsonError&) {
    // simdjson reads the text again, and finds the place of the error.
    return false;
  }
}

template <typename Record, std::size_t kCount>
void JsonReader::read(std::string_view text, const JsonField<Record> (&fields)[kCount],
                      Record& record) {
  if (readCompact(text, fields, record)) return;
  try {
    simdjson::ondemand::object object = open(text);
    json_reader_internal::readMembers(source_, object, fields, record);
    close();
  } catch (const BrokenJson& broken) {
    failAsBroken(broken);
  }
}

}  // namespace qel::tool

#endif  // QEL_TOOL_JSON_READER_H_
