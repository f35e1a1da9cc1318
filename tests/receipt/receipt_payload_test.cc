#include "receipt_payload.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "receipt_maker.h"

namespace qel::receipt {
namespace {

using std::nullopt;
using testing::attribute;
using testing::attributeSet;
using testing::element;
using testing::ia5Element;
using testing::indefinite;
using testing::integerElement;
using testing::kIntegerTag;
using testing::kOctetStringTag;
using testing::kSequenceTag;
using testing::kSetTag;
using testing::octetsInPieces;
using testing::utf8Element;

std::string entryAttribute(const std::vector<std::string>& attributes) {
  return attribute(17, attributeSet(attributes));
}

// Reads a receipt with one entry that has the attribute.
AppReceiptEntry entryWith(std::int64_t type, const std::string& value) {
  const std::string content = attributeSet({entryAttribute({attribute(type, value)})});
  return readPayload(content).entries.at(0);
}

// Returns "PATH, OFFSET: MESSAGE" of the error of `content`.
std::string failureOf(const std::string& content) {
  try {
    readPayload(content);
  } catch (const ReceiptError& error) {
    return error.path + ", " + std::to_string(error.offset) + ": " + error.message;
  }
  return "no failure";
}

TEST(ReceiptPayloadTest, ReadsEveryAttribute) {
  const AppReceipt receipt = readPayload(attributeSet({
      attribute(0, utf8Element("Production")),
      attribute(2, utf8Element("com.example.app")),
      attribute(3, utf8Element("1.2")),
      attribute(12, ia5Element("2024-03-15T10:00:05Z")),
      attribute(19, utf8Element("1.0")),
      attribute(21, ia5Element("2025-03-15T10:00:05Z")),
      entryAttribute({
          attribute(1701, integerElement(2)),
          attribute(1702, utf8Element("monthly")),
          attribute(1703, utf8Element("2000")),
          attribute(1704, ia5Element("2024-01-12T08:00:00Z")),
          attribute(1705, utf8Element("1000")),
          attribute(1706, ia5Element("2024-01-05T08:00:00Z")),
          attribute(1707, integerElement(3)),
          attribute(1708, ia5Element("2024-02-12T08:00:00Z")),
          attribute(1711, integerElement(540000091200042)),
          attribute(1712, ia5Element("2024-01-20T08:00:00Z")),
          attribute(1713, integerElement(1)),
          attribute(1719, integerElement(1)),
      }),
  }));
  EXPECT_EQ(receipt.environment, "Production");
  EXPECT_EQ(receipt.bundleIdentifier, "com.example.app");
  EXPECT_EQ(receipt.appVersion, "1.2");
  EXPECT_EQ(receipt.creationDate, "2024-03-15T10:00:05Z");
  EXPECT_EQ(receipt.originalAppVersion, "1.0");
  EXPECT_EQ(receipt.expirationDate, "2025-03-15T10:00:05Z");
  EXPECT_EQ(receipt.unknownDates.size(), 0U);
  ASSERT_EQ(receipt.entries.size(), 1U);
  const AppReceiptEntry& entry = receipt.entries.front();
  EXPECT_EQ(entry.quantity, 2);
  EXPECT_EQ(entry.item, (QELInAppPurchaseItem{.productID = "monthly",
                                              .transactionID = "2000",
                                              .originalTransactionID = "1000",
                                              .webOrderLineItemID = "540000091200042",
                                              .purchaseDateIA5String = "2024-01-12T08:00:00Z",
                                              .purchaseType = 3,
                                              .isFreeTrial = true,
                                              .isIntroductoryOffer = true}));
  EXPECT_EQ(entry.originalPurchaseDate, "2024-01-05T08:00:00Z");
  EXPECT_EQ(entry.expirationDate, "2024-02-12T08:00:00Z");
  EXPECT_EQ(entry.cancellationDate, "2024-01-20T08:00:00Z");
}

TEST(ReceiptPayloadTest, MissingAndEmptyAttributesAreAbsent) {
  const std::vector<std::int64_t> types = {1701, 1702, 1703, 1704, 1705, 1706,
                                           1707, 1708, 1711, 1712, 1713, 1719};
  std::vector<std::string> noOctets;
  std::transform(types.begin(), types.end(), std::back_inserter(noOctets),
                 [](std::int64_t type) { return attribute(type, ""); });
  const std::vector<std::int64_t> textTypes = {1702, 1703, 1704, 1705, 1706, 1708, 1712};
  std::vector<std::string> noText;
  std::transform(textTypes.begin(), textTypes.end(), std::back_inserter(noText),
                 [](std::int64_t type) { return attribute(type, ia5Element("")); });
  for (const std::vector<std::string>& attributes :
       {std::vector<std::string>(), noOctets, noText}) {
    const AppReceipt receipt = readPayload(attributeSet({entryAttribute(attributes)}));
    ASSERT_EQ(receipt.entries.size(), 1U);
    const AppReceiptEntry& entry = receipt.entries.front();
    EXPECT_EQ(entry.item, QELInAppPurchaseItem());
    EXPECT_EQ(entry.quantity, nullopt);
    EXPECT_EQ(entry.originalPurchaseDate, nullopt);
    EXPECT_EQ(entry.expirationDate, nullopt);
    EXPECT_EQ(entry.cancellationDate, nullopt);
    EXPECT_EQ(receipt.creationDate, nullopt);
    EXPECT_EQ(receipt.unknownDates.size(), 0U);
  }
}

TEST(ReceiptPayloadTest, AnEmptyAttribute17IsNoEntry) {
  EXPECT_TRUE(readPayload(attributeSet({attribute(17, "")})).entries.empty());
  EXPECT_TRUE(readPayload(attributeSet({})).entries.empty());
}

TEST(ReceiptPayloadTest, EntriesKeepTheirOrder) {
  const auto entryOf = [](const char* product) {
    return entryAttribute({attribute(1702, utf8Element(product))});
  };
  const AppReceipt receipt = readPayload(attributeSet({entryOf("b"), entryOf("a"), entryOf("b")}));
  ASSERT_EQ(receipt.entries.size(), 3U);
  EXPECT_EQ(receipt.entries[0].item.productID, "b");
  EXPECT_EQ(receipt.entries[1].item.productID, "a");
  EXPECT_EQ(receipt.entries[2].item.productID, "b");
}

TEST(ReceiptPayloadTest, TheWebOrderLineItemIdentifier0IsAbsent) {
  EXPECT_EQ(entryWith(1711, integerElement(0)).item.webOrderLineItemID, nullopt);
  EXPECT_EQ(entryWith(1711, integerElement(77)).item.webOrderLineItemID, "77");
  EXPECT_EQ(
      entryWith(1711, element(kIntegerTag, "\x01" + std::string(8, '\0'))).item.webOrderLineItemID,
      "18446744073709551616");
}

TEST(ReceiptPayloadTest, FlagsAreSetUnlessTheyAre0) {
  EXPECT_FALSE(entryWith(1713, integerElement(0)).item.isFreeTrial);
  EXPECT_TRUE(entryWith(1713, integerElement(1)).item.isFreeTrial);
  EXPECT_TRUE(entryWith(1719, integerElement(-1)).item.isIntroductoryOffer);
}

TEST(ReceiptPayloadTest, DatesAreRewrittenOrCounted) {
  EXPECT_EQ(entryWith(1704, ia5Element("2022-04-15T18:52:22+0100")).item.purchaseDateIA5String,
            "2022-04-15T17:52:22Z");
  const AppReceipt receipt = readPayload(
      attributeSet({attribute(12, ia5Element("yesterday")),
                    entryAttribute({attribute(1708, utf8Element("2022-04-15T18:52:22"))})}));
  EXPECT_EQ(receipt.creationDate, "yesterday");
  EXPECT_EQ(receipt.entries.at(0).expirationDate, "2022-04-15T18:52:22");
  EXPECT_EQ(receipt.unknownDates.size(), 2U);
}

TEST(ReceiptPayloadTest, TextsCanBeOfSeveralStringTypes) {
  for (const unsigned char tag : {testing::kUtf8StringTag, static_cast<unsigned char>(0x13),
                                  testing::kIa5StringTag, static_cast<unsigned char>(0x1A)}) {
    EXPECT_EQ(entryWith(1702, element(tag, "coins")).item.productID, "coins");
  }
  EXPECT_EQ(entryWith(1702, utf8Element("m\u00FCnzen")).item.productID, "m\u00FCnzen");
}

TEST(ReceiptPayloadTest, OtherAttributesAreIgnoredWithoutReadingThem) {
  const AppReceipt receipt = readPayload(attributeSet(
      {attribute(5, "not ASN.1"), attribute(5, "twice"), attribute(9999, ""),
       entryAttribute({attribute(1722, "\x30\x84"), attribute(1702, utf8Element("coins"))})}));
  EXPECT_EQ(receipt.entries.at(0).item.productID, "coins");
}

TEST(ReceiptPayloadTest, OneMoreOctetStringIsUnwrapped) {
  const std::string content = attributeSet({attribute(2, utf8Element("com.example.app"))});
  EXPECT_EQ(readPayload(element(kOctetStringTag, content)).bundleIdentifier, "com.example.app");
  EXPECT_EQ(readPayload(octetsInPieces(content, 5)).bundleIdentifier, "com.example.app");
  EXPECT_EQ(failureOf(element(kOctetStringTag, element(kOctetStringTag, ""))),
            "/content, 2: expected SET, found OCTET STRING of 0 bytes");
}

TEST(ReceiptPayloadTest, IndefiniteLengthsAreRead) {
  const auto indefiniteAttribute = [](std::int64_t type, const std::string& value) {
    return indefinite(kSequenceTag,
                      integerElement(type) + integerElement(1) + octetsInPieces(value, 3));
  };
  const std::string entry = indefinite(kSetTag, indefiniteAttribute(1702, utf8Element("coins")) +
                                                    indefiniteAttribute(1701, integerElement(3)));
  const AppReceipt receipt =
      readPayload(indefinite(kSetTag, indefiniteAttribute(17, entry) +
                                          indefiniteAttribute(2, utf8Element("com.example.app"))));
  EXPECT_EQ(receipt.bundleIdentifier, "com.example.app");
  EXPECT_EQ(receipt.entries.at(0).item.productID, "coins");
  EXPECT_EQ(receipt.entries.at(0).quantity, 3);
}

TEST(ReceiptPayloadTest, ErrorsNameTheAttributeAndTheByte) {
  EXPECT_EQ(failureOf(""), "/content, 0: expected another element of ASN.1, found the end");
  EXPECT_EQ(failureOf(attributeSet({}) + "x"), "/content, 2: expected the end, found 1 more bytes");
  EXPECT_EQ(failureOf(attributeSet({integerElement(5)})),
            "/content, 2: expected SEQUENCE, found INTEGER of 1 bytes");
  EXPECT_EQ(failureOf(attributeSet({element(kSequenceTag, integerElement(2))})),
            "/content, 7: expected INTEGER, found the end");
  EXPECT_EQ(failureOf(attributeSet({element(kSequenceTag, utf8Element("2"))})),
            "/content, 4: expected INTEGER, found UTF8STRING of 1 bytes");
  EXPECT_EQ(failureOf(attributeSet({attribute(2, integerElement(5))})),
            "/content/2, 12: expected a UTF8String or an IA5String, found INTEGER of 1 bytes");
  EXPECT_EQ(failureOf(attributeSet({attribute(2, utf8Element("a") + "x")})),
            "/content/2, 15: expected the end, found 1 more bytes");
  const std::string good = entryAttribute({});
  EXPECT_EQ(failureOf(attributeSet({good, entryAttribute({attribute(1701, utf8Element("3"))})})),
            "/content/17/1/1701, 37: expected an INTEGER, found UTF8STRING of 1 bytes");
  EXPECT_EQ(failureOf(attributeSet({good, attribute(17, "x")})),
            "/content/17/1, 24: expected an element of ASN.1, found a broken or cut header");
}

TEST(ReceiptPayloadTest, MoreFieldsInAnAttributeAreAnError) {
  const std::string fields = integerElement(2) + integerElement(1) + element(kOctetStringTag, "");
  EXPECT_EQ(failureOf(attributeSet({element(kSequenceTag, fields + integerElement(1))})),
            "/content, 12: expected the end, found 3 more bytes");
}

TEST(ReceiptPayloadTest, IllFormedTextIsAnError) {
  EXPECT_EQ(failureOf(attributeSet({attribute(2, utf8Element("\xC3"))})),
            "/content/2, 14: expected UTF-8, found other bytes");
  EXPECT_EQ(failureOf(attributeSet({attribute(12, ia5Element("\xED\xA0\x80"))})),
            "/content/12, 14: expected UTF-8, found other bytes");
  EXPECT_NE(failureOf(attributeSet({attribute(2, element(0x2C, utf8Element("a")))})), "no failure");
}

TEST(ReceiptPayloadTest, DuplicateAttributesAreErrors) {
  const std::string bundle = attribute(2, utf8Element("a"));
  EXPECT_EQ(failureOf(attributeSet({bundle, bundle})),
            "/content/2, 25: expected each attribute once, found it twice");
  const std::string product = attribute(1702, utf8Element("a"));
  EXPECT_EQ(failureOf(attributeSet({entryAttribute({product, product})})),
            "/content/17/0/1702, 39: expected each attribute once, found it twice");
}

TEST(ReceiptPayloadTest, EntriesAreLimited) {
  std::string entries;
  for (std::size_t i = 0; i < kMaxReceiptEntries; ++i) entries += entryAttribute({});
  EXPECT_EQ(readPayload(element(kSetTag, entries)).entries.size(), kMaxReceiptEntries);
  EXPECT_EQ(failureOf(element(kSetTag, entries + entryAttribute({}))).substr(0, 20),
            "/content/17/100000, ");
}

}  // namespace
}  // namespace qel::receipt
