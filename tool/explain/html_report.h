// Explanations as a page: one file of HTML that needs no network and no script.

#ifndef QEL_TOOL_EXPLAIN_HTML_REPORT_H_
#define QEL_TOOL_EXPLAIN_HTML_REPORT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "explain/explanation.h"
#include "json_error.h"

namespace qel::tool {

// Collects the purchases of a page, in order. A page of one purchase explains it; a page of several
// is a list of purchases that open in place, with a choice of outcomes.
class HtmlReport {
 public:
  // Purchases that a list has at most: browsers stay quick.
  static constexpr std::size_t kMostPurchases = 20000;
  // The explanations of a list take about this many bytes at most, so that a browser has read them
  // in a few seconds. Purchases after that are in the list with their outcome only.
  static constexpr std::size_t kMostDetails = 4U << 20U;

  // Each must not be called more than kMostPurchases times altogether.
  void add(const Explanation& explanation, std::uint64_t lineNumber);
  void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber);

  // Number of purchases, and of those whose explanation had no room.
  std::size_t size() const { return size_; }
  std::size_t withoutDetails() const { return withoutDetails_; }

  // Returns the page. It has at least one purchase.
  std::string page() const;

 private:
  // Appends a row of the list. Without `details` it does not open.
  void appendRow(std::size_t kind, const std::string& summary, const std::string& details);

  // The explanation alone, for a page of one purchase, and its title.
  std::string single_;
  std::string singleTitle_;
  std::string rows_;
  std::size_t detailsSize_ = 0;
  std::size_t size_ = 0;
  std::size_t withoutDetails_ = 0;
  // Number of purchases of each outcome, and of lines that cannot be read.
  std::array<std::size_t, kOutcomeNames.size() + 1> counts_ = {};
};

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_HTML_REPORT_H_
