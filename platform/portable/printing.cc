#include <array>
#include <chrono>
#include <cinttypes>
#include <cstdio>

#include "qel/instant.h"
#include "qel/receipt_item.h"

namespace qel {
namespace {

// std::to_string would do the same, but its table of digits becomes a symbol of a shared library.
std::string inDecimal(std::int64_t number) {
  std::array<char, 24> text;
  std::snprintf(text.data(), text.size(), "%" PRId64, number);
  return text.data();
}

// Appends `name: value` to the fields in `text`.
void appendField(std::string& text, const char* name, const OptionalText& value) {
  if (!value.has_value()) return;
  if (text.size() > 1) text += ", ";
  text.append(name).append(": ").append(*value);
}

void appendFlag(std::string& text, const char* name, bool isSet) {
  if (!isSet) return;
  if (text.size() > 1) text += ", ";
  text += name;
}

}  // namespace

std::string toString(const Instant& instant) {
  constexpr std::chrono::sys_seconds kYear0 = std::chrono::sys_days(std::chrono::year(0) / 1 / 1);
  constexpr std::chrono::sys_seconds kYear10000 =
      std::chrono::sys_days(std::chrono::year(10000) / 1 / 1);
  const auto second = instant.sysTime<std::chrono::seconds>();
  if (second < kYear0 || second >= kYear10000) return inDecimal(instant.seconds()).append(" s");

  const auto day = std::chrono::floor<std::chrono::days>(second);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(second - day);
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  std::string result = text.data();
  if (instant.nanoseconds() != 0) {
    std::snprintf(text.data(), text.size(), ".%09d", static_cast<int>(instant.nanoseconds()));
    result += text.data();
  }
  return result.append("Z");
}

std::string toString(const QELInAppPurchaseItem& item) {
  std::string text = "{";
  appendField(text, "productID", item.productID);
  appendField(text, "transactionID", item.transactionID);
  appendField(text, "originalTransactionID", item.originalTransactionID);
  appendField(text, "webOrderLineItemID", item.webOrderLineItemID);
  appendField(text, "purchaseDateIA5String", item.purchaseDateIA5String);
  if (item.purchaseType.has_value()) {
    appendField(text, "purchaseType", inDecimal(*item.purchaseType));
  }
  appendFlag(text, "isFreeTrial", item.isFreeTrial);
  appendFlag(text, "isIntroductoryOffer", item.isIntroductoryOffer);
  return text.append("}");
}

}  // namespace qel
