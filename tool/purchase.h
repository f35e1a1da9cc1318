// A purchase, as a line of input has it.

#ifndef QEL_TOOL_PURCHASE_H_
#define QEL_TOOL_PURCHASE_H_

#include <optional>

#include "qel/plain_records.h"

namespace qel::tool {

// Texts and entries belong to what has read the purchase.
struct Purchase {
  OptionalText id;
  std::optional<PlainProduct> product;
  std::optional<PlainTransaction> transaction;
  QELInAppPurchaseItems receipt;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_PURCHASE_H_
