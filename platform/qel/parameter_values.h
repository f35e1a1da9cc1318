// The values of the keys that the builder sets.

#ifndef QEL_PLATFORM_PARAMETER_VALUES_H_
#define QEL_PLATFORM_PARAMETER_VALUES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "qel/export.h"
#include "qel/lifetime.h"
#include "qel/parameter_key.h"
#include "qel/value.h"
#include "qel/value_block.h"

namespace qel {

// A value for each ParameterKey, or null. The values that are made here share one block of memory,
// as far as they fit in. The block is not reused when a value is replaced, and is freed when the
// mapping and the last owner of one of its values are gone. Copies share their values.
//
// Threads: like a standard container. The values can be shared between threads.
class ParameterValues {
 public:
  ParameterValues() = default;
  QEL_EXPORT ParameterValues(const ParameterValues& other);
  QEL_EXPORT ParameterValues(ParameterValues&& other) noexcept;
  QEL_EXPORT ParameterValues& operator=(ParameterValues other) noexcept;
  QEL_EXPORT ~ParameterValues();

  // Sets `key` to a new value, replacing any earlier value.
  QEL_EXPORT void setInt64(ParameterKey key, std::int64_t integer);
  QEL_EXPORT void setString(ParameterKey key, std::string_view string);

  // Sets `key` to `value`, which must not be null, replacing any earlier value.
  QEL_EXPORT void set(ParameterKey key, QELValuePtr value);

  // Removes the value of `key`. Returns whether there was one.
  QEL_EXPORT bool erase(ParameterKey key);

  // Returns the value of `key`, null if there is none. Valid until this object is changed or ends.
  [[nodiscard]] const QELValue* get(ParameterKey key) const QEL_LIFETIME_BOUND {
    return slots_ != nullptr ? (*slots_)[static_cast<std::size_t>(key)] : nullptr;
  }

 private:
  using Slots = std::array<const QELValue*, kParameterKeyTexts.size()>;

  // Returns the block for new values. Makes it and the slots if this is the first value.
  ValueBlock& block();

  // Sets the slot of `key` to `value`, which is in the block or has been retained. Releases the
  // value that it had.
  void replace(ParameterKey key, const QELValue* value);

  // Removes this owner of `value`, unless it is null or in the block.
  void release(const QELValue* value) const;

  // Owned once, for all values in it and for the slots. Null before the first value.
  ValueBlock* block_ = nullptr;
  // A value for each key, or null. In the block, so that events are small and quick to move.
  Slots* slots_ = nullptr;
};

}  // namespace qel

#endif  // QEL_PLATFORM_PARAMETER_VALUES_H_
