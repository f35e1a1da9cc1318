#include "explain/timeline_svg.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <map>
#include <numeric>
#include <utility>
#include <vector>

#include "explain/display_text.h"
#include "explain/entry_text.h"
#include "explain/html_text.h"
#include "explain/time_text.h"
#include "explain/timeline_rows.h"

namespace qel::tool {
namespace {

constexpr std::size_t kMostOtherLanes = 6;
constexpr std::size_t kMostMarksOfALane = 40;

// Heights in pixels.
constexpr int kTop = 22;        // the label of the transaction's date
constexpr int kFirstLane = 52;  // with the label of the product
constexpr int kArc = 26;        // room for the arc and its label
constexpr int kLane = 46;
constexpr int kLaneLine = 14;  // from the line of a lane to its lower end
constexpr int kAxis = 24;

// Positions in thousandths of the width.
constexpr int kGutter = 30;
constexpr int kStart = 90;
constexpr int kEnd = 965;

struct Lane {
  OptionalText product;
  std::vector<const TimelineEntry*> entries;
};

// The lanes that a timeline draws, and the number of products that could have one.
struct Lanes {
  std::vector<Lane> lanes = std::vector<Lane>(1);
  // Products of the receipt, the purchase's own included.
  std::size_t products = 1;

  std::size_t entries() const {
    return std::accumulate(
        lanes.begin(), lanes.end(), std::size_t{0},
        [](std::size_t sum, const Lane& lane) { return sum + lane.entries.size(); });
  }
};

// The lanes: that of the product, then those of the others, those with the most entries first.
Lanes lanesOf(const Explanation& explanation) {
  Lanes drawn;
  std::vector<Lane>& lanes = drawn.lanes;
  lanes.front().product = explanation.facts.productIdentifier();
  for (const TimelineRow& row : timelineRows(explanation)) {
    if (row.entry != nullptr) lanes.front().entries.push_back(row.entry);
  }
  std::map<std::optional<std::string>, std::vector<const TimelineEntry*>> others;
  for (const TimelineEntry& entry : explanation.others) {
    others[entry.item.productID].push_back(&entry);
  }
  for (auto& [product, entries] : others) {
    lanes.push_back({entries.front()->item.productID, std::move(entries)});
  }
  std::stable_sort(lanes.begin() + 1, lanes.end(), [](const Lane& a, const Lane& b) {
    return a.entries.size() > b.entries.size();
  });
  drawn.products = lanes.size();
  if (lanes.size() > 1 + kMostOtherLanes) lanes.resize(1 + kMostOtherLanes);
  for (Lane& lane : lanes) {
    if (lane.entries.size() > kMostMarksOfALane) {
      // The latest ones say most about a purchase that was just made.
      lane.entries.erase(lane.entries.begin(),
                         lane.entries.end() - static_cast<std::ptrdiff_t>(kMostMarksOfALane));
    }
  }
  return drawn;
}

// Returns what a timeline leaves out, as a paragraph; empty if that is nothing.
std::string captionOf(const Lanes& drawn, std::size_t entries) {
  if (drawn.entries() == entries) return "";
  std::string out = "<p class=\"caption\">The timeline shows " + std::to_string(drawn.entries()) +
                    " of " + std::to_string(entries) + " entries";
  if (drawn.lanes.size() < drawn.products) {
    out += ", and " + std::to_string(drawn.lanes.size()) + " of " + std::to_string(drawn.products) +
           " products";
  }
  return out + ".</p>";
}

// Maps instants to positions.
class Axis {
 public:
  Axis(const std::vector<Lane>& lanes, const std::optional<Instant>& transaction) {
    for (const Lane& lane : lanes) {
      for (const TimelineEntry* const entry : lane.entries) include(entry->date);
    }
    include(transaction);
  }

  bool empty() const { return !first_.has_value(); }
  const Instant& first() const { return *first_; }
  const Instant& last() const { return *last_; }

  // Returns the position of an entry; that of the gutter without a date.
  int of(const std::optional<Instant>& date) const {
    if (!date.has_value()) return kGutter;
    const std::int64_t length = last_->seconds() - first_->seconds();
    if (length == 0) return (kStart + kEnd) / 2;
    const double share =
        static_cast<double>(date->seconds() - first_->seconds()) / static_cast<double>(length);
    return kStart + static_cast<int>(share * (kEnd - kStart));
  }

