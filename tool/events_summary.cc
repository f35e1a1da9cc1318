#include "events_summary.h"

#include "input_file.h"
#include "messages.h"

namespace qel::tool {
namespace {

void reportEntries(const Finding& finding, const char* what,
                   const std::vector<std::string>& inputs) {
  if (finding.count == 0) return;
  report(std::to_string(finding.count) + " receipt " +
         (finding.count == 1 ? "entry has " : "entries have ") + what +
         "; the first: " + textOf(finding.firstPlace, inputs) + ", " + finding.first);
}

}  // namespace

std::string textOf(const LinePlace& place, const std::vector<std::string>& inputs) {
  return "line " + std::to_string(place.line) + " of " + inputName(inputs[place.input]);
}

void reportSummary(const Tally& tally, const std::vector<std::string>& inputs) {
  reportEntries(tally.unreadableDates, "a purchase date that cannot be read", inputs);
  reportEntries(tally.zeroLineItems, "webOrderLineItemID 0, which counts as a subscription's",
                inputs);
  const Finding& rejected = tally.rejected;
  if (rejected.count > 0) {
    report("first rejected line: " + textOf(rejected.firstPlace, inputs) + ", " + rejected.first);
  }
  report(counted(tally.read, "purchase") + " read, " + counted(rejected.count, "line") +
         " rejected");
}

}  // namespace qel::tool
