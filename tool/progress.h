// The progress line on a terminal.

#ifndef QEL_TOOL_PROGRESS_H_
#define QEL_TOOL_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace qel::tool {

// Threads: one at a time.
class ProgressLine {
 public:
  // Shows nothing unless standard error is a terminal and `isWanted`. `totalBytes` is the size of
  // the input, absent if it is not known.
  ProgressLine(bool isWanted, std::optional<std::uint64_t> totalBytes);

  // Shows the progress, at most a few times a second.
  void update(std::uint64_t doneBytes, std::uint64_t records);

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

// Returns the text of the line: "1.5 GB of 3.0 GB, 410000 records/s, 4 s left". Leaves out what is
// not known: the total, the speed, the time left.
std::string progressText(std::uint64_t doneBytes, std::optional<std::uint64_t> totalBytes,
                         std::uint64_t records, std::chrono::duration<double> elapsed);

}  // namespace qel::tool

#endif  // QEL_TOOL_PROGRESS_H_
