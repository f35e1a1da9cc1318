// Memory that several values share.

#ifndef QEL_PLATFORM_VALUE_BLOCK_H_
#define QEL_PLATFORM_VALUE_BLOCK_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "qel/export.h"

namespace qel {

// A block of memory for values, with the number of its owners: a value has no memory and no count
// of its own. Who owns one value of a block owns the block, which is freed after its last owner.
//
// Threads: owners on several threads can share a block. One thread at a time may take memory.
class ValueBlock {
 public:
  // Returns a block with `size` bytes, or slightly more. The caller is its owner.
  static ValueBlock* withRoom(std::size_t size);

  // Returns `size` bytes of the block, aligned for values and pointers. Returns null if too few are
  // left.
  void* take(std::size_t size) {
    const std::size_t taken = aligned(size);
    if (taken > room_) return nullptr;
    room_ -= taken;
    return reinterpret_cast<std::byte*>(this + 1) + room_;
  }

  // Adds an owner.
  void retain() { owners_.fetch_add(1, std::memory_order_relaxed); }

  // Removes an owner, and frees the block if it was the last one.
  QEL_EXPORT void release();

 private:
  explicit ValueBlock(std::size_t room) : room_(room) {}

  // Returns `size` rounded up to a multiple of the alignment.
  static constexpr std::size_t aligned(std::size_t size) {
    constexpr std::size_t kAlignment = alignof(std::int64_t);
    return (size + kAlignment - 1) / kAlignment * kAlignment;
  }

  std::atomic<std::size_t> owners_ = 1;
  // Free bytes, right after this object. They are taken from the end.
  std::size_t room_;
};

}  // namespace qel

#endif  // QEL_PLATFORM_VALUE_BLOCK_H_
