#include "explain/diagnostics_page.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "explain/display_text.h"

namespace qel::tool {
namespace {

TEST(DiagnosticsPageTest, EverySectionOfACodeIsFound) {
  const std::string page =
      "# Title\n\ntext\n\n## 40001 First message.\n\nOne\ntwo.\n\n## Other\n\nx\n\n"
      "## 40002 Second\n\nThree.\n";
  const std::vector<CodeSection> sections = codeSections(page);
  ASSERT_EQ(sections.size(), 2U);
  EXPECT_EQ(sections[0].code, "40001");
  EXPECT_EQ(sections[0].message, "First message.");
  EXPECT_EQ(plainText(sections[0]), "40001  First message.\n\nOne two.\n");
  EXPECT_EQ(plainText(sections[1]), "40002  Second\n\nThree.\n");
}

TEST(DiagnosticsPageTest, MarksAreLeftOutAndListsAreKept) {
  const CodeSection section = {"40001", "M",
                               "\n**Event:** has `a b`.\n\n- One that\n  goes on.\n- Two.\n"};
  EXPECT_EQ(plainText(section), "40001  M\n\nEvent: has a b.\n\n  - One that goes on.\n  - Two.\n");
}

TEST(DiagnosticsPageTest, ThePageHasAllCodesInLinesOf80Columns) {
  const std::vector<CodeSection> sections = codeSections(diagnosticsPage());
  EXPECT_EQ(sections.size(), 17U);
  for (const CodeSection& section : sections) {
    const std::string text = plainText(section);
    EXPECT_EQ(text.find('`'), std::string::npos) << text;
    EXPECT_EQ(text.find("**"), std::string::npos) << text;
    EXPECT_EQ(text.find("]("), std::string::npos) << text;
    EXPECT_NE(text.find("\nUsual causes\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nCheck\n"), std::string::npos) << text;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(columnsOf(line), 80U) << line;
  }
}

}  // namespace
}  // namespace qel::tool
