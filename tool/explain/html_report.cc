#include "explain/html_report.h"

#include <string_view>

#include "explain/entry_text.h"
#include "explain/html_style.h"
#include "explain/html_text.h"
#include "explain/time_text.h"
#include "explain/timeline_rows.h"
#include "explain/timeline_svg.h"

namespace qel::tool {
namespace {

// The kind of a line that cannot be read, after those of the outcomes.
constexpr std::size_t kUnreadable = kOutcomeNames.size();

std::string_view nameOfKind(std::size_t kind) {
  return kind == kUnreadable ? std::string_view("Unreadable") : kOutcomeNames[kind];
}

// Returns the class of the colour of a kind.
std::string_view toneOf(std::size_t kind) {
  if (kind == kUnreadable) return "bad";
  switch (static_cast<Outcome>(kind)) {
    case Outcome::kInvalid:
    case Outcome::kNoEvent:
      return "bad";
    case Outcome::kFreeTrial:
    case Outcome::kIntroductoryOffer:
      return "low";
    default:
      return "good";
  }
}

std::string badge(std::size_t kind) {
  return "<b class=\"badge " + std::string(toneOf(kind)) + "\">" + std::string(nameOfKind(kind)) +
         "</b>";
}

// Returns the outcome as a sentence that begins with its badge.
std::string outcomeHtml(const Explanation& explanation) {
  std::string sentence = htmlOf(explanation.sentence);
  if (sentence.starts_with(": ") || sentence.starts_with(", ")) sentence.erase(0, 2);
  return badge(static_cast<std::size_t>(explanation.outcome)) + " " + sentence;
}

std::string element(std::string_view name, const std::string& content) {
  const std::string tag(name);
  return "<" + tag + ">" + content + "</" + tag + ">";
}

// Returns a text that is never broken.
std::string oneLine(const std::string& text) { return "<span class=\"one\">" + text + "</span>"; }

std::string term(std::string_view name, const std::string& content) {
  return "<div>" + element("dt", std::string(name)) + element("dd", content) + "</div>";
}

// --- The parts of an explanation ---

// Returns a row's name and what came out.
std::string summaryOf(const OptionalText& id, std::uint64_t lineNumber,
                      const std::string& outcome) {
  const std::string name = id.has_value() ? htmlOf(id, 100) : "line " + std::to_string(lineNumber);
  return "<span class=\"name\">" + name + "</span><span class=\"result\">" + outcome + "</span>";
}

std::string headOf(const Explanation& explanation, std::uint64_t lineNumber) {
  const PurchaseFacts& facts = explanation.facts;
  std::string out = "<dl class=\"head\">";
  if (facts.purchase.product.has_value()) {
    const OptionalText title = facts.purchase.product->localizedTitle;
    out += term("Product", (title.has_value() ? htmlOf(title) + ", " : "") +
                               htmlOf(facts.productIdentifier()));
    out += term("Price", htmlOf(priceAndQuantityText(facts)));
  } else {
    out += term("Product", htmlOf(OptionalText()));
  }
  if (facts.purchase.transaction.has_value()) {
    std::string text = htmlOf(facts.transactionIdentifier());
    const OptionalText original = facts.originalTransactionIdentifier();
    if (original.has_value()) text += " of " + htmlOf(original);
    const std::optional<Instant> date = facts.transactionDate();
    out += term("Transaction",
                text + (date.has_value() ? ", " + dateText(*date) + " UTC" : ", no date"));
  } else {
    out += term("Transaction", htmlOf(OptionalText()));
  }
  return out + term("Line of the input", std::to_string(lineNumber)) + "</dl>";
}

std::string legend(const Explanation& explanation) {
  const bool hasDuplicates = explanation.facts.hasCode(DiagnosticCode::kDuplicateTransactionDate);
  const auto entry = [](std::string_view shape, std::string_view text) {
    return R"(<li><svg width="24" height="24" aria-hidden="true"><use href="#m-)" +
           std::string(shape) + R"(" x="12" y="12"/></svg>)" + std::string(text) + "</li>";
  };
  return "<ul class=\"legend\">" + entry("paid", "paid") + entry("trial", "free trial") +
         entry("offer", "introductory offer") + entry("unread", "date cannot be read") +
         (hasDuplicates ? entry("bad", "one of several at the transaction's date")
                        : entry("ring", "reported")) +
         "</ul>";
}

std::string rowOfEntry(const TimelineEntry& entry) {
  const OptionalText written = entry.item.purchaseDateIA5String;
  const std::string date =
      entry.date.has_value() ? oneLine(dateText(*entry.date)) : htmlOf(written, 40);
  std::string note = htmlOf(entry.note);
  if (!entry.date.has_value()) {
    note = (isEmpty(written) ? "" : "date cannot be read: ") +
           std::string(describe(entry.problem)) + (note.empty() ? "" : "; " + note);
  } else if (!written->ends_with('Z')) {
    note = "written as " + htmlOf(written) + (note.empty() ? "" : "; " + note);
  }
  std::string_view tone;
  if (entry.role == Role::kReported) tone = " class=\"reported\"";
  if (entry.role == Role::kDuplicate || !entry.date.has_value()) tone = " class=\"odd\"";
  return "<tr" + std::string(tone) + ">" + element("td", date) +
         element("td", kindText(entry.item)) + element("td", htmlOf(identifiersText(entry.item))) +
         element("td", note) + "</tr>";
}

std::string receiptOf(const Explanation& explanation, std::string_view name) {
  const PurchaseFacts& facts = explanation.facts;
  const std::size_t size = facts.purchase.receipt.size();
  std::string out = "<h2>Receipt</h2>";
  if (size == 0) return out + "<p>The receipt has no entries.</p>";
  out += "<p>" + receiptSizeText(facts) + ". Times are UTC.</p>";
  out += timelineSvg(explanation, name) + legend(explanation);
  if (explanation.timeline.empty()) return out;
  out +=
      "<table class=\"entries\"><thead><tr><th>Date</th><th>What</th>"
      "<th>Transaction, of its original</th><th>Remark</th></tr></thead><tbody>";
  for (const TimelineRow& row : timelineRows(explanation)) {
    if (row.entry != nullptr) {
      out += rowOfEntry(*row.entry);
    } else if (row.isTransaction) {
      out += "<tr class=\"reported\"><td>" + oneLine(dateText(*facts.transactionDate())) +
             "</td><td colspan=\"3\">" + std::string(transactionDateText(facts)) + "</td></tr>";
    } else {
      out += "<tr><td colspan=\"4\">" + counted(row.leftOut, "entry", "entries") +
             " not shown</td></tr>";
    }
  }
  return out + "</tbody></table>";
}

std::string decisionsOf(const Explanation& explanation) {
  std::string out = "<h2>Decisions</h2><ol class=\"decisions\">";
  for (const Decision& decision : explanation.decisions) {
    out += "<li>";
    if (decision.code != 0) out += "<b class=\"code\">" + std::to_string(decision.code) + "</b> ";
    out += escapedHtml(decision.message);
    if (!decision.facts.empty()) {
      out += "<ul>";
      for (const Prose& fact : decision.facts) out += element("li", htmlOf(fact));
      out += "</ul>";
    }
    out += "</li>";
  }
  return out + "</ol>";
}

std::string eventOf(const Explanation& explanation) {
  if (explanation.keys.empty()) return "";
  std::string out =
      "<h2>Event</h2><table class=\"event\"><thead><tr><th>Key</th><th>Value</th>"
      "<th>Where it comes from</th></tr></thead><tbody>";
  for (const EventKey& key : explanation.keys) {
    std::string origin = htmlOf(key.origin);
    if (!key.readable.empty()) origin.insert(0, element("b", htmlOf(key.readable)).append(": "));
    const bool isText = key.value.spans().front().isInput;
    // A number and an identifier of usual length are easier to read and to copy in one piece.
    constexpr std::size_t kUsualSize = 32;
    const bool isLong = isText && key.value.text().size() > kUsualSize;
    const std::string value = isLong ? htmlOf(key.value) : oneLine(htmlOf(key.value));
    out += "<tr><th scope=\"row\">" + std::string(key.key) + "</th>" + element("td", value) +
           element("td", origin) + "</tr>";
  }
  return out + "</tbody></table>";
}

std::string listOf(std::string_view heading, const std::vector<Prose>& texts) {
  if (texts.empty()) return "";
  std::string out = element("h2", std::string(heading)) + "<ul class=\"notes\">";
  for (const Prose& text : texts) out += element("li", htmlOf(text));
  return out + "</ul>";
}

std::string detailsOf(const Explanation& explanation, std::uint64_t lineNumber) {
  return headOf(explanation, lineNumber) + listOf("Check the input", explanation.hints) +
         listOf("Why this result", explanation.surprises) +
         receiptOf(explanation, "t" + std::to_string(lineNumber)) + decisionsOf(explanation) +
         eventOf(explanation) + "\n";
}

// --- The page ---

std::string pageOf(const std::string& title, std::string_view moreStyle, const std::string& body) {
  return R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>)" +
         title + "</title>\n<style>\n" + std::string(kPageStyle) + std::string(moreStyle) +
         "</style>\n</head>\n<body>\n" + std::string(timelineShapes()) + "<main>\n" + body +
         "</main>\n</body>\n</html>\n";
}

}  // namespace

