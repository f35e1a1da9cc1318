// Why a text cannot be read as JSON, or not as what was expected.

#ifndef QEL_TOOL_JSON_ERROR_H_
#define QEL_TOOL_JSON_ERROR_H_

#include <string>

namespace qel::tool {

struct JsonError {
  // Where in the text: a JSON Pointer (RFC 6901), such as /receipt/0/purchaseType. Empty for the
  // text as a whole.
  std::string pointer;

  // What was found, and what was expected.
  std::string message;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_JSON_ERROR_H_
