// The locale of the process must not change a result: here one that writes 1,5 and groups
// thousands.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <locale>
#include <string>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

class CommaNumbers : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Sets the locale of C++, and that of C where one with a decimal comma is installed; the build
// compiles one, "qel_comma", where it can.
class CommaLocaleTest : public ::testing::Test {
 protected:
  CommaLocaleTest() {
    std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    for (const char* name : {"qel_comma", "de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR"}) {
      if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
  }
  ~CommaLocaleTest() override {
    std::locale::global(before_);
    std::setlocale(LC_ALL, "C");
  }

 private:
  const std::locale before_ = std::locale();
};

bool writesAComma() {
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  return std::string(text) == "1,5";
}

TEST_F(CommaLocaleTest, IsInForce) {
  if (!writesAComma()) GTEST_SKIP() << "no C locale with a decimal comma is installed";
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

TEST_F(CommaLocaleTest, DoesNotChangeADecimal) {
  EXPECT_EQ(decimal("8.29").doubleValue(), 8.29);
  EXPECT_FALSE(Decimal::fromString("8,29").has_value());
  // Digits enough for the slow path, which goes through text.
  EXPECT_EQ(decimal("12345678901234567890123456789012345678").doubleValue(),
            0x1.29361ede00466p+123);
  EXPECT_EQ(decimal("12345678.901234567890123456789012345678").doubleValue(),
            12345678.901234567890123456789012345678);
}

// The identifier 1000000 must not be written 1.000.000. `printf 10001000000monthly | md5sum` ends
// in 02f89f69006d683c.
TEST_F(CommaLocaleTest, DoesNotChangeAnEvent) {
  Purchase purchase;
  makeMonthly(purchase, {withWebOrder(firstMonth(), "1000000")});
  EXPECT_TRUE(
      isEvent(purchase.event(), monthlyEvent({{"_did", 214096255627651132}, {"subscription", 1}})));
}

}  // namespace
}  // namespace qel::testing
