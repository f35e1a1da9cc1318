#include "input_format.h"

#include <algorithm>
#include <cstddef>

#include "byte_order_mark.h"

namespace qel::tool {
namespace {

using namespace std::string_view_literals;

bool isLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// UTF-16 and UTF-32 start with a byte-order mark; without one, every other byte of ASCII is zero.
bool isWideText(std::string_view start) {
  if (startsWithUtf16Mark(start)) return true;
  const auto isZero = [start](std::size_t position) { return start[position] == 0; };
  return start.size() >= 4 && isZero(0) != isZero(1) && isZero(0) == isZero(2) &&
         isZero(1) == isZero(3);
}

bool isArchive(std::string_view start) {
  for (const std::string_view magic :
       {"PK\x03\x04"sv, "BZh"sv, "7z\xBC\xAF"sv, "\x04\x22\x4D\x18"sv}) {
    if (start.starts_with(magic)) return true;
  }
  return false;
}

// Returns the first line of PEM (RFC 7468), which may follow other text. Empty if there is none, or
// if its end is not there yet.
std::string_view pemLabel(std::string_view start) {
  const std::size_t begin =
      start.starts_with('{') ? std::string_view::npos : start.find("-----BEGIN ");
  const std::size_t end = start.find('\n', begin);
  return end == std::string_view::npos ? std::string_view() : start.substr(begin, end - begin);
}

bool isCertificateOrKey(std::string_view start) {
  const std::string_view label = pemLabel(start);
  return label.find("CERTIFICATE") != std::string_view::npos ||
         label.find(" KEY") != std::string_view::npos;
}

// A receipt is PKCS #7 in DER, a SEQUENCE whose length takes two or three bytes, or that in base64
// or in PEM.
bool isReceipt(std::string_view start) {
  if (start.starts_with("\x30\x82") || start.starts_with("\x30\x83") ||
      start.starts_with("\x30\x80") || !pemLabel(start).empty()) {
    return true;
  }
  constexpr std::size_t kEnough = 64;
  return (start.starts_with("MII") || start.starts_with("MIA")) && start.size() >= kEnough &&
         std::all_of(start.begin(), start.begin() + kEnough, [](char c) {
           return isLetterOrDigit(c) ||
                  std::string_view("+/-_\r\n").find(c) != std::string_view::npos;
         });
}

// Control characters other than white space, outside a line that may be a broken object. PNG and
// PDF have none in their first line.
bool isBinary(std::string_view line) {
  if (line.starts_with("\x89PNG") || line.starts_with("%PDF-")) return true;
  return !line.starts_with('{') && std::any_of(line.begin(), line.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 && !(byte >= '\t' && byte <= '\r');
  });
}

// A header: names, separated by commas, semicolons or tabs.
bool isCsvHeader(std::string_view line) {
  const bool hasSeparator = line.find_first_of(",;\t") != std::string_view::npos;
  return hasSeparator && std::all_of(line.begin(), line.end(), [](char c) {
           return isLetterOrDigit(c) || ",;\t \"_-./\r"sv.find(c) != std::string_view::npos;
         });
}

// Returns the first character after `start` that is not white space, NUL if there is none yet.
char nextCharacter(std::string_view text, std::size_t start) {
  const std::size_t position = text.find_first_not_of(" \t\r\n", start);
  return position == std::string_view::npos ? '\0' : text[position];
}

// JSON over several lines: a line with an opening brace alone, and a key.
bool isWrappedObject(std::string_view start, std::string_view line) {
  return line.starts_with('{') && nextCharacter(line, 1) == '\0' &&
         nextCharacter(start, line.size()) == '"';
}

}  // namespace

const char* foreignFormat(std::string_view start) {
  if (isWideText(start)) return kItIsUtf16;
  start = withoutByteOrderMark(start);
  start.remove_prefix(std::min(start.find_first_not_of(" \t\r\n"), start.size()));
  if (start.empty()) return nullptr;

  if (start.front() == '[' && nextCharacter(start, 1) == '{') {
    return "it is a JSON array; write each element on a line of its own, for example with jq -c "
           "'.[]' (jq 1.7 or later keeps large integers)";
  }
  if (isArchive(start))
    return "it is an archive or compressed; expected plain text, gzip, zstd or xz";
  if (isCertificateOrKey(start)) {
    return "it is a certificate or a key in PEM; expected JSON Lines in UTF-8";
  }
  if (isReceipt(start)) {
    return "it is an app receipt; read it with qel-purchase receipt --purchases";
  }
  if (start.front() == '<') {
    return "it is XML or HTML; expected JSON Lines: one object on each line";
  }
  const std::size_t newline = start.find('\n');
  const std::string_view line = start.substr(0, newline);
  if (isBinary(line)) return "it is binary data; expected JSON Lines in UTF-8";
  if (newline == std::string_view::npos) return nullptr;
  if (isWrappedObject(start, line)) {
    return "it is JSON over several lines; write each object on a line of its own, for example "
           "with jq -c . (jq 1.7 or later keeps large integers); if it is an answer of the store's "
           "validation service, read it with qel-purchase receipt --purchases";
  }
  if (isCsvHeader(line)) return "it is CSV; expected JSON Lines: one object on each line";
  return nullptr;
}

}  // namespace qel::tool
