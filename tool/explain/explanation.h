// Why a purchase came out as it did.
//
// Computed from the event, the diagnostics and the exported matching only. It contains no second
// copy of the library's rules: what was decided is read from these, and the inputs that a
// decision rests on are shown with it.

#ifndef QEL_TOOL_EXPLAIN_EXPLANATION_H_
#define QEL_TOOL_EXPLAIN_EXPLANATION_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "explain/date_problem.h"
#include "explain/prose.h"
#include "explain/purchase_facts.h"
#include "qel/instant.h"

namespace qel::tool {

enum class Outcome : std::uint8_t {
  kNewSubscription,
  kFreeTrial,
  kConversion,
  kIntroductoryOffer,
  kRenewal,
  kNonRenewing,
  kConsumable,
  kNonConsumable,
  kOneOff,
  kInvalid,
  kNoEvent,
};
inline constexpr std::array<std::string_view, 11> kOutcomeNames = {
    "New subscription", "Free trial",
    "Conversion",       "Introductory offer",
    "Renewal",          "Non-renewing subscription",
    "Consumable",       "Non-consumable",
    "One-off purchase", "Invalid",
    "No event"};
constexpr std::string_view nameOf(Outcome outcome) {
  return kOutcomeNames[static_cast<std::size_t>(outcome)];
}

// What an entry has to do with the outcome.
enum class Role : std::uint8_t {
  kNone,
  kReported,   // the purchase is reported as this entry
  kDeciding,   // decides between conversion and renewal
  kDuplicate,  // one of several at the transaction's date
  kLatest,     // decides the kind of product
};

struct TimelineEntry {
  const QELInAppPurchaseItem& item;

  // The date, or why it cannot be read.
  std::optional<Instant> date = std::nullopt;
  DateProblem problem = DateProblem::kOther;

  Role role = Role::kNone;
  // The role in words; empty if it is kNone.
  Prose note = Prose();
};

// A decision of the library.
struct Decision {
  // 0 for a decision that has no code.
  int code = 0;
  std::string message;
  std::vector<Prose> facts;
};

// A key of the event.
struct EventKey {
  std::string_view key;
  // An integer, or a text of the input.
  Prose value;
  // The value as people write it, "4.99 EUR"; empty if that says no more than the value.
  Prose readable;
  // Where the value comes from.
  Prose origin;
};

struct Explanation {
  PurchaseFacts facts;

  Outcome outcome = Outcome::kNoEvent;
  // The rest of the sentence that the outcome's name begins: "Conversion" " of a free trial".
  Prose sentence;

  // The entries of the product, as the matching orders them: undated ones first.
  std::vector<TimelineEntry> timeline = {};
  // The other entries of the receipt, in its order.
  std::vector<TimelineEntry> others = {};

  std::vector<Decision> decisions = {};
  std::vector<EventKey> keys = {};
  // The texts that "_did" is the digest of, joined. Empty if it is not a digest.
  std::vector<std::string> dedupeTexts = {};

  // Where the input looks wrong.
  std::vector<Prose> hints = {};
  // Where a rule leads to a result that may surprise.
  std::vector<Prose> surprises = {};
};

// Explains `purchase`, which must outlive the explanation. Installs a monitor meanwhile: see
// factsOf().
Explanation explain(const Purchase& purchase);

// The parts of explain().
Outcome outcomeOf(const PurchaseFacts& facts);
Prose sentenceOf(Outcome outcome, const PurchaseFacts& facts);
std::vector<Decision> decisionsOf(const PurchaseFacts& facts);
std::vector<EventKey> eventKeysOf(const PurchaseFacts& facts,
                                  const std::vector<std::string>& dedupeTexts);
std::vector<std::string> dedupeTextsOf(const PurchaseFacts& facts);
std::vector<Prose> hintsOf(const PurchaseFacts& facts);
std::vector<Prose> surprisesOf(const PurchaseFacts& facts);

// Returns "1 x 4.99 EUR" of the product and the payment, as the purchase has them.
Prose priceAndQuantityText(const PurchaseFacts& facts);

// Returns "3 entries, 2 of this product".
std::string receiptSizeText(const PurchaseFacts& facts);

// Returns what to say beside the transaction's date in a list of entries without one at this date.
std::string_view transactionDateText(const PurchaseFacts& facts);

// Returns whether the event is of an introductory offer whose price cannot be read.
bool isAtFullPrice(const PurchaseFacts& facts);

// Returns the date of an entry, or std::nullopt if it cannot be read.
std::optional<Instant> dateOf(const QELInAppPurchaseItem& item);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_EXPLANATION_H_
