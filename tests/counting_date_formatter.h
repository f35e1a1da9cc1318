// A date formatter that keeps count. It takes the place of the platform's in the executable that
// links counting_date_formatter.cc, and reads dates as the portable one does.

#ifndef QEL_TESTS_COUNTING_DATE_FORMATTER_H_
#define QEL_TESTS_COUNTING_DATE_FORMATTER_H_

#include <optional>
#include <string>
#include <vector>

namespace qel::testing {

struct FormatterCounts {
  // Formatters made, and of those the ones that still live.
  int created = 0;
  int living = 0;

  // The texts that were parsed, in order.
  std::vector<std::optional<std::string>> parsed;
};

// What has happened to all formatters since it was last cleared.
FormatterCounts& formatterCounts();

}  // namespace qel::testing

#endif  // QEL_TESTS_COUNTING_DATE_FORMATTER_H_
