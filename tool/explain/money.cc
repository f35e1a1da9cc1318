#include "explain/money.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace qel::tool {
namespace {

// The currencies of ISO 4217 whose minor unit is not a hundredth.
constexpr std::array<std::string_view, 17> kNoDecimals = {"BIF", "CLP", "DJF", "GNF", "ISK", "JPY",
                                                          "KMF", "KRW", "PYG", "RWF", "UGX", "UYI",
                                                          "VND", "VUV", "XAF", "XOF", "XPF"};
constexpr std::array<std::string_view, 7> kThreeDecimals = {"BHD", "IQD", "JOD", "KWD",
                                                            "LYD", "OMR", "TND"};
constexpr std::array<std::string_view, 2> kFourDecimals = {"CLF", "UYW"};

template <std::size_t kSize>
bool contains(const std::array<std::string_view, kSize>& codes, std::string_view code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

// Appends the digits after the decimal point, without zeros beyond the currency's decimals.
std::string withDecimals(const std::string& whole, std::string digits, std::size_t decimals) {
  while (digits.size() > decimals && digits.back() == '0') digits.pop_back();
  if (digits.size() < decimals) digits.append(decimals - digits.size(), '0');
  return digits.empty() ? whole : whole + "." + digits;
}

}  // namespace

int decimalsOf(std::string_view currency) {
  if (contains(kNoDecimals, currency)) return 0;
  if (contains(kThreeDecimals, currency)) return 3;
  if (contains(kFourDecimals, currency)) return 4;
  return 2;
}

std::string amountText(std::int64_t micros, std::string_view currency) {
  constexpr std::uint64_t kMicros = 1000000;
  constexpr std::size_t kPlaces = 6;
  if (!isAmount(micros)) return "no amount";
  const auto magnitude = static_cast<std::uint64_t>(micros < 0 ? -micros : micros);
  const std::string digits = std::to_string(kMicros + magnitude % kMicros).substr(1, kPlaces);
  const std::string whole = (micros < 0 ? "-" : "") + std::to_string(magnitude / kMicros);
  return withDecimals(whole, digits, static_cast<std::size_t>(decimalsOf(currency)));
}

std::string priceText(const Decimal& price, std::string_view currency) {
  const double nearest = price.doubleValue();
  if (std::isnan(nearest)) return "NaN";
  std::array<char, 32> buffer;
  char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), nearest).ptr;
  std::string text(buffer.data(), end);
  if (text.find_first_of("en") != std::string::npos) return text;
  const std::size_t point = std::min(text.find('.'), text.size());
  return withDecimals(text.substr(0, point), text.substr(std::min(point + 1, text.size())),
                      static_cast<std::size_t>(decimalsOf(currency)));
}

}  // namespace qel::tool