 private:
  void include(const std::optional<Instant>& date) {
    if (!date.has_value()) return;
    first_ = first_.has_value() ? std::min(*first_, *date) : *date;
    last_ = last_.has_value() ? std::max(*last_, *date) : *date;
  }

  std::optional<Instant> first_;
  std::optional<Instant> last_;
};

// Returns thousandths as a percentage.
std::string percent(int thousandths) {
  return std::to_string(thousandths / 10) + "." + std::to_string(thousandths % 10) + "%";
}

// Returns the class that keeps a text at this position inside the picture.
std::string_view anchorAt(int position) {
  if (position < 300) return "from";
  return position > 700 ? "to" : "mid";
}

std::string textAt(int position, int y, std::string_view anchor, const std::string& html) {
  return "<text x=\"" + percent(position) + "\" y=\"" + std::to_string(y) + "\" class=\"" +
         std::string(anchor) + "\">" + html + "</text>";
}

std::string_view shapeOf(const TimelineEntry& entry) {
  if (!entry.date.has_value()) return "unread";
  switch (kindOf(entry.item)) {
    case EntryKind::kFreeTrial:
      return "trial";
    case EntryKind::kIntroductoryOffer:
      return "offer";
    case EntryKind::kPaid:
      break;
  }
  return "paid";
}

Prose tooltipOf(const TimelineEntry& entry) {
  Prose text;
  if (entry.date.has_value()) {
    text.append(std::string_view(dateText(*entry.date) + " UTC"));
  } else {
    text.append(Prose("without a readable date (", describe(entry.problem), ")"));
  }
  text.append(Prose(", ", kindText(entry.item), ", ", identifiersText(entry.item)));
  if (!entry.note.empty()) text.append(Prose("; ", entry.note));
  return text;
}

void appendMark(const TimelineEntry& entry, int position, int y, std::string& out) {
  const std::string place = " x=\"" + percent(position) + "\" y=\"" + std::to_string(y) + "\"";
  out += "<g>";
  if (entry.role == Role::kReported) out += "<use href=\"#m-ring\"" + place + "/>";
  if (entry.role == Role::kDuplicate) out += "<use href=\"#m-bad\"" + place + "/>";
  out += "<use href=\"#m-" + std::string(shapeOf(entry)) + "\"" + place + "/><title>" +
         plainHtmlOf(tooltipOf(entry)) + "</title></g>";
}

// The arc from the entry that decides to the entry that is reported.
struct Arc {
  int start;
  int end;
  std::string_view text;
};

std::optional<Arc> arcOf(const Explanation& explanation, const Axis& axis) {
  const TimelineEntry* from = nullptr;
  const TimelineEntry* to = nullptr;
  for (const TimelineEntry& entry : explanation.timeline) {
    if (entry.role == Role::kDeciding) from = &entry;
    if (entry.role == Role::kReported) to = &entry;
  }
  if (from == nullptr || to == nullptr) return std::nullopt;
  const bool isConversion = explanation.facts.isMarked(ParameterKey::kSubConvert);
  return Arc{axis.of(from->date), axis.of(to->date),
             isConversion ? "free trial, so a conversion" : "no free trial, so a renewal"};
}

void appendArc(const Arc& arc, std::string& out) {
  out += "<svg x=\"" + percent(arc.start) + "\" y=\"" + std::to_string(kTop + 38) + "\" width=\"" +
         percent(arc.end - arc.start) +
         "\" height=\"20\" viewBox=\"0 0 100 20\" preserveAspectRatio=\"none\">"
         "<path class=\"arc\" d=\"M0 20Q50 -16 100 20\"/></svg>";
  const int middle = (arc.start + arc.end) / 2;
  out += textAt(middle, kTop + 34, anchorAt(middle), std::string(arc.text));
}

// Appends the marks of a lane. Entries without a date would cover each other, so they have one mark
// with their number.
void appendMarks(const Lane& lane, const Axis& axis, int y, std::string& out) {
  const TimelineEntry* undated = nullptr;
  std::size_t count = 0;
  for (const TimelineEntry* const entry : lane.entries) {
    if (entry->date.has_value()) {
      appendMark(*entry, axis.of(entry->date), y, out);
    } else {
      undated = entry;
      ++count;
    }
  }
  if (undated == nullptr) return;
  appendMark(*undated, kGutter, y, out);
  if (count == 1) return;
  out += "<text x=\"" + percent(kGutter) + R"(" dx="10" y=")" + std::to_string(y - 6) +
         R"(" class="from">)" + std::to_string(count) + "</text>";
}

std::string description(const Explanation& explanation) {
  const PurchaseFacts& facts = explanation.facts;
  Prose text(counted(facts.ofProduct.size(), "entry", "entries"), " of the product, ",
             counted(explanation.others.size(), "entry", "entries"),
             " of other products. The entries of the product are listed below.");
  return plainHtmlOf(text);
}

// The start of the picture: its size, and its title and description for screen readers.
std::string opening(const Explanation& explanation, std::string_view name, int height) {
  const std::string title = std::string(name) + "-title";
  const std::string details = std::string(name) + "-desc";
  return R"(<svg class="timeline" role="img" width="100%" height=")" + std::to_string(height) +
         "\" aria-labelledby=\"" + title + " " + details + "\"><title id=\"" + title +
         "\">Timeline of the receipt</title><desc id=\"" + details + "\">" +
         description(explanation) + "</desc>";
}

