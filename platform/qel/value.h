// The typed values of an event.

#ifndef QEL_PLATFORM_VALUE_H_
#define QEL_PLATFORM_VALUE_H_

#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

#include "qel/export.h"
#include "qel/lifetime.h"
#include "qel/text.h"
#include "qel/value_block.h"

namespace qel {

class QELValuePtr;

// A string or a signed 64-bit integer. Immutable and shared: the value under "original_price" is
// the very object that was under "price".
//
// Threads: safe from any thread.
class QELValue {
 public:
  // Returns a new value with a copy of `string`.
  [[nodiscard]] QEL_EXPORT static QELValuePtr initWithString(std::string_view string);

  // Returns a new value.
  [[nodiscard]] QEL_EXPORT static QELValuePtr initWithInt64(std::int64_t integer);

  // The integer; 0 for a string.
  [[nodiscard]] std::int64_t int64Value() const { return isString_ ? 0 : number_; }

  // The string, valid as long as this value; absent for an integer.
  [[nodiscard]] OptionalText stringValue() const QEL_LIFETIME_BOUND {
    if (!isString_) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(this + 1),
                            static_cast<std::size_t>(number_));
  }

  // Returns an owner of this value. It keeps the memory of all values of the same event, 512 bytes
  // on 64-bit systems.
  [[nodiscard]] QELValuePtr share() const;

  friend bool operator==(const QELValue& left, const QELValue& right) {
    return left.number_ == right.number_ && left.stringValue() == right.stringValue();
  }

  QELValue(const QELValue&) = delete;
  QELValue& operator=(const QELValue&) = delete;

 private:
  friend class ParameterValues;
  friend class QELValuePtr;

  // Returns a new value in memory of `block`, null if too little of it is left. `string` is copied.
  static const QELValue* makeIn(ValueBlock& block, std::int64_t integer) {
    void* const memory = block.take(sizeof(QELValue));
    return memory != nullptr ? new (memory) QELValue(block, false, integer) : nullptr;
  }
  static const QELValue* makeIn(ValueBlock& block, std::string_view string) {
    void* const memory = block.take(sizeof(QELValue) + string.size());
    if (memory == nullptr) return nullptr;
    auto* const value =
        new (memory) QELValue(block, true, static_cast<std::int64_t>(string.size()));
    string.copy(reinterpret_cast<char*>(value + 1), string.size());
    return value;
  }

  QELValue(ValueBlock& block, bool isString, std::int64_t number)
      : block_(&block), isString_(isString), number_(number) {}
  ~QELValue() = default;

  // The memory that this value is in. The characters of a string come right after the value.
  ValueBlock* const block_;
  const bool isString_;
  // The integer, or the size of the string in bytes.
  const std::int64_t number_;
};

// A shared pointer to a value, or null. Like std::shared_ptr<const QELValue>, in one word.
//
// Threads: like std::shared_ptr. Pointers on several threads may own one value.
class QELValuePtr {
 public:
  QELValuePtr() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): null converts, as with any pointer.
  QELValuePtr(std::nullptr_t) {}
  QELValuePtr(const QELValuePtr& other) noexcept : value_(other.value_) {
    if (value_ != nullptr) value_->block_->retain();
  }
  QELValuePtr(QELValuePtr&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  QELValuePtr& operator=(QELValuePtr other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~QELValuePtr() {
    if (value_ != nullptr) value_->block_->release();
  }

  [[nodiscard]] const QELValue* get() const { return value_; }

  // Whether there is a value.
  explicit operator bool() const { return value_ != nullptr; }
  const QELValue& operator*() const { return *value_; }
  const QELValue* operator->() const { return value_; }

  // Equal if both own the same value, or both are null.
  friend bool operator==(const QELValuePtr& left, const QELValuePtr& right) = default;

 private:
  friend class ParameterValues;
  friend class QELValue;

  // Becomes the owner of a value that has been retained for it.
  explicit QELValuePtr(const QELValue* value) : value_(value) {}

  // Returns the value, and no longer owns it. It stays retained.
  const QELValue* giveUp() { return std::exchange(value_, nullptr); }

  const QELValue* value_ = nullptr;
};

static_assert(alignof(QELValue) <= ValueBlock::kAlignment);

inline QELValuePtr QELValue::share() const {
  block_->retain();
  return QELValuePtr(this);
}

}  // namespace qel

#endif  // QEL_PLATFORM_VALUE_H_
