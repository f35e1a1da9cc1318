// Input in blocks of whole lines, and output in whole pieces.

#ifndef QEL_TOOL_LINE_BLOCKS_H_
#define QEL_TOOL_LINE_BLOCKS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qel::tool {

// Some whole lines of the input. Reused from block to block, so that its memory is.
struct LineBlock {
  std::vector<char> memory;

  // The lines, without their newlines. JsonReader::kPadding bytes are readable after the last.
  std::vector<std::string_view> lines;

  // The size of the lines in the input, newlines included, in bytes.
  std::size_t size = 0;

  // The number of the first line; lines count from 1.
  std::uint64_t firstLineNumber = 1;
};

// Reads a file descriptor block by block. Memory grows with the longest line only.
class LineBlockReader {
 public:
  // The descriptor stays the caller's. Lines are numbered from `firstLineNumber` on.
  explicit LineBlockReader(int descriptor, std::uint64_t firstLineNumber = 1)
      : descriptor_(descriptor), nextLineNumber_(firstLineNumber) {}

  // Fills `block` with the lines that come next: as many as a read gives, and at least one. Waits
  // for input when there is none. Returns false at the end of the input, and on an interrupt, which
  // leaves a line that has only begun unread. Throws std::system_error when reading fails; the
  // lines before are not lost: they have been handed out.
  bool next(LineBlock& block);

 private:
  // Reads at least one byte into the memory after `size` bytes; 0 at the end and on an interrupt.
  std::size_t readMore(LineBlock& block, std::size_t size) const;

  const int descriptor_;
  std::uint64_t nextLineNumber_;
  // The start of a line whose end has not been read yet.
  std::string begun_;
};

// Writes all of `text`. Throws std::system_error when that fails.
void writeAll(int descriptor, std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_LINE_BLOCKS_H_
