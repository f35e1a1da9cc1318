// Reads one purchase from one line of JSON.

#ifndef QEL_TOOL_PURCHASE_READER_H_
#define QEL_TOOL_PURCHASE_READER_H_

#include <deque>
#include <string_view>

#include "json_reader.h"
#include "purchase.h"
#include "qel/plain_records.h"

namespace qel::tool {

// Threads: a reader serves one thread at a time.
class PurchaseReader {
 public:
  explicit PurchaseReader(UnknownKeys unknownKeys) : reader_(unknownKeys) {}
  PurchaseReader(const PurchaseReader&) = delete;
  PurchaseReader& operator=(const PurchaseReader&) = delete;

  // Reads the purchase that `line` holds. JsonReader::kPadding bytes after it must be readable. The
  // purchase belongs to the reader, and is valid until the next call or until the line's bytes
  // change. Throws JsonError.
  const Purchase& read(std::string_view line);

  // What the table of keys fills, and reuses from line to line.
  struct Record {
    Purchase purchase;
    PlainProduct platform;
    std::deque<QELInAppPurchaseItem> entries;
  };

 private:
  JsonReader reader_;
  Record record_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_PURCHASE_READER_H_
