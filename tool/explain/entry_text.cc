#include "explain/entry_text.h"

#include <array>
#include <string_view>

#include "explain/time_text.h"
#include "qel/rfc3339.h"

namespace qel::tool {
namespace {

// Returns the type that counts: the low 32 bits.
std::int32_t typeOf(const QELInAppPurchaseItem& item) {
  return static_cast<std::int32_t>(item.purchaseType.value_or(0));
}

// The meanings of the types from 0 on.
constexpr std::array<std::string_view, 4> kMeanings = {
    "non-consumable", "consumable", "non-renewing subscription", "auto-renewable subscription"};

bool hasMeaning(std::int32_t type) {
  return type >= 0 && static_cast<std::size_t>(type) < kMeanings.size();
}

}  // namespace

EntryKind kindOf(const QELInAppPurchaseItem& item) {
  if (item.isFreeTrial) return EntryKind::kFreeTrial;
  return item.isIntroductoryOffer ? EntryKind::kIntroductoryOffer : EntryKind::kPaid;
}

std::string kindText(const QELInAppPurchaseItem& item) {
  if (item.isFreeTrial && item.isIntroductoryOffer) return "free trial, offer";
  if (item.isFreeTrial) return "free trial";
  if (item.isIntroductoryOffer) return "introductory offer";
  switch (typeOf(item)) {
    case 0:
      return "non-consumable";
    case 1:
      return "consumable";
    case 2:
      return "non-renewing";
    case 3:
      return "paid period";
    default:
      return "type " + std::to_string(typeOf(item));
  }
}

std::string typeText(const QELInAppPurchaseItem& item) {
  const std::int32_t type = typeOf(item);
  const std::string meaning =
      hasMeaning(type) ? " (" + std::string(kMeanings[static_cast<std::size_t>(type)]) + ")"
                       : std::string(" (no meaning)");
  if (!item.purchaseType.has_value()) return "no type, which counts as type 0" + meaning;
  if (*item.purchaseType != type) {
    return "type " + std::to_string(*item.purchaseType) + ", which counts as type " +
           std::to_string(type) + meaning;
  }
  return "type " + std::to_string(type) + meaning;
}

Prose identifiersText(const QELInAppPurchaseItem& item) {
  if (isEqual(item.transactionID, item.originalTransactionID)) {
    return Prose(InputText{item.transactionID});
  }
  return Prose(InputText{item.transactionID}, " of ", InputText{item.originalTransactionID});
}

Prose nameOf(const QELInAppPurchaseItem& item) {
  if (!isEmpty(item.transactionID)) return Prose(InputText{item.transactionID});
  const std::optional<Instant> date = item.purchaseDateIA5String.has_value()
                                          ? parseRfc3339(*item.purchaseDateIA5String)
                                          : std::nullopt;
  if (!date.has_value()) return Prose("without an identifier or a readable date");
  return Prose("without an identifier, of ", dateText(*date));
}

}  // namespace qel::tool
