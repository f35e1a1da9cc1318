#include "qel/measurement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "support/recording_monitor.h"

namespace qel::testing {
namespace {

class MeasurementTest : public ::testing::Test {
 protected:
  ~MeasurementTest() override { QELMeasurement::setMonitor(nullptr); }
};

TEST_F(MeasurementTest, HasNoMonitorAtFirst) { EXPECT_EQ(QELMeasurement::monitor(), nullptr); }

TEST_F(MeasurementTest, GivesTheMonitorThatWasInstalled) {
  const auto monitor = std::make_shared<RecordingMonitor>();
  QELMeasurement::setMonitor(monitor);
  EXPECT_EQ(QELMeasurement::monitor(), monitor);
}

TEST_F(MeasurementTest, LaterMonitorTakesThePlaceOfTheOneBefore) {
  const auto first = std::make_shared<RecordingMonitor>();
  const auto second = std::make_shared<RecordingMonitor>();
  QELMeasurement::setMonitor(first);
  QELMeasurement::setMonitor(second);
  EXPECT_EQ(QELMeasurement::monitor(), second);
  EXPECT_EQ(first.use_count(), 1);
}

TEST_F(MeasurementTest, NullRemovesTheMonitor) {
  const auto monitor = std::make_shared<RecordingMonitor>();
  QELMeasurement::setMonitor(monitor);
  QELMeasurement::setMonitor(nullptr);
  EXPECT_EQ(QELMeasurement::monitor(), nullptr);
  EXPECT_EQ(monitor.use_count(), 1);
}

TEST_F(MeasurementTest, KeepsTheMonitorAlive) {
  auto monitor = std::make_shared<RecordingMonitor>();
  const std::weak_ptr<RecordingMonitor> watched = monitor;
  QELMeasurement::setMonitor(std::move(monitor));
  EXPECT_FALSE(watched.expired());
  QELMeasurement::setMonitor(nullptr);
  EXPECT_TRUE(watched.expired());
}

TEST_F(MeasurementTest, MonitorInUseOutlivesItsRemoval) {
  QELMeasurement::setMonitor(std::make_shared<RecordingMonitor>());
  const std::shared_ptr<DiagnosticsMonitor> inUse = QELMeasurement::monitor();
  QELMeasurement::setMonitor(nullptr);
  inUse->logWithLevel(8, 40021, "still here");
  EXPECT_EQ(inUse.use_count(), 1);
}

TEST_F(MeasurementTest, EveryThreadFindsTheMonitorAndItsRemoval) {
  auto monitor = std::make_shared<RecordingMonitor>();
  // One thread after the other, so that each is new; more of them than a table would have rows.
  const auto seenByThreads = [] {
    std::vector<std::shared_ptr<DiagnosticsMonitor>> seen(100);
    for (auto& one : seen) std::thread([&one] { one = QELMeasurement::monitor(); }).join();
    return seen;
  };
  QELMeasurement::setMonitor(monitor);
  EXPECT_THAT(seenByThreads(), ::testing::Each(monitor));
  QELMeasurement::setMonitor(nullptr);
  EXPECT_THAT(seenByThreads(), ::testing::Each(nullptr));
  EXPECT_EQ(monitor.use_count(), 1);
}

TEST_F(MeasurementTest, MonitorThatIsInstalledAgainIsTheSame) {
  const auto monitor = std::make_shared<RecordingMonitor>();
  QELMeasurement::setMonitor(monitor);
  QELMeasurement::setMonitor(QELMeasurement::monitor());
  EXPECT_EQ(QELMeasurement::monitor(), monitor);
  QELMeasurement::setMonitor(nullptr);
  EXPECT_EQ(monitor.use_count(), 1);
}

// A monitor that asks for the installed one as it ends.
class LastWordsMonitor : public RecordingMonitor {
 public:
  explicit LastWordsMonitor(std::shared_ptr<DiagnosticsMonitor>* seen) : seen_(seen) {}
  ~LastWordsMonitor() override { *seen_ = QELMeasurement::monitor(); }
  LastWordsMonitor(const LastWordsMonitor&) = delete;
  LastWordsMonitor& operator=(const LastWordsMonitor&) = delete;

 private:
  std::shared_ptr<DiagnosticsMonitor>* seen_;
};

TEST_F(MeasurementTest, MonitorMayAskForItsSuccessorAsItEnds) {
  std::shared_ptr<DiagnosticsMonitor> seen;
  const auto successor = std::make_shared<RecordingMonitor>();
  QELMeasurement::setMonitor(std::make_shared<LastWordsMonitor>(&seen));
  QELMeasurement::setMonitor(successor);
  EXPECT_EQ(seen, successor);
}

}  // namespace
}  // namespace qel::testing
