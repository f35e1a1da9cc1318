#include "qel/instant.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

namespace qel::testing {
namespace {

using namespace std::chrono_literals;

TEST(InstantTest, FractionsOfASecondCount) {
  EXPECT_NE(Instant(7, 0), Instant(7, 1));
  EXPECT_LT(Instant(7, 999999999), Instant(8, 0));
  EXPECT_LT(Instant(-1, 999999999), Instant(0, 0));
  EXPECT_LT(Instant(7, 1), Instant(7, 2));
}

TEST(InstantTest, OneAndAHalfSecondsAreOneValue) {
  EXPECT_EQ(Instant(0, 1500000000), Instant(1, 500000000));
  EXPECT_EQ(Instant(2, -500000000), Instant(1, 500000000));
  EXPECT_EQ(Instant(0, -1), Instant(-1, 999999999));
  EXPECT_EQ(Instant(0, -2000000000), Instant(-2));
  EXPECT_EQ(Instant(0, -1).seconds(), -1);
  EXPECT_EQ(Instant(0, -1).nanoseconds(), 999999999);
}

TEST(InstantTest, IsATimeOfTheSystemClock) {
  EXPECT_EQ(Instant(std::chrono::sys_seconds(1552555613s)), Instant(1552555613));
  EXPECT_EQ(Instant(std::chrono::sys_time<std::chrono::milliseconds>(1500ms)),
            Instant(1, 500000000));
  EXPECT_EQ(Instant(std::chrono::sys_time<std::chrono::milliseconds>(-1ms)),
            Instant(-1, 999000000));
  EXPECT_EQ(Instant(std::chrono::sys_days(std::chrono::days(1))), Instant(86400));
  using Picoseconds = std::chrono::duration<std::int64_t, std::pico>;
  EXPECT_EQ(Instant(std::chrono::sys_time<Picoseconds>(Picoseconds(1999))), Instant(0, 1));
}

TEST(InstantTest, BecomesATimeOfTheSystemClock) {
  const Instant instant(-2, 999999999);
  EXPECT_EQ(instant.sysTime<std::chrono::nanoseconds>().time_since_epoch(), -1000000001ns);
  EXPECT_EQ(instant.sysTime<std::chrono::milliseconds>().time_since_epoch(), -1001ms);
  EXPECT_EQ(instant.sysTime<std::chrono::seconds>().time_since_epoch(), -2s);
  EXPECT_EQ(instant.sysTime<std::chrono::days>().time_since_epoch(), std::chrono::days(-1));
}

}  // namespace
}  // namespace qel::testing
