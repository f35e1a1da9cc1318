#include "qel/parameter_values.h"

#include <cstddef>
#include <new>
#include <utility>

namespace qel {
namespace {

// Bytes for slots and values: a block of 512 on 64-bit systems, without its head. There, the slots
// take 112, and a value 24 and its text, rounded up to 8. A renewal has eight values, three of them
// with a text.
constexpr std::size_t kRoom = 496;

}  // namespace

ParameterValues::ParameterValues(const ParameterValues& other) {
  for (std::size_t i = 0; i < kParameterKeyTexts.size(); ++i) {
    const auto key = static_cast<ParameterKey>(i);
    if (const QELValue* const value = other.get(key)) set(key, value->share());
  }
}

ParameterValues::ParameterValues(ParameterValues&& other) noexcept
    : block_(std::exchange(other.block_, nullptr)), slots_(std::exchange(other.slots_, nullptr)) {}

ParameterValues& ParameterValues::operator=(ParameterValues other) noexcept {
  std::swap(block_, other.block_);
  std::swap(slots_, other.slots_);
  return *this;
}

ParameterValues::~ParameterValues() {
  if (block_ == nullptr) return;
  for (const QELValue* const value : *slots_) release(value);
  block_->release();
}

void ParameterValues::setInt64(ParameterKey key, std::int64_t integer) {
  const QELValue* const value = QELValue::makeIn(block(), integer);
  if (value == nullptr) return set(key, QELValue::initWithInt64(integer));
  replace(key, value);
}

void ParameterValues::setString(ParameterKey key, std::string_view string) {
  const QELValue* const value = QELValue::makeIn(block(), string);
  if (value == nullptr) return set(key, QELValue::initWithString(string));
  replace(key, value);
}

void ParameterValues::set(ParameterKey key, QELValuePtr value) {
  const bool isInBlock = value->block_ == &block();
  // The block is owned already. Otherwise the slot becomes the owner in place of `value`.
  replace(key, isInBlock ? value.get() : value.giveUp());
}

bool ParameterValues::erase(ParameterKey key) {
  if (get(key) == nullptr) return false;
  replace(key, nullptr);
  return true;
}

ValueBlock& ParameterValues::block() {
  if (block_ == nullptr) {
    static_assert(sizeof(Slots) <= kRoom && alignof(Slots) <= ValueBlock::kAlignment);
    block_ = ValueBlock::withRoom(kRoom);
    slots_ = new (block_->take(sizeof(Slots))) Slots{};
  }
  return *block_;
}

void ParameterValues::replace(ParameterKey key, const QELValue* value) {
  release(std::exchange((*slots_)[static_cast<std::size_t>(key)], value));
}

void ParameterValues::release(const QELValue* value) const {
  if (value != nullptr && value->block_ != block_) value->block_->release();
}

}  // namespace qel
