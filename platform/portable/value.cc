#include "qel/value.h"

namespace qel {

QELValuePtr QELValue::initWithString(std::string_view string) {
  return QELValuePtr(makeIn(*ValueBlock::withRoom(sizeof(QELValue) + string.size()), string));
}

QELValuePtr QELValue::initWithInt64(std::int64_t integer) {
  return QELValuePtr(makeIn(*ValueBlock::withRoom(sizeof(QELValue)), integer));
}

}  // namespace qel
