#include "diagnostics.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <set>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// The text of each code is in messageTexts().
struct MessageCase {
  const char* name;
  DiagnosticMessage message;
  int code;
  friend std::ostream& operator<<(std::ostream& out, const MessageCase& c) { return out << c.name; }
};

const MessageCase kMessages[] = {
    {"EmptyTransactionId", message::kEmptyTransactionId, 40003},
    {"RestoredNonConsumable", message::kRestoredNonConsumable, 40005},
    {"MismatchedTransactionIds", message::kMismatchedTransactionIds, 40007},
    {"AutoRenewable", message::kAutoRenewable, 40008},
    {"FreeTrial", message::kFreeTrial, 40009},
    {"AutoRenewableRenewal", message::kAutoRenewableRenewal, 40010},
    {"RepurchasedFreeTrial", message::kRepurchasedFreeTrial, 40011},
    {"IntroductoryOffer", message::kIntroductoryOffer, 40018},
    {"MissingInReceipt", message::kMissingInReceipt, 40020},
    {"Consumable", message::kConsumable, 40021},
    {"NonConsumable", message::kNonConsumable, 40022},
    {"SubscriptionMissingInReceipt", message::kSubscriptionMissingInReceipt, 40023},
    {"DuplicateTransactionDate", message::kDuplicateTransactionDate, 40024},
    {"NonRenewingSubscription", message::kNonRenewingSubscription, 40025},
    {"NilProduct", message::kNilProduct, 40026},
    {"EmptyProductId", message::kEmptyProductId, 40027},
    {"NilTransaction", message::kNilTransaction, 40028},
};

class MessageTest : public ::testing::TestWithParam<MessageCase> {};

TEST_P(MessageTest, HasItsCodeAndText) {
  EXPECT_EQ(GetParam().message.code, GetParam().code);
  EXPECT_EQ(GetParam().message.text, messageTexts().at(GetParam().code));
}

INSTANTIATE_TEST_SUITE_P(All, MessageTest, ::testing::ValuesIn(kMessages), nameOfCase<MessageCase>);

TEST(DiagnosticsTest, SeventeenCodesAreUnique) {
  std::set<int> codes;
  for (const MessageCase& each : kMessages) codes.insert(each.message.code);
  EXPECT_EQ(codes.size(), 17U);
  EXPECT_EQ(messageTexts().size(), 17U);
}

TEST(DiagnosticsTest, MessagesAreLoggedAtLevelEightWithTheirContexts) {
  const ScopedRecordingMonitor monitor;
  log(message::kConsumable);
  log(message::kMissingInReceipt, std::string_view("coins"));
  log(message::kDuplicateTransactionDate, std::string_view("monthly"), std::uint64_t{3});
  EXPECT_TRUE(hasLogged(monitor->diagnostics(), {logged(40021), logged(40020, {"coins"}),
                                                 logged(40024, {"monthly", std::uint64_t{3}})}));
}

TEST(DiagnosticsTest, WithoutAMonitorNothingHappens) {
  QELMeasurement::setMonitor(nullptr);
  log(message::kConsumable);
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
