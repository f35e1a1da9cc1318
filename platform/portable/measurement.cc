#include "qel/measurement.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <utility>

namespace qel {
namespace {

// A copy of the pointer for some of the threads. One lock for all would make threads that log at
// the same time wait, so there are several, each in its own cache line.
struct alignas(64) Slot {
  std::mutex mutex;
  std::shared_ptr<DiagnosticsMonitor> monitor;
};

constexpr std::size_t kSlots = 32;

struct InstalledMonitor {
  // Without a monitor, nothing is locked.
  std::atomic<bool> isPresent = false;
  // Held while the slots are filled, so that all get the same monitor.
  std::mutex installing;
  std::array<Slot, kSlots> slots;
};

// Never destroyed, so that threads can still log while the program exits.
InstalledMonitor& installedMonitor() {
  static auto* const installed = new InstalledMonitor;
  return *installed;
}

// Assigns the slots to the threads in turn.
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

// NOLINTNEXTLINE(performance-unnecessary-value-param): each slot keeps a copy.
void QELMeasurement::setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor) {
  InstalledMonitor& installed = installedMonitor();
  // The previous monitor is destroyed after the locks are released: its destructor may log, or
  // install another one.
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
