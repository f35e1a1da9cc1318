// Exported functions let no exception through: whatever throws inside them ends the program.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "qel/receipt_matching.h"
#include "support/counted_allocations.h"
#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

constexpr int kTerminated = 3;
constexpr int kCaught = 4;
constexpr int kReturned = 5;

// Calls `function`, and ends the process with what became of the call.
template <typename Function>
[[noreturn]] void exitWithOutcomeOf(const Function& function) {
  std::set_terminate([] { std::_Exit(kTerminated); });
  try {
    function();
  } catch (...) {
    std::_Exit(kCaught);
  }
  std::_Exit(kReturned);
}

// A renewal at a priced introductory offer: the event for which every record operation is called.
class TerminationDeathTest : public ::testing::Test {
 protected:
  TerminationDeathTest() {
    const QELInAppPurchaseItem trial =
        freeTrial(entryOf(kAutoRenewable, "monthly", kFebruary, "1000", "1000"));
    const QELInAppPurchaseItem renewal = introductoryOffer(
        withWebOrder(entryOf(kAutoRenewable, "monthly", kMarch, "2000", "1000"), "77"));
    makeMonthly(purchase, {trial, renewal});
    purchase.transaction.originalTransaction.emplace();
    purchase.product.introductoryPrice = PlainDiscount{decimal("1.99")};
  }

  // Allocations of one call of `function`.
  template <typename Function>
  static std::size_t allocationsOf(const Function& function) {
    const std::size_t before = allocationCount();
    function();
    return allocationCount() - before;
  }

  // Expects that `function` ends the program when any one of its allocations fails.
  template <typename Function>
  static void expectEndWhenAnyAllocationFails(const Function& function) {
    const std::size_t count = allocationsOf(function);
    ASSERT_GT(count, 0u);
    for (std::size_t k = 0; k < count; ++k) {
      const auto failAtK = [&function, k] {
        failAllocationAfter(k);
        function();
      };
      EXPECT_EXIT(exitWithOutcomeOf(failAtK), ::testing::ExitedWithCode(kTerminated), "") << k;
    }
  }

  Purchase purchase;
};

TEST_F(TerminationDeathTest, RecordOperationThatThrowsEndsTheProgram) {
  purchase.event();
  const std::set<std::string> operations(purchase.asked.begin(), purchase.asked.end());
  // All operations of the four records, those of the original transaction but its identifier aside.
  EXPECT_EQ(operations.size(), 17u);
  for (const std::string& operation : operations) {
    const auto throwAtOperation = [this, &operation] {
      purchase.asked.onNote = [&operation](const std::string& noted) {
        if (noted == operation) throw std::runtime_error(noted);
      };
      purchase.event();
    };
    EXPECT_EXIT(exitWithOutcomeOf(throwAtOperation), ::testing::ExitedWithCode(kTerminated), "")
        << operation;
  }
}

// Throws at each message.
class ThrowingMonitor : public DiagnosticsMonitor {
  void logWithLevel(int, int, std::string_view) override { throw std::runtime_error("no context"); }
  void logWithLevel(int, int, std::string_view, const DiagnosticContext&) override {
    throw std::runtime_error("one context");
  }
  void logWithLevel(int, int, std::string_view, const DiagnosticContext&,
                    const DiagnosticContext&) override {
    throw std::runtime_error("two contexts");
  }
};

TEST_F(TerminationDeathTest, MonitorThatThrowsEndsTheProgram) {
  const std::vector<QELInAppPurchaseItem> receiptsByContexts[] = {
      purchase.receipt, {}, {firstMonth(), firstMonth()}};
  for (const std::vector<QELInAppPurchaseItem>& receipt : receiptsByContexts) {
    const auto log = [this, &receipt] {
      QELMeasurement::setMonitor(std::make_shared<ThrowingMonitor>());
      purchase.receipt = receipt;
      purchase.event();
    };
    EXPECT_EXIT(exitWithOutcomeOf(log), ::testing::ExitedWithCode(kTerminated), "");
  }
}

TEST_F(TerminationDeathTest, AnyFailedAllocationOfAnEventEndsTheProgram) {
  const QELInAppPurchaseItems receipt = listOf(purchase.receipt);
  const auto buildEvent = [this, &receipt] {
    static_cast<void>(plainPurchaseEvent(&purchase.product, &purchase.transaction, receipt));
  };
  buildEvent();
  expectEndWhenAnyAllocationFails(buildEvent);
}

TEST_F(TerminationDeathTest, FailedAllocationOfAMatchEndsTheProgram) {
  const QELInAppPurchaseItems receipt = listOf(purchase.receipt);
  expectEndWhenAnyAllocationFails([&receipt] {
    static_cast<void>(QELMatchingInAppPurchaseItems(receipt, "monthly", std::nullopt));
  });
}

}  // namespace
}  // namespace qel::testing
