#include "completed_event.h"

#include <algorithm>
#include <array>

namespace qel {
namespace {

bool hasRequiredKeys(const EventParameters& parameters) {
  constexpr std::array kRequired = {ParameterKey::kPrice, ParameterKey::kValue,
                                    ParameterKey::kCurrency, ParameterKey::kProductId};
  return std::all_of(kRequired.begin(), kRequired.end(),
                     [&parameters](ParameterKey key) { return parameters.contains(key); });
}

}  // namespace

std::optional<EventParameters> completedEvent(std::optional<EventParameters>&& validated,
                                              const std::optional<EventParameters>& discount) {
  if (!validated.has_value()) return std::nullopt;
  if (discount.has_value()) validated->merge(*discount);
  if (!hasRequiredKeys(*validated)) return std::nullopt;
  return validated;
}

}  // namespace qel
