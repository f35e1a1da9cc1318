// Reads the answer of the store's validation service, which describes a receipt in JSON.

#ifndef QEL_TOOL_SERVICE_JSON_H_
#define QEL_TOOL_SERVICE_JSON_H_

#include <string_view>

#include "json_error.h"
#include "qel/app_receipt.h"

namespace qel::tool {

// Reads an answer: an object with the lists receipt.in_app or latest_receipt_info, or both. An
// entry of latest_receipt_info replaces the one of receipt.in_app with the same product and the
// same transaction identifier. A date that is given in milliseconds too is taken from there if its
// text has no certain meaning. Ignores other keys. JsonReader::kPadding bytes after the text must
// be readable. Throws JsonError.
AppReceipt readServiceAnswer(std::string_view json);

}  // namespace qel::tool

#endif  // QEL_TOOL_SERVICE_JSON_H_
