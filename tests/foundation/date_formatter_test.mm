// The date formatter over the platform's own, which a build chooses with QEL_DATE_FORMATTER. This
// program brings it along, so the one of the build stays behind in its archive.

#include "qel/date_formatter.h"

#include <gtest/gtest.h>
#import <objc/runtime.h>

#include <algorithm>
#include <string>
#include <vector>

#include "examples.h"
#import "live_doubles.h"
#include "qel/receipt_matching.h"

namespace qel::testing {
namespace {

// The log of calls to NSDateFormatter, "operation argument", and of "dealloc". May be null.
std::vector<std::string>* asked = nullptr;

// The operations of NSDateFormatter as they were before they were watched.
struct Originals {
  IMP init, setLocale, setDateFormat, setTimeZone, dateFromString, dealloc;
} originals;

void note(const char* operation, NSString* argument) {
  if (asked == nullptr) return;
  asked->push_back(std::string(operation) + " " +
                   (argument != nil ? textOfLiveString(argument) : "nil"));
}

id watchedInit(id self, SEL selector) {
  if (asked != nullptr) asked->emplace_back("init");
  return reinterpret_cast<id (*)(id, SEL)>(originals.init)(self, selector);
}
void watchedSetLocale(id self, SEL selector, NSLocale* locale) {
  note("setLocale:", [locale localeIdentifier]);
  reinterpret_cast<void (*)(id, SEL, id)>(originals.setLocale)(self, selector, locale);
}
void watchedSetDateFormat(id self, SEL selector, NSString* format) {
  note("setDateFormat:", format);
  reinterpret_cast<void (*)(id, SEL, id)>(originals.setDateFormat)(self, selector, format);
}
void watchedSetTimeZone(id self, SEL selector, NSTimeZone* zone) {
  note("setTimeZone:",
       [NSString stringWithFormat:@"%ld s", static_cast<long>([zone secondsFromGMT])]);
  reinterpret_cast<void (*)(id, SEL, id)>(originals.setTimeZone)(self, selector, zone);
}
id watchedDateFromString(id self, SEL selector, NSString* text) {
  note("dateFromString:", text);
  return reinterpret_cast<id (*)(id, SEL, id)>(originals.dateFromString)(self, selector, text);
}
void watchedDealloc(id self, SEL selector) {
  if (asked != nullptr) asked->emplace_back("dealloc");
  reinterpret_cast<void (*)(id, SEL)>(originals.dealloc)(self, selector);
}

template <typename Function>
IMP watch(SEL selector, Function watcher) {
  Method const method = class_getInstanceMethod([NSDateFormatter class], selector);
  return method_setImplementation(method, reinterpret_cast<IMP>(watcher));
}

void watchOnce() {
  static const bool isWatched = [] {
    originals = {
      watch(@selector(init), watchedInit),
      watch(@selector(setLocale:), watchedSetLocale),
      watch(@selector(setDateFormat:), watchedSetDateFormat),
      watch(@selector(setTimeZone:), watchedSetTimeZone),
      watch(@selector(dateFromString:), watchedDateFromString),
      watch(@selector(dealloc), watchedDealloc)
    };
    return true;
  }();
  static_cast<void>(isWatched);
}

// What the platform's formatters are asked while `body` runs.
template <typename Body>
std::vector<std::string> askedDuring(Body body) {
  watchOnce();
  std::vector<std::string> list;
  asked = &list;
  body();
  asked = nullptr;
  return list;
}

using Questions = std::vector<std::string>;

const Questions kSetUp = {"init", "setLocale: en_US_POSIX",
                          "setDateFormat: yyyy-MM-dd'T'HH:mm:ssZZZZZ", "setTimeZone: 0 s"};

// The questions to one formatter that is made, reads `texts` and goes.
Questions questionsOf(const std::vector<std::string>& texts) {
  Questions questions = kSetUp;
  for (const std::string& text : texts) questions.push_back("dateFromString: " + text);
  questions.emplace_back("dealloc");
  return questions;
}

constexpr char kMarch[] = "2019-03-14T09:26:53Z";
constexpr char kApril[] = "2019-04-14T09:26:53Z";
constexpr Instant kMarchInstant(1552555613);

TEST(DateFormatterTest, SetsLocaleThenPatternThenTimeZoneAndNothingElse) {
  EXPECT_EQ(askedDuring([] { const DateFormatter formatter; }), questionsOf({}));
}

TEST(DateFormatterTest, AsksThePlatformOncePerText) {
  EXPECT_EQ(askedDuring([] {
              const DateFormatter formatter;
              EXPECT_EQ(formatter.dateFromString(kMarch), kMarchInstant);
              EXPECT_FALSE(formatter.dateFromString("soon").has_value());
            }),
            questionsOf({kMarch, "soon"}));
}

TEST(DateFormatterTest, ReadsNothingFromAnAbsentTextOrAnEmptyOne) {
  const DateFormatter formatter;
  EXPECT_FALSE(formatter.dateFromString(std::nullopt).has_value());
  EXPECT_FALSE(formatter.dateFromString("").has_value());
}

TEST(DateFormatterTest, ReadsNothingFromAnUnpairedSurrogate) {
  const DateFormatter formatter;
  EXPECT_FALSE(formatter.dateFromString("\xED\xA0\x80").has_value());
  EXPECT_EQ(formatter.dateFromString(kMarch), kMarchInstant);
}

// Puts another time zone in the place of the user's for as long as it lives.
class OtherTimeZone {
 public:
  OtherTimeZone() {
    [NSTimeZone setDefaultTimeZone:[NSTimeZone timeZoneForSecondsFromGMT:(5 * 60 + 45) * 60]];
  }
  ~OtherTimeZone() { [NSTimeZone setDefaultTimeZone:before_]; }
  OtherTimeZone(const OtherTimeZone&) = delete;
  OtherTimeZone& operator=(const OtherTimeZone&) = delete;

