// Reads an input in blocks of whole lines.

#ifndef QEL_TOOL_LINE_BLOCKS_H_
#define QEL_TOOL_LINE_BLOCKS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "input_file.h"

namespace qel::tool {

// Whole lines of an input. Reuse a block to reuse its memory.
struct LineBlock {
  std::vector<char> memory;

  // The lines, without their newlines. JsonReader::kPadding bytes are readable after the last.
  std::vector<std::string_view> lines;

  // Whether the block has the start of one line only, which was longer than the longest line, or
  // did not fit into memory.
  bool isCut = false;

  // Number of the first line. The first of the input has the number 1.
  std::uint64_t firstLineNumber = 1;
};

// Sets `lines` to the lines of `text`, without their newlines.
void splitLines(std::string_view text, std::vector<std::string_view>& lines);

// Reads an input block by block. Uses memory in proportion to the longest line.
class LineBlockReader {
 public:
  // The input must outlive the reader. The first line gets the number `firstLineNumber`. A line of
  // more than `maxLine` bytes that takes more than one read is cut after maxLine + 1 bytes.
  LineBlockReader(InputFile& input, std::uint64_t firstLineNumber, std::size_t maxLine)
      : input_(input),
        nextLineNumber_(firstLineNumber),
        maxLine_(maxLine),
        isAtStart_(firstLineNumber == 1) {}

  // Fills `block` with the lines that are complete after a read. Reads again until there is one.
  // Waits until there is input. Returns false at the end of the input, and after an interrupt,
  // which discards a line that is not complete. Throws InputError if reading fails, and if the
  // start of the input has a format other than JSON Lines; earlier lines are in earlier blocks.
  bool next(LineBlock& block);

 private:
  // Copies the begun line into the block, and reads until the block has a whole line, or the start
  // of a line that is cut. Returns the size of the lines, 0 at the end.
  std::size_t fill(LineBlock& block);

  // Reads into the memory after `size` bytes. Returns the number of bytes read, 0 at the end and
  // after an interrupt.
  std::size_t readMore(LineBlock& block, std::size_t size);

  // Throws InputError if an input that starts with the bytes `start` has another format.
  void throwIfForeign(std::string_view start) const;

  // Reads until the end of a line that was cut. Returns false if the input ends first.
  bool skipLine(LineBlock& block);

  InputFile& input_;
  std::uint64_t nextLineNumber_;
  const std::size_t maxLine_;
  // Bytes that were read after the last block: usually the start of a line.
  std::string begun_;
  bool isSkipping_ = false;
  // Whether the first block of a whole input comes next. A part of an input is read line by line,
  // as it would be within the whole.
  bool isAtStart_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_LINE_BLOCKS_H_
