// Memory that several values share.

#ifndef QEL_PLATFORM_VALUE_BLOCK_H_
#define QEL_PLATFORM_VALUE_BLOCK_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "qel/export.h"

namespace qel {

// A block of memory for values, and the number of its owners. A value has no count of its own: who
// owns a value owns its block, which is freed when its last owner releases it.
//
// Threads: owners on several threads can share a block. One thread at a time may take memory.
class ValueBlock {
 public:
  // The alignment of values and of what else is in a block.
  static constexpr std::size_t kAlignment = alignof(std::int64_t);

  // Returns a block with at least `size` free bytes. The caller is its owner.
  static ValueBlock* withRoom(std::size_t size);

  // Returns `size` bytes of the block. Returns null if too few are left.
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
    return (size + kAlignment - 1) / kAlignment * kAlignment;
  }

  std::atomic<std::size_t> owners_ = 1;
  // Free bytes, right after this object. They are taken from the end.
  std::size_t room_;
};

}  // namespace qel

#endif  // QEL_PLATFORM_VALUE_BLOCK_H_
