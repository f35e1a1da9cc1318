// The diagnostics monitor, which is told of each decision under a numeric code.

#ifndef QEL_PLATFORM_MEASUREMENT_H_
#define QEL_PLATFORM_MEASUREMENT_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <variant>

#include "qel/export.h"

namespace qel {

// What a message is about: a string or an unsigned number.
using DiagnosticContext = std::variant<std::string_view, std::uint64_t>;

// The library's diagnostics sink. Messages and contexts are valid during the call only. An
// operation must not throw: an exception ends the program.
//
// Threads: called from any thread that reports a purchase, several at once.
class DiagnosticsMonitor {
 public:
  virtual ~DiagnosticsMonitor() = default;

  virtual void logWithLevel(int level, int messageCode, std::string_view message) = 0;
  virtual void logWithLevel(int level, int messageCode, std::string_view message,
                            const DiagnosticContext& context) = 0;
  virtual void logWithLevel(int level, int messageCode, std::string_view message,
                            const DiagnosticContext& context1,
                            const DiagnosticContext& context2) = 0;
};

// Where the library keeps its one monitor.
//
// Threads: both operations are safe from any thread, also while others log. A monitor that has been
// replaced may still receive the messages that are under way; it ends after the last of them.
class QELMeasurement {
 public:
  // The monitor to log to, null when none is installed. Ask again for every message.
  QEL_EXPORT static std::shared_ptr<DiagnosticsMonitor> monitor();

  // Installs `monitor` in place of the one before; null removes it.
  QEL_EXPORT static void setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor);
};

}  // namespace qel

#endif  // QEL_PLATFORM_MEASUREMENT_H_
