// A second reading of a line of purchases, and of what is to come of it.

#ifndef QEL_FUZZ_PURCHASE_JUDGE_H_
#define QEL_FUZZ_PURCHASE_JUDGE_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "decimal_judge.h"

namespace qel::testing {

using JudgedText = std::optional<std::string>;

struct JudgedMoment {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  friend bool operator==(const JudgedMoment&, const JudgedMoment&) = default;
};

struct JudgedEntry {
  JudgedText productId;
  JudgedText dateText;
  std::optional<std::int64_t> type;
  JudgedText webOrder;
  JudgedText transactionId;
  JudgedText originalId;
  bool isFreeTrial = false;
  bool isOffer = false;

  friend bool operator==(const JudgedEntry&, const JudgedEntry&) = default;
};

struct JudgedOffer {
  std::optional<JudgedReading> price;
  std::uint64_t mode = 0;
};

struct JudgedProduct {
  JudgedText identifier;
  std::optional<JudgedReading> price;
  JudgedText currency;
  JudgedText title;
  bool answersOffer = false;
  std::optional<JudgedOffer> offer;
};

struct JudgedTransaction {
  JudgedText identifier;
  JudgedText originalIdentifier;  // absent also without an original transaction
  std::optional<JudgedMoment> date;
  std::int64_t quantity = 0;  // 0 also without a payment
};

struct JudgedPurchase {
  JudgedText id;
  std::optional<JudgedProduct> product;
  std::optional<JudgedTransaction> transaction;
  std::vector<JudgedEntry> receipt;
  bool canHaveOffers = true;  // the platform knows discount records with both their operations
};

// The purchase that `line` gives; nothing when the line is to be rejected.
std::optional<JudgedPurchase> judgedPurchase(std::string_view line, bool ignoresUnknownKeys);

using JudgedValue = std::variant<std::int64_t, std::string>;

struct JudgedMessage {
  int code = 0;
  std::vector<JudgedValue> context;

  friend bool operator==(const JudgedMessage&, const JudgedMessage&) = default;
};

struct JudgedOutcome {
  std::optional<std::map<std::string, JudgedValue>> event;
  std::vector<JudgedMessage> messages;
};

JudgedOutcome judgedOutcome(const JudgedPurchase& purchase);

}  // namespace qel::testing

#endif  // QEL_FUZZ_PURCHASE_JUDGE_H_
