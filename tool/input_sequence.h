// Reads several inputs, one after the other.

#ifndef QEL_TOOL_INPUT_SEQUENCE_H_
#define QEL_TOOL_INPUT_SEQUENCE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "input_file.h"
#include "line_blocks.h"

namespace qel::tool {

// Lines of one input, or the failure of one. Reuse a block to reuse its memory.
struct InputBlock {
  LineBlock lines;

  // Index of the input.
  std::size_t input = 0;

  // Why the rest of the input cannot be read. Empty if there was no failure; otherwise there are
  // no lines.
  std::string failure;

  // Bytes of all inputs up to here, before decompression.
  std::uint64_t bytesRead = 0;
};

// Threads: one at a time.
class InputSequence {
 public:
  // The first line of the first input gets the number `firstLineNumber`. See LineBlockReader for
  // `maxLine`.
  InputSequence(std::vector<std::string> paths, std::uint64_t firstLineNumber, std::size_t maxLine)
      : paths_(std::move(paths)), nextFirstLine_(firstLineNumber), maxLine_(maxLine) {}

  // Fills `block` with the next lines, or with the failure of an input, after which the next input
  // follows. Returns false after the last input, and after an interrupt.
  bool next(InputBlock& block);

 private:
  bool readLines(InputBlock& block);
  void closeInput();

  const std::vector<std::string> paths_;
  std::uint64_t nextFirstLine_;
  const std::size_t maxLine_;
  std::size_t index_ = 0;
  std::uint64_t earlierBytes_ = 0;
  std::optional<InputFile> file_;
  std::optional<LineBlockReader> reader_;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_INPUT_SEQUENCE_H_
