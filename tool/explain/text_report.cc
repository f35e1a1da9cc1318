#include "explain/text_report.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <vector>

#include "explain/display_text.h"
#include "explain/entry_text.h"
#include "explain/text_wrap.h"
#include "explain/time_text.h"
#include "explain/timeline_rows.h"

namespace qel::tool {
namespace {

// Room for one text of the input, so that its line has room for a mark and an indent.
constexpr std::size_t kMostInput = 64;

// --- Colour ---

constexpr std::string_view kBold = "\033[1m";
constexpr std::string_view kDim = "\033[2m";
constexpr std::string_view kReset = "\033[0m";

std::string_view colorOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kInvalid:
    case Outcome::kNoEvent:
      return "\033[1;31m";
    case Outcome::kFreeTrial:
    case Outcome::kIntroductoryOffer:
      return "\033[1;33m";
    default:
      return "\033[1;32m";
  }
}

std::string painted(std::string_view text, std::string_view code, TextColor color) {
  if (color == TextColor::kNone) return std::string(text);
  return std::string(code) + std::string(text) + std::string(kReset);
}

// --- Texts of the input ---

// Keeps a text from right to left from reordering what is beside it.
std::string isolated(std::string text) {
  if (!hasRightToLeft(text)) return text;
  // FIRST STRONG ISOLATE and POP DIRECTIONAL ISOLATE, in UTF-8.
  constexpr std::string_view kIsolates = "\xE2\x81\xA8\xE2\x81\xA9";
  return text.insert(0, kIsolates.substr(0, 3)).append(kIsolates.substr(3));
}

std::string shown(std::string_view input, std::size_t mostColumns = kMostInput) {
  return isolated(displayText(input, mostColumns));
}

// Returns a text of the input for a sentence, in quotes if it could be taken for our own words.
// Shows up to kMostInput columns as a whole. Shortens a longer text to `mostColumns`.
std::string inQuotes(std::string_view input, std::size_t mostColumns = kMostInput) {
  const bool isPlain = std::all_of(input.begin(), input.end(), [](unsigned char character) {
    return std::isalnum(character) != 0 || character == '.' || character == '-' ||
           character == '_' || character == ':';
  });
  const std::size_t room = isLongerThan(input, kMostInput) ? mostColumns : kMostInput;
  return isPlain ? shown(input, room) : "\"" + shown(input, room) + "\"";
}

// Returns a sentence in one line.
std::string plain(const Prose& text) {
  std::string line;
  for (const Span& span : text.spans()) line += span.isInput ? inQuotes(span.text) : span.text;
  return line;
}

// --- Layout ---

std::string padded(std::string text, std::size_t columns) {
  const std::size_t width = columnsOf(text);
  if (width < columns) text.append(columns - width, ' ');
  return text;
}

