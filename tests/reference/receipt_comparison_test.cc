// Compares the reader of receipts with its oracle: on random receipts, on every truncation and on
// every change of one byte.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <variant>
#include <vector>

#include "qel/app_receipt.h"
#include "random_source.h"
#include "receipt_attributes.h"
#include "receipt_maker.h"
#include "receipt_oracle.h"
#include "receipt_payload.h"

namespace qel::testing {
namespace {

const ReceiptSigner& signer() {
  static const ReceiptSigner kSigner;
  return kSigner;
}

// --- Random receipts ---

class RandomReceipt {
 public:
  explicit RandomReceipt(std::mt19937_64& random) : random_(random) {}

  // Returns the content of a receipt. Adds what it says to `model`.
  std::string make(OracleReceipt& model) {
    std::vector<std::string> attributes;
    for (const int type : {0, 2, 3, 19}) addText(type, attributes, model.attributes);
    for (const int type : {12, 21}) addDate(type, attributes, model, model.attributes);
    const int entries = randomBetween(random_, 0, oneIn(50) ? 200 : 8);
    for (int i = 0; i < entries; ++i) {
      model.entries.emplace_back();
      // Entries are in the order of the content; what is between them does not matter.
      attributes.push_back(encodedAttribute(17, makeEntry(model)));
    }
    for (int i = randomBetween(random_, 0, 3); i > 0; --i) {
      attributes.insert(
          attributes.begin() + randomBetween(random_, 0, 2) % int(attributes.size() + 1),
          encodedAttribute(randomBetween(random_, 4, 11), randomBytes()));
    }
    std::string content = encodedSet(attributes);
    if (!oneIn(4)) return content;
    return oneIn(2) ? element(kOctetStringTag, content) : octetsInPieces(content, 1000);
  }

 private:
  bool oneIn(int number) { return randomBetween(random_, 1, number) == 1; }

  std::string randomBytes() {
    std::string bytes(static_cast<std::size_t>(randomBetween(random_, 0, 20)), '\0');
    for (char& byte : bytes) byte = static_cast<char>(randomBetween(random_, 0, 255));
    return bytes;
  }

  std::string randomText() {
    static const std::vector<std::string> kPieces = {
        "a", "com.example.", "1000000", "\"", "\\", "\n", "\u00E9", "\u6708", "\U0001F600", " "};
    std::string text;
    for (int i = randomBetween(random_, 1, 5); i > 0; --i) {
      text += kPieces[randomBetween<std::size_t>(random_, 0, kPieces.size() - 1)];
    }
    return text;
  }

  std::string encodedAttribute(int type, const std::string& value) {
    if (oneIn(8)) {
      return indefinite(kSequenceTag,
                        integerElement(type) + integerElement(1) + octetsInPieces(value, 7));
    }
    return attribute(type, value);
  }

  std::string encodedSet(const std::vector<std::string>& attributes) {
    if (!oneIn(8)) return attributeSet(attributes);
    std::string content;
    for (const std::string& encoded : attributes) content += encoded;
    return indefinite(kSetTag, content);
  }

  // Leaves the attribute out, or empty, as often as real receipts do.
  bool addAbsent(int type, std::vector<std::string>& attributes) {
    if (oneIn(6)) return true;
    if (!oneIn(6)) return false;
    attributes.push_back(encodedAttribute(type, ""));
    return true;
  }

  void addText(int type, std::vector<std::string>& attributes, OracleAttributes& model) {
    if (addAbsent(type, attributes)) return;
    const std::string text = oneIn(10) ? "" : randomText();
    attributes.push_back(encodedAttribute(type, utf8Element(text)));
    if (!text.empty()) model[type] = text;
  }

  void addDate(int type, std::vector<std::string>& attributes, OracleReceipt& receipt,
               OracleAttributes& model) {
    if (addAbsent(type, attributes)) return;
    // As written, and as read. A text that is read as it is, apart from the empty one, is unknown.
    static const std::vector<std::pair<std::string, std::string>> kDates = {
        {"", ""},
        {"2024-02-29T08:00:00Z", "2024-02-29T08:00:00Z"},
        {"2024-02-29T08:00:00+05:30", "2024-02-29T08:00:00+05:30"},
        {"2022-04-15T18:52:22+0100", "2022-04-15T17:52:22Z"},
        {"2023-12-31T23:30:00-0100", "2024-01-01T00:30:00Z"},
        {"2022-04-15T17:52:22.686Z", "2022-04-15T17:52:22Z"},
        {"2020-07-14 19:36:40 Etc/GMT", "2020-07-14T19:36:40Z"},
    };
    if (oneIn(10)) {
      const std::string unknown = randomText();
      attributes.push_back(encodedAttribute(type, utf8Element(unknown)));
      model[type] = unknown;
      ++receipt.unknownDates;
      return;
    }
    const auto& [written, read] = kDates[randomBetween<std::size_t>(random_, 0, kDates.size() - 1)];
    attributes.push_back(encodedAttribute(type, ia5Element(written)));
    if (!read.empty()) model[type] = read;
  }

  void addInteger(int type, bool isFlag, std::vector<std::string>& attributes,
                  OracleAttributes& model) {
    if (addAbsent(type, attributes)) return;
    const auto wide = static_cast<std::int64_t>(random_());
    const std::int64_t value = oneIn(4) ? wide : randomBetween<std::int64_t>(random_, 0, 3);
    attributes.push_back(encodedAttribute(type, integerElement(value)));
    if (isFlag) {
      if (value != 0) model[type] = "1";
    } else if (type != 1711 || value != 0) {
      model[type] = std::to_string(value);
    }
  }

