// Reading one purchase from one line of JSON.

#ifndef QEL_TOOL_PURCHASE_READER_H_
#define QEL_TOOL_PURCHASE_READER_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "purchase.h"

namespace qel::tool {

// Why a line cannot be read.
struct LineError {
  // Where in the line: a JSON Pointer (RFC 6901), such as /receipt/0/purchaseType; empty for the
  // line as a whole.
  std::string path;

  // What is wrong, and what was expected.
  std::string message;
};

// Threads: a reader serves one thread at a time.
class PurchaseReader {
 public:
  // What reading may look at past the end of a line: so many bytes must be readable there. Their
  // values do not matter.
  static constexpr std::size_t kPadding = 64;

  enum class UnknownKeys { kAreErrors, kAreIgnored };

  explicit PurchaseReader(UnknownKeys unknownKeys);
  ~PurchaseReader();
  PurchaseReader(const PurchaseReader&) = delete;
  PurchaseReader& operator=(const PurchaseReader&) = delete;

  // Reads the purchase that `line` holds. It belongs to the reader, and is valid until the next
  // call or until the line's bytes change. Throws LineError.
  const Purchase& read(std::string_view line);

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_PURCHASE_READER_H_
