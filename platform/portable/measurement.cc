#include "qel/measurement.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace qel {
namespace {

struct InstalledMonitor {
  // Whether there is one, so that without one nothing is locked.
  std::atomic<bool> isPresent = false;
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
  if (!installed.isPresent) return nullptr;
  const std::lock_guard lock(installed.mutex);
  return installed.monitor;
}

void QELMeasurement::setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor) {
  InstalledMonitor& installed = installedMonitor();
  const std::lock_guard lock(installed.mutex);
  installed.isPresent = monitor != nullptr;
  // Swapped, so that the monitor before ends outside the lock, when `monitor` does: its destructor
  // may log.
  installed.monitor.swap(monitor);
}

}  // namespace qel
