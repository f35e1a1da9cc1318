// Several threads report purchases while a monitor is installed and removed. Run it under the
// thread sanitizer.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// Counts the messages that are the one expected, and those that are not.
class CountingMonitor : public DiagnosticsMonitor {
 public:
  explicit CountingMonitor(Diagnostic expected) : expected_(std::move(expected)) {}

  void logWithLevel(int level, int messageCode, std::string_view message) override {
    const bool isExpected =
        level == expected_.level && messageCode == expected_.code && message == expected_.message;
    ++(isExpected ? expectedCount_ : otherCount_);
  }
  void logWithLevel(int, int, std::string_view, const DiagnosticContext&) override {
    ++otherCount_;
  }
  void logWithLevel(int, int, std::string_view, const DiagnosticContext&,
                    const DiagnosticContext&) override {
    ++otherCount_;
  }

  int expectedCount() const { return expectedCount_; }
  int otherCount() const { return otherCount_; }

 private:
  const Diagnostic expected_;
  std::atomic<int> expectedCount_ = 0;
  std::atomic<int> otherCount_ = 0;
};

TEST(ConcurrencyTest, PurchasesAreReportedWhileTheMonitorComesAndGoes) {
  constexpr int kThreads = 4;
  constexpr int kPurchasesEach = 500;
  const auto monitor = std::make_shared<CountingMonitor>(logged(40008));
  std::atomic<int> reportersAtWork = kThreads;
  std::array<int, kThreads> soundEvents = {};

  const auto report = [&](int& soundCount) {
    Purchase purchase;
    makeMonthly(purchase, {firstMonth()});
    const Event expected = monthlyEvent({{"_did", kDedupeIdOf100077monthly}, {"subscription", 1}});
    for (int i = 0; i < kPurchasesEach; ++i) {
      const std::optional<EventParameters> event = purchase.event();
      if (event.has_value() && eventOf(*event) == expected) ++soundCount;
    }
    --reportersAtWork;
  };

  std::array<std::thread, kThreads> reporters;
  for (std::size_t i = 0; i < kThreads; ++i) {
    reporters[i] = std::thread(report, std::ref(soundEvents[i]));
  }
  while (reportersAtWork > 0) {
    QELMeasurement::setMonitor(monitor);
    std::this_thread::yield();
    QELMeasurement::setMonitor(nullptr);
  }
  for (std::thread& reporter : reporters) reporter.join();

  EXPECT_EQ(std::count(soundEvents.begin(), soundEvents.end(), kPurchasesEach), kThreads);
  EXPECT_LE(monitor->expectedCount(), kThreads * kPurchasesEach);
  EXPECT_EQ(monitor->otherCount(), 0);
  EXPECT_EQ(monitor.use_count(), 1);
}

TEST(ConcurrencyTest, MonitorThatStaysMissesNoMessage) {
  constexpr int kThreads = 4;
  constexpr int kPurchasesEach = 500;
  const auto monitor = std::make_shared<CountingMonitor>(logged(40021));
  QELMeasurement::setMonitor(monitor);
  std::array<std::thread, kThreads> reporters;
  for (std::thread& reporter : reporters) {
    reporter = std::thread([] {
      const Purchase purchase;
      for (int i = 0; i < kPurchasesEach; ++i) purchase.event();
    });
  }
  for (std::thread& reporter : reporters) reporter.join();
  QELMeasurement::setMonitor(nullptr);

  EXPECT_EQ(monitor->expectedCount(), kThreads * kPurchasesEach);
  EXPECT_EQ(monitor->otherCount(), 0);
}

}  // namespace
}  // namespace qel::testing
