#include "explain/date_problem.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>

#include "qel/rfc3339.h"

namespace qel::tool {
namespace {

struct Case {
  const char* name;
  OptionalText text;
  DateProblem problem;
};

std::ostream& operator<<(std::ostream& out, const Case& c) { return out << c.name; }

class DateProblemTest : public ::testing::TestWithParam<Case> {};

TEST_P(DateProblemTest, SaysWhyADateCannotBeRead) {
  const OptionalText& text = GetParam().text;
  ASSERT_FALSE(text.has_value() && parseRfc3339(*text).has_value());
  EXPECT_EQ(dateProblem(text), GetParam().problem);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DateProblemTest,
    ::testing::Values(
        Case{"Absent", std::nullopt, DateProblem::kAbsent}, Case{"Empty", "", DateProblem::kEmpty},
        Case{"ServiceForm", "2020-07-14 19:36:40 Etc/GMT", DateProblem::kServiceForm},
        Case{"ServiceFormPacific", "2020-07-14 12:36:40 America/Los_Angeles",
             DateProblem::kServiceForm},
        Case{"Milliseconds", "1594755400000", DateProblem::kMilliseconds},
        Case{"NoTime", "2020-07-14", DateProblem::kNoTime},
        Case{"Space", "2020-07-14 19:36:40Z", DateProblem::kSpaceForT},
        Case{"SpaceAndWord", "2020-07-14 19:36:40 UTC", DateProblem::kSpaceForT},
        Case{"Fraction", "2020-07-14T19:36:40.250Z", DateProblem::kFraction},
        Case{"FractionWithComma", "2020-07-14T19:36:40,5Z", DateProblem::kFraction},
        Case{"NoZone", "2020-07-14T19:36:40", DateProblem::kNoZone},
        Case{"OffsetWithoutColon", "2020-07-14T19:36:40+0000", DateProblem::kOffsetWithoutColon},
        Case{"OffsetOfHours", "2020-07-14T19:36:40-07", DateProblem::kOffsetWithoutColon},
        Case{"LowerCaseT", "2020-07-14t19:36:40Z", DateProblem::kLowerCase},
        Case{"LowerCaseZ", "2020-07-14T19:36:40z", DateProblem::kLowerCase},
        Case{"NoSuchDay", "2020-02-30T19:36:40Z", DateProblem::kNoSuchDateOrTime},
        Case{"NoSuchHour", "2020-02-20T24:00:00Z", DateProblem::kNoSuchDateOrTime},
        Case{"NoSuchOffset", "2020-02-20T19:36:40+24:00", DateProblem::kNoSuchDateOrTime},
        Case{"TextAfterwards", "2020-07-14T19:36:40Z UTC", DateProblem::kTextAfterwards},
        Case{"TextAfterOffset", "2020-07-14T19:36:40+01:00!", DateProblem::kTextAfterwards},
        Case{"Words", "yesterday", DateProblem::kOther},
        Case{"SlashesBetween", "14/07/2020", DateProblem::kOther},
        Case{"TimeWithoutSeconds", "2020-07-14T19:36Z", DateProblem::kOther},
        Case{"OtherSeparator", "2020-07-14_19:36:40Z", DateProblem::kOther},
        Case{"OtherZone", "2020-07-14T19:36:40 CET", DateProblem::kOther}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(DateProblemTest, EveryProblemHasItsOwnWords) {
  EXPECT_EQ(describe(DateProblem::kOffsetWithoutColon), "offset without a colon");
  EXPECT_EQ(describe(DateProblem::kFraction), "a fraction of a second");
  EXPECT_EQ(describe(DateProblem::kOther), "no RFC 3339 timestamp");
}

}  // namespace
}  // namespace qel::tool
