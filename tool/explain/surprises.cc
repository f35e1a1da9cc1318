// Where a rule leads to a result that may surprise: which rule, and why it is so.

#include <utility>

#include "explain/entry_text.h"
#include "explain/explanation.h"
#include "explain/time_text.h"

namespace qel::tool {
namespace {

bool isReportedAsSubscription(const PurchaseFacts& facts) {
  return facts.hasCode(DiagnosticCode::kAutoRenewable) ||
         facts.hasCode(DiagnosticCode::kDuplicateTransactionDate);
}

// Neither the type nor a web order line item makes the entry one of a subscription.
bool isOneOff(const QELInAppPurchaseItem& item) {
  const auto type = static_cast<std::int32_t>(item.purchaseType.value_or(0));
  return type != 2 && type != 3 && !item.webOrderLineItemID.has_value();
}

void explainSeveralOneOffPurchases(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool applies = isReportedAsSubscription(facts) && facts.ofProduct.size() > 1 &&
                       isOneOff(facts.ofProduct.back());
  if (!applies) return;
  Prose text(
      "A product with several entries counts as a subscription, also if it is a ",
      kindText(facts.ofProduct.back()),
      ": the store removes a consumable from the receipt when its transaction is finished, so "
      "several entries are usually those of a subscription.");
  if (facts.reported == nullptr && facts.hasCode(DiagnosticCode::kAutoRenewable)) {
    text.append(
        " No entry is at the transaction's date, so there is none to take identifiers "
        "from: the deduplication identifier is -1, and it counts as a renewal.");
  }
  surprises.push_back(std::move(text));
}

// A consumable that the receipt does not have yet takes the identifier of the one before it.
void explainOnlyEntry(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool isOneOffPurchase =
      facts.reported != nullptr && facts.atDate.empty() && facts.ofProduct.size() == 1 &&
      facts.classified.has_value() && facts.classified->find(ParameterKey::kDedupeId) != nullptr &&
      !facts.isMarked(ParameterKey::kSubscription) && !facts.isMarked(ParameterKey::kSubRenew);
  const std::optional<Instant> date = facts.transactionDate();
  if (!isOneOffPurchase || !date.has_value()) return;
  const std::optional<Instant> entryDate = dateOf(*facts.reported);
  surprises.emplace_back(
      "The only entry of the product, ", nameOf(*facts.reported),
      entryDate.has_value() ? ", is of " + dateText(*entryDate) + " UTC"
                            : std::string(", has no date that can be read"),
      "; the transaction is of ", dateText(*date),
      " UTC. The date of an only entry is not compared, so the purchase takes its deduplication "
      "identifier. If this is another purchase, it looks like a duplicate of that one.");
}

void explainRepeatedTrial(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  if (!facts.hasCode(DiagnosticCode::kRepurchasedFreeTrial)) return;
  surprises.emplace_back(
      "A free trial is invalid if its transaction continues another one: customers get one trial, "
      "so this looks like a restore. A further trial that the store grants a subscriber is "
      "invalid, too.");
}

// Returns an earlier entry of another product in the same subscription, or null.
const QELInAppPurchaseItem* earlierPlan(const PurchaseFacts& facts) {
  const std::optional<Instant> date = dateOf(*facts.reported);
  const QELInAppPurchaseItem* found = nullptr;
  for (const QELInAppPurchaseItem& item : facts.purchase.receipt) {
    const std::optional<Instant> itemDate = dateOf(item);
    const bool isSamePlan = isEqual(item.productID, facts.productIdentifier());
    const bool isEarlier =
        !isSamePlan && itemDate.has_value() && date.has_value() && *itemDate < *date &&
        isEqual(item.originalTransactionID, facts.reported->originalTransactionID);
    if (isEarlier && (found == nullptr || *dateOf(*found) < *itemDate)) found = &item;
  }
  return found;
}

void explainRenewal(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool isFirstOfProduct = facts.isMarked(ParameterKey::kSubRenew) &&
                                facts.reported != nullptr && facts.previous == nullptr;
  if (!isFirstOfProduct) return;
  if (const QELInAppPurchaseItem* const earlier = earlierPlan(facts)) {
    Prose text("This is the first entry of ", InputText{facts.productIdentifier()},
               ", and still a renewal: it continues the subscription of ",
               InputText{earlier->productID},
               ", and only entries of the same product can make a conversion.");
    if (earlier->isFreeTrial) text.append(" So a trial of the other plan does not count.");
    surprises.push_back(std::move(text));
    return;
  }
  surprises.emplace_back(
      "A later purchase is a renewal if the receipt has no entry of the product before it. If the "
      "period before it was a free trial, the receipt has lost it, and this should be a "
      "conversion.");
}

void explainUndatedPrevious(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool isLater =
      facts.isMarked(ParameterKey::kSubConvert) || facts.isMarked(ParameterKey::kSubRenew);
  if (facts.previous == nullptr || !isLater || dateOf(*facts.previous).has_value()) return;
  surprises.emplace_back("Entry ", nameOf(*facts.previous),
                         " has no date that can be read. Such entries count as the earliest, so it "
                         "decides here, although it may be a later purchase.");
}

void explainUnreadableOffer(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  if (!isAtFullPrice(facts)) return;
  surprises.emplace_back(
      "The entry is an introductory offer, and the amounts are the product's full price: only the "
      "product record has the offer's price, and it cannot be read. What the customer paid is not "
      "known.");
}

void explainRenewalCode(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool applies = facts.hasCode(DiagnosticCode::kAutoRenewableRenewal) &&
                       !facts.isMarked(ParameterKey::kSubRenew);
  if (!applies) return;
  surprises.emplace_back(
      "Code 40010 says renewal for every valid free trial and introductory "
      "offer. This purchase is no renewal: it has no sub_renew.");
}

void explainTrialWithoutFlag(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool applies =
      facts.isMarked(ParameterKey::kFreeTrial) && !facts.isMarked(ParameterKey::kInvalid) &&
      !facts.isMarked(ParameterKey::kSubscription) && !facts.isMarked(ParameterKey::kSubConvert) &&
      !facts.isMarked(ParameterKey::kSubRenew);
  if (!applies) return;
  surprises.emplace_back(
      "The trial's two identifiers differ, so it is no first purchase; and a "
      "free trial is neither a conversion nor a renewal.");
}

void explainTrialAsLaterPurchase(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  const bool isConversion = facts.isMarked(ParameterKey::kSubConvert);
  const bool applies = facts.isMarked(ParameterKey::kFreeTrial) &&
                       (isConversion || facts.isMarked(ParameterKey::kSubRenew));
  if (!applies) return;
  surprises.emplace_back(
      "The trial is an introductory offer, too. Offers count as conversions or renewals, so it "
      "has ",
      isConversion ? "sub_convert" : "sub_renew", ", although nothing is paid.");
}

void explainMismatchedCode(const PurchaseFacts& facts, std::vector<Prose>& surprises) {
  if (!facts.hasCode(DiagnosticCode::kMismatchedTransactionIds)) return;
  surprises.emplace_back(
      "Code 40007 says consumable for an entry of any type, and the event has no flag for it. It "
      "has no _did either, so a second report of this purchase is not recognized as one.");
}

}  // namespace

std::vector<Prose> surprisesOf(const PurchaseFacts& facts) {
  std::vector<Prose> surprises;
  explainSeveralOneOffPurchases(facts, surprises);
  explainOnlyEntry(facts, surprises);
  explainRepeatedTrial(facts, surprises);
  explainRenewal(facts, surprises);
  explainUndatedPrevious(facts, surprises);
  explainUnreadableOffer(facts, surprises);
  explainTrialWithoutFlag(facts, surprises);
  explainTrialAsLaterPurchase(facts, surprises);
  explainMismatchedCode(facts, surprises);
  explainRenewalCode(facts, surprises);
  return surprises;
}

}  // namespace qel::tool
