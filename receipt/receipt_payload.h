// Reads the content of a receipt's signed data.

#ifndef QEL_RECEIPT_RECEIPT_PAYLOAD_H_
#define QEL_RECEIPT_RECEIPT_PAYLOAD_H_

#include <string_view>

#include "qel/app_receipt.h"

namespace qel::receipt {

// Reads the attributes of a receipt: a SET OF SEQUENCE { type INTEGER, version INTEGER, value OCTET
// STRING }, which may be wrapped in one OCTET STRING. Throws ReceiptError.
AppReceipt readPayload(std::string_view content);

}  // namespace qel::receipt

#endif  // QEL_RECEIPT_RECEIPT_PAYLOAD_H_
