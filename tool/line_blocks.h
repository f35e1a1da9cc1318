// Reads input in blocks of whole lines, and writes output.

#ifndef QEL_TOOL_LINE_BLOCKS_H_
#define QEL_TOOL_LINE_BLOCKS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qel::tool {

// Whole lines of the input. Reuse a block to reuse its memory.
struct LineBlock {
  std::vector<char> memory;

  // The lines, without their newlines. JsonReader::kPadding bytes are readable after the last.
  std::vector<std::string_view> lines;

  // Size of the lines in bytes, with their newlines.
  std::size_t size = 0;

  // Number of the first line. The first of the input has the number 1.
  std::uint64_t firstLineNumber = 1;
};

// Reads a file descriptor block by block. Uses memory in proportion to the longest line.
class LineBlockReader {
 public:
  // Does not take ownership of the descriptor. The first line gets the number `firstLineNumber`.
  explicit LineBlockReader(int descriptor, std::uint64_t firstLineNumber = 1)
      : descriptor_(descriptor), nextLineNumber_(firstLineNumber) {}

  // Fills `block` with the lines that are complete after a read(). Reads again until there is one.
  // Blocks until there is input. Returns false at the end of the input, and after an interrupt,
  // which discards a line that is not complete. Throws std::system_error if reading fails; earlier
  // lines are in earlier blocks.
  bool next(LineBlock& block);

 private:
  // Reads into the memory after `size` bytes. Returns the number of bytes read, 0 at the end and
  // after an interrupt.
  std::size_t readMore(LineBlock& block, std::size_t size) const;

  const int descriptor_;
  std::uint64_t nextLineNumber_;
  // Start of a line whose end has not been read yet.
  std::string begun_;
};

// Writes all of `text`. Throws std::system_error if that fails.
void writeAll(int descriptor, std::string_view text);

}  // namespace qel::tool

#endif  // QEL_TOOL_LINE_BLOCKS_H_
