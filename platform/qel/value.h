// The typed values of an event.

#ifndef QEL_PLATFORM_VALUE_H_
#define QEL_PLATFORM_VALUE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "qel/text.h"

namespace qel {

class QELValue;

// Shared ownership of a value; null where there is none.
using QELValuePtr = std::shared_ptr<const QELValue>;

// A string or a signed 64-bit integer. Values never change once made, so mappings share them: the
// value under "original_price" is the very object that was under "price".
//
// Threads: immutable; safe from any thread.
class QELValue {
 public:
  // Makes a value of a copy of `string`.
  static QELValuePtr initWithString(std::string_view string) {
    return std::make_shared<const QELValue>(Key(), std::string(string));
  }

  static QELValuePtr initWithInt64(std::int64_t integer) {
    return std::make_shared<const QELValue>(Key(), integer);
  }

  // The integer; 0 for a string.
  std::int64_t int64Value() const {
    const auto* integer = std::get_if<std::int64_t>(&content_);
    return integer != nullptr ? *integer : 0;
  }

  // The string, valid as long as this value; absent for an integer.
  OptionalText stringValue() const {
    const auto* string = std::get_if<std::string>(&content_);
    return string != nullptr ? OptionalText(*string) : std::nullopt;
  }

  friend bool operator==(const QELValue& left, const QELValue& right) {
    return left.content_ == right.content_;
  }

 private:
  using Content = std::variant<std::int64_t, std::string>;
  // Keeps the constructor, which make_shared must reach, to the two makers.
  struct Key {
    explicit Key() = default;
  };

 public:
  QELValue(Key, Content content) : content_(std::move(content)) {}

 private:
  const Content content_;
};

}  // namespace qel

#endif  // QEL_PLATFORM_VALUE_H_
