#include "progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "terminal.h"

namespace qel::tool {
namespace {

constexpr std::chrono::milliseconds kInterval(250);

// Carriage return, then the sequence that clears the line (ECMA-48, EL).
constexpr std::string_view kStartOfClearLine = "\r\x1b[K";

void writeToTerminal(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

// Returns the number of columns that can be written without a wrap to the next line. Asked for
// every update, because windows change their size.
std::size_t terminalWidth() {
  constexpr std::size_t kUsualColumns = 80;
  winsize size = {};
  const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return (isKnown ? size.ws_col : kUsualColumns) - 1;
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

std::string progressText(const Progress& progress, std::size_t width) {
  const std::string size = sizeText(progress.doneBytes);
  std::string total;
  std::string speed;
  std::string timeLeft;
  std::string rejected;
  if (progress.totalBytes.has_value()) total = " of " + sizeText(*progress.totalBytes);
  const double seconds = progress.elapsed.count();
  if (seconds > 0 && progress.doneBytes > 0) {
    const double linesPerSecond = static_cast<double>(progress.lines) / seconds;
    speed = ", " + std::to_string(std::llround(linesPerSecond)) + " lines/s";
    if (progress.totalBytes.has_value() && *progress.totalBytes >= progress.doneBytes) {
      const auto left = static_cast<double>(*progress.totalBytes - progress.doneBytes);
      const double secondsLeft = left * seconds / static_cast<double>(progress.doneBytes);
      timeLeft = ", " + timeText(secondsLeft) + " left";
    }
  }
  if (progress.rejected > 0) rejected = ", " + std::to_string(progress.rejected) + " rejected";

  const auto whole = [&] { return size + total + speed + timeLeft + rejected; };
  for (std::string* const part : {&speed, &timeLeft, &total}) {
    if (whole().size() > width) part->clear();
  }
  return whole().substr(0, width);
}

ProgressLine::ProgressLine(bool isWanted, std::optional<std::uint64_t> totalBytes)
    : isShown_(isWanted && isTerminal(STDERR_FILENO)),
      totalBytes_(totalBytes),
      start_(Clock::now()),
      nextUpdate_(start_ + kInterval) {}

void ProgressLine::update(std::uint64_t doneBytes, std::uint64_t lines, std::uint64_t rejected) {
  if (!isShown_) return;
  const Clock::time_point now = Clock::now();
  if (now < nextUpdate_) return;
  nextUpdate_ = now + kInterval;
  isOnTerminal_ = true;
  writeToTerminal(std::string(kStartOfClearLine) + progressText({.doneBytes = doneBytes,
                                                                 .totalBytes = totalBytes_,
                                                                 .lines = lines,
                                                                 .rejected = rejected,
                                                                 .elapsed = now - start_},
                                                                terminalWidth()));
}

void ProgressLine::erase() {
  if (!isOnTerminal_) return;
  isOnTerminal_ = false;
  writeToTerminal(std::string(kStartOfClearLine));
}

}  // namespace qel::tool