void HtmlReport::appendRow(std::size_t kind, const std::string& summary,
                           const std::string& details) {
  ++size_;
  ++counts_[kind];
  const std::string className = "k" + std::to_string(kind);
  if (details.empty()) {
    rows_ += "<div class=\"row " + className + "\">" + summary + "</div>\n";
  } else {
    rows_ += "<details class=\"row " + className + "\"><summary>" + summary + "</summary>" +
             details + "</details>\n";
  }
}

void HtmlReport::add(const Explanation& explanation, std::uint64_t lineNumber) {
  const auto kind = static_cast<std::size_t>(explanation.outcome);
  const std::string outcome = outcomeHtml(explanation);
  const OptionalText& id = explanation.facts.purchase.id;
  const std::string summary = summaryOf(id, lineNumber, outcome);
  if (detailsSize_ >= kMostDetails) {
    ++withoutDetails_;
    const std::string advice =
        "<span class=\"advice\">to explain it: --line " + std::to_string(lineNumber) + "</span>";
    appendRow(kind, summary + advice, "");
    return;
  }
  const std::string details = detailsOf(explanation, lineNumber);
  detailsSize_ += details.size();
  if (size_ == 0) {
    singleTitle_ =
        id.has_value() ? plainHtmlOf(Prose(InputText{id})) : "line " + std::to_string(lineNumber);
    single_ = "<h1>Purchase " +
              (id.has_value() ? htmlOf(id) : "of line " + std::to_string(lineNumber)) +
              "</h1>\n<p class=\"outcome\">" + outcome + "</p>\n" + details;
  }
  appendRow(kind, summary, details);
}

