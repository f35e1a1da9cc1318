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

// Holds a monitor for as long as the count that it is allocated with is not 0.
struct Owner {
  std::shared_ptr<DiagnosticsMonitor> monitor;
  // Keeps the counts of two owners in different cache lines.
  std::array<std::byte, 64> padding;

  void operator()(DiagnosticsMonitor*) const {}
};

// Returns a pointer to `monitor` with a reference count of its own. Each message increments and
// decrements the count of its slot. The cache line of a shared count would move between the cores.
std::shared_ptr<DiagnosticsMonitor> separateOwner(
    const std::shared_ptr<DiagnosticsMonitor>& monitor) {
  if (monitor == nullptr) return nullptr;
  return {monitor.get(), Owner{monitor, {}}};
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

// NOLINTNEXTLINE(performance-unnecessary-value-param): each slot keeps an owner of it.
void QELMeasurement::setMonitor(std::shared_ptr<DiagnosticsMonitor> monitor) {
  // Owners of the new monitor, then of the previous one. The previous one is destroyed after the
  // locks are released: its destructor may log, or install another one.
  std::array<std::shared_ptr<DiagnosticsMonitor>, kSlots> owners;
  for (std::shared_ptr<DiagnosticsMonitor>& owner : owners) owner = separateOwner(monitor);

  InstalledMonitor& installed = installedMonitor();
  const std::lock_guard installing(installed.installing);
  installed.isPresent = monitor != nullptr;
  for (std::size_t i = 0; i < kSlots; ++i) {
    const std::lock_guard lock(installed.slots[i].mutex);
    installed.slots[i].monitor.swap(owners[i]);
  }
}

}  // namespace qel
