#include "qel/measurement.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <utility>

namespace qel {
namespace {

// The monitor as some of the threads find it. Threads that ask at once and write to one lock wait
// for one another, so there are several, each in a cache line of its own.
struct alignas(64) Slot {
  std::mutex mutex;
  std::shared_ptr<DiagnosticsMonitor> monitor;
};

constexpr std::size_t kSlots = 32;

struct InstalledMonitor {
  // Whether there is one, so that without one nothing is locked.
  std::atomic<bool> isPresent = false;
  // Held while the slots are filled, so that all end with the same monitor.
  std::mutex installing;
  std::array<Slot, kSlots> slots;
};

// Never destroyed, so that threads may still log while the program ends.
InstalledMonitor& installedMonitor() {
  static auto* const installed = new InstalledMonitor;
  return *installed;
}

// Threads take the slots in turn.
Slot& slotOfThisThread() {
  static std::atomic<std::size_t> threads = 0;
  thread_local const std::size_t thread = threads++;
  return installedMonitor().slots[thread % kSlots];
}

}  // namespace

std::shared_ptr<DiagnosticsMonitor> QELMeasurement::monitor() {
  if (!installedMonitor().isPresent) return nullptr;
  Slot& slot = slotOfThisThread();
  const std::lock_guard lock(slot.mutex);
  return slot.monitor;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): it is kept, once in each slot.
void QELMeasurement::setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor) {
  InstalledMonitor& installed = installedMonitor();
  // What was installed ends after the locks are released: its destructor may log, or install.
  std::array<std::shared_ptr<DiagnosticsMonitor>, kSlots> before;
  const std::lock_guard installing(installed.installing);
  installed.isPresent = monitor != nullptr;
  for (std::size_t i = 0; i < kSlots; ++i) {
    before[i] = monitor;
    const std::lock_guard lock(installed.slots[i].mutex);
    installed.slots[i].monitor.swap(before[i]);
  }
}

}  // namespace qel