void HtmlReport::add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) {
  Prose text;
  if (!error.pointer.empty()) text.append(Prose("at ", InputText{error.pointer}, ": "));
  text.append(InputText{error.message});
  const std::string outcome = badge(kUnreadable) + " " + htmlOf(text);
  const std::string summary = summaryOf(id, lineNumber, outcome);
  if (size_ == 0) {
    singleTitle_ = "line " + std::to_string(lineNumber);
    single_ = "<h1>Purchase of line " + std::to_string(lineNumber) +
              "</h1>\n<p class=\"outcome\">" + outcome + "</p>\n";
  }
  appendRow(kUnreadable, summary, "");
}

std::string HtmlReport::page() const {
  if (size_ == 1) return pageOf("Purchase " + singleTitle_, "", single_);

  std::string style;
  std::string choice =
      "<fieldset><legend>Show</legend>"
      "<label><input type=\"radio\" name=\"show\" id=\"s-all\" checked>all " +
      std::to_string(size_) + "</label>";
  for (std::size_t kind = 0; kind < counts_.size(); ++kind) {
    if (counts_[kind] == 0) continue;
    const std::string number = std::to_string(kind);
    style.append("main:has(#s-").append(number).append(":checked) .row:not(.k");
    style.append(number).append("){display:none}\n");
    choice += R"(<label><input type="radio" name="show" id="s-)" + number + "\">" +
              std::string(nameOfKind(kind)) + " " + std::to_string(counts_[kind]) + "</label>";
  }
  std::string body =
      "<h1>" + counted(size_, "purchase", "purchases") + "</h1>\n" + choice + "</fieldset>\n";
  if (withoutDetails_ > 0) {
    body += "<p>The last " + std::to_string(withoutDetails_) +
            " are listed with their outcome only. Select one with <code>--line</code> or "
            "<code>--id</code> to explain it.</p>\n";
  }
  return pageOf(counted(size_, "purchase", "purchases"), style,
                body + "<div class=\"list\">\n" + rows_ + "</div>\n");
}

}  // namespace qel::tool
