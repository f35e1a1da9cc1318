// The typed values of an event.

#ifndef QEL_PLATFORM_VALUE_H_
#define QEL_PLATFORM_VALUE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "qel/export.h"
#include "qel/text.h"

namespace qel {

class QELValuePtr;

// A string or a signed 64-bit integer. Values never change once made, so mappings share them: the
// value under "original_price" is the very object that was under "price".
//
// Threads: immutable; safe from any thread.
class QELValue {
 public:
  // Makes a value of a copy of `string`.
  QEL_EXPORT static QELValuePtr initWithString(std::string_view string);

  // Makes a value of `integer`.
  QEL_EXPORT static QELValuePtr initWithInt64(std::int64_t integer);

  // The integer; 0 for a string.
  std::int64_t int64Value() const { return isString_ ? 0 : number_; }

  // The string, valid as long as this value; absent for an integer.
  OptionalText stringValue() const {
    if (!isString_) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(this + 1),
                            static_cast<std::size_t>(number_));
  }

  friend bool operator==(const QELValue& left, const QELValue& right) {
    return left.number_ == right.number_ && left.stringValue() == right.stringValue();
  }

  QELValue(const QELValue&) = delete;
  QELValue& operator=(const QELValue&) = delete;

 private:
  friend class QELValuePtr;

  // The maker is the first owner.
  QELValue(bool isString, std::int64_t number) : owners_(1), isString_(isString), number_(number) {}
  ~QELValue() = default;

  // How many pointers own the value. It is kept here, and the characters of a string right behind
  // the value, so that a value is one block of memory: making values is a large part of what an
  // event costs.
  mutable std::atomic<std::uint32_t> owners_;
  const bool isString_;
  // The integer, or the size of the string in bytes.
  const std::int64_t number_;
};

// Shared ownership of a value, or none: what std::shared_ptr<const QELValue> is, in one word.
//
// Threads: like std::shared_ptr. Pointers on several threads may own one value.
class QELValuePtr {
 public:
  QELValuePtr() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): null converts, as with any pointer.
  QELValuePtr(std::nullptr_t) {}
  QELValuePtr(const QELValuePtr& other) : value_(other.value_) {
    if (value_ != nullptr) retain(*value_);
  }
  QELValuePtr(QELValuePtr&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  QELValuePtr& operator=(QELValuePtr other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~QELValuePtr() {
    if (value_ != nullptr) release(value_);
  }

  const QELValue* get() const { return value_; }
  const QELValue& operator*() const { return *value_; }
  const QELValue* operator->() const { return value_; }

  // Two pointers are equal when they own the same value, or both own none.
  friend bool operator==(const QELValuePtr& left, const QELValuePtr& right) = default;

 private:
  friend class QELValue;

  // Becomes the first owner of a new value.
  explicit QELValuePtr(const QELValue* value) : value_(value) {}

  static void retain(const QELValue& value) {
    value.owners_.fetch_add(1, std::memory_order_relaxed);
  }

  // Gives up one ownership, and with the last one the value.
  QEL_EXPORT static void release(const QELValue* value);

  const QELValue* value_ = nullptr;
};

}  // namespace qel

#endif  // QEL_PLATFORM_VALUE_H_
