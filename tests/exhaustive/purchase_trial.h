// Tries purchases: makes plain records of a purchase, builds its event, and compares the event and
// the diagnostics with the oracle.

#ifndef QEL_TESTS_EXHAUSTIVE_PURCHASE_TRIAL_H_
#define QEL_TESTS_EXHAUSTIVE_PURCHASE_TRIAL_H_

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "qel/plain_records.h"
#include "qel/receipt_item.h"
#include "reference/event_oracle.h"
#include "support/recording_monitor.h"

namespace qel::testing {

// An entry as the oracle and as the component take it.
struct ReceiptEntry {
  explicit ReceiptEntry(const OracleEntry& entry);

  OracleEntry values;
  QELInAppPurchaseItem record;
};

class PurchaseTrial {
 public:
  // Puts these entries, which must outlive their use, into the receipt of `purchase`.
  void setReceipt(OraclePurchase& purchase, std::initializer_list<const ReceiptEntry*> entries);

  // Builds the event of `purchase` with the receipt that was set last. Fails the test, with the
  // input and both outcomes, when the outcome is not the expected one. Returns the expected one.
  OracleOutcome tryOut(const OraclePurchase& purchase);

  // Returns false after a few failures: more of them would say nothing new.
  bool goesOn() const { return failures_ < 5; }

  std::uint64_t combinations() const { return combinations_; }

 private:
  void makeRecords(const OraclePurchase& purchase);

  ScopedRecordingMonitor monitor_;
  PlainProduct product_;
  PlainTransaction transaction_;
  std::vector<QELInAppPurchaseItemRef> receipt_;

  std::uint64_t combinations_ = 0;
  int failures_ = 0;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_EXHAUSTIVE_PURCHASE_TRIAL_H_
