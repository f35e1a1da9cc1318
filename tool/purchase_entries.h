// Chooses the entries of a receipt that a purchase is given.

#ifndef QEL_TOOL_PURCHASE_ENTRIES_H_
#define QEL_TOOL_PURCHASE_ENTRIES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "qel/app_receipt.h"
#include "qel/instant.h"

namespace qel::tool {

// Which of the entries of a receipt.
struct EntryChoice {
  // Every entry. Otherwise only those that determine the event, so that the output for a receipt is
  // proportional to its entries. The event and its diagnostics are the same.
  bool isAll = false;

  // Only those that the receipt had at the purchase: up to its date, or without a date.
  bool isAsOfPurchase = false;
};

// An event depends on the entries of the purchase's own product only: on the latest, on those at
// the purchase's date, on the last one before that date, and on whether there are several. For a
// purchase without a date, the last two entries of the product are enough.
class PurchaseEntries {
 public:
  // `receipt` must outlive the object.
  PurchaseEntries(const AppReceipt& receipt, const EntryChoice& choice);

  // Returns the indices of the entries for the purchase that entry `index` records, ascending. They
  // include `index`.
  std::vector<std::size_t> of(std::size_t index) const;

  // Returns the index of the latest of the entries for that purchase that are of its product. That
  // is `index` for a purchase without a product.
  std::size_t latestFor(std::size_t index) const;

  // Returns the purchase date of the entry, if it can be read.
  const std::optional<Instant>& dateOf(std::size_t index) const { return dates_[index]; }

 private:
  // Entries by date, those without a date first. Entries of equal date are in the receipt's order.
  using Sequence = std::vector<std::size_t>;

  // Of a product. `end` is behind the last entry that the purchase is given.
  struct Range {
    Sequence::const_iterator begin;
    Sequence::const_iterator firstAtDate;
    Sequence::const_iterator afterDate;
    Sequence::const_iterator end;
  };

  // Must not be called for a purchase without a product.
  Range rangeFor(std::size_t index) const;
  bool wasThere(std::size_t candidate, std::size_t index) const;
  std::vector<std::size_t> allOf(std::size_t index) const;

  const AppReceipt& receipt_;
  const EntryChoice choice_;
  std::vector<std::optional<Instant>> dates_;
  std::unordered_map<std::string, Sequence> products_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_PURCHASE_ENTRIES_H_
