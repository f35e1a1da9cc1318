// Tries purchases: makes the records of a point of the space, builds its event, and holds the event
// and the diagnostics against the table of outcomes.

#ifndef QEL_TESTS_EXHAUSTIVE_PURCHASE_TRIAL_H_
#define QEL_TESTS_EXHAUSTIVE_PURCHASE_TRIAL_H_

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "outcome_table.h"
#include "purchase_space.h"
#include "qel/event_parameters.h"
#include "qel/receipt_item.h"
#include "recording_monitor.h"
#include "store_doubles.h"

namespace qel::testing {

// An entry as a point of the space and as a record.
struct ReceiptEntry {
  explicit ReceiptEntry(const Entry& entry);

  Entry point;
  QELInAppPurchaseItem record;
};

class PurchaseTrial {
 public:
  PurchaseTrial();

  // Puts these entries, which must outlive their use, into the receipt of `purchase`.
  void setReceipt(Purchase& purchase, std::initializer_list<const ReceiptEntry*> entries);

  // Builds the event of `purchase` with the receipt that was set last. Fails the test, with the
  // input and both outcomes, when the outcome is not the expected one.
  void tryOut(const Purchase& purchase);

  // False after a few failures: more of them would say nothing new.
  bool goesOn() const { return failures_ < 5; }

  std::uint64_t combinations() const { return combinations_; }
  // How often each row of the table applied.
  const std::vector<std::uint64_t>& rowCounts() const { return rowCounts_; }

 private:
  void makeRecords(const Purchase& purchase);

  ScopedRecordingMonitor monitor_;
  FakeDiscount offer_;
  FakeProduct product_;
  FakePayment payment_;
  FakeTransaction original_;
  FakeTransaction transaction_;
  Decimal price_;
  Decimal offerPrice_;
  std::vector<QELInAppPurchaseItemRef> receipt_;

  std::uint64_t combinations_ = 0;
  std::vector<std::uint64_t> rowCounts_;
  int failures_ = 0;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_EXHAUSTIVE_PURCHASE_TRIAL_H_
