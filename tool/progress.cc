#include "progress.h"

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace qel::tool {
namespace {

constexpr std::chrono::milliseconds kInterval(250);

// Carriage return, then the sequence that clears the line (ECMA-48, EL).
constexpr std::string_view kStartOfClearLine = "\r\x1b[K";

void writeToTerminal(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

std::string formatted(double number, const char* unit) {
  std::array<char, 40> text;
  std::snprintf(text.data(), text.size(), "%.1f%s", number, unit);
  return text.data();
}

std::string sizeText(std::uint64_t bytes) {
  constexpr std::array<const char*, 5> kUnits = {" B", " kB", " MB", " GB", " TB"};
  auto size = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; size >= 1000 && unit + 1 < kUnits.size(); ++unit) size /= 1000;
  return formatted(size, kUnits[unit]);
}

std::string timeText(double seconds) {
  const auto whole = std::llround(std::ceil(seconds));
  if (whole < 60) return std::to_string(whole) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  return std::to_string(whole / 3600) + " h " + std::to_string(whole / 60 % 60) + " min";
}

}  // namespace

std::string progressText(std::uint64_t doneBytes, std::optional<std::uint64_t> totalBytes,
                         std::uint64_t records, std::chrono::duration<double> elapsed) {
  std::string text = sizeText(doneBytes);
  if (totalBytes.has_value()) text += " of " + sizeText(*totalBytes);
  const double seconds = elapsed.count();
  if (seconds <= 0 || doneBytes == 0) return text;
  text +=
      ", " + std::to_string(std::llround(static_cast<double>(records) / seconds)) + " records/s";
  if (totalBytes.has_value() && *totalBytes >= doneBytes) {
    const auto left = static_cast<double>(*totalBytes - doneBytes);
    text += ", " + timeText(left * seconds / static_cast<double>(doneBytes)) + " left";
  }
  return text;
}

ProgressLine::ProgressLine(bool isWanted, std::optional<std::uint64_t> totalBytes)
    : isShown_(isWanted && isatty(STDERR_FILENO) != 0),
      totalBytes_(totalBytes),
      start_(Clock::now()),
      nextUpdate_(start_ + kInterval) {}

void ProgressLine::update(std::uint64_t doneBytes, std::uint64_t records) {
  if (!isShown_) return;
  const Clock::time_point now = Clock::now();
  if (now < nextUpdate_) return;
  nextUpdate_ = now + kInterval;
  isOnTerminal_ = true;
  writeToTerminal(std::string(kStartOfClearLine) +
                  progressText(doneBytes, totalBytes_, records, now - start_));
}

void ProgressLine::erase() {
  if (!isOnTerminal_) return;
  isOnTerminal_ = false;
  writeToTerminal(std::string(kStartOfClearLine));
}

}  // namespace qel::tool
