// Compares the encoding of text, and the identifier computed from it, with ICU and OpenSSL.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "identifier_oracle.h"
#include "joined.h"
#include "micros_and_dedupe_id.h"
#include "qel/text.h"
#include "random_source.h"

namespace qel::testing {
namespace {

constexpr char32_t kFirstHigh = 0xD800;
constexpr char32_t kFirstLow = 0xDC00;
constexpr char32_t kPastSurrogates = 0xE000;
constexpr char32_t kFirstPaired = 0x10000;
constexpr char32_t kPastCharacters = 0x110000;

// The UTF-16 of a code point below U+10000, a surrogate included.
std::u16string unit(char32_t codePoint) { return {static_cast<char16_t>(codePoint)}; }

std::u16string pairOf(char32_t character) {
  const char32_t offset = character - kFirstPaired;
  return unit(kFirstHigh + offset / 1024) + unit(kFirstLow + offset % 1024);
}

// Expects that `bytes` are encoded as ICU encodes the UTF-16 that they carry.
void expectAsOracle(const std::string& bytes) {
  const std::optional<std::u16string> text = carriedUtf16(bytes);
  const std::optional<std::string> expected = text.has_value() ? strictUtf8(*text) : std::nullopt;
  ASSERT_EQ(utf8DataWithoutLoss(bytes), expected) << ::testing::PrintToString(bytes);
}

TEST(IdentifierComparisonTest, EveryCharacterIsEncodedAsByIcu) {
  int characters = 0;
  for (char32_t character = 0; character < kPastCharacters; ++character) {
    if (character == kFirstHigh) character = kPastSurrogates;
    const std::u16string text =
        u"a" + (character < kFirstPaired ? unit(character) : pairOf(character)) + u"b";
    const std::optional<std::string> expected = strictUtf8(text);
    ASSERT_TRUE(expected.has_value()) << static_cast<unsigned>(character);
    ASSERT_EQ(utf8DataWithoutLoss(carriedText(text)), expected) << static_cast<unsigned>(character);
    ++characters;
  }
  EXPECT_EQ(characters, 1112064);
}

TEST(IdentifierComparisonTest, NoSurrogateAloneCanBeEncoded) {
  for (char32_t surrogate = kFirstHigh; surrogate < kPastSurrogates; ++surrogate) {
    const std::string alone = carriedText(unit(surrogate));
    ASSERT_EQ(alone.size(), 3u);
    for (const std::string& text : {alone, "a" + alone, alone + "a", "a" + alone + "b",
                                    alone + alone, joined({alone, "a", alone})}) {
      ASSERT_EQ(utf8DataWithoutLoss(text), std::nullopt) << static_cast<unsigned>(surrogate);
      ASSERT_EQ(QELTransactionDedupeID(text, std::nullopt, "p"), 0u);
      ASSERT_EQ(QELTransactionDedupeID("o", "1", text), 0u);
    }
  }
}

TEST(IdentifierComparisonTest, EveryPairSplitAtTheJointIsOneCharacter) {
  for (char32_t character = kFirstPaired; character < kPastCharacters; ++character) {
    const std::u16string pair = pairOf(character);
    const std::string expected = "o" + *strictUtf8(pair) + "p";
    const std::string original = "o" + carriedText(pair.substr(0, 1));
    const std::string product = carriedText(pair.substr(1)) + "p";
    ASSERT_EQ(utf8DataWithoutLoss(original + product), expected);
    ASSERT_EQ(QELTransactionDedupeID(original, std::nullopt, product), oracleDigest(expected))
        << static_cast<unsigned>(character);
  }
}

TEST(IdentifierComparisonTest, EveryPairWithinOneTextIsOneCharacter) {
  for (char32_t character = kFirstPaired; character < kPastCharacters; ++character) {
    const std::u16string pair = pairOf(character);
    const std::string halves = carriedText(pair.substr(0, 1)) + carriedText(pair.substr(1));
    ASSERT_EQ(utf8DataWithoutLoss("a" + halves + "b"), "a" + *strictUtf8(pair) + "b")
        << static_cast<unsigned>(character);
  }
}

TEST(IdentifierComparisonTest, EveryPairInTheWrongOrderCannotBeEncoded) {
  for (char32_t character = kFirstPaired; character < kPastCharacters; ++character) {
    const std::u16string pair = pairOf(character);
    const std::string halves = carriedText(pair.substr(1)) + carriedText(pair.substr(0, 1));
    ASSERT_EQ(utf8DataWithoutLoss(halves), std::nullopt) << static_cast<unsigned>(character);
  }
}

// Digits between the halves keep them apart.
TEST(IdentifierComparisonTest, PairsSplitAroundAWebOrderLineItemCannotBeEncoded) {
  constexpr char32_t kStep = 1021;  // a prime, so that both halves vary
  for (char32_t character = kFirstPaired; character < kPastCharacters; character += kStep) {
    const std::u16string pair = pairOf(character);
    ASSERT_EQ(QELTransactionDedupeID("o" + carriedText(pair.substr(0, 1)), "7",
                                     carriedText(pair.substr(1)) + "p"),
              0u);
  }
}

TEST(IdentifierComparisonTest, EveryRowOfThreeHalvesIsReadAlike) {
  const std::array<std::string, 7> pieces = {carriedText(unit(0xD800)),
                                             carriedText(unit(0xDBFF)),
                                             carriedText(unit(0xDC00)),
                                             carriedText(unit(0xDFFF)),
                                             carriedText(unit(0xD7FF)),
                                             carriedText(unit(0xE000)),
                                             "a"};
  for (const std::string& first : pieces) {
    for (const std::string& second : pieces) {
      for (const std::string& third : pieces) {
        for (const std::string& fourth : pieces) {
          const std::string text = joined({first, second, third, fourth});
          expectAsOracle(text);
          expectAsOracle(text.substr(0, text.size() - 1));
        }
      }
    }
  }
}

TEST(IdentifierComparisonTest, EveryOneAndTwoBytesAreReadAlike) {
  constexpr int kBytes = 256;
  for (int first = 0; first < kBytes; ++first) {
    expectAsOracle({static_cast<char>(first)});
    for (int second = 0; second < kBytes; ++second) {
      expectAsOracle({static_cast<char>(first), static_cast<char>(second)});
    }
  }
}

TEST(IdentifierComparisonTest, EveryThreeBytesFromALeadOnAreReadAlike) {
  constexpr int kBytes = 256;
  constexpr int kFirstLead = 0xE0;
  constexpr int kPastLeads = 0xF0;
  std::string bytes(3, '\0');
  for (int first = kFirstLead; first < kPastLeads; ++first) {
    for (int second = 0; second < kBytes; ++second) {
      for (int third = 0; third < kBytes; ++third) {
        bytes = {static_cast<char>(first), static_cast<char>(second), static_cast<char>(third)};
        expectAsOracle(bytes);
      }
    }
  }
}

TEST(IdentifierComparisonTest, FourBytesAtEveryBoundaryAreReadAlike) {
  constexpr int kBytes = 256;
  constexpr int kFirstLead = 0xF0;
  constexpr std::array<int, 9> kLater = {0x00, 0x7F, 0x80, 0x81, 0xA5, 0xBF, 0xC0, 0xE0, 0xFF};
  for (int first = kFirstLead; first < kBytes; ++first) {
    for (int second = 0; second < kBytes; ++second) {
      for (const int third : kLater) {
        for (const int fourth : kLater) {
          expectAsOracle({static_cast<char>(first), static_cast<char>(second),
                          static_cast<char>(third), static_cast<char>(fourth)});
        }
      }
    }
  }
}

TEST(IdentifierComparisonTest, RandomIdentifiersAreAsExpected) {
  constexpr std::array<std::u16string_view, 12> kPieces = {u"",
                                                           u"1",
                                                           u"1000",
                                                           u"monthly",
                                                           u"\u00e9",
                                                           u"e\u0301",
                                                           u"\u6708",
                                                           u"\U0001F600",
                                                           std::u16string_view(u"\xD83D", 1),
                                                           std::u16string_view(u"\xDE00", 1),
                                                           std::u16string_view(u"\0", 1),
                                                           u"\uFEFF"};
  std::mt19937_64 random = seededRandom();
  const auto randomText = [&random, &kPieces]() -> std::optional<std::string> {
    if (randomBetween(random, 0, 19) == 0) return std::nullopt;
    std::u16string text;
    for (int i = randomBetween(random, 0, 3); i > 0; --i) {
      text += kPieces[randomBetween(random, std::size_t{0}, kPieces.size() - 1)];
    }
    return carriedText(text);
  };
  for (int i = 0; i < 100000; ++i) {
    const std::optional<std::string> original = randomText();
    const std::optional<std::string> product = randomText();
    // Numbers of every length, larger than 64 bits too, and any other text.
    std::optional<std::string> webOrder = randomText();
    if (randomBetween(random, 0, 1) == 0) {
      webOrder =
          std::to_string(static_cast<std::int64_t>(random()) >> randomBetween(random, 0, 63));
      if (randomBetween(random, 0, 3) == 0) *webOrder += std::to_string(random());
    }
    ASSERT_EQ(QELTransactionDedupeID(original, webOrder, product),
              oracleDedupeId(original, webOrder, product))
        << ::testing::PrintToString(original) << ::testing::PrintToString(webOrder)
        << ::testing::PrintToString(product);
  }
}

}  // namespace
}  // namespace qel::testing
