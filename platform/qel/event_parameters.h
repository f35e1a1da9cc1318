// The parameters of a purchase event: a mapping from key to value.

#ifndef QEL_PLATFORM_EVENT_PARAMETERS_H_
#define QEL_PLATFORM_EVENT_PARAMETERS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "qel/lifetime.h"
#include "qel/parameter_key.h"
#include "qel/parameter_values.h"
#include "qel/value.h"

namespace qel {

// A mapping from strings to values, in ascending order of the keys. The builder sets the keys of
// ParameterKey only; the owner of an event may add others. Copies share their values.
//
// Example:
//   if (event->contains("invalid")) return;
//   event->set("store", qel::QELValue::initWithString("de"));
//   for (const auto& [key, value] : *event) send(key, value);
//
// Threads: like a standard container. The values can be shared between threads.
class EventParameters {
 public:
  // A key and its value, valid until the mapping is changed or destroyed.
  struct Entry {
    std::string_view key;
    const QELValue& value;
  };
  class Iterator;

  // Sets `key` to a new value, replacing any earlier value.
  void setInt64(ParameterKey key, std::int64_t integer) { known_.setInt64(key, integer); }
  void setString(ParameterKey key, std::string_view string) { known_.setString(key, string); }

  // Sets `flag` to the integer 1.
  void setFlag(ParameterKey flag) { setInt64(flag, 1); }

  // Sets `key` to `value`, replacing any earlier value. Does nothing if `value` is null.
  void set(ParameterKey key, QELValuePtr value) {
    if (value != nullptr) known_.set(key, std::move(value));
  }
  void set(std::string_view key, QELValuePtr value) {
    if (value == nullptr) return;
    if (const std::optional<ParameterKey> known = keyOf(key)) {
      known_.set(*known, std::move(value));
    } else {
      setOther(key, std::move(value));
    }
  }

  // Sets every key of `other` to its value there.
  void merge(const EventParameters& other) {
    for (std::size_t i = 0; i < kParameterKeyTexts.size(); ++i) {
      const auto key = static_cast<ParameterKey>(i);
      set(key, other.find(key));
    }
    for (const auto& [key, value] : other.others_) setOther(key, value);
  }

  // Removes `key`. Returns whether it was there.
  bool erase(ParameterKey key) { return known_.erase(key); }
  bool erase(std::string_view key) {
    if (const std::optional<ParameterKey> known = keyOf(key)) return erase(*known);
    const auto position = others_.find(key);
    if (position == others_.end()) return false;
    others_.erase(position);
    return true;
  }

  // Returns an owner of the value of `key`, null if there is none.
  [[nodiscard]] QELValuePtr find(ParameterKey key) const {
    const QELValue* const value = known_.get(key);
    return value != nullptr ? value->share() : nullptr;
  }
  [[nodiscard]] QELValuePtr find(std::string_view key) const {
    if (const std::optional<ParameterKey> known = keyOf(key)) return find(*known);
    const auto position = others_.find(key);
    return position != others_.end() ? position->second : nullptr;
  }

  // Returns whether `key` has a value.
  [[nodiscard]] bool contains(ParameterKey key) const { return known_.get(key) != nullptr; }
  [[nodiscard]] bool contains(std::string_view key) const {
    if (const std::optional<ParameterKey> known = keyOf(key)) return contains(*known);
    return others_.find(key) != others_.end();
  }

  // Iteration is in ascending order of the keys, compared byte by byte.
  [[nodiscard]] Iterator begin() const QEL_LIFETIME_BOUND;
  [[nodiscard]] Iterator end() const QEL_LIFETIME_BOUND;

  [[nodiscard]] bool empty() const;

  // Number of keys that have a value.
  [[nodiscard]] std::size_t size() const;

  // Equal if both have the same keys, with equal values.
  friend bool operator==(const EventParameters& left, const EventParameters& right);

 private:
  using Others = std::map<std::string, QELValuePtr, std::less<>>;

  void setOther(std::string_view key, QELValuePtr value) {
    const auto position = others_.find(key);
    if (position == others_.end()) {
      others_.emplace(key, std::move(value));
    } else {
      position->second = std::move(value);
    }
  }

  // Returns the known key with this text, if there is one.
  static constexpr std::optional<ParameterKey> keyOf(std::string_view text) {
    for (std::size_t i = 0; i < kParameterKeyTexts.size(); ++i) {
      if (kParameterKeyTexts[i] == text) return static_cast<ParameterKey>(i);
    }
    return std::nullopt;
  }

  ParameterValues known_;
  // The keys that the owner added.
  Others others_;
};

// Merges the known keys that are set and the other keys, both of which are in order.
class EventParameters::Iterator {
 public:
  // Makes a temporary entry accessible through `->`.
  struct Pointer {
    Entry entry;
    const Entry* operator->() const { return &entry; }
  };
  using iterator_concept = std::forward_iterator_tag;
  using iterator_category = std::input_iterator_tag;
  using difference_type = std::ptrdiff_t;
  using value_type = Entry;
  using pointer = Pointer;
  using reference = Entry;

  Iterator() = default;

  Entry operator*() const {
    if (isAtKnown()) return {textOf(known()), *parameters_->known_.get(known())};
    return {other_->first, *other_->second};
  }
  Pointer operator->() const { return {**this}; }

  Iterator& operator++() {
    if (isAtKnown()) {
      ++known_;
      skipUnset();
    } else {
      ++other_;
    }
    return *this;
  }
  Iterator operator++(int) {
    Iterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const Iterator& left, const Iterator& right) {
    return left.known_ == right.known_ && left.other_ == right.other_;
  }

 private:
  friend class EventParameters;

  Iterator(const EventParameters& parameters, std::size_t known, Others::const_iterator other)
      : parameters_(&parameters), known_(known), other_(other) {
    skipUnset();
  }

  ParameterKey known() const { return static_cast<ParameterKey>(known_); }

  // Returns whether the entry is that of a known key. Must not be called at the end.
  bool isAtKnown() const {
    if (other_ == parameters_->others_.end()) return true;
    return known_ < kParameterKeyTexts.size() && textOf(known()) < other_->first;
  }

  void skipUnset() {
    while (known_ < kParameterKeyTexts.size() && parameters_->known_.get(known()) == nullptr) {
      ++known_;
    }
  }

  const EventParameters* parameters_ = nullptr;
  // The next known key, as a number of ParameterKey; the number of known keys after the last.
  std::size_t known_ = 0;
  Others::const_iterator other_ = {};
};

inline EventParameters::Iterator EventParameters::begin() const {
  return Iterator(*this, 0, others_.begin());
}
inline EventParameters::Iterator EventParameters::end() const {
  return Iterator(*this, kParameterKeyTexts.size(), others_.end());
}
inline bool EventParameters::empty() const { return begin() == end(); }
inline std::size_t EventParameters::size() const {
  return static_cast<std::size_t>(std::distance(begin(), end()));
}
inline bool operator==(const EventParameters& left, const EventParameters& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const EventParameters::Entry& a, const EventParameters::Entry& b) {
                      return a.key == b.key && a.value == b.value;
                    });
}

}  // namespace qel

#endif  // QEL_PLATFORM_EVENT_PARAMETERS_H_
