#include "explain/display_text.h"

#include <utf8proc.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <vector>

#include "qel/text.h"

namespace qel::tool {
namespace {

// Accents on one character that are shown; more would cover the lines above and below.
constexpr int kMostAccents = 4;

// A character that joins two emoji into one.
constexpr utf8proc_int32_t kZeroWidthJoiner = 0x200D;
constexpr utf8proc_int32_t kIdeographicSpace = 0x3000;

// Characters that a reader sees as one, and the columns that they take.
struct Cluster {
  std::string text;
  std::size_t columns = 0;
};

// Reads characters from UTF-8, and bytes where it is ill-formed.
class CharacterReader {
 public:
  explicit CharacterReader(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }

  // Reads a character into `character`. Returns false for a byte that begins none; `bytes` is set
  // to what was read in both cases.
  bool next(utf8proc_int32_t& character, std::string_view& bytes) {
    const auto* const start = reinterpret_cast<const utf8proc_uint8_t*>(rest_.data());
    const utf8proc_ssize_t size =
        utf8proc_iterate(start, static_cast<utf8proc_ssize_t>(rest_.size()), &character);
    const bool isCharacter = size > 0;
    bytes = rest_.substr(0, isCharacter ? static_cast<std::size_t>(size) : 1);
    rest_.remove_prefix(bytes.size());
    return isCharacter;
  }

  // Reads an unpaired surrogate, which JSON can escape and UTF-8 cannot encode.
  bool nextSurrogate(char32_t& surrogate) {
    const std::optional<char32_t> found = surrogateAtStart(rest_);
    if (!found.has_value()) return false;
    surrogate = *found;
    rest_.remove_prefix(3);
    return true;
  }

 private:
  std::string_view rest_;
};

// Returns `number` in hexadecimal with at least `digits` digits.
std::string hexadecimal(std::uint32_t number, std::size_t digits) {
  std::array<char, 8> buffer;
  char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, 16).ptr;
  std::string text(buffer.data(), end);
  return std::string(text.size() < digits ? digits - text.size() : 0, '0') + text;
}

// Returns how JSON escapes a character. One outside the basic plane gets braces, because its pair
// of surrogates says nothing to a reader.
std::string escapeOf(std::uint32_t character) {
  if (character == '\n') return "\\n";
  if (character == '\t') return "\\t";
  if (character == '\r') return "\\r";
  if (character > 0xFFFF) return "\\u{" + hexadecimal(character, 5) + "}";
  return "\\u" + hexadecimal(character, 4);
}

bool isAccent(const utf8proc_property_t& property) {
  return property.category == UTF8PROC_CATEGORY_MN || property.category == UTF8PROC_CATEGORY_ME;
}

// Returns whether a character is visible where it stands, and changes nothing around it.
bool isVisible(utf8proc_int32_t character, const utf8proc_property_t& property) {
  switch (property.category) {
    case UTF8PROC_CATEGORY_CC:
    case UTF8PROC_CATEGORY_CF:
    case UTF8PROC_CATEGORY_CN:
    case UTF8PROC_CATEGORY_CO:
    case UTF8PROC_CATEGORY_CS:
    case UTF8PROC_CATEGORY_ZL:
    case UTF8PROC_CATEGORY_ZP:
      return false;
    case UTF8PROC_CATEGORY_ZS:
      return character == ' ' || character == kIdeographicSpace;
    default:
      return true;
  }
}

// Returns whether a joiner between the two characters makes one emoji of them.
bool joinsEmoji(utf8proc_int32_t before) {
  return before >= 0 &&
         utf8proc_get_property(before)->boundclass == UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC;
}

// Splits a text into what a reader sees as characters, with escapes for what is not visible.
class ClusterSplitter {
 public:
  std::vector<Cluster> split(std::string_view text) {
    CharacterReader reader(text);
    while (!reader.atEnd()) {
      char32_t surrogate = 0;
      utf8proc_int32_t character = 0;
      std::string_view bytes;
      if (reader.nextSurrogate(surrogate)) {
        addEscape(escapeOf(surrogate));
      } else if (!reader.next(character, bytes)) {
        addEscape("\\x" + hexadecimal(static_cast<unsigned char>(bytes.front()), 2));
      } else {
        addCharacter(character, bytes);
      }
    }
    return std::move(clusters_);
  }

 private:
  void addEscape(std::string escape) {
    const std::size_t columns = escape.size();
    clusters_.push_back({std::move(escape), columns});
    before_ = -1;
  }

