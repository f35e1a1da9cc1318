// The oracle for events: computes the event and the messages of a purchase from plain values.
// It shares no code with the component.

#ifndef QEL_TESTS_REFERENCE_EVENT_ORACLE_H_
#define QEL_TESTS_REFERENCE_EVENT_ORACLE_H_

#include <boost/container/flat_map.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "decimal_oracle.h"

namespace qel::testing {

using OracleText = std::optional<std::string>;

struct OracleInstant {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  friend bool operator==(const OracleInstant&, const OracleInstant&) = default;
};

struct OracleEntry {
  OracleText productId;
  OracleText dateText;
  std::optional<std::int64_t> type;
  OracleText webOrder;
  OracleText transactionId;
  OracleText originalId;
  bool isFreeTrial = false;
  bool isOffer = false;

  friend bool operator==(const OracleEntry&, const OracleEntry&) = default;
};

struct OracleOffer {
  std::optional<OracleReading> price;
  std::uint64_t mode = 0;
};

struct OracleProduct {
  OracleText identifier;
  std::optional<OracleReading> price;
  OracleText currency;
  OracleText title;
  bool answersOffer = false;
  std::optional<OracleOffer> offer;
};

struct OracleOriginal {
  OracleText identifier;
};

struct OracleTransaction {
  OracleText identifier;
  std::optional<OracleOriginal> original;
  std::optional<OracleInstant> date;
  std::optional<std::int64_t> quantity;  // absent without a payment
};

// What the platform answers about discount records.
struct OraclePlatform {
  bool hasDiscountClass = true;
  bool discountsAnswerPrice = true;
  bool discountsAnswerPaymentMode = true;

  bool canHaveOffers() const {
    return hasDiscountClass && discountsAnswerPrice && discountsAnswerPaymentMode;
  }
};

struct OraclePurchase {
  OracleText id;
  std::optional<OracleProduct> product;
  std::optional<OracleTransaction> transaction;
  std::vector<OracleEntry> receipt;
  OraclePlatform platform;
};

using OracleValue = std::variant<std::int64_t, std::string>;

struct OracleMessage {
  int code = 0;
  std::vector<OracleValue> context;

  friend bool operator==(const OracleMessage&, const OracleMessage&) = default;
};

// The keys are literals.
using OracleEvent = boost::container::flat_map<std::string_view, OracleValue>;

struct OracleOutcome {
  std::optional<OracleEvent> event;
  std::vector<OracleMessage> messages;
};

// Returns the outcome of `purchase`. Remembers the dates, amounts and identifiers that it has
// computed, so that it is fast enough for an exhaustive test.
OracleOutcome oracleOutcome(const OraclePurchase& purchase);

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_EVENT_ORACLE_H_
