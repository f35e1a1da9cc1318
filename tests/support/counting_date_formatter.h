// A date formatter that keeps count of what it does. It takes the place of the platform's in the
// executable that links counting_date_formatter.cc, and reads dates as the portable one does.

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
  // Formatters made, and of those the ones that still live.
  int created = 0;
  int living = 0;

  // The texts that were parsed, in order.
  std::vector<std::optional<std::string>> parsed;

  // Where all formatters note what they do, as the functions below write it. Null for nowhere.
  Asked* asked = nullptr;
};

// What the formatter that was made as the `number`th, from 1, notes when it is made, when it parses
// `text`, and when it ends.
std::string formatterInit(int number);
std::string formatterParse(int number, const OptionalText& text);
std::string formatterEnd(int number);

// What has happened to all formatters since it was last cleared.
FormatterCounts& formatterCounts();

// Starts each test with cleared counts, and expects that no formatter outlives it.
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
