#include "block_processor.h"

#include <utf8/checked.h>

#include <iterator>
#include <new>
#include <optional>

#include "byte_order_mark.h"
#include "diagnostics_collector.h"
#include "excerpt.h"
#include "qel/rfc3339.h"
#include "unreadable_line.h"

namespace qel::tool {
namespace {

// Bytes of a line that is too long in which its id is looked for.
constexpr std::size_t kSearchedSize = std::size_t{64} * 1024;

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

std::string asUtf8(const std::string& text) {
  std::string valid;
  utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(valid));
  return valid;
}

std::string entryPointer(std::size_t index, const char* key) {
  return "/receipt/" + std::to_string(index) + "/" + key;
}

void count(Finding& finding, const LinePlace& place, auto describeFirst) {
  if (++finding.count > 1) return;
  finding.firstPlace = place;
  finding.first = describeFirst();
}

// Counts the entries that usually mean something else than the library takes them for.
void countMisleadingEntries(const QELInAppPurchaseItems& receipt, const LinePlace& place,
                            Tally& tally) {
  for (std::size_t i = 0; i < receipt.size(); ++i) {
    const QELInAppPurchaseItem& entry = receipt[i];
    const std::optional<std::string>& date = entry.purchaseDateIA5String;
    if (date.has_value() && !parseRfc3339(*date).has_value()) {
      count(tally.unreadableDates, place, [&] {
        return entryPointer(i, "purchaseDateIA5String") + ": found " + foundText(*date);
      });
    }
    if (entry.webOrderLineItemID == "0") {
      count(tally.zeroLineItems, place, [&] { return entryPointer(i, "webOrderLineItemID"); });
    }
  }
}

}  // namespace

BlockProcessor::BlockProcessor(const EventsOptions& options)
    : options_(options),
      reader_(options.ignoresUnknownKeys ? UnknownKeys::kAreIgnored : UnknownKeys::kAreErrors) {
  if (options.inputs.size() == 1) return;
  for (const std::string& path : options.inputs) inputNames_.push_back(asUtf8(path));
}

void BlockProcessor::process(const InputBlock& block, std::uint64_t maxRejected,
                             BlockResults& results) {
  results.output.clear();
  results.tally = Tally();
  LinePlace place = {.input = block.input, .line = block.lines.firstLineNumber};
  for (std::string_view line : block.lines.lines) {
    if (place.line == 1) line = withoutByteOrderMark(line);
    if (!isBlank(line)) processLine(line, place, block.lines.isCut, results);
    if (results.tally.rejected.count > maxRejected) return;
    ++place.line;
  }
}

void BlockProcessor::processLine(std::string_view line, const LinePlace& place, bool isCut,
                                 BlockResults& results) {
  const std::size_t sizeBefore = results.output.size();
  try {
    if (line.size() > options_.maxLine) {
      throw JsonError{{},
                      "expected a line of at most " + std::to_string(options_.maxLine) +
                          " bytes (--max-line), found a longer one"};
    }
    if (isCut) throw std::bad_alloc();
    const Purchase& purchase = reader_.read(line);
    appendEvent(purchase, results);
    countMisleadingEntries(purchase.receipt, place, results.tally);
    ++results.tally.read;
  } catch (const JsonError& error) {
    const bool isRead = line.size() <= options_.maxLine;
    reject(isRead ? line : line.substr(0, std::min(kSearchedSize, options_.maxLine)), place, error,
           results);
  } catch (const std::bad_alloc&) {
    results.output.truncate(sizeBefore);
    reject(line.substr(0, kSearchedSize), place,
           {{}, "expected a line that fits into memory; --max-line rejects longer ones"}, results);
  }
}

void BlockProcessor::appendEvent(const Purchase& purchase, BlockResults& results) const {
  const DiagnosticsCollector::Collection collection(results.diagnostics,
                                                    options_.resultForm.surrogates);
  const std::optional<EventParameters> event = plainPurchaseEvent(
      purchase.product.has_value() ? &*purchase.product : nullptr,
      purchase.transaction.has_value() ? &*purchase.transaction : nullptr, purchase.receipt);
  appendResult(purchase.id, event, results.diagnostics.text(), options_.resultForm, results.output);
}

void BlockProcessor::reject(std::string_view line, const LinePlace& place, const JsonError& error,
                            BlockResults& results) const {
  const OptionalText file =
      inputNames_.empty() ? OptionalText() : OptionalText(inputNames_[place.input]);
  appendError(idOfUnreadableLine(line), {file, place.line}, error, options_.resultForm.surrogates,
              results.output);
  count(results.tally.rejected, place,
        [&error] { return (error.pointer.empty() ? "" : error.pointer + ": ") + error.message; });
}

}  // namespace qel::tool