 private:
  NSTimeZone* const before_ = [NSTimeZone defaultTimeZone];
};

TEST(DateFormatterTest, TakesNoNoticeOfTheUsersTimeZone) {
  @autoreleasepool {
    const OtherTimeZone zone;
    ASSERT_EQ([[NSTimeZone defaultTimeZone] secondsFromGMT], (5 * 60 + 45) * 60);
    const DateFormatter formatter;
    EXPECT_EQ(formatter.dateFromString(kMarch), kMarchInstant);
    EXPECT_EQ(formatter.dateFromString("2019-03-14T10:26:53+01:00"), kMarchInstant);
  }
}

// --- Receipt matching ---

QELInAppPurchaseItem entryOf(const char* product, const char* date) {
  QELInAppPurchaseItem entry;
  entry.productID = product;
  entry.purchaseDateIA5String = date;
  return entry;
}

TEST(DateFormatterTest, IsMadeOnceForEachMatch) {
  const std::vector<QELInAppPurchaseItem> entries = {entryOf("coins", kApril),
                                                     entryOf("gold", kMarch)};
  const QELInAppPurchaseItems receipt(entries.begin(), entries.end());
  // One entry found each time, so that nothing is compared.
  const auto matchTwice = [&] {
    static_cast<void>(QELMatchingInAppPurchaseItems(receipt, "coins", std::nullopt));
    static_cast<void>(QELMatchingInAppPurchaseItems(receipt, "gold", kMarchInstant));
  };
  const Questions once = questionsOf({kApril, kMarch});
  Questions twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(askedDuring(matchTwice), twice);
}

TEST(DateFormatterTest, IsNotMadeForAMatchWithoutEntriesOrWithoutACriterion) {
  const std::vector<QELInAppPurchaseItem> entries = {entryOf("coins", kMarch)};
  const QELInAppPurchaseItems receipt(entries.begin(), entries.end());
  EXPECT_EQ(askedDuring([&] {
              static_cast<void>(QELMatchingInAppPurchaseItems({}, "coins", kMarchInstant));
              static_cast<void>(QELMatchingInAppPurchaseItems(receipt, "", std::nullopt));
            }),
            Questions());
}

TEST(DateFormatterTest, FindsAnEntryWhoseDateOnlyThePlatformReads) {
  // Carried over, February 42 is March 14.
  const std::vector<QELInAppPurchaseItem> entries = {entryOf("coins", "2019-02-42T09:26:53Z")};
  const QELInAppPurchaseItems receipt(entries.begin(), entries.end());
  const auto found = QELMatchingInAppPurchaseItems(receipt, std::nullopt, kMarchInstant);
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->size(), 1u);
}

TEST(DateFormatterTest, GoesWithTheMatchEveryTime) {
  const std::vector<QELInAppPurchaseItem> entries = {
      entryOf("coins", kApril), entryOf("coins", kMarch), entryOf("coins", "soon")};
  const QELInAppPurchaseItems receipt(entries.begin(), entries.end());
  constexpr int kMatches = 1000;
  const Questions questions = askedDuring([&] {
    for (int i = 0; i < kMatches; ++i) {
      static_cast<void>(QELMatchingInAppPurchaseItems(receipt, "coins", std::nullopt));
    }
  });
  EXPECT_EQ(std::count(questions.begin(), questions.end(), "init"), kMatches);
  EXPECT_EQ(std::count(questions.begin(), questions.end(), "dealloc"), kMatches);
}

// --- The example purchases ---

TEST(DateFormatterTest, GivesAllExamplesButThoseOfDatesThatOnlyThePlatformReads) {
  std::vector<std::string> others;
  for (const Example& example : examplePurchases()) {
    Outcome outcome = outcomeOfPlainRecords(example.purchase);
    outcome.asked.clear();
    if (outcome != example.golden) others.push_back(example.name);
  }
  EXPECT_EQ(others, std::vector<std::string>{
                        "subscription whose entries have no date, a bare date, 30 February and "
                        "text after the date: none is found"});
}

}  // namespace
}  // namespace qel::testing
