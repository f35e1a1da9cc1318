// The lower bound for the event of a renewal with two entries. The function calls nothing of the
// library. It does what the rules prescribe, and nothing else:
//
// - It parses six dates: two in the match by product, two to compare the entries once, and two in
//   the match by date.
// - It multiplies the price three times: once for its micros, twice for the value of all units.
// - It computes one digest of three texts.
// - It makes a mapping of 14 slots that owns its texts, in one heap block, which is then freed.

#include <benchmark/benchmark.h>
#include <md5.h>

#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "qel/purchase_event.h"
#include "sample_purchases.h"

namespace qel::bench {
namespace {

static_assert(std::endian::native == std::endian::little, "the dates are read word by word");

struct Entry {
  std::string_view productId;
  std::string_view date;
  std::string_view originalId;
  std::string_view transactionId;
  std::string_view lineItem;
  bool isFreeTrial = false;
};

struct Purchase {
  std::string_view productId;
  std::string_view title;
  std::string_view currency;
  // The price in hundredths of a unit.
  std::int64_t hundredths = 0;
  std::int64_t quantity = 0;
  std::int64_t date = 0;
  std::array<Entry, 2> entries;
};

// A text of `number` bytes, or the integer `number` if `text` is null.
struct Slot {
  const char* text = nullptr;
  std::int64_t number = 0;
  bool isSet = false;
};

struct Mapping {
  std::array<Slot, kParameterKeyTexts.size()> slots;
};

std::uint64_t word(const char* text) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, text, sizeof bytes);
  return bytes;
}

// Returns 0 if eight bytes of `text` have the form of `shape`, where 0 is any digit. Compares all
// bytes at once. For a digit the difference is at most 9, so adding 6 leaves the upper four bits 0.
std::uint64_t misfits(const char* text, const char* shape) {
  std::uint64_t isDigit = 0;
  for (unsigned i = 0; i < 8; ++i) isDigit |= std::uint64_t{shape[i] == '0' ? 1U : 0U} << (8 * i);
  const std::uint64_t difference = word(text) ^ word(shape);
  return (difference | (difference + 6 * isDigit)) & (~std::uint64_t{0} - 15 * isDigit);
}

int number(const char* text) { return (text[0] - '0') * 10 + (text[1] - '0'); }

// Parses a timestamp in UTC, such as 2019-03-14T09:26:53Z. Returns seconds since 1970.
std::optional<std::int64_t> parseDate(std::string_view date) {
  const char* const text = date.data();
  if (date.size() != 20) return std::nullopt;
  if ((misfits(text, "0000-00-") | misfits(text + 8, "00T00:00") |
       misfits(text + 12, "0:00:00Z")) != 0)
    return std::nullopt;
  const std::chrono::year_month_day day(std::chrono::year(number(text) * 100 + number(text + 2)),
                                        std::chrono::month(static_cast<unsigned>(number(text + 5))),
                                        std::chrono::day(static_cast<unsigned>(number(text + 8))));
  const std::int64_t hour = number(text + 11);
  const std::int64_t minute = number(text + 14);
  const std::int64_t second = number(text + 17);
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return std::chrono::sys_days(day).time_since_epoch().count() * std::int64_t{86400} +
         (hour * 60 + minute) * 60 + second;
}

// Keeps the compiler from reusing the result of an earlier parse of the same text.
std::optional<std::int64_t> parseAfresh(std::string_view date) {
  benchmark::DoNotOptimize(date);
  return parseDate(date);
}

// Returns the last eight bytes of the MD5 digest (RFC 1321) of three texts, of at most 55 bytes
// together: one block.
std::int64_t digest(std::string_view first, std::string_view second, std::string_view third) {
  std::array<std::uint8_t, 64> block = {};
  std::size_t size = 0;
  for (const std::string_view text : {first, second, third}) {
    std::memcpy(block.data() + size, text.data(), text.size());
    size += text.size();
  }
  block[size] = 0x80;
  const std::uint64_t bits = size * 8;
  std::memcpy(block.data() + 56, &bits, sizeof bits);
  std::array<std::uint32_t, 4> state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  MD5Transform(state.data(), block.data());
  std::uint64_t last = 0;
  std::memcpy(&last, &state[2], sizeof last);
  return static_cast<std::int64_t>(__builtin_bswap64(last));
}

// Sets integers and texts of a mapping. Copies the texts to the memory after it.
class Writer {
 public:
  explicit Writer(Mapping& mapping)
      : mapping_(mapping), end_(reinterpret_cast<char*>(&mapping + 1)) {}

