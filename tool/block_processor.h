// Computes the results of a block of lines.

#ifndef QEL_TOOL_BLOCK_PROCESSOR_H_
#define QEL_TOOL_BLOCK_PROCESSOR_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "events_options.h"
#include "input_sequence.h"
#include "purchase_reader.h"
#include "tally.h"
#include "text_buffer.h"

namespace qel::tool {

// The results of a block. Reuse them to reuse their memory.
struct BlockResults {
  // One line for each line that is not blank.
  TextBuffer output;
  Tally tally;
  // Diagnostics of the line in progress.
  TextBuffer diagnostics;
};

// Threads: a processor serves one thread at a time. A DiagnosticsCollector must be installed.
class BlockProcessor {
 public:
  // The options must outlive the processor.
  explicit BlockProcessor(const EventsOptions& options);

  // Computes the results of the lines, up to the one with which more than `maxRejected` lines are
  // rejected.
  void process(const InputBlock& block, std::uint64_t maxRejected, BlockResults& results);

 private:
  void processLine(std::string_view line, const LinePlace& place, bool isCut,
                   BlockResults& results);
  void appendEvent(const Purchase& purchase, BlockResults& results) const;
  void reject(std::string_view line, const LinePlace& place, const JsonError& error,
              BlockResults& results) const;

  const EventsOptions& options_;
  // Names of the inputs for errors, in UTF-8. Empty if there is only one input.
  std::vector<std::string> inputNames_;
  PurchaseReader reader_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_BLOCK_PROCESSOR_H_
