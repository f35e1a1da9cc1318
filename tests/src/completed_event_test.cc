#include "completed_event.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <span>
#include <utility>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

constexpr std::array kRequired = {ParameterKey::kPrice, ParameterKey::kValue,
                                  ParameterKey::kCurrency, ParameterKey::kProductId};

EventParameters integersUnder(std::span<const ParameterKey> keys, std::int64_t integer) {
  EventParameters parameters;
  for (const ParameterKey key : keys) parameters.set(key, QELValue::initWithInt64(integer));
  return parameters;
}

TEST(CompletedEventTest, IsNothingWithoutValidatedParameters) {
  EXPECT_EQ(completedEvent(std::nullopt, std::nullopt), std::nullopt);
  EXPECT_EQ(completedEvent(std::nullopt, integersUnder(kRequired, 1)), std::nullopt);
}

TEST(CompletedEventTest, NeedsEachRequiredKeyAndNoOther) {
  for (unsigned present = 0; present < 16; ++present) {
    EventParameters validated = integersUnder(std::array{ParameterKey::kQuantity}, 2);
    for (unsigned i = 0; i < kRequired.size(); ++i) {
      if ((present >> i & 1) != 0) validated.set(kRequired[i], QELValue::initWithInt64(i));
    }
    EXPECT_EQ(completedEvent(std::move(validated), std::nullopt).has_value(), present == 15)
        << present;
  }
}

TEST(CompletedEventTest, TakesRequiredKeysFromTheDiscountToo) {
  const std::optional<EventParameters> event =
      completedEvent(integersUnder(std::span(kRequired).subspan(2), 1),
                     integersUnder(std::span(kRequired).first(2), 0));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->find(ParameterKey::kPrice)->int64Value(), 0);
  EXPECT_EQ(event->find(ParameterKey::kCurrency)->int64Value(), 1);
}

TEST(CompletedEventTest, TheDiscountWins) {
  const std::optional<EventParameters> event =
      completedEvent(integersUnder(kRequired, 1), integersUnder(std::span(kRequired).first(1), 2));
  ASSERT_TRUE(event.has_value());
  EXPECT_EQ(event->find(ParameterKey::kPrice)->int64Value(), 2);
  EXPECT_EQ(event->find(ParameterKey::kValue)->int64Value(), 1);
}

}  // namespace
}  // namespace qel::testing