  void set(ParameterKey key, std::int64_t integer) {
    mapping_.slots[static_cast<std::size_t>(key)] = {nullptr, integer, true};
  }
  void set(ParameterKey key, std::string_view text) {
    std::memcpy(end_, text.data(), text.size());
    mapping_.slots[static_cast<std::size_t>(key)] = {end_, static_cast<std::int64_t>(text.size()),
                                                     true};
    end_ += text.size();
  }

 private:
  Mapping& mapping_;
  char* end_;
};

// Returns the event, which the caller frees. Returns null if the purchase is not a renewal.
Mapping* renewalEvent(const Purchase& purchase) {
  const Entry* byDate[2] = {};
  std::size_t found = 0;
  for (const Entry& entry : purchase.entries) {
    benchmark::DoNotOptimize(parseAfresh(entry.date));
    if (entry.productId == purchase.productId) byDate[found++] = &entry;
  }
  if (found != 2) return nullptr;
  if (parseAfresh(byDate[1]->date) < parseAfresh(byDate[0]->date)) std::swap(byDate[0], byDate[1]);
  const Entry* matched = nullptr;
  for (const Entry* const entry : byDate) {
    if (parseAfresh(entry->date) == purchase.date) matched = entry;
  }
  if (matched != byDate[1] || matched->originalId == matched->transactionId) return nullptr;

  const std::size_t textSize =
      purchase.productId.size() + purchase.title.size() + purchase.currency.size();
  auto* const mapping = new (std::malloc(sizeof(Mapping) + textSize)) Mapping;
  Writer event(*mapping);
  std::int64_t units = purchase.quantity;
  benchmark::DoNotOptimize(units);
  event.set(ParameterKey::kProductId, purchase.productId);
  event.set(ParameterKey::kProductName, purchase.title);
  event.set(ParameterKey::kCurrency, purchase.currency);
  event.set(ParameterKey::kPrice, purchase.hundredths * 10000);
  event.set(ParameterKey::kValue, units * purchase.hundredths * 10000);
  event.set(ParameterKey::kQuantity, units);
  event.set(ParameterKey::kDedupeId,
            digest(matched->originalId, matched->lineItem, matched->productId));
  event.set(byDate[0]->isFreeTrial ? ParameterKey::kSubConvert : ParameterKey::kSubRenew, 1);
  return mapping;
}

// Returns views of the texts of the sample.
Purchase flatCopy(const SamplePurchase& sample) {
  Purchase purchase = {.productId = *sample.product.productIdentifier,
                       .title = *sample.product.localizedTitle,
                       .currency = *sample.product.priceLocaleCurrencyCode,
                       .hundredths = 499,
                       .quantity = *sample.transaction.quantity,
                       .date = sample.transaction.transactionDate->seconds(),
                       .entries = {}};
  for (std::size_t i = 0; i < purchase.entries.size(); ++i) {
    const QELInAppPurchaseItem& entry = sample.entries[i];
    purchase.entries[i] = {
        *entry.productID,     *entry.purchaseDateIA5String, *entry.originalTransactionID,
        *entry.transactionID, *entry.webOrderLineItemID,    entry.isFreeTrial};
  }
  return purchase;
}

// Returns whether the mapping has the keys and values of the library's event.
bool isEventOf(const Mapping& mapping, const SamplePurchase& sample) {
  EventParameters event;
  for (std::size_t i = 0; i < mapping.slots.size(); ++i) {
    const Slot& slot = mapping.slots[i];
    if (!slot.isSet) continue;
    event.set(kParameterKeyTexts[i],
              slot.text == nullptr
                  ? QELValue::initWithInt64(slot.number)
                  : QELValue::initWithString({slot.text, static_cast<std::size_t>(slot.number)}));
  }
  return event == QELInAppPurchaseEventParametersFromProductAndTransactionV2(
                      &sample.productRecord, &sample.transactionRecord, sample.receipt);
}

void BM_FloorRenewal(benchmark::State& state) {
  const SamplePurchase sample(2);
  Purchase purchase = flatCopy(sample);
  Mapping* const event = renewalEvent(purchase);
  if (event == nullptr || !isEventOf(*event, sample)) {
    state.SkipWithError("the lower bound computes another event than the library");
  }
  std::free(event);
  for (auto _ : state) {
    benchmark::DoNotOptimize(purchase);
    Mapping* const mapping = renewalEvent(purchase);
    benchmark::DoNotOptimize(*mapping);
    std::free(mapping);
  }
}
BENCHMARK(BM_FloorRenewal)->Name("BM_Floor/renewal");

}  // namespace
}  // namespace qel::bench
