#include "support/counting_date_formatter.h"

#include <utility>

#include "qel/date_formatter.h"
#include "qel/rfc3339.h"

namespace qel {
namespace testing {
namespace {

std::string nameOf(int number) { return "formatter" + std::to_string(number); }

void note(std::string operation) {
  if (formatterCounts().asked != nullptr) formatterCounts().asked->note(std::move(operation));
}

}  // namespace

std::string formatterInit(int number) { return nameOf(number) + ".init"; }

std::string formatterParse(int number, const OptionalText& text) {
  return nameOf(number) + ".dateFromString " + std::string(text.value_or("(absent)"));
}

std::string formatterEnd(int number) { return nameOf(number) + ".end"; }

FormatterCounts& formatterCounts() {
  static FormatterCounts counts;
  return counts;
}

}  // namespace testing

struct DateFormatter::State {
  int number;
};

DateFormatter::DateFormatter() : state_(new State{++testing::formatterCounts().created}) {
  ++testing::formatterCounts().living;
  testing::note(testing::formatterInit(state_->number));
}

DateFormatter::~DateFormatter() {
  testing::note(testing::formatterEnd(state_->number));
  --testing::formatterCounts().living;
  delete state_;
}

std::optional<Instant> DateFormatter::dateFromString(const OptionalText& text) const {
  auto& parsed = testing::formatterCounts().parsed.emplace_back();
  if (text.has_value()) parsed = *text;
  testing::note(testing::formatterParse(state_->number, text));
  return text.has_value() ? parseRfc3339(*text) : std::nullopt;
}

}  // namespace qel
