// The diagnostics of a purchase, as the elements of a JSON array.

#ifndef QEL_TOOL_DIAGNOSTICS_COLLECTOR_H_
#define QEL_TOOL_DIAGNOSTICS_COLLECTOR_H_

#include <string_view>

#include "json_text.h"
#include "qel/measurement.h"
#include "text_buffer.h"

namespace qel::tool {

// A monitor for all threads. Appends each message to the Collection of the thread that logs it, and
// drops it if that thread has none.
class DiagnosticsCollector : public DiagnosticsMonitor {
 public:
  // Collects the messages of this thread, in `out`, for as long as it lives. A thread has at most
  // one.
  class Collection {
   public:
    Collection(TextBuffer& out, UnpairedSurrogates surrogates);
    ~Collection();
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;
  };

  void logWithLevel(int level, int messageCode, std::string_view message) override;
  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context) override;
  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context1, const DiagnosticContext& context2) override;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_DIAGNOSTICS_COLLECTOR_H_
