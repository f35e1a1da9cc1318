// Purchases as the points of a finite space: of every input, only what can decide an outcome.
//
// Nothing here is a record or a date or an amount; those are made of a point when it is tried.

#ifndef QEL_TESTS_EXHAUSTIVE_PURCHASE_SPACE_H_
#define QEL_TESTS_EXHAUSTIVE_PURCHASE_SPACE_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace qel::testing {

enum class TextIs : std::uint8_t { kAbsent, kEmpty, kGiven };

// Where the store's product stands.
enum class ProductIs : std::uint8_t { kAbsent, kWithoutIdentifier, kEmptyIdentifier, kGiven };

// The identifier of the store's original transaction beside the transaction's own.
enum class OriginalIs : std::uint8_t { kNoTransaction, kAbsent, kEmpty, kSame, kOther };

enum class DateIs : std::uint8_t { kAbsent, kWhole, kWithFraction };

enum class PriceIs : std::uint8_t { kAbsent, kGiven, kNotANumber };

enum class QuantityIs : std::uint8_t { kNoPayment, kZero, kPositive, kNegative };

// Payment modes of an offer; the wide one reads 2 in its low 32 bits and is not 2.
enum class OfferIs : std::uint8_t { kAbsent, kMode0, kMode1, kMode2, kWideMode };

// What one entry of the receipt says.

// An entry is for the product only when its identifier has the very same characters.
enum class EntryProductIs : std::uint8_t { kOurs, kOtherCase, kOther, kEmpty, kAbsent };

// Purchase types; of the wide ones only the low 32 bits count.
enum class TypeIs : std::uint8_t { kAbsent, k0, k1, k2, k3, k5, kReads3, kReads2 };

enum class WebOrderIs : std::uint8_t { kAbsent, kZero, kGiven };

// The entry's original transaction identifier beside its own, or beside what its own would be.
enum class EntryOriginalIs : std::uint8_t { kAbsent, kEmpty, kSame, kOther };

// The entry's date beside the transaction's, whole seconds.
enum class When : std::uint8_t { kAbsent, kUnreadable, kEarliest, kEarlier, kAtDate, kLater };

struct Entry {
  EntryProductIs product = EntryProductIs::kOurs;
  TypeIs type = TypeIs::k1;
  WebOrderIs webOrder = WebOrderIs::kAbsent;
  TextIs transaction = TextIs::kGiven;
  EntryOriginalIs original = EntryOriginalIs::kSame;
  When when = When::kAtDate;
  bool isFreeTrial = false;
  bool isIntroductoryOffer = false;
  // 0 to 2: entries that say the same still carry identifiers of their own.
  std::uint8_t series = 0;
};

struct Purchase {
  ProductIs product = ProductIs::kGiven;
  PriceIs price = PriceIs::kGiven;
  bool hasCurrency = true;
  bool hasTitle = true;

  OfferIs offer = OfferIs::kMode0;
  bool offerHasPrice = true;
  // The four availability answers, in the order in which they are asked.
  bool platformHasDiscounts = true;
  bool discountsHavePrice = true;
  bool discountsHaveMode = true;
  bool productHasOffer = true;

  bool hasTransaction = true;
  TextIs transaction = TextIs::kGiven;
  OriginalIs original = OriginalIs::kNoTransaction;
  DateIs date = DateIs::kWhole;
  QuantityIs quantity = QuantityIs::kPositive;

  // The receipt, in its own order.
  std::array<const Entry*, 5> entries = {};
  std::size_t entryCount = 0;
};

// The texts and numbers that stand for "given". The prices and quantities are ones that binary
// floating point gets wrong: 8.29 x 7 and 0.29 x 7.
inline constexpr const char* kOurProduct = "monthly";
inline constexpr const char* kCurrency = "EUR";
inline constexpr const char* kTitle = "Monthly plan";
inline constexpr std::int64_t kPriceCents = 829;
inline constexpr std::int64_t kOfferCents = 29;
inline constexpr std::int64_t kPositiveQuantity = 7;
inline constexpr std::int64_t kNegativeQuantity = -4;

}  // namespace qel::testing

#endif  // QEL_TESTS_EXHAUSTIVE_PURCHASE_SPACE_H_