  void addCharacter(utf8proc_int32_t character, std::string_view bytes) {
    const utf8proc_property_t& property = *utf8proc_get_property(character);
    const bool isJoiner = character == kZeroWidthJoiner && before_ >= 0 && joinsEmoji(base_);
    if (isAccent(property)) ++accents_;
    const bool isTooMany = isAccent(property) && (before_ < 0 || accents_ > kMostAccents);
    if ((!isVisible(character, property) && !isJoiner) || isTooMany) {
      addEscape(escapeOf(static_cast<std::uint32_t>(character)));
      return;
    }
    const bool isNew = before_ < 0 || static_cast<bool>(utf8proc_grapheme_break_stateful(
                                          before_, character, &state_));
    if (isNew) {
      clusters_.emplace_back();
      state_ = 0;
      accents_ = 0;
    }
    if (isNew || (!isAccent(property) && !isJoiner)) base_ = character;
    const bool isBackslash = character == '\\';
    clusters_.back().text += isBackslash ? std::string_view("\\\\") : bytes;
    clusters_.back().columns +=
        isBackslash ? 2 : static_cast<std::size_t>(utf8proc_charwidth(character));
    before_ = character;
  }

  std::vector<Cluster> clusters_;
  // The visible character before, -1 after an escape. An accent after an escape would combine with
  // the escape, so it is escaped as well.
  utf8proc_int32_t before_ = -1;
  // The last character of the cluster that is neither an accent nor a joiner.
  utf8proc_int32_t base_ = -1;
  // utf8proc's, for the cluster so far.
  utf8proc_int32_t state_ = 0;
  // Number of accents in the cluster, with those that were escaped.
  int accents_ = 0;
};

std::vector<Cluster> clustersOf(std::string_view text) { return ClusterSplitter().split(text); }

std::size_t columnsOf(const std::vector<Cluster>& clusters) {
  std::size_t columns = 0;
  for (const Cluster& cluster : clusters) columns += cluster.columns;
  return columns;
}

// Returns how many bytes at each end of a text can be shown at most. What is farther from both ends
// is not looked at, so a text of any size takes the same time.
std::size_t mostBytesOf(std::size_t mostColumns) {
  constexpr std::size_t kBytesPerColumn = 24;
  return kBytesPerColumn * (mostColumns + 1);
}

}  // namespace

bool isLongerThan(std::string_view text, std::size_t mostColumns) {
  return text.size() > 2 * mostBytesOf(mostColumns) || columnsOf(clustersOf(text)) > mostColumns;
}

std::string displayText(std::string_view text, std::size_t mostColumns) {
  const std::size_t mostBytes = mostBytesOf(mostColumns);
  const bool isLong = text.size() > 2 * mostBytes;
  const std::vector<Cluster> head = clustersOf(isLong ? text.substr(0, mostBytes) : text);
  std::string result;
  if (!isLong && columnsOf(head) <= mostColumns) {
    for (const Cluster& cluster : head) result += cluster.text;
    return result;
  }

  // The size matters only where it is unusual.
  constexpr std::size_t kUsualSize = 256;
  constexpr std::size_t kLeastRoom = 8;
  std::string size = " (" + std::to_string(text.size()) + " bytes)";
  if (text.size() <= kUsualSize || size.size() + kLeastRoom >= mostColumns) size.clear();
  const std::size_t room = mostColumns - size.size() - 1;
  // The end of an identifier is what tells it from another, so it gets a third.
  const std::size_t tailRoom = room / 3;
  std::size_t columns = 0;
  for (const Cluster& cluster : head) {
    if (columns + cluster.columns > room - tailRoom) break;
    columns += cluster.columns;
    result += cluster.text;
  }
  result += "…";

  const std::vector<Cluster> tail =
      isLong ? clustersOf(text.substr(text.size() - mostBytes)) : head;
  std::size_t first = tail.size();
  columns = 0;
  while (first > 0 && columns + tail[first - 1].columns <= tailRoom) {
    --first;
    columns += tail[first].columns;
  }
  for (; first < tail.size(); ++first) result += tail[first].text;
  return result + size;
}

std::size_t columnsOf(std::string_view text) {
  CharacterReader reader(text);
  std::size_t columns = 0;
  while (!reader.atEnd()) {
    utf8proc_int32_t character = 0;
    std::string_view bytes;
    if (reader.next(character, bytes)) {
      columns += static_cast<std::size_t>(utf8proc_charwidth(character));
    }
  }
  return columns;
}

bool hasRightToLeft(std::string_view text) {
  CharacterReader reader(text);
  while (!reader.atEnd()) {
    utf8proc_int32_t character = 0;
    std::string_view bytes;
    if (!reader.next(character, bytes)) continue;
    const auto direction = utf8proc_get_property(character)->bidi_class;
    if (direction == UTF8PROC_BIDI_CLASS_R || direction == UTF8PROC_BIDI_CLASS_AL) return true;
  }
  return false;
}

}  // namespace qel::tool
