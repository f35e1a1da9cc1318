// Writing what came of a line, as one line of JSON.

#ifndef QEL_TOOL_RESULT_WRITER_H_
#define QEL_TOOL_RESULT_WRITER_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "purchase_reader.h"
#include "qel/event_parameters.h"
#include "qel/measurement.h"
#include "qel/text.h"
#include "text_buffer.h"

namespace qel::tool {

// How 64-bit integers of an event are written: as JSON numbers, or as strings for readers that hold
// numbers in doubles.
enum class Int64Form { kNumber, kString };

// Collects diagnostics as the elements of a JSON array. Installed once for all threads: each thread
// collects its own.
class DiagnosticsCollector : public DiagnosticsMonitor {
 public:
  void logWithLevel(int level, int messageCode, std::string_view message) override;
  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context) override;
  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context1, const DiagnosticContext& context2) override;

  // What the calling thread has collected. Clear it before the next line.
  static TextBuffer& ofThisThread();
};

// Appends the line of a purchase: its id if it has one, its event or null, and its diagnostics.
void appendResult(const OptionalText& id, const std::optional<EventParameters>& event,
                  std::string_view diagnostics, Int64Form int64Form, TextBuffer& out);

// Appends the line of an input line that cannot be read. Lines count from 1.
void appendError(const OptionalText& id, std::uint64_t lineNumber, const LineError& error,
                 TextBuffer& out);

}  // namespace qel::tool

#endif  // QEL_TOOL_RESULT_WRITER_H_
