// Writes receipts, and the purchases that they record, as lines of JSON.

#ifndef QEL_TOOL_RECEIPT_WRITER_H_
#define QEL_TOOL_RECEIPT_WRITER_H_

#include <cstddef>
#include <string_view>
#include <vector>

#include "product_catalogue.h"
#include "purchase_entries.h"
#include "qel/app_receipt.h"
#include "text_buffer.h"

namespace qel::tool {

// Appends the line of a receipt. `file` is its input, `signature` the result of the verification.
void appendReceipt(std::string_view file, std::string_view signature, const AppReceipt& receipt,
                   TextBuffer& out);

// Appends the line of an input that cannot be read.
void appendReceiptError(std::string_view file, const ReceiptError& error, TextBuffer& out);

// Appends the purchase that entry `index` records, in the form that `events` reads. `product` may
// be null.
void appendPurchase(const AppReceipt& receipt, std::size_t index, const PurchaseEntries& entries,
                    const CatalogueProduct* product, TextBuffer& out);

}  // namespace qel::tool

#endif  // QEL_TOOL_RECEIPT_WRITER_H_
