#include "subscription_flags.h"

#include <algorithm>
#include <iterator>

#include "qel/text.h"

namespace qel {

bool isFirstPurchase(const QELInAppPurchaseItem& item) {
  return isEqual(item.originalTransactionID, item.transactionID);
}

void QELMaybeAddSubscriptionParameters(EventParameters& parameters, QELInAppPurchaseItemsView items,
                                       const QELInAppPurchaseItem& item) {
  if (items.empty()) return;
  if (isFirstPurchase(item)) return;

  // Equal entries count as one. Identity is tested first, because it is cheaper and usually
  // decides.
  const auto position =
      std::find_if(items.begin(), items.end(), [&item](const QELInAppPurchaseItem& candidate) {
        return &candidate == &item || candidate == item;
      });
  const bool hasPrevious = position != items.begin() && position != items.end();
  const bool followsFreeTrial = hasPrevious && std::prev(position)->get().isFreeTrial;
  parameters.setFlag(followsFreeTrial ? ParameterKey::kSubConvert : ParameterKey::kSubRenew);
}

}  // namespace qel