void appendTransaction(Instant transaction, const Axis& axis, int end, std::string& out) {
  const int position = axis.of(transaction);
  out += R"(<line class="now" x1=")" + percent(position) + "\" x2=\"" + percent(position) +
         "\" y1=\"" + std::to_string(kTop - 4) + "\" y2=\"" + std::to_string(end) + "\"/>";
  out += textAt(position, kTop - 8, anchorAt(position), "transaction " + dateText(transaction));
}

// The line of a lane and the name of its product. The first lane is that of the product itself.
void appendLane(const Lane& lane, bool isFirst, int y, std::string& out) {
  const std::string line = std::to_string(y);
  out.append(R"(<line class="lane" x1="0" x2="100%" y1=")").append(line);
  out.append("\" y2=\"").append(line).append("\"/>");
  const std::string product =
      lane.product.has_value() ? displayText(*lane.product, 32) : "(no product)";
  out += textAt(0, isFirst ? kTop + 16 : y - 16, isFirst ? "from lane own" : "from lane",
                escapedHtml(product));
}

// The first and the last day below the lanes.
void appendAxis(const Axis& axis, int y, std::string& out) {
  const std::string first = dateText(axis.first()).substr(0, 10);
  const std::string last = dateText(axis.last()).substr(0, 10);
  if (first == last) {
    out += textAt((kStart + kEnd) / 2, y, "mid axis", first);
  } else {
    out += textAt(kStart, y, "from axis", first);
    out += textAt(kEnd, y, "to axis", last);
  }
}

}  // namespace

std::string_view timelineShapes() {
  return R"(<svg class="shapes" width="0" height="0" aria-hidden="true"><defs>
<g id="m-paid"><circle r="6" class="full"/></g>
<g id="m-trial"><circle r="6" class="hollow"/></g>
<g id="m-offer"><circle r="6" class="hollow"/><path d="M0 -6A6 6 0 0 1 0 6Z" class="full"/></g>
<g id="m-unread"><rect x="-7" y="-7" width="14" height="14" class="unread"/><text y="4" class="mid mark">?</text></g>
<g id="m-ring"><circle r="11" class="ring"/></g>
<g id="m-bad"><circle r="11" class="ring bad"/></g>
</defs></svg>
)";
}

std::string timelineSvg(const Explanation& explanation, std::string_view name) {
  if (explanation.facts.purchase.receipt.empty()) return "";
  const Lanes drawn = lanesOf(explanation);
  const std::vector<Lane>& lanes = drawn.lanes;
  const std::optional<Instant> transaction = explanation.facts.transactionDate();
  const Axis axis(lanes, transaction);
  const std::optional<Arc> arc = arcOf(explanation, axis);
  const int firstLane = kTop + kFirstLane + (arc.has_value() ? kArc : 0);
  const int laneEnd = firstLane + kLane * (static_cast<int>(lanes.size()) - 1);

  std::string out = opening(explanation, name, laneEnd + kAxis);
  if (transaction.has_value()) appendTransaction(*transaction, axis, laneEnd, out);
  int y = firstLane - kLaneLine;
  for (const Lane& lane : lanes) {
    appendLane(lane, &lane == &lanes.front(), y, out);
    y += kLane;
  }
  if (arc.has_value()) appendArc(*arc, out);
  y = firstLane - kLaneLine;
  for (const Lane& lane : lanes) {
    appendMarks(lane, axis, y, out);
    y += kLane;
  }
  if (!axis.empty()) appendAxis(axis, laneEnd + kAxis - 8, out);
  return out + "</svg>" + captionOf(drawn, explanation.facts.purchase.receipt.size());
}

}  // namespace qel::tool
