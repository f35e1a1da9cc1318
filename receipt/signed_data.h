// The CMS SignedData (RFC 5652) that a receipt is.

#ifndef QEL_RECEIPT_SIGNED_DATA_H_
#define QEL_RECEIPT_SIGNED_DATA_H_

#include <string>
#include <string_view>

#include "openssl_handles.h"

namespace qel::receipt {

// Decodes a receipt in DER, BER or base64. Throws ReceiptError unless it is signed data with a
// content.
Handle<CMS_ContentInfo> readSignedData(std::string_view bytes);

// Returns the content. The view is valid as long as the signed data.
std::string_view contentOf(CMS_ContentInfo& signedData);

}  // namespace qel::receipt

#endif  // QEL_RECEIPT_SIGNED_DATA_H_