  std::string makeEntry(OracleReceipt& model) {
    OracleAttributes& entry = model.entries.back();
    std::vector<std::string> attributes;
    for (const int type : {1701, 1707, 1711}) addInteger(type, false, attributes, entry);
    for (const int type : {1702, 1703, 1705}) addText(type, attributes, entry);
    for (const int type : {1704, 1706, 1708, 1712}) addDate(type, attributes, model, entry);
    for (const int type : {1713, 1719}) addInteger(type, true, attributes, entry);
    std::shuffle(attributes.begin(), attributes.end(), random_);
    return encodedSet(attributes);
  }

  std::mt19937_64& random_;
};

TEST(ReceiptComparisonTest, RandomReceiptsAreReadAsTheyWereMade) {
  std::mt19937_64 random = seededRandom();
  for (int i = 0; i < 5000; ++i) {
    OracleReceipt model;
    const std::string content = RandomReceipt(random).make(model);
    const SigningForm form = {.digest = i % 2 == 0 ? EVP_sha1() : EVP_sha256(),
                              .isIndefinite = i % 3 == 0};
    const std::string receipt = signer().sign(content, form);
    const AppReceiptResult result = readAppReceipt(i % 5 == 0 ? base64Of(receipt) : receipt);
    const auto* const error = std::get_if<ReceiptError>(&result);
    ASSERT_EQ(error, nullptr) << error->path << ": " << error->message;
    ASSERT_EQ(attributesOf(std::get<AppReceipt>(result)), model);
    ASSERT_EQ(oracleContent(receipt), content);
    ASSERT_EQ(oracleReceipt(content), model);
  }
}

// --- Damaged receipts ---

// A small receipt with every attribute.
std::string smallContent() {
  return attributeSet(
      {attribute(2, utf8Element("com.example")), attribute(12, ia5Element("2024-03-15T10:00:05Z")),
       attribute(17,
                 attributeSet(
                     {attribute(1701, integerElement(2)), attribute(1702, utf8Element("coins")),
                      attribute(1703, utf8Element("1000")),
                      attribute(1704, ia5Element("2024-03-15T10:00:05+0100")),
                      attribute(1711, integerElement(300)), attribute(1713, integerElement(1))}))});
}

// Reads the content with the reader and with its oracle.
void compareContents(const std::string& content) {
  std::optional<OracleReceipt> read;
  try {
    read = attributesOf(receipt::readPayload(content));
  } catch (const ReceiptError& error) {
    ASSERT_TRUE(error.path.starts_with("/content"));
    ASSERT_LE(error.offset, content.size());
    ASSERT_FALSE(error.message.empty());
  }
  ASSERT_EQ(read, oracleReceipt(content));
}

// Reads the bytes as a receipt. If they are one, the oracle must agree.
void compareReceipts(const std::string& bytes) {
  const AppReceiptResult result = readAppReceipt(bytes);
  if (const auto* const error = std::get_if<ReceiptError>(&result)) {
    ASSERT_FALSE(error->message.empty());
    return;
  }
  const std::optional<std::string> content = oracleContent(bytes);
  ASSERT_TRUE(content.has_value());
  ASSERT_EQ(attributesOf(std::get<AppReceipt>(result)), oracleReceipt(*content));
}

// Calls `compare` with every text that differs from `bytes` in one byte.
template <typename Compare>
void changeEachByte(const std::string& bytes, const Compare& compare) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string changed = bytes;
    for (int change = 1; change < 256; ++change) {
      changed[i] = static_cast<char>(bytes[i] ^ change);
      compare(changed);
      if (::testing::Test::HasFatalFailure()) FAIL() << "byte " << i << ", xor " << change;
    }
  }
}

TEST(ReceiptComparisonTest, ChangedContentsAreReadOrRejectedAsByTheOracle) {
  changeEachByte(smallContent(), compareContents);
}

TEST(ReceiptComparisonTest, CutContentsAreRejected) {
  const std::string content = smallContent();
  for (std::size_t size = 0; size < content.size(); ++size) {
    EXPECT_THROW(receipt::readPayload(content.substr(0, size)), ReceiptError) << size;
  }
}

class DamagedReceiptTest : public ::testing::TestWithParam<bool> {
 protected:
  std::string receipt_ = signer().sign(smallContent(), {.isIndefinite = GetParam()});
};

TEST_P(DamagedReceiptTest, CutReceiptsAreErrors) {
  for (std::size_t size = 0; size < receipt_.size(); ++size) {
    const AppReceiptResult result = readAppReceipt(receipt_.substr(0, size));
    EXPECT_TRUE(std::holds_alternative<ReceiptError>(result)) << size;
  }
}

// Every bit, not every value of each byte: a signed receipt has thousands of them.
TEST_P(DamagedReceiptTest, ReceiptsWithAChangedBitAreErrorsOrReceipts) {
  for (std::size_t i = 0; i < receipt_.size() * 8; ++i) {
    std::string changed = receipt_;
    changed[i / 8] = static_cast<char>(changed[i / 8] ^ 1 << i % 8);
    ASSERT_NO_FATAL_FAILURE(compareReceipts(changed)) << "bit " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Encodings, DamagedReceiptTest, ::testing::Values(false, true),
                         [](const auto& test) { return test.param ? "Ber" : "Der"; });

}  // namespace
}  // namespace qel::testing
