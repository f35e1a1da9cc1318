// The diagnostics monitor, which receives each decision under a numeric code.

#ifndef QEL_PLATFORM_MEASUREMENT_H_
#define QEL_PLATFORM_MEASUREMENT_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <variant>

#include "qel/export.h"

namespace qel {

// A context value of a message: a string or an unsigned number.
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

// Holds the one monitor of the library.
//
// Threads: safe from any thread, also while others log. A monitor that was replaced may still
// receive messages that were sent before; it is destroyed after the last of them.
class QELMeasurement {
 public:
  // Returns the installed monitor, null if there is none. Call it again for every message.
  [[nodiscard]] QEL_EXPORT static std::shared_ptr<DiagnosticsMonitor> monitor();

  // Replaces the installed monitor. Null removes it.
  QEL_EXPORT static void setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor);
};

}  // namespace qel

#endif  // QEL_PLATFORM_MEASUREMENT_H_
