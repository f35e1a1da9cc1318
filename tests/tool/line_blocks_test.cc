#include "line_blocks.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include "interrupt.h"
#include "json_reader.h"

namespace qel::tool {
namespace {

constexpr std::size_t kMaxLine = 4'000'000;

// A pipe whose reading end is read in blocks.
class LineBlockReaderTest : public ::testing::Test {
 protected:
  LineBlockReaderTest() : input_(openedPath()), reader_(input_, 1, kMaxLine) {}
  ~LineBlockReaderTest() override {
    closeInput();
    ::close(ends_[0]);
  }

  void write(std::string_view text) const {
    while (!text.empty()) {
      const ssize_t count = ::write(ends_[1], text.data(), text.size());
      ASSERT_GT(count, 0);
      text.remove_prefix(static_cast<std::size_t>(count));
    }
  }
  void closeInput() {
    if (ends_[1] >= 0) ::close(ends_[1]);
    ends_[1] = -1;
  }

  using Lines = std::vector<std::string_view>;

  // The lines of the next block; one line "(end)" where there is none.
  Lines next() { return reader_.next(block_) ? block_.lines : Lines{"(end)"}; }

  LineBlock block_;

 private:
  // Opens the pipe and returns the path of its reading end.
  std::string openedPath() {
    static const bool isCaught = [] {
      catchInterrupts();
      return true;
    }();
    if (!isCaught || pipe(ends_.data()) != 0)
      throw std::system_error(errno, std::generic_category());
    return "/dev/fd/" + std::to_string(ends_[0]);
  }

  std::array<int, 2> ends_ = {-1, -1};
  InputFile input_;
  LineBlockReader reader_;
};

TEST_F(LineBlockReaderTest, AnEmptyInputHasNoBlock) {
  closeInput();
  EXPECT_EQ(next(), Lines{"(end)"});
  EXPECT_EQ(next(), Lines{"(end)"});
}

TEST_F(LineBlockReaderTest, GivesWholeLinesAsSoonAsTheyAreThere) {
  write("one\ntwo\nthr");
  EXPECT_EQ(next(), (Lines{"one", "two"}));
  write("ee\n");
  EXPECT_EQ(next(), Lines{"three"});
}

TEST_F(LineBlockReaderTest, GivesALastLineWithoutItsNewline) {
  write("one\ntwo");
  closeInput();
  EXPECT_EQ(next(), Lines{"one"});
  EXPECT_EQ(next(), Lines{"two"});
  EXPECT_EQ(next(), Lines{"(end)"});
}

TEST_F(LineBlockReaderTest, GivesEmptyLinesToo) {
  write("\n\none\n\n");
  EXPECT_EQ(next(), (Lines{"", "", "one", ""}));
}

TEST_F(LineBlockReaderTest, CountsLinesFromOne) {
  write("one\n\nthree\nfo");
  next();
  EXPECT_EQ(block_.firstLineNumber, 1U);
  write("ur\n");
  next();
  EXPECT_EQ(block_.firstLineNumber, 4U);
  write("five\n");
  next();
  EXPECT_EQ(block_.firstLineNumber, 5U);
}

TEST_F(LineBlockReaderTest, KeepsNulBytes) {
  const std::string line("{\0b", 3);
  write(line + "\n");
  EXPECT_EQ(next(), Lines{line});
}

TEST_F(LineBlockReaderTest, GivesALineLongerThanAnyBlockInOnePiece) {
  const std::string line(3000000, 'x');
  std::thread writer([&] {
    write(line + "\n");
    write("next\n");
    closeInput();
  });
  std::vector<std::string> lines;
  while (next() != Lines{"(end)"}) {
    EXPECT_FALSE(block_.isCut);
    lines.insert(lines.end(), block_.lines.begin(), block_.lines.end());
  }
  writer.join();
  EXPECT_EQ(lines, (std::vector<std::string>{line, "next"}));
}

TEST_F(LineBlockReaderTest, CutsALineThatIsTooLongAndGoesOnBehindIt) {
  for (const std::size_t excess : {0U, 500'000U}) {
    const std::string line(kMaxLine + excess, 'x');
    std::thread writer([&] { write("one\n" + line + "\nthree\nfour\n"); });
    std::vector<std::string> lines;
    int cutCount = 0;
    while (lines.size() < 4) {
      const Lines more = next();
      lines.insert(lines.end(), more.begin(), more.end());
      if (block_.isCut) ++cutCount;
    }
    writer.join();
    const std::string cut = line.substr(0, kMaxLine + 1);
    EXPECT_EQ(lines, (std::vector<std::string>{"one", cut, "three", "four"})) << excess;
    EXPECT_EQ(cutCount, excess == 0 ? 0 : 1);
  }
}

TEST_F(LineBlockReaderTest, EndsBehindALineThatIsTooLong) {
  std::thread writer([&] {
    write(std::string(kMaxLine + 300'000, 'x'));
    closeInput();
  });
  EXPECT_EQ(next(), Lines{std::string(kMaxLine + 1, 'x')});
  EXPECT_EQ(next(), Lines{"(end)"});
  writer.join();
}

TEST_F(LineBlockReaderTest, LeavesRoomToLookPastTheLines) {
  write("one\n");
  next();
  const char* const end = block_.memory.data() + block_.memory.size();
  const std::string_view last = block_.lines.back();
  EXPECT_GE(end - (last.data() + last.size()), static_cast<std::ptrdiff_t>(JsonReader::kPadding));
}

TEST(LineBlockReaderErrorTest, ThrowsWhenTheInputCannotBeRead) {
  InputFile folder("/");
  LineBlockReader reader(folder, 1, kMaxLine);
  LineBlock block;
  EXPECT_THROW(reader.next(block), InputError);
}

TEST_F(LineBlockReaderTest, ThrowsIfTheInputHasAnotherFormat) {
  write("[{},\n");
  EXPECT_THROW(next(), InputError);
}

TEST_F(LineBlockReaderTest, ReadsOtherFormatsLineByLineAfterTheFirstBlock) {
  write("{}\n");
  EXPECT_EQ(next(), Lines{"{}"});
  write("[{},\n");
  EXPECT_EQ(next(), Lines{"[{},"});
}

}  // namespace
}  // namespace qel::tool
