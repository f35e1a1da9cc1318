#include "qel/value.h"

#include <cstring>
#include <new>

namespace qel {

QELValuePtr QELValue::initWithString(std::string_view string) {
  void* const memory = ::operator new(sizeof(QELValue) + string.size());
  auto* const value = new (memory) QELValue(true, static_cast<std::int64_t>(string.size()));
  string.copy(reinterpret_cast<char*>(value + 1), string.size());
  return QELValuePtr(value);
}

QELValuePtr QELValue::initWithInt64(std::int64_t integer) {
  return QELValuePtr(new (::operator new(sizeof(QELValue))) QELValue(false, integer));
}

void QELValuePtr::release(const QELValue* value) {
  // A sole owner skips the decrement: no other thread can become an owner.
  const bool hasSoleOwner = value->owners_.load(std::memory_order_acquire) == 1;
  if (!hasSoleOwner && value->owners_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  value->~QELValue();
  ::operator delete(const_cast<QELValue*>(value));
}

}  // namespace qel
