// Benchmarks of a message to the diagnostics monitor, alone and beside another thread.

#include <benchmark/benchmark.h>

#include <memory>
#include <string_view>
#include <thread>

#include "qel/measurement.h"

namespace qel::bench {
namespace {

class SilentMonitor : public DiagnosticsMonitor {
 public:
  void logWithLevel(int level, int, std::string_view) override { benchmark::DoNotOptimize(level); }
  void logWithLevel(int, int, std::string_view, const DiagnosticContext&) override {}
  void logWithLevel(int, int, std::string_view, const DiagnosticContext&,
                    const DiagnosticContext&) override {}
};

void installMonitor(const benchmark::State&) {
  // libstdc++ counts owners without atomic operations until the program starts a thread.
  std::thread([] {}).join();
  QELMeasurement::setMonitor(std::make_shared<SilentMonitor>());
}

void removeMonitor(const benchmark::State&) { QELMeasurement::setMonitor(nullptr); }

// Measures the time of a message on each thread. Two threads take as long as one if they share no
// memory that a message writes.
void BM_Message(benchmark::State& state) {
  for (auto _ : state) {
    const std::shared_ptr<DiagnosticsMonitor> monitor = QELMeasurement::monitor();
    monitor->logWithLevel(8, 40003, "Transaction ID cannot be nil or empty.");
  }
}
BENCHMARK(BM_Message)->Setup(installMonitor)->Teardown(removeMonitor)->Threads(1)->Threads(2);

}  // namespace
}  // namespace qel::bench
