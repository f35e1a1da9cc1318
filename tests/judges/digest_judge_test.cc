// Holds the digest against the published one and against OpenSSL's.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "identifier_judge.h"
#include "qel/digest.h"
#include "random_source.h"

namespace qel::testing {
namespace {

struct PublishedDigest {
  std::string_view text;
  std::string_view hexadecimal;
};

// RFC 1321, appendix A.5.
constexpr std::array<PublishedDigest, 7> kPublishedDigests = {{
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
}};

TEST(DigestJudgeTest, ThePublishedDigestsEndInTheirLast64Bits) {
  for (const PublishedDigest& published : kPublishedDigests) {
    const std::string lastBytes(published.hexadecimal.substr(16));
    EXPECT_EQ(qel_64LSBMD5(published.text), std::stoull(lastBytes, nullptr, 16)) << published.text;
  }
}

// The digest pads to blocks of 64 bytes, so the lengths around their multiples matter.
TEST(DigestJudgeTest, EveryLengthOfUpToEightBlocksIsDigestedAsByOpenSsl) {
  std::string text;
  for (int length = 0; length <= 8 * 64; ++length) {
    ASSERT_EQ(qel_64LSBMD5(text), judgedDigest(text)) << length;
    text += static_cast<char>('a' + length % 26);
  }
}

TEST(DigestJudgeTest, RandomTextsAreDigestedAsByOpenSsl) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 10000; ++i) {
    std::string text(randomBetween(random, std::size_t{0}, std::size_t{200}), '\0');
    for (char& character : text) character = static_cast<char>(randomBetween(random, 0, 255));
    ASSERT_EQ(qel_64LSBMD5(text), judgedDigest(text)) << ::testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace qel::testing
