#include "qel/value.h"

#include <cstring>
#include <new>

namespace qel {

QELValuePtr QELValue::initWithString(std::string_view string) {
  void* const memory = ::operator new(sizeof(QELValue) + string.size());
  auto* const value = new (memory) QELValue(true, static_cast<std::int64_t>(string.size()), 1);
  string.copy(reinterpret_cast<char*>(value + 1), string.size());
  return QELValuePtr(value);
}

QELValuePtr QELValue::initWithInt64(std::int64_t integer) {
  static constinit const QELValue zero(false, 0, kNotCounted);
  static constinit const QELValue one(false, 1, kNotCounted);
  if (integer == 0) return QELValuePtr(&zero);
  if (integer == 1) return QELValuePtr(&one);
  return QELValuePtr(new (::operator new(sizeof(QELValue))) QELValue(false, integer, 1));
}

void QELValuePtr::release(const QELValue* value) {
  const std::uint32_t owners = value->owners_.load(std::memory_order_acquire);
  if (owners == QELValue::kNotCounted) return;
  // A sole owner need not count down: nobody else can come to own the value.
  const bool hasSoleOwner = owners == 1;
  if (!hasSoleOwner && value->owners_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  value->~QELValue();
  ::operator delete(const_cast<QELValue*>(value));
}

}  // namespace qel
