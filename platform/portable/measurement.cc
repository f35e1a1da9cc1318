#include "qel/measurement.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <tuple>

namespace qel {

class QELMeasurement::Installed {
 public:
  // Returns the owner for the calling thread.
  std::shared_ptr<DiagnosticsMonitor> owner() {
    if (!isPresent_) return nullptr;
    Slot& slot = slotOfThisThread();
    const std::lock_guard lock(slot.mutex);
    return slot.owner;
  }

  // Exchanges `owners` with the present ones.
  void swap(Owners& owners) {
    const std::lock_guard installing(installing_);
    isPresent_ = owners.front() != nullptr;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      const std::lock_guard lock(slots_[i].mutex);
      slots_[i].owner.swap(owners[i]);
    }
  }

 private:
  // One lock for all threads would make those that log at the same time wait, so there are several,
  // each in its own cache line.
  struct alignas(64) Slot {
    std::mutex mutex;
    std::shared_ptr<DiagnosticsMonitor> owner;
  };

  // Assigns the slots to the threads in turn.
  Slot& slotOfThisThread() {
    static std::atomic<std::size_t> threads = 0;
    thread_local const std::size_t thread = threads++;
    return slots_[thread % slots_.size()];
  }

  // Without a monitor, nothing is locked.
  std::atomic<bool> isPresent_ = false;
  // Held while the slots are filled, so that all get the same monitor.
  std::mutex installing_;
  std::array<Slot, std::tuple_size_v<Owners>> slots_;
};

// Never destroyed, so that threads can still log while the program exits.
QELMeasurement::Installed& QELMeasurement::installed() {
  static auto* const installed = new Installed;
  return *installed;
}

std::shared_ptr<DiagnosticsMonitor> QELMeasurement::monitor() { return installed().owner(); }

// The previous monitor is destroyed with `owners`, after the locks are released: its destructor may
// log, or install another one.
void QELMeasurement::install(Owners owners) { installed().swap(owners); }

}  // namespace qel
