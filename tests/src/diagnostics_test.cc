#include "diagnostics.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>

#include "reference/message_texts.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// The first and the last number that a code can have.
constexpr int kFirstNumber = 40000;
constexpr int kLastNumber = 40099;

TEST(DiagnosticsTest, EveryCodeHasItsMessage) {
  std::map<int, std::string> messages;
  for (int number = kFirstNumber; number <= kLastNumber; ++number) {
    const std::string_view message = messageOf(static_cast<DiagnosticCode>(number));
    if (!message.empty()) messages.emplace(number, message);
  }
  EXPECT_EQ(messages, messageTexts());
}

TEST(DiagnosticsTest, CodesCompareWithTheNumbersOfAMonitor) {
  EXPECT_TRUE(DiagnosticCode::kFreeTrial == 40009);
  EXPECT_TRUE(40009 == DiagnosticCode::kFreeTrial);
  EXPECT_FALSE(DiagnosticCode::kFreeTrial == 40010);
}

std::string contentsOf(const std::string& path) {
  std::ifstream file(std::string(QEL_SOURCE_DIR "/") + path);
  std::ostringstream contents;
  contents << file.rdbuf();
  return contents.str();
}

// Returns the name of each code in the public header.
std::map<int, std::string> namesInHeader() {
  const std::string header = contentsOf("include/qel/diagnostic_codes.h");
  const std::regex enumerator(R"(\n  (k\w+) = (\d+),)");
  std::map<int, std::string> names;
  for (std::sregex_iterator match(header.begin(), header.end(), enumerator), end; match != end;
       ++match) {
    names.emplace(std::stoi(match->str(2)), match->str(1));
  }
  return names;
}

// The page has one section for each code: a heading with its number and message, then its name.
TEST(DiagnosticsPageTest, HasTheNumberMessageAndNameOfEachCode) {
  const std::string page = contentsOf("docs/diagnostics.md");
  const std::regex section(R"(\n## (\d+) (.+)\n\n`DiagnosticCode::(\w+)`\n)");
  std::map<int, std::string> messages;
  std::map<int, std::string> names;
  for (std::sregex_iterator match(page.begin(), page.end(), section), end; match != end; ++match) {
    messages.emplace(std::stoi(match->str(1)), match->str(2));
    names.emplace(std::stoi(match->str(1)), match->str(3));
  }
  EXPECT_EQ(messages, messageTexts());
  EXPECT_EQ(names, namesInHeader());
}

TEST(DiagnosticsTest, MessagesAreLoggedAtLevelEightWithTheirContexts) {
  const ScopedRecordingMonitor monitor;
  log(DiagnosticCode::kConsumable);
  log(DiagnosticCode::kMissingInReceipt, std::string_view("coins"));
  log(DiagnosticCode::kDuplicateTransactionDate, std::string_view("monthly"), std::uint64_t{3});
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021), logged(40020, {"coins"}),
                                                 logged(40024, {"monthly", std::uint64_t{3}})}));
}

TEST(DiagnosticsTest, WithoutAMonitorNothingHappens) {
  QELMeasurement::setMonitor(nullptr);
  log(DiagnosticCode::kConsumable);
  EXPECT_EQ(QELMeasurement::monitor(), nullptr);
}

// A monitor that hands over to another as soon as it has been told something.
class SelfReplacingMonitor : public RecordingMonitor {
 public:
  explicit SelfReplacingMonitor(std::shared_ptr<DiagnosticsMonitor> next)
      : next_(std::move(next)) {}

  void logWithLevel(int level, int messageCode, std::string_view message) override {
    RecordingMonitor::logWithLevel(level, messageCode, message);
    QELMeasurement::setMonitor(next_);
  }
  using RecordingMonitor::logWithLevel;

 private:
  std::shared_ptr<DiagnosticsMonitor> next_;
};

// A free trial logs two messages: 40009, then 40010.
TEST(DiagnosticsTest, MonitorIsAskedForAgainForEachMessage) {
  const auto second = std::make_shared<RecordingMonitor>();
  const auto first = std::make_shared<SelfReplacingMonitor>(second);
  Purchase purchase;
  makeMonthly(purchase, {freeTrial(firstMonth())});

  QELMeasurement::setMonitor(first);
  purchase.event();
  QELMeasurement::setMonitor(nullptr);

  EXPECT_TRUE(hasLogged(first->diagnostics(), {logged(40009)}));
  EXPECT_TRUE(hasLogged(second->diagnostics(), {logged(40010)}));
}

TEST(DiagnosticsTest, MonitorRemovedByAMessageMissesTheNext) {
  const auto only = std::make_shared<SelfReplacingMonitor>(nullptr);
  Purchase purchase;
  makeMonthly(purchase, {freeTrial(introductoryOffer(firstMonth()))});

  QELMeasurement::setMonitor(only);
  purchase.event();

  EXPECT_EQ(QELMeasurement::monitor(), nullptr);
  EXPECT_TRUE(hasLogged(only->diagnostics(), {logged(40009)}));
}

}  // namespace
}  // namespace qel::testing
