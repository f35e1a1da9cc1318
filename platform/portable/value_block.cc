#include "qel/value_block.h"

#include <new>

namespace qel {

ValueBlock* ValueBlock::withRoom(std::size_t size) {
  static_assert(sizeof(ValueBlock) == aligned(sizeof(ValueBlock)));
  const std::size_t room = aligned(size);
  return new (::operator new(sizeof(ValueBlock) + room)) ValueBlock(room);
}

void ValueBlock::release() {
  // A sole owner skips the decrement, which costs more than a load: no other thread can become an
  // owner.
  const bool hasSoleOwner = owners_.load(std::memory_order_acquire) == 1;
  if (!hasSoleOwner && owners_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  // Values have trivial destructors.
  this->~ValueBlock();
  ::operator delete(this);
}

}  // namespace qel
