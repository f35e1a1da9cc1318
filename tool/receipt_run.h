// Runs the subcommand `receipt`: reads receipts, writes them or their purchases.

#ifndef QEL_TOOL_RECEIPT_RUN_H_
#define QEL_TOOL_RECEIPT_RUN_H_

#include <optional>
#include <string>
#include <vector>

#include "exit_status.h"
#include "purchase_entries.h"

namespace qel::tool {

struct ReceiptOptions {
  // Paths of the inputs; - is standard input.
  std::vector<std::string> inputs;
  // Path of the output; - is standard output.
  std::string output = "-";
  // Write purchases instead of receipts.
  bool writesPurchases = false;
  EntryChoice entryChoice;
  // Paths of the catalogue of products, and of the trusted certificates.
  std::optional<std::string> products;
  std::optional<std::string> certificates;
};

// Reads a receipt from each input. Writes a line for each receipt, or for each of its purchases, to
// standard output, and what could not be read and a summary to standard error.
ExitStatus runReceipt(const ReceiptOptions& options);

}  // namespace qel::tool

#endif  // QEL_TOOL_RECEIPT_RUN_H_
