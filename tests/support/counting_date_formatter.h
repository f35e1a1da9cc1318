// A date formatter that counts and logs its calls. It replaces the platform's in the executable
// that links counting_date_formatter.cc, and parses dates as the portable one does.

#ifndef QEL_TESTS_SUPPORT_COUNTING_DATE_FORMATTER_H_
#define QEL_TESTS_SUPPORT_COUNTING_DATE_FORMATTER_H_

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "qel/text.h"
#include "support/asked.h"

namespace qel::testing {

struct FormatterCounts {
  // Formatters that were constructed, and those not yet destroyed.
  int created = 0;
  int living = 0;

  // The texts that were parsed, in order.
  std::vector<std::optional<std::string>> parsed;

  // The log of all formatters, with the entries that the functions below return. May be null.
  Asked* asked = nullptr;
};

// Return the log entries for the construction of a formatter, its parsing of `text`, and its
// destruction. The first formatter has the number 1.
std::string formatterInit(int number);
std::string formatterParse(int number, const OptionalText& text);
std::string formatterEnd(int number);

// Returns the counts, which a test may change.
FormatterCounts& formatterCounts();

// Starts each test with cleared counts, and expects that no formatter outlives the test.
class DateFormatterCountsTest : public ::testing::Test {
 protected:
  DateFormatterCountsTest() { formatterCounts() = FormatterCounts(); }
  ~DateFormatterCountsTest() override {
    EXPECT_EQ(formatterCounts().living, 0);
    formatterCounts() = FormatterCounts();
  }
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_COUNTING_DATE_FORMATTER_H_
