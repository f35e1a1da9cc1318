// The texts of the messages, as the tests expect them.

#ifndef QEL_TESTS_REFERENCE_MESSAGE_TEXTS_H_
#define QEL_TESTS_REFERENCE_MESSAGE_TEXTS_H_

#include <map>
#include <string>

namespace qel::testing {

// Returns the text of every message by its code. The component's own table is under test, so this
// is a second one.
inline const std::map<int, std::string>& messageTexts() {
  static const std::map<int, std::string> texts = {
      {40003, "Transaction ID cannot be nil or empty."},
      {40005, "Restore/repurchase of non-consumable item will be reported as invalid"},
      {40007,
       "Transaction with mismatched transaction ID and original transaction ID will be reported as "
       "consumable"},
      {40008, "Transaction of auto-renewable subscription will be reported"},
      {40009, "Transaction of free-trial auto-renewable subscription will be reported"},
      {40010, "Transaction of auto-renewable subscription renewal will be reported"},
      {40011, "Repurchase of free-trial auto-renewable subscription will be reported as invalid"},
      {40018, "Transaction of introductory offer will be reported"},
      {40020, "Transaction missing in receipt will be reported as invalid"},
      {40021, "Transaction of consumable item will be reported"},
      {40022, "Transaction of non-consumable item will be reported"},
      {40023, "Subscription transaction missing in receipt will be reported as invalid"},
      {40024,
       "Subscription transaction with duplicate transaction date will be reported as invalid"},
      {40025, "Transaction of non-renewing subscription will be reported"},
      {40026, "IAP Transaction cannot be created from nil product"},
      {40027, "IAP Transaction cannot be created from empty or nil product ID"},
      {40028, "IAP Transaction cannot be created from nil transaction"},
  };
  return texts;
}

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_MESSAGE_TEXTS_H_
