#include "ber_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "receipt_maker.h"

namespace qel::receipt {
namespace {

using testing::element;
using testing::indefinite;
using testing::integerElement;
using testing::kIntegerTag;
using testing::kOctetStringTag;
using testing::kSequenceTag;
using testing::kSetTag;
using testing::octetsInPieces;

// Calls `read`, which must throw BerError, and returns "OFFSET: MESSAGE".
template <typename Read>
std::string failureOf(const Read& read) {
  try {
    read();
  } catch (const BerError& error) {
    return std::to_string(error.offset) + ": " + error.message;
  }
  return "no failure";
}

BerElement firstOf(const std::string& bytes) { return BerReader({bytes, 0}).next(); }

std::string brokenOf(const std::string& bytes) {
  return failureOf([&bytes] { firstOf(bytes); });
}

TEST(BerReaderTest, ReadsElementsInOrder) {
  const std::string bytes = integerElement(7) + element(kOctetStringTag, "abc");
  BerReader reader({bytes, 100});
  const BerElement number = reader.next(kInteger);
  EXPECT_EQ(number.offset, 100U);
  EXPECT_EQ(number.content.offset, 102U);
  EXPECT_EQ(number.content.bytes, "\x07");
  EXPECT_FALSE(reader.atEnd());
  EXPECT_EQ(reader.offset(), 103U);
  const BerElement octets = reader.next(kOctetString);
  EXPECT_EQ(octets.content.bytes, "abc");
  EXPECT_EQ(octets.encoding, bytes.substr(3));
  EXPECT_TRUE(reader.atEnd());
  reader.expectEnd();
}

TEST(BerReaderTest, AnIndefiniteLengthEndsAtItsOwnMarker) {
  const std::string inner = indefinite(kSequenceTag, integerElement(0));
  const std::string bytes = indefinite(kSetTag, inner + integerElement(1)) + integerElement(2);
  BerReader reader({bytes, 0});
  const BerElement set = reader.next(kSet);
  EXPECT_EQ(set.content.bytes, inner + integerElement(1));
  EXPECT_EQ(int64Of(reader.next(kInteger)), 2);
}

TEST(BerReaderTest, BrokenElementsAreErrors) {
  EXPECT_EQ(brokenOf(""), "0: expected another element of ASN.1, found the end");
  EXPECT_EQ(brokenOf("\x04\x05"
                     "abc"),
            "0: expected an element of ASN.1, found a length of 5 bytes where 3 are left");
  EXPECT_EQ(brokenOf("\x04\x84\x7F\xFF\xFF\xFF"
                     "abc"),
            "0: expected an element of ASN.1, found a length of 2147483647 bytes where 3 are left");
  const std::string broken = "0: expected an element of ASN.1, found a broken or cut header";
  EXPECT_EQ(brokenOf("\x04"), broken);
  EXPECT_EQ(brokenOf("\x04\x82\x01"), broken);
  EXPECT_EQ(brokenOf("\x04\x89\x01\x01\x01\x01\x01\x01\x01\x01\x01"), broken);
  // A primitive element cannot have an indefinite length.
  EXPECT_EQ(brokenOf("\x04\x80"), broken);
}

TEST(BerReaderTest, AnIndefiniteLengthWithoutItsMarkerIsAnError) {
  EXPECT_EQ(brokenOf("\x31\x80\x02\x01\x05"),
            "5: expected the end of an indefinite length, found the end");
  EXPECT_EQ(brokenOf("\x31\x80"), "2: expected the end of an indefinite length, found the end");
}

TEST(BerReaderTest, IndefiniteLengthsNestUpTo32Levels) {
  std::string bytes = integerElement(1);
  for (int i = 0; i < 32; ++i) bytes = indefinite(kSetTag, bytes);
  EXPECT_EQ(firstOf(bytes).content.bytes.size(), bytes.size() - 4);
  EXPECT_EQ(brokenOf(indefinite(kSetTag, bytes)),
            "66: expected at most 32 levels of indefinite lengths, found more");
}

TEST(BerReaderTest, AnotherTypeIsAnError) {
  const std::string bytes = element(kSequenceTag, "ab");
  BerReader reader({bytes, 5});
  EXPECT_EQ(failureOf([&] { reader.next(kSet); }),
            "5: expected SET, found constructed SEQUENCE of 2 bytes");
  EXPECT_EQ(failureOf([&] { reader.next(kSet); }), "9: expected SET, found the end");
  // A SET is constructed, and of the class universal.
  for (const char tag : {'\x11', '\xB1'}) {
    const std::string other = element(static_cast<unsigned char>(tag), "");
    EXPECT_NE(failureOf([&] { BerReader({other, 0}).next(kSet); }), "no failure");
  }
}

TEST(BerReaderTest, ASmallTagInTheFormOfALargeOneIsNoType) {
  EXPECT_EQ(firstOf("\x1F\x02\x01\x05").tag, std::nullopt);
  EXPECT_EQ(firstOf("\x1F\x81\x02\x01\x05").tag, std::nullopt);
}

TEST(BerReaderTest, MoreElementsThanExpectedAreAnError) {
  const std::string bytes = "abc";
  EXPECT_EQ(failureOf([&] {
              BerReader({bytes, 3}).expectEnd();
            }),
            "3: expected the end, found 3 more bytes");
}

TEST(BerReaderTest, OctetsInPiecesAreJoined) {
  std::string joined;
  EXPECT_EQ(octetsOf(firstOf(element(kOctetStringTag, "abcde")), joined).bytes, "abcde");
  EXPECT_EQ(joined, "");
  const std::string pieces = octetsInPieces("abcde", 2);
  const BerBytes octets = octetsOf(firstOf(pieces), joined);
  EXPECT_EQ(octets.bytes, "abcde");
  EXPECT_EQ(octets.offset, 2U);
}

TEST(BerReaderTest, PiecesNestUpToFiveLevels) {
  std::string joined;
  constexpr unsigned char kConstructedOctets = 0x24;
  std::string bytes = element(kOctetStringTag, "a");
  for (int i = 0; i < 5; ++i) bytes = element(kConstructedOctets, bytes);
  EXPECT_EQ(octetsOf(firstOf(bytes), joined).bytes, "a");
  for (int i = 0; i < 5; ++i) bytes = element(kConstructedOctets, bytes);
  EXPECT_EQ(failureOf([&] { octetsOf(firstOf(bytes), joined); }).substr(0, 50),
            "0: expected an OCTET STRING, found a broken one in");
}

TEST(BerReaderTest, IntegersOf64BitsAreRead) {
  for (const std::int64_t value : {INT64_MIN, INT64_C(-129), INT64_C(-128), INT64_C(-1), INT64_C(0),
                                   INT64_C(127), INT64_C(128), INT64_C(65535), INT64_MAX}) {
    EXPECT_EQ(int64Of(firstOf(integerElement(value))), value);
    EXPECT_EQ(digitsOf(firstOf(integerElement(value))), std::to_string(value));
  }
}

TEST(BerReaderTest, RedundantSignBytesAreAccepted) {
  EXPECT_EQ(int64Of(firstOf(element(kIntegerTag, std::string(9, '\0') + "\x05"))), 5);
  EXPECT_EQ(int64Of(firstOf(element(kIntegerTag, std::string(9, '\xFF') + "\xFB"))), -5);
  EXPECT_EQ(digitsOf(firstOf(element(kIntegerTag, std::string(9, '\0') + "\x05"))), "5");
}

TEST(BerReaderTest, WiderIntegersHaveDigitsOnly) {
  // 2^64 and -2^64 - 1.
  EXPECT_EQ(
      failureOf([] { int64Of(firstOf(element(kIntegerTag, "\x01" + std::string(8, '\0')))); }),
      "0: expected an INTEGER of 64 bits, found INTEGER of 9 bytes");
  EXPECT_EQ(digitsOf(firstOf(element(kIntegerTag, "\x01" + std::string(8, '\0')))),
            "18446744073709551616");
  EXPECT_EQ(digitsOf(firstOf(element(kIntegerTag, "\xFE" + std::string(8, '\xFF')))),
            "-18446744073709551617");
  EXPECT_EQ(digitsOf(firstOf(element(kIntegerTag, std::string(63, '\0') + "\x01"))), "1");
  EXPECT_EQ(failureOf([] { digitsOf(firstOf(element(kIntegerTag, std::string(65, '\0')))); }),
            "0: expected an INTEGER of at most 64 bytes, found INTEGER of 65 bytes");
}

TEST(BerReaderTest, EmptyAndOtherIntegersAreErrors) {
  EXPECT_EQ(failureOf([] { int64Of(firstOf(element(kIntegerTag, ""))); }),
            "0: expected an INTEGER, found INTEGER of 0 bytes");
  EXPECT_EQ(failureOf([] { digitsOf(firstOf(element(kOctetStringTag, "1"))); }),
            "0: expected an INTEGER, found OCTET STRING of 1 bytes");
}

}  // namespace
}  // namespace qel::receipt
