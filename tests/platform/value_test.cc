#include "qel/value.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace qel::testing {
namespace {

TEST(ValueTest, IntegerIsReadBack) {
  for (const std::int64_t integer :
       {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1},
        std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
    EXPECT_EQ(QELValue::initWithInt64(integer)->int64Value(), integer);
  }
}

TEST(ValueTest, IntegerHasNoString) {
  EXPECT_EQ(QELValue::initWithInt64(1)->stringValue(), std::nullopt);
}

TEST(ValueTest, EveryIntegerValueIsANewObject) {
  for (const std::int64_t integer : {-1, 0, 1, 2}) {
    const QELValuePtr first = QELValue::initWithInt64(integer);
    const QELValuePtr second = QELValue::initWithInt64(integer);
    EXPECT_NE(first, second);
    EXPECT_EQ(*first, *second);
  }
}

TEST(ValueTest, StringIsReadBack) {
  EXPECT_EQ(QELValue::initWithString("EUR")->stringValue(), "EUR");
  EXPECT_EQ(QELValue::initWithString("")->stringValue(), "");
  const std::string withNul("a\0b", 3);
  EXPECT_EQ(QELValue::initWithString(withNul)->stringValue(), withNul);
}

TEST(ValueTest, StringIsCopied) {
  std::string text = "monthly";
  const QELValuePtr value = QELValue::initWithString(text);
  text = "changed";
  EXPECT_EQ(value->stringValue(), "monthly");
}

TEST(ValueTest, StringReadsTheIntegerZero) {
  EXPECT_EQ(QELValue::initWithString("42")->int64Value(), 0);
}

TEST(ValueTest, EqualWhenKindAndContentAre) {
  EXPECT_EQ(*QELValue::initWithInt64(7), *QELValue::initWithInt64(7));
  EXPECT_EQ(*QELValue::initWithString("1"), *QELValue::initWithString("1"));
  EXPECT_FALSE(*QELValue::initWithInt64(1) == *QELValue::initWithInt64(2));
  EXPECT_FALSE(*QELValue::initWithString("1") == *QELValue::initWithString("2"));
  EXPECT_FALSE(*QELValue::initWithInt64(0) == *QELValue::initWithString(""));
}

// --- Shared ownership ---

TEST(ValuePtrTest, OwnsNothingAtFirst) {
  const QELValuePtr none;
  EXPECT_EQ(none.get(), nullptr);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(none, QELValuePtr());
}

TEST(ValuePtrTest, EqualWhenItOwnsTheSameValue) {
  const QELValuePtr value = QELValue::initWithInt64(7);
  const std::vector<QELValuePtr> copies(2, value);
  const QELValuePtr other = QELValue::initWithInt64(7);
  EXPECT_EQ(copies[0], value);
  EXPECT_EQ(copies[1].get(), value.get());
  EXPECT_NE(value, other);
  EXPECT_NE(value, nullptr);
}

TEST(ValuePtrTest, CopyKeepsTheValueWhenTheFirstOwnerEnds) {
  QELValuePtr copy;
  {
    const QELValuePtr first = QELValue::initWithString("monthly");
    copy = first;
  }
  EXPECT_EQ(copy->stringValue(), "monthly");
}

TEST(ValuePtrTest, FirstOwnerKeepsTheValueWhenACopyEnds) {
  const QELValuePtr first = QELValue::initWithString("monthly");
  std::vector<QELValuePtr> copies(3, first);
  copies.clear();
  EXPECT_EQ(first->stringValue(), "monthly");
}

TEST(ValuePtrTest, CopyOfNoneIsNone) {
  const QELValuePtr none;
  const std::vector<QELValuePtr> copies(2, none);
  EXPECT_EQ(copies[0], nullptr);
  EXPECT_EQ(copies[1], nullptr);
}

TEST(ValuePtrTest, MoveTakesTheValueAlong) {
  QELValuePtr first = QELValue::initWithString("monthly");
  const QELValue* const value = first.get();
  const QELValuePtr second = std::move(first);
  EXPECT_EQ(second.get(), value);
  EXPECT_EQ(second->stringValue(), "monthly");
}

TEST(ValuePtrTest, AssignmentReplacesTheValue) {
  QELValuePtr value = QELValue::initWithInt64(1);
  const QELValuePtr kept = value;
  value = QELValue::initWithInt64(2);
  EXPECT_EQ(value->int64Value(), 2);
  EXPECT_EQ(kept->int64Value(), 1);
  value = nullptr;
  EXPECT_EQ(value, nullptr);
}

TEST(ValuePtrTest, AssignmentToItselfChangesNothing) {
  QELValuePtr value = QELValue::initWithString("monthly");
  const QELValuePtr& self = value;
  value = self;
  EXPECT_EQ(value->stringValue(), "monthly");
}

// Run under the thread and address sanitizers: threads copy and drop one value, and the last of
// them ends it.
TEST(ValuePtrTest, OneValueIsSharedBetweenThreads) {
  constexpr int kThreads = 4;
  QELValuePtr value = QELValue::initWithString("monthly");
  std::array<int, kThreads> soundReads = {};
  std::array<std::thread, kThreads> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads[i] = std::thread([&count = soundReads[i], own = value] {
      for (int round = 0; round < 1000; ++round) {
        const std::vector<QELValuePtr> copies(3, own);
        if (copies[2]->stringValue() == "monthly") ++count;
      }
    });
  }
  value = nullptr;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(soundReads, (std::array<int, kThreads>{1000, 1000, 1000, 1000}));
}

TEST(ValuePointerTest, IsTrueIfItHasAValue) {
  EXPECT_TRUE(static_cast<bool>(QELValue::initWithInt64(0)));
  EXPECT_FALSE(static_cast<bool>(QELValuePtr()));
  EXPECT_FALSE((std::is_convertible_v<QELValuePtr, bool>));
}

}  // namespace
}  // namespace qel::testing
