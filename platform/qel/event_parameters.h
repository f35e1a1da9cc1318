// The parameters of a purchase event: a mapping from key to value.

#ifndef QEL_PLATFORM_EVENT_PARAMETERS_H_
#define QEL_PLATFORM_EVENT_PARAMETERS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "qel/value.h"

namespace qel {

// Every key that an event can hold, in ascending order of the key's text. Amounts are in micros of
// the currency; a flag is the integer 1 and is otherwise left out. The matched entry is the one
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
constexpr std::string_view textOf(ParameterKey key) {
  return kParameterKeyTexts[static_cast<std::size_t>(key)];
}

// A mapping from ParameterKey to QELValue. Copies share their values.
//
// Threads: like a standard container. The values can be shared between threads.
class EventParameters {
 public:
  // A key and its value.
  struct Entry {
    std::string_view key;
    const QELValue& value;
  };
  class Iterator;

  // Sets `key` to `value`, replacing any earlier value. Does nothing if `value` is null.
  void set(ParameterKey key, QELValuePtr value) {
    if (value != nullptr) slot(key) = std::move(value);
  }

  // Sets `flag` to the integer 1.
  void setFlag(ParameterKey flag) { set(flag, QELValue::initWithInt64(1)); }

  // Sets every key of `other` to its value there.
  void merge(const EventParameters& other) {
    for (std::size_t i = 0; i < slots_.size(); ++i)
      set(static_cast<ParameterKey>(i), other.slots_[i]);
  }

  // Returns the value of `key`, null if there is none.
  const QELValuePtr& find(ParameterKey key) const { return slots_[static_cast<std::size_t>(key)]; }

  // Returns the value of the key with this text, null if there is none.
  QELValuePtr find(std::string_view key) const {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      if (kParameterKeyTexts[i] == key) return slots_[i];
    }
    return nullptr;
  }

  // Iteration is in ascending order of the keys' texts.
  Iterator begin() const;
  Iterator end() const;

  bool empty() const;

 private:
  using Slots = std::array<QELValuePtr, kParameterKeyTexts.size()>;

  QELValuePtr& slot(ParameterKey key) { return slots_[static_cast<std::size_t>(key)]; }

  // One slot for each key, null if it is not set. The set of keys is closed, so that the mapping
  // needs no allocation of its own.
  Slots slots_;
};

// Iterates over the slots that are set. Valid until the mapping is changed or destroyed.
class EventParameters::Iterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using difference_type = std::ptrdiff_t;
  using value_type = Entry;
  using pointer = void;
  using reference = Entry;

  Iterator(const Slots& slots, std::size_t index) : slots_(&slots), index_(index) { skipEmpty(); }

  Entry operator*() const { return {kParameterKeyTexts[index_], *(*slots_)[index_]}; }
  Iterator& operator++() {
    ++index_;
    skipEmpty();
    return *this;
  }
  Iterator operator++(int) {
    Iterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const Iterator& left, const Iterator& right) {
    return left.index_ == right.index_;
  }

 private:
  void skipEmpty() {
    while (index_ < slots_->size() && (*slots_)[index_] == nullptr) ++index_;
  }

  const Slots* slots_;
  std::size_t index_;
};

inline EventParameters::Iterator EventParameters::begin() const { return Iterator(slots_, 0); }
inline EventParameters::Iterator EventParameters::end() const {
  return Iterator(slots_, slots_.size());
}
inline bool EventParameters::empty() const { return begin() == end(); }

}  // namespace qel

#endif  // QEL_PLATFORM_EVENT_PARAMETERS_H_
