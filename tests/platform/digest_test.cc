#include "qel/digest.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "support/purchase_fixtures.h"

namespace qel::testing {
namespace {

// The digest is the last 16 of the 32 digits that `printf %s TEXT | md5sum` prints.
struct DigestCase {
  const char* name;
  std::string bytes;
  std::uint64_t digest;
  friend std::ostream& operator<<(std::ostream& out, const DigestCase& c) { return out << c.name; }
};

class DigestTest : public ::testing::TestWithParam<DigestCase> {};

TEST_P(DigestTest, IsTheSecondHalfOfThePrintedDigest) {
  EXPECT_EQ(qel_64LSBMD5(GetParam().bytes), GetParam().digest);
}

// The test suite of RFC 1321, appendix A.5.
INSTANTIATE_TEST_SUITE_P(
    Rfc1321, DigestTest,
    ::testing::Values(
        DigestCase{"Empty", "", 0xE9800998ECF8427E}, DigestCase{"A", "a", 0x31C399E269772661},
        DigestCase{"Abc", "abc", 0xD6963F7D28E17F72},
        DigestCase{"MessageDigest", "message digest", 0x525A2F31AAF161D0},
        DigestCase{"Alphabet", "abcdefghijklmnopqrstuvwxyz", 0x7DFB496CCA67E13B},
        DigestCase{"LettersAndDigits",
                   "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
                   0xA5611C2C9F419D9F},
        DigestCase{
            "EightyDigits",
            "12345678901234567890123456789012345678901234567890123456789012345678901234567890",
            0xAC49DA2E2107B67A}),
    nameOfCase<DigestCase>);

INSTANTIATE_TEST_SUITE_P(
    Purchases, DigestTest,
    ::testing::Values(DigestCase{"Golden", "100077monthly", 1247304248623414521},
                      DigestCase{"HighestBitSet", "1000monthly", 0x92794F831B539753}),
    nameOfCase<DigestCase>);

// The digest works on blocks of 64 bytes and appends at least nine: `printf 'a%.0s' {1..55}`.
INSTANTIATE_TEST_SUITE_P(
    BlockLimits, DigestTest,
    ::testing::Values(DigestCase{"Bytes55", std::string(55, 'a'), 0x358552954AD0DF65},
                      DigestCase{"Bytes56", std::string(56, 'a'), 0x4C6C197006D17218},
                      DigestCase{"Bytes63", std::string(63, 'a'), 0x550606BE297466D5},
                      DigestCase{"Bytes64", std::string(64, 'a'), 0x5A4A0363793F7367},
                      DigestCase{"Bytes65", std::string(65, 'a'), 0xCB859ADAE0248435},
                      DigestCase{"Bytes119", std::string(119, 'a'), 0xE75F6DABC90E1613},
                      DigestCase{"Bytes120", std::string(120, 'a'), 0xC75FF505E1F1E537},
                      DigestCase{"Bytes128", std::string(128, 'a'), 0x93D021808BC6FF70}),
    nameOfCase<DigestCase>);

// `printf 'a\0b\377' | md5sum`
TEST(DigestBytesTest, MayBeAnyBytes) {
  EXPECT_EQ(qel_64LSBMD5(std::string_view("a\0b\xFF", 4)), 0x66C53387EC9A7BACU);
}

TEST(DigestBytesTest, OfADefaultViewIsThatOfNoBytes) {
  EXPECT_EQ(qel_64LSBMD5(std::string_view()), qel_64LSBMD5(""));
}

}  // namespace
}  // namespace qel::testing
