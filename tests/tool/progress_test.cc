#include "progress.h"

#include <gtest/gtest.h>

namespace qel::tool {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr std::size_t kWide = 80;

TEST(ProgressTextTest, TellsSizeTotalSpeedAndTimeLeft) {
  // Half is done in 4 s, so the other half takes 4 s more.
  EXPECT_EQ(progressText({1500000000, 3000000000, 1640000, 0, Seconds(4)}, kWide),
            "1.5 GB of 3.0 GB, 410000 lines/s, 4 s left");
}

TEST(ProgressTextTest, LeavesOutTotalAndTimeLeftWithoutATotal) {
  EXPECT_EQ(progressText({2500, std::nullopt, 10, 0, Seconds(2)}, kWide), "2.5 kB, 5 lines/s");
}

TEST(ProgressTextTest, LeavesOutTheSpeedBeforeItIsKnown) {
  EXPECT_EQ(progressText({0, 3000, 0, 0, Seconds(1)}, kWide), "0.0 B of 3.0 kB");
  EXPECT_EQ(progressText({1000, 3000, 5, 0, Seconds(0)}, kWide), "1.0 kB of 3.0 kB");
}

TEST(ProgressTextTest, LeavesOutTheTimeLeftOfAFileThatHasGrown) {
  EXPECT_EQ(progressText({4000, 3000, 8, 0, Seconds(1)}, kWide), "4.0 kB of 3.0 kB, 8 lines/s");
}

TEST(ProgressTextTest, TellsNoTimeLeftAtTheEnd) {
  EXPECT_EQ(progressText({3000, 3000, 8, 0, Seconds(1)}, kWide),
            "3.0 kB of 3.0 kB, 8 lines/s, 0 s left");
}

TEST(ProgressTextTest, WritesEachUnitOfSizeFromAThousandOn) {
  const auto sizeAlone = [](std::uint64_t bytes) {
    return progressText({bytes, std::nullopt, 0, 0, Seconds(0)}, kWide);
  };
  EXPECT_EQ(sizeAlone(999), "999.0 B");
  EXPECT_EQ(sizeAlone(1000), "1.0 kB");
  EXPECT_EQ(sizeAlone(1000000), "1.0 MB");
  EXPECT_EQ(sizeAlone(1000000000), "1.0 GB");
  EXPECT_EQ(sizeAlone(1000000000000), "1.0 TB");
  EXPECT_EQ(sizeAlone(5000000000000000), "5000.0 TB");
}

TEST(ProgressTextTest, RoundsTheTimeLeftUpToSecondsMinutesOrHours) {
  // One byte of `total` is done in a second.
  const auto timeLeft = [](std::uint64_t total) {
    const std::string text = progressText({1, total, 0, 0, Seconds(1)}, kWide);
    return text.substr(text.rfind(", ") + 2);
  };
  EXPECT_EQ(timeLeft(60), "59 s left");
  EXPECT_EQ(timeLeft(61), "1 min 0 s left");
  EXPECT_EQ(timeLeft(3600), "59 min 59 s left");
  EXPECT_EQ(timeLeft(3601), "1 h 0 min left");
  EXPECT_EQ(timeLeft(7321), "2 h 2 min left");
  EXPECT_EQ(progressText({1000, 1001, 0, 0, Seconds(1)}, kWide),
            "1.0 kB of 1.0 kB, 0 lines/s, 1 s left");
}

TEST(ProgressTextTest, TellsRejectedLines) {
  EXPECT_EQ(progressText({2500, std::nullopt, 10, 3, Seconds(2)}, kWide),
            "2.5 kB, 5 lines/s, 3 rejected");
}

TEST(ProgressTextTest, LeavesOutWhatDoesNotFit) {
  const Progress progress = {1500000000, 3000000000, 1640000, 12, Seconds(4)};
  const std::string whole = "1.5 GB of 3.0 GB, 410000 lines/s, 4 s left, 12 rejected";
  EXPECT_EQ(progressText(progress, whole.size()), whole);
  EXPECT_EQ(progressText(progress, whole.size() - 1), "1.5 GB of 3.0 GB, 4 s left, 12 rejected");
  EXPECT_EQ(progressText(progress, 38), "1.5 GB of 3.0 GB, 12 rejected");
  EXPECT_EQ(progressText(progress, 28), "1.5 GB, 12 rejected");
  EXPECT_EQ(progressText(progress, 18), "1.5 GB, 12 rejecte");
  EXPECT_EQ(progressText(progress, 0), "");
}

}  // namespace
}  // namespace qel::tool
