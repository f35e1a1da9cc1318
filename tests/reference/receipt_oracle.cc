#include "receipt_oracle.h"

#include <gmpxx.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <regex>
#include <set>
#include <stdexcept>

namespace qel::testing {
namespace {

// --- A tree of elements ---

struct Broken {};

void require(bool holds) {
  if (!holds) throw Broken();
}

constexpr unsigned kConstructed = 0x20;

struct Node {
  // The first byte of the header: class, constructed, and tags below 31.
  unsigned char type = 0;
  // Whether the header is the marker that ends an indefinite length.
  bool isEndMarker = false;
  std::string content;

  bool isConstructed() const { return (type & kConstructed) != 0; }
  unsigned tag() const { return type & ~kConstructed; }
};

class TreeReader {
 public:
  explicit TreeReader(std::string_view bytes) : bytes_(bytes) {}

  bool atEnd() const { return place_ == bytes_.size(); }

  // Reads an element, and those in it down to `depth` levels.
  Node read(int depth) {
    Node node;
    const std::optional<std::size_t> size = readHeader(node);
    if (!size.has_value()) {
      require(depth > 0);
      const std::size_t start = place_;
      std::size_t end = place_;
      while (!read(depth - 1).isEndMarker) end = place_;
      node.content = bytes_.substr(start, end - start);
      return node;
    }
    require(*size <= bytes_.size() - place_);
    node.content = bytes_.substr(place_, *size);
    place_ += *size;
    return node;
  }

 private:
  unsigned char take() {
    require(!atEnd());
    return static_cast<unsigned char>(bytes_[place_++]);
  }

  // Returns the size of the content, or std::nullopt if it is indefinite.
  std::optional<std::size_t> readHeader(Node& node) {
    node.type = take();
    if ((node.type & 0x1F) == 0x1F) {
      // A tag of several bytes: of no type that receipts have. It must fit into 31 bits.
      std::uint64_t tag = 0;
      unsigned char byte = 0;
      do {
        byte = take();
        tag = tag << 7 | (byte & 0x7F);
        require(tag <= 0x7FFFFFFF);
      } while ((byte & 0x80) != 0);
      require(!atEnd());
    }
    const unsigned char first = take();
    node.isEndMarker = node.type == 0 && first == 0;
    if (first < 0x80) return first;
    if (first == 0x80) {
      require(node.isConstructed());
      return std::nullopt;
    }
    std::size_t size = 0;
    for (int i = 0; i < (first & 0x7F); ++i) {
      require(size <= SIZE_MAX >> 9);
      size = size << 8 | take();
    }
    return size;
  }

