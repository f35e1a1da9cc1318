#include "qel/measurement.h"

#include <mutex>
#include <utility>

namespace qel {
namespace {

struct InstalledMonitor {
  std::mutex mutex;
  std::shared_ptr<DiagnosticsMonitor> monitor;
};

// Never destroyed, so that threads may still log while the program ends.
InstalledMonitor& installedMonitor() {
  static auto* const installed = new InstalledMonitor;
  return *installed;
}

}  // namespace

std::shared_ptr<DiagnosticsMonitor> QELMeasurement::monitor() {
  InstalledMonitor& installed = installedMonitor();
  const std::lock_guard lock(installed.mutex);
  return installed.monitor;
}

void QELMeasurement::setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor) {
  InstalledMonitor& installed = installedMonitor();
  const std::lock_guard lock(installed.mutex);
  // Swapped, so that the monitor before ends outside the lock, when `monitor` does: its destructor
  // may log.
  installed.monitor.swap(monitor);
}

}  // namespace qel
