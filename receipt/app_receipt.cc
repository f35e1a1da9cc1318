#include "qel/app_receipt.h"

#include "receipt_payload.h"
#include "signed_data.h"

namespace qel {

AppReceiptResult readAppReceipt(std::string_view bytes) noexcept {
  const receipt::ErrorScope errors;
  try {
    const receipt::Handle<CMS_ContentInfo> signedData = receipt::readSignedData(bytes);
    return receipt::readPayload(receipt::contentOf(*signedData));
  } catch (const ReceiptError& error) {
    return error;
  }
}

}  // namespace qel
