// The progress line on a terminal.

#ifndef QEL_TOOL_PROGRESS_H_
#define QEL_TOOL_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace qel::tool {

struct Progress {
  std::uint64_t doneBytes = 0;
  // Absent if the size of the input is not known.
  std::optional<std::uint64_t> totalBytes;
  std::uint64_t lines = 0;
  std::uint64_t rejected = 0;
  std::chrono::duration<double> elapsed{};
};

// Threads: one at a time.
class ProgressLine {
 public:
  // Shows nothing unless standard error is a terminal that can clear a line, and `isWanted`.
  // `totalBytes` is the size of the input, absent if it is not known.
  ProgressLine(bool isWanted, std::optional<std::uint64_t> totalBytes);

  // Shows the progress, at most a few times a second.
  void update(std::uint64_t doneBytes, std::uint64_t lines, std::uint64_t rejected);

  // Clears the line.
  void erase();

 private:
  using Clock = std::chrono::steady_clock;

  const bool isShown_;
  const std::optional<std::uint64_t> totalBytes_;
  const Clock::time_point start_;
  Clock::time_point nextUpdate_;
  bool isOnTerminal_ = false;
};

// Returns the text of the line: "1.5 GB of 3.0 GB, 410000 lines/s, 4 s left, 2 rejected". Leaves
// out what is not known, and if the text has more than `width` columns, the speed, then the time
// left, then the total, then the rest.
std::string progressText(const Progress& progress, std::size_t width);

}  // namespace qel::tool

#endif  // QEL_TOOL_PROGRESS_H_