// Returns the words of a sentence for lines of `columns` columns. A text of the input is one word,
// with the punctuation beside it.
std::vector<std::string> wordsOf(const Prose& text, std::size_t columns) {
  // Room for quotes and a comma.
  constexpr std::size_t kPunctuation = 3;
  const std::size_t mostInput = std::min(columns - kPunctuation, kMostInput);
  std::vector<std::string> words(1);
  for (const Span& span : text.spans()) {
    if (span.isInput) {
      words.back() += inQuotes(span.text, mostInput);
      continue;
    }
    for (const char character : span.text) {
      if (character != ' ') {
        words.back() += character;
      } else if (!words.back().empty()) {
        words.emplace_back();
      }
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

// Appends a sentence that begins at column `start`, and goes on at column `indent`.
void appendWrapped(const Prose& text, std::size_t start, std::size_t indent, std::string& out) {
  qel::tool::appendWrapped(wordsOf(text, kLineColumns - indent), start, indent, out);
}

// --- The parts of a report ---

void appendHeading(std::string_view heading, TextColor color, std::string& out) {
  out += "\n" + painted(heading, kBold, color) + "\n";
}

void appendTitle(const Explanation& explanation, std::uint64_t lineNumber, TextColor color,
                 std::string& out) {
  const PurchaseFacts& facts = explanation.facts;
  const OptionalText& id = facts.purchase.id;
  const std::string line = "(line " + std::to_string(lineNumber) + ")";
  const std::size_t room = kLineColumns - std::string_view("Purchase  ").size() - line.size();
  out += painted("Purchase " + (id.has_value() ? shown(*id, room) + " " : "") + line, kBold, color);
  out += '\n';
  if (facts.purchase.product.has_value()) {
    const OptionalText title = facts.purchase.product->localizedTitle;
    Prose text;
    if (title.has_value()) text.append(Prose(InputText{title}, ", "));
    text.append(
        Prose("product ", InputText{facts.productIdentifier()}, ", ", priceAndQuantityText(facts)));
    appendWrapped(text, 0, 0, out);
  }
  if (facts.purchase.transaction.has_value()) {
    Prose text("Transaction ", InputText{facts.transactionIdentifier()});
    if (const OptionalText original = facts.originalTransactionIdentifier()) {
      text.append(Prose(" of ", InputText{original}));
    }
    const std::optional<Instant> date = facts.transactionDate();
    text.append(std::string_view(date.has_value() ? ", " + dateText(*date) + " UTC" : ", no date"));
    appendWrapped(text, 0, 0, out);
  }
}

void appendOutcome(const Explanation& explanation, TextColor color, std::string& out) {
  const std::string_view name = nameOf(explanation.outcome);
  std::string line;
  appendWrapped(Prose(name, explanation.sentence), 2, 2, line);
  out += "\n  " + painted(name, colorOf(explanation.outcome), color) + line.substr(name.size());
}

// The products of the other entries, the most frequent first.
Prose otherProductsText(const Explanation& explanation) {
  constexpr std::size_t kMostNames = 3;
  std::map<std::optional<std::string>, std::size_t> counts;
  for (const TimelineEntry& entry : explanation.others) ++counts[entry.item.productID];
  std::vector<std::pair<std::optional<std::string>, std::size_t>> products(counts.begin(),
                                                                           counts.end());
  std::stable_sort(products.begin(), products.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  Prose text;
  for (std::size_t i = 0; i < products.size() && i < kMostNames; ++i) {
    text.append(
        Prose(i == 0 ? "" : ", ", products[i].second, " of ", InputText{products[i].first}));
  }
  if (products.size() > kMostNames) {
    text.append(
        Prose(" and ", counted(products.size() - kMostNames, "other product", "other products")));
  }
  return text;
}

// Columns of the list of entries.
constexpr std::size_t kDateColumn = 5;
constexpr std::size_t kKindColumn = 26;

void appendEntry(const TimelineEntry& entry, TextColor color, std::string& out) {
  const bool isUnusable = !entry.date.has_value() || entry.role == Role::kDuplicate;
  const std::string mark = entry.role == Role::kReported ? ">" : isUnusable ? "!" : " ";
  const OptionalText written = entry.item.purchaseDateIA5String;
  const std::string date = entry.date.has_value() ? dateText(*entry.date)
                           : isEmpty(written)     ? "(no date)"
                                                  : shown(*written, 28);
  std::string line = padded("  " + mark + "  " + date, kKindColumn - 2) + "  ";
  line = padded(line + kindText(entry.item), kKindColumn + 20);
  const Prose identifiers = identifiersText(entry.item);
  if (columnsOf(line) + columnsOf(plain(identifiers)) > kLineColumns) {
    line.erase(line.find_last_not_of(' ') + 1);
    line += "\n" + std::string(kKindColumn, ' ');
    appendWrapped(identifiers, kKindColumn, kKindColumn, line);
    line.pop_back();
  } else {
    line += plain(identifiers);
  }
  out += entry.role == Role::kReported ? painted(line, kBold, color) : line;
  out += '\n';

  const auto appendNote = [&out](const Prose& note) {
    out.append(kKindColumn, ' ');
    appendWrapped(note, kKindColumn, kKindColumn, out);
  };
  const bool isInOtherZone = entry.date.has_value() && !written->ends_with('Z');
  if (isInOtherZone) appendNote(Prose("written as ", *written));
  if (!entry.date.has_value() && !isEmpty(written)) {
    appendNote(Prose("date cannot be read: ", describe(entry.problem)));
  }
  if (!entry.note.empty()) appendNote(entry.note);
}

void appendReceipt(const Explanation& explanation, TextColor color, std::string& out) {
  const PurchaseFacts& facts = explanation.facts;
  const std::size_t size = facts.purchase.receipt.size();
  appendHeading(size == 0 ? "Receipt: no entries" : "Receipt: " + receiptSizeText(facts), color,
                out);
  const std::vector<TimelineRow> rows = timelineRows(explanation);
  if (!rows.empty() && size > 0) {
    out += painted("     date (UTC)           what                transaction, of its original",
                   kDim, color) +
           "\n";
  }
  for (const TimelineRow& row : rows) {
    if (row.entry != nullptr) {
      appendEntry(*row.entry, color, out);
    } else if (row.isTransaction) {
      out += padded("  -  " + dateText(*facts.transactionDate()), kKindColumn - 2) + "  " +
             std::string(transactionDateText(facts)) + "\n";
    } else {
      out += std::string(kDateColumn, ' ') + "... " + counted(row.leftOut, "entry", "entries") +
             " not shown\n";
    }
  }
  if (!explanation.others.empty()) {
    out.append(kDateColumn, ' ');
    appendWrapped(Prose("Others: ", otherProductsText(explanation)), kDateColumn, kDateColumn, out);
  }
}

void appendDecisions(const Explanation& explanation, TextColor color, std::string& out) {
  constexpr std::size_t kTextColumn = 9;
  appendHeading("Decisions", color, out);
  for (const Decision& decision : explanation.decisions) {
    out += padded("  " + (decision.code == 0 ? "" : std::to_string(decision.code)), kTextColumn);
    appendWrapped(Prose(decision.message), kTextColumn, kTextColumn, out);
    for (const Prose& fact : decision.facts) {
      out += std::string(kTextColumn, ' ') + "- ";
      appendWrapped(fact, kTextColumn + 2, kTextColumn + 2, out);
    }
  }
}

void appendEvent(const Explanation& explanation, TextColor color, std::string& out) {
  constexpr std::size_t kValueColumn = 23;
  constexpr std::size_t kOriginColumn = 45;
  if (explanation.keys.empty()) return;
  appendHeading("Event", color, out);
  for (const EventKey& key : explanation.keys) {
    std::string line = padded("  " + std::string(key.key), kValueColumn);
    const std::vector<Span>& spans = key.value.spans();
    // A text that is a value stands alone, so it needs no quotes.
    const bool isText = spans.size() == 1 && spans.front().isInput;
    line += isText ? shown(spans.front().text, kLineColumns - kValueColumn - 1) : plain(key.value);
    if (columnsOf(line) + 2 > kOriginColumn) {
      out += line + "\n";
      line.clear();
    }
    out += padded(line, kOriginColumn);
    Prose text = key.readable;
    if (!text.empty()) text.append(": ");
    text.append(key.origin);
    appendWrapped(text, kOriginColumn, kOriginColumn, out);
  }
}

void appendList(std::string_view heading, const std::vector<Prose>& texts, TextColor color,
                std::string& out) {
  if (texts.empty()) return;
  appendHeading(heading, color, out);
  for (const Prose& text : texts) {
    out += "  - ";
    appendWrapped(text, 4, 4, out);
  }
}

std::string rowStart(const OptionalText& id, std::uint64_t lineNumber) {
  constexpr std::size_t kMostId = 70;
  const std::string number = std::to_string(lineNumber);
  return std::string(number.size() < 6 ? 6 - number.size() : 0, ' ') + number + "  " +
         (id.has_value() ? shown(*id, kMostId) : "(no id)") + "\n        ";
}

}  // namespace

std::string textReport(const Explanation& explanation, std::uint64_t lineNumber, TextColor color) {
  std::string out;
  appendTitle(explanation, lineNumber, color, out);
  appendOutcome(explanation, color, out);
  appendReceipt(explanation, color, out);
  appendDecisions(explanation, color, out);
  appendEvent(explanation, color, out);
  appendList("Check the input", explanation.hints, color, out);
  appendList("Why this result", explanation.surprises, color, out);
  return out;
}

std::string textRow(const Explanation& explanation, std::uint64_t lineNumber, TextColor color) {
  const std::string_view name = nameOf(explanation.outcome);
  std::string line;
  appendWrapped(Prose(name, explanation.sentence), 8, 8, line);
  return rowStart(explanation.facts.purchase.id, lineNumber) +
         painted(name, colorOf(explanation.outcome), color) + line.substr(name.size());
}

std::string textRow(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber,
                    TextColor color) {
  constexpr std::string_view kName = "Unreadable";
  constexpr std::size_t kMostColumns = 400;
  Prose text(kName, ": ");
  if (!error.pointer.empty()) text.append(Prose("at ", InputText{error.pointer}, ": "));
  // The message has excerpts of the input among its own words.
  text.append(std::string_view(displayText(error.message, kMostColumns)));
  std::string line;
  appendWrapped(text, 8, 8, line);
  return rowStart(id, lineNumber) + painted(kName, "\033[1;31m", color) + line.substr(kName.size());
}

}  // namespace qel::tool
