#include "json_oracle.h"

#include <cstddef>
#include <map>
#include <utility>

#include "identifier_oracle.h"

namespace qel::testing {
namespace {

struct NoJson {};

OracleJson ofKind(OracleJson::Kind kind, std::string text = {}) {
  OracleJson json;
  json.kind = kind;
  json.text = std::move(text);
  return json;
}

// Works on UTF-16, the form in which JSON's own escapes are defined. Throws NoJson.
class Parser {
 public:
  explicit Parser(std::u16string_view rest) : rest_(rest) {}

  OracleJson document() {
    OracleJson value = this->value();
    skipSpace();
    if (!rest_.empty()) throw NoJson();
    return value;
  }

 private:
  OracleJson value() {
    skipSpace();
    switch (peek()) {
      case u'{':
        return object();
      case u'[':
        return array();
      case u'"':
        return ofKind(OracleJson::Kind::kString, string());
      case u't':
        word(u"true");
        return ofKind(OracleJson::Kind::kBoolean, "true");
      case u'f':
        word(u"false");
        return ofKind(OracleJson::Kind::kBoolean, "false");
      case u'n':
        word(u"null");
        return {};
      default:
        return number();
    }
  }

  OracleJson object() {
    OracleJson result = ofKind(OracleJson::Kind::kObject);
    next();
    skipSpace();
    if (peek() == u'}') {
      next();
      return result;
    }
    do {
      skipSpace();
      result.keys.push_back(string());
      skipSpace();
      word(u":");
      result.values.push_back(value());
      skipSpace();
    } while (separatorBefore(u'}'));
    return result;
  }

  OracleJson array() {
    OracleJson result = ofKind(OracleJson::Kind::kArray);
    next();
    skipSpace();
    if (peek() == u']') {
      next();
      return result;
    }
    do {
      result.values.push_back(value());
      skipSpace();
    } while (separatorBefore(u']'));
    return result;
  }

  // Whether a comma comes next, rather than `closing`.
  bool separatorBefore(char16_t closing) {
    const char16_t found = next();
    if (found != u',' && found != closing) throw NoJson();
    return found == u',';
  }

  std::string string() {
    word(u"\"");
    std::u16string content;
    for (char16_t unit = next(); unit != u'"'; unit = next()) {
      if (unit < 0x20) throw NoJson();
      content += unit == u'\\' ? escaped() : unit;
    }
    return carriedText(content);
  }

  char16_t escaped() {
    static const std::map<char16_t, char16_t> kEscapes = {
        {u'"', u'"'},  {u'\\', u'\\'}, {u'/', u'/'},  {u'b', u'\b'},
        {u'f', u'\f'}, {u'n', u'\n'},  {u'r', u'\r'}, {u't', u'\t'}};
    const char16_t letter = next();
    if (letter == u'u') {
      int unit = 0;
      for (int i = 0; i < 4; ++i) unit = unit * 16 + hexadecimalDigit(next());
      return static_cast<char16_t>(unit);
    }
    const auto found = kEscapes.find(letter);
    if (found == kEscapes.end()) throw NoJson();
    return found->second;
  }

  static int hexadecimalDigit(char16_t unit) {
    constexpr std::u16string_view kLower = u"0123456789abcdef";
    constexpr std::u16string_view kUpper = u"0123456789ABCDEF";
    std::size_t digit = kLower.find(unit);
    if (digit == std::u16string_view::npos) digit = kUpper.find(unit);
    if (digit == std::u16string_view::npos) throw NoJson();
    return static_cast<int>(digit);
  }

  OracleJson number() {
    OracleJson result = ofKind(OracleJson::Kind::kNumber);
    if (peek() == u'-') take(result.text);
    if (peek() == u'0') {
      take(result.text);
    } else {
      digits(result.text);
    }
    if (peek() == u'.') {
      take(result.text);
      digits(result.text);
    }
    if (peek() == u'e' || peek() == u'E') {
      take(result.text);
      if (peek() == u'+' || peek() == u'-') take(result.text);
      digits(result.text);
    }
    return result;
  }

  void digits(std::string& text) {
    if (!isDigit(peek())) throw NoJson();
    while (isDigit(peek())) take(text);
  }
  static bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
  void take(std::string& text) { text += static_cast<char>(next()); }

  void word(std::u16string_view expected) {
    if (!rest_.starts_with(expected)) throw NoJson();
    rest_.remove_prefix(expected.size());
  }

  void skipSpace() {
    while (!rest_.empty() &&
           std::u16string_view(u" \t\n\r").find(rest_.front()) != std::u16string_view::npos) {
      rest_.remove_prefix(1);
    }
  }

  // 0 at the end, which begins and continues nothing.
  char16_t peek() const { return rest_.empty() ? u'\0' : rest_.front(); }
  char16_t next() {
    if (rest_.empty()) throw NoJson();
    const char16_t unit = rest_.front();
    rest_.remove_prefix(1);
    return unit;
  }

  std::u16string_view rest_;
};

}  // namespace

const OracleJson* OracleJson::find(std::string_view key) const {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i] == key) return &values[i];
  }
  return nullptr;
}

std::optional<OracleJson> oracleJson(std::string_view text) {
  const std::optional<std::u16string> units = carriedUtf16(text);
  // The strict conversion rejects two surrogates of three bytes each.
  if (!units.has_value() || strictUtf8(*units) != text) return std::nullopt;
  try {
    return Parser(*units).document();
  } catch (const NoJson&) {
    return std::nullopt;
  }
}

}  // namespace qel::testing
