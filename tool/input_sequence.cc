#include "input_sequence.h"

#include <utility>

#include "interrupt.h"

namespace qel::tool {

bool InputSequence::next(InputBlock& block) {
  for (; index_ < paths_.size(); closeInput()) {
    block.input = index_;
    block.failure.clear();
    try {
      if (readLines(block)) return true;
      // Not the end of an input, so that the next one is not opened.
      if (isInterrupted()) return false;
    } catch (const InputError& error) {
      block.failure = error.what();
      block.lines.lines.clear();
      closeInput();
      return true;
    }
  }
  return false;
}

// Reads lines of the current input. Returns false at its end.
bool InputSequence::readLines(InputBlock& block) {
  if (!file_.has_value()) {
    file_.emplace(paths_[index_]);
    reader_.emplace(*file_, std::exchange(nextFirstLine_, 1), maxLine_);
  }
  const bool hasLines = reader_->next(block.lines);
  block.bytesRead = earlierBytes_ + file_->bytesRead();
  return hasLines;
}

void InputSequence::closeInput() {
  if (file_.has_value()) earlierBytes_ += file_->bytesRead();
  reader_.reset();
  file_.reset();
  ++index_;
}

}  // namespace qel::tool
