// The parameters of a purchase event: a mapping from key to value.

#ifndef QEL_PLATFORM_EVENT_PARAMETERS_H_
#define QEL_PLATFORM_EVENT_PARAMETERS_H_

#include <algorithm>
#include <array>
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
#include "qel/value.h"

namespace qel {

// Every key that the builder can set, in ascending order of the key's text. Amounts are in micros
// of the currency; a flag is the integer 1 and is otherwise left out. The matched entry is the one
// entry of the product at the transaction's date, or the only entry of a one-off purchase.
enum class ParameterKey : std::uint8_t {
  kDedupeId,           // integer: deduplication identifier; -1 insufficient input, 0 not encodable
  kCurrency,           // string: currency code of the product's price
  kFreeTrial,          // flag: the matched entry is a free trial
  kInvalid,            // flag: not confirmed by the receipt, or a restore or repeated trial
  kOriginalPrice,      // integer: the product's price, where kPrice is a trial's or an offer's
  kPrice,              // integer: the price of one unit; the offer's, where it can be read
  kPriceIsDiscounted,  // flag: the matched entry is a free trial or an introductory offer
  kProductId,          // string: the product's identifier
  kProductName,        // string: the product's localized title
  kQuantity,           // integer: units bought
  kSubConvert,         // flag: a later purchase of a subscription, right after a free trial
  kSubRenew,           // flag: any other later purchase of a subscription
  kSubscription,       // flag: first purchase of a subscription; docs/event.md lists the rest
  kValue,              // integer: the price of all units
};

// The texts of the keys, in the order of ParameterKey.
inline constexpr std::array<std::string_view, 14> kParameterKeyTexts = {
    "_did",           "currency", "free_trial",          "invalid",
    "original_price", "price",    "price_is_discounted", "product_id",
    "product_name",   "quantity", "sub_convert",         "sub_renew",
    "subscription",   "value",
};

// Returns the text of `key`.
[[nodiscard]] constexpr std::string_view textOf(ParameterKey key) {
  return kParameterKeyTexts[static_cast<std::size_t>(key)];
}

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

  // Sets `key` to `value`, replacing any earlier value. Does nothing if `value` is null.
  void set(ParameterKey key, QELValuePtr value) {
    if (value != nullptr) slot(key) = std::move(value);
  }
  void set(std::string_view key, QELValuePtr value) {
    if (value == nullptr) return;
    if (const std::optional<ParameterKey> known = keyOf(key)) {
      slot(*known) = std::move(value);
    } else {
      setOther(key, std::move(value));
    }
  }

  // Sets `flag` to the integer 1.
  void setFlag(ParameterKey flag) { set(flag, QELValue::initWithInt64(1)); }

  // Sets every key of `other` to its value there.
  void merge(const EventParameters& other) {
    for (std::size_t i = 0; i < slots_.size(); ++i)
      set(static_cast<ParameterKey>(i), other.slots_[i]);
    for (const auto& [key, value] : other.others_) setOther(key, value);
  }

  // Removes `key`. Returns whether it was there.
  bool erase(ParameterKey key) { return std::exchange(slot(key), nullptr) != nullptr; }
  bool erase(std::string_view key) {
    if (const std::optional<ParameterKey> known = keyOf(key)) return erase(*known);
    const auto position = others_.find(key);
    if (position == others_.end()) return false;
    others_.erase(position);
    return true;
  }

  // Returns the value of `key`, null if there is none.
  [[nodiscard]] const QELValuePtr& find(ParameterKey key) const QEL_LIFETIME_BOUND {
    return slots_[static_cast<std::size_t>(key)];
  }
  [[nodiscard]] QELValuePtr find(std::string_view key) const {
    if (const std::optional<ParameterKey> known = keyOf(key)) return find(*known);
    const auto position = others_.find(key);
    return position != others_.end() ? position->second : nullptr;
  }

  // Returns whether `key` has a value.
  [[nodiscard]] bool contains(ParameterKey key) const { return find(key) != nullptr; }
  [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }

  // Iteration is in ascending order of the keys, compared byte by byte.
  [[nodiscard]] Iterator begin() const QEL_LIFETIME_BOUND;
  [[nodiscard]] Iterator end() const QEL_LIFETIME_BOUND;

  [[nodiscard]] bool empty() const { return size() == 0; }

  // Number of keys that have a value.
  [[nodiscard]] std::size_t size() const {
    const auto isSet = [](const QELValuePtr& value) { return value != nullptr; };
    return static_cast<std::size_t>(std::count_if(slots_.begin(), slots_.end(), isSet)) +
           others_.size();
  }

  // Equal if both have the same keys, with equal values.
  friend bool operator==(const EventParameters& left, const EventParameters& right);

 private:
  using Slots = std::array<QELValuePtr, kParameterKeyTexts.size()>;
  using Others = std::map<std::string, QELValuePtr, std::less<>>;

  QELValuePtr& slot(ParameterKey key) { return slots_[static_cast<std::size_t>(key)]; }

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

  // One slot for each known key, null if it is not set: the builder needs no allocation for keys.
  Slots slots_;
  // The keys that the owner added.
  Others others_;
};

// Merges the slots that are set and the other keys, both of which are in order.
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
    if (isAtSlot()) return {kParameterKeyTexts[slot_], *parameters_->slots_[slot_]};
    return {other_->first, *other_->second};
  }
  Pointer operator->() const { return {**this}; }

  Iterator& operator++() {
    if (isAtSlot()) {
      ++slot_;
      skipEmptySlots();
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
    return left.slot_ == right.slot_ && left.other_ == right.other_;
  }

 private:
  friend class EventParameters;

  Iterator(const EventParameters& parameters, std::size_t slot, Others::const_iterator other)
      : parameters_(&parameters), slot_(slot), other_(other) {
    skipEmptySlots();
  }

  // Returns whether the entry is that of a slot. Must not be called at the end.
  bool isAtSlot() const {
    if (other_ == parameters_->others_.end()) return true;
    return slot_ < kParameterKeyTexts.size() && kParameterKeyTexts[slot_] < other_->first;
  }

  void skipEmptySlots() {
    while (slot_ < kParameterKeyTexts.size() && parameters_->slots_[slot_] == nullptr) ++slot_;
  }

  const EventParameters* parameters_ = nullptr;
  std::size_t slot_ = 0;
  Others::const_iterator other_ = {};
};

inline EventParameters::Iterator EventParameters::begin() const {
  return Iterator(*this, 0, others_.begin());
}
inline EventParameters::Iterator EventParameters::end() const {
  return Iterator(*this, slots_.size(), others_.end());
}
inline bool operator==(const EventParameters& left, const EventParameters& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const EventParameters::Entry& a, const EventParameters::Entry& b) {
                      return a.key == b.key && a.value == b.value;
                    });
}

}  // namespace qel

#endif  // QEL_PLATFORM_EVENT_PARAMETERS_H_