  std::string_view bytes_;
  std::size_t place_ = 0;
};

// How deep indefinite lengths may nest.
constexpr int kMaxIndefinite = 32;

// Reads `bytes` as elements that follow one another.
std::vector<Node> elementsOf(std::string_view bytes) {
  std::vector<Node> nodes;
  for (TreeReader reader(bytes); !reader.atEnd();) nodes.push_back(reader.read(kMaxIndefinite));
  return nodes;
}

Node onlyElementOf(std::string_view bytes) {
  const std::vector<Node> nodes = elementsOf(bytes);
  require(nodes.size() == 1);
  return nodes.front();
}

// Returns the octets of an OCTET STRING, or of a piece of one.
std::string joined(const Node& node, int depth) {
  if (!node.isConstructed()) return node.content;
  require(depth > 0);
  std::string octets;
  for (const Node& piece : elementsOf(node.content)) {
    require(!piece.isEndMarker);
    octets += joined(piece, depth - 1);
  }
  return octets;
}

// How deep the pieces of an OCTET STRING may nest.
constexpr int kMaxPieces = 6;

std::string octetsOf(const Node& node) {
  require(node.tag() == 4);
  return joined(node, kMaxPieces);
}

// --- Values ---

mpz_class integerOf(const Node& node) {
  require(node.type == 2 && !node.content.empty());
  mpz_class value;
  mpz_import(value.get_mpz_t(), node.content.size(), 1, 1, 1, 0, node.content.data());
  if ((node.content[0] & 0x80) != 0) value -= mpz_class(1) << (8 * node.content.size());
  return value;
}

mpz_class int64Of(const Node& node) {
  mpz_class value = integerOf(node);
  require(value >= -(mpz_class(1) << 63) && value < mpz_class(1) << 63);
  return value;
}

std::string textOf(const Node& node) {
  static const std::set<unsigned char> kTextTypes = {12, 19, 22, 26};
  require(kTextTypes.count(node.type) == 1);
  // Ill-formed bytes become U+FFFD, which is longer or another text.
  std::string again;
  icu::UnicodeString::fromUTF8(node.content).toUTF8String(again);
  require(again == node.content);
  return node.content;
}

// Returns the seconds of zone `match`: its sign, hours, minutes and seconds.
std::int64_t zoneOf(const std::smatch& match, std::size_t group) {
  const auto number = [&match](std::size_t i) {
    return match[i].matched ? std::stol(match[i].str()) : 0;
  };
  const std::int64_t seconds =
      number(group + 1) * 3600 + number(group + 2) * 60 + number(group + 3);
  return match[group].str() == "-" ? -seconds : seconds;
}

std::optional<std::time_t> secondsOf(const std::string& dateAndTime, std::int64_t zone) {
  std::tm fields = {};
  if (std::sscanf(dateAndTime.c_str(), "%4d-%2d-%2d%*c%2d:%2d:%2d", &fields.tm_year, &fields.tm_mon,
                  &fields.tm_mday, &fields.tm_hour, &fields.tm_min, &fields.tm_sec) != 6) {
    return std::nullopt;
  }
  if (fields.tm_year < 1) return std::nullopt;
  fields.tm_year -= 1900;
  fields.tm_mon -= 1;
  std::tm normal = fields;
  const std::time_t seconds = timegm(&normal);
  // A day or a time that does not exist is normalized to another one.
  const bool exists = normal.tm_mday == fields.tm_mday && normal.tm_mon == fields.tm_mon &&
                      normal.tm_hour == fields.tm_hour && normal.tm_min == fields.tm_min &&
                      normal.tm_sec == fields.tm_sec;
  return exists ? std::optional(seconds - zone) : std::nullopt;
}

std::string dateOf(const std::string& text, OracleReceipt& receipt) {
  // NUL matches no pattern, but ends the text of sscanf.
  static const std::string kDate = R"((\d{4}-\d{2}-\d{2}))";
  static const std::string kTime = R"((\d{2}:\d{2}:\d{2}))";
  static const std::string kHour = R"(([01]\d|2[0-3]))";
  static const std::string kSixty = R"(([0-5]\d))";
  static const std::string kColons = "([+-])" + kHour + ":" + kSixty + "(?::" + kSixty + ")?";
  static const std::regex kComponent("(" + kDate + "T" + kTime + ")(?:Z|" + kColons + ")");
  static const std::string kNoColons = "([+-])" + kHour + "(?:" + kSixty + ")?()";
  static const std::regex kKnown("(" + kDate + "[T ]" + kTime + R"()(?:\.\d+)?)" +
                                 "(?:Z| Etc/GMT| GMT| UTC|" + kColons + "|" + kNoColons + ")");
  std::smatch match;
  if (std::regex_match(text, match, kComponent)) {
    if (secondsOf(match[1], 0).has_value()) return text;
  } else if (std::regex_match(text, match, kKnown)) {
    const std::int64_t zone = match[4].matched ? zoneOf(match, 4) : 0;
    std::int64_t otherZone = 0;
    if (match[8].matched) {
      const std::int64_t minutes = match[10].matched ? std::stol(match[10].str()) : 0;
      otherZone = std::stol(match[9].str()) * 3600 + minutes * 60;
      if (match[8].str() == "-") otherZone = -otherZone;
    }
    const std::optional<std::time_t> seconds = secondsOf(match[1], zone + otherZone);
    std::tm fields = {};
    if (seconds.has_value() && gmtime_r(&*seconds, &fields) != nullptr && fields.tm_year >= -1899 &&
        fields.tm_year <= 8099) {
      char written[32];
      std::snprintf(written, sizeof(written), "%04d-%02d-%02dT%02d:%02d:%02dZ",
                    fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                    fields.tm_min, fields.tm_sec);
      return written;
    }
  }
  ++receipt.unknownDates;
  return text;
}

// --- Attributes ---

enum class Kind { kText, kDate, kInteger, kWideInteger, kFlag };

const std::map<int, Kind> kReceiptKinds = {{0, Kind::kText},  {2, Kind::kText},  {3, Kind::kText},
                                           {12, Kind::kDate}, {19, Kind::kText}, {21, Kind::kDate}};
const std::map<int, Kind> kEntryKinds = {
    {1701, Kind::kInteger},     {1702, Kind::kText}, {1703, Kind::kText},    {1704, Kind::kDate},
    {1705, Kind::kText},        {1706, Kind::kDate}, {1707, Kind::kInteger}, {1708, Kind::kDate},
    {1711, Kind::kWideInteger}, {1712, Kind::kDate}, {1713, Kind::kFlag},    {1719, Kind::kFlag}};

void addValue(int type, Kind kind, const std::string& octets, OracleReceipt& receipt,
              OracleAttributes& attributes) {
  if (octets.empty()) return;
  const Node node = onlyElementOf(octets);
  std::string value;
  switch (kind) {
    case Kind::kText:
      value = textOf(node);
      break;
    case Kind::kDate:
      value = textOf(node);
      if (!value.empty()) value = dateOf(value, receipt);
      break;
    case Kind::kInteger:
      value = int64Of(node).get_str();
      break;
    case Kind::kWideInteger:
      require(node.content.size() <= 64);
      value = integerOf(node).get_str();
      if (value == "0") value.clear();
      break;
    case Kind::kFlag:
      if (int64Of(node) != 0) value = "1";
      break;
  }
  if (!value.empty()) attributes[type] = value;
}

// Calls `take(type, octets)` for each attribute of a SET.
template <typename Take>
void readSet(const Node& set, const Take& take) {
  require(set.type == 0x31);
  for (const Node& sequence : elementsOf(set.content)) {
    require(sequence.type == 0x30);
    const std::vector<Node> fields = elementsOf(sequence.content);
    require(fields.size() == 3 && fields[1].tag() == 2);
    take(int64Of(fields[0]), octetsOf(fields[2]));
  }
}

// Adds the attribute if its type is known.
void addKnown(const std::map<int, Kind>& kinds, const mpz_class& type, const std::string& octets,
              std::set<int>& seen, OracleReceipt& receipt, OracleAttributes& attributes) {
  if (!type.fits_sint_p()) return;
  const auto kind = kinds.find(static_cast<int>(type.get_si()));
  if (kind == kinds.end()) return;
  require(seen.insert(kind->first).second);
  addValue(kind->first, kind->second, octets, receipt, attributes);
}

}  // namespace

std::optional<OracleReceipt> oracleReceipt(std::string_view content) {
  try {
    OracleReceipt receipt;
    Node set = onlyElementOf(content);
    if (set.tag() == 4) set = onlyElementOf(octetsOf(set));
    std::set<int> seen;
    readSet(set, [&](const mpz_class& type, const std::string& octets) {
      if (type != 17) {
        addKnown(kReceiptKinds, type, octets, seen, receipt, receipt.attributes);
        return;
      }
      if (octets.empty()) return;
      OracleAttributes& entry = receipt.entries.emplace_back();
      std::set<int> seenInEntry;
      readSet(onlyElementOf(octets), [&](const mpz_class& entryType, const std::string& value) {
        addKnown(kEntryKinds, entryType, value, seenInEntry, receipt, entry);
      });
    });
    return receipt;
  } catch (const Broken&) {
    return std::nullopt;
  }
}

std::optional<std::string> oracleContent(std::string_view signedData) {
  try {
    TreeReader reader(signedData);
    // ContentInfo, its [0], SignedData, its encapContentInfo, its [0].
    const std::vector<Node> contentInfo = elementsOf(reader.read(kMaxIndefinite).content);
    require(contentInfo.size() == 2);
    const std::vector<Node> fields = elementsOf(onlyElementOf(contentInfo[1].content).content);
    require(fields.size() > 2);
    const std::vector<Node> encapsulated = elementsOf(fields[2].content);
    require(encapsulated.size() == 2);
    return octetsOf(onlyElementOf(encapsulated[1].content));
  } catch (const Broken&) {
    return std::nullopt;
  }
}

}  // namespace qel::testing
