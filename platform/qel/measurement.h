// The diagnostics monitor, which receives each decision under a numeric code.

#ifndef QEL_PLATFORM_MEASUREMENT_H_
#define QEL_PLATFORM_MEASUREMENT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
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
  static void setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor);

 private:
  struct Owner;
  class Installed;

  // An owner for each group of threads. All are null if there is no monitor.
  using Owners = std::array<std::shared_ptr<DiagnosticsMonitor>, 32>;
  QEL_EXPORT static void install(Owners owners);
  static Installed& installed();
};

// Holds a monitor for as long as the reference count that it is allocated with is not 0.
struct QELMeasurement::Owner {
  std::shared_ptr<DiagnosticsMonitor> monitor;
  // Keeps the counts of two owners in different cache lines.
  std::array<std::byte, 64> padding = {};

  void operator()(DiagnosticsMonitor*) const {}
};

// Inline, because the library has no run-time type information: with the undefined-behavior
// sanitizer, a program would report reference counts that the library allocates.
// NOLINTNEXTLINE(performance-unnecessary-value-param): each owner keeps a copy.
inline void QELMeasurement::setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor) {
  // Each message increments and decrements a count. The cache line of a shared count would move
  // between the cores, so each group of threads has a count of its own.
  Owners owners;
  if (monitor != nullptr) {
    for (auto& owner : owners) owner = {monitor.get(), Owner{monitor}};
  }
  install(std::move(owners));
}

}  // namespace qel

#endif  // QEL_PLATFORM_MEASUREMENT_H_
