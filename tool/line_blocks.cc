#include "line_blocks.h"

#include <algorithm>
#include <new>
#include <span>

#include "input_format.h"
#include "interrupt.h"
#include "json_reader.h"

namespace qel::tool {
namespace {

// Large enough to make read() cheap, small enough for a few blocks to stay in the caches.
constexpr std::size_t kReadSize = std::size_t{256} * 1024;

// Bytes at the start of an input that tell its format.
constexpr std::size_t kMostExamined = std::size_t{64} * 1024;

// Bytes of memory that a block keeps at most when it is reused.
constexpr std::size_t kKeptSize = 4 * kReadSize;

}  // namespace

void splitLines(std::string_view text, std::vector<std::string_view>& lines) {
  lines.clear();
  while (!text.empty()) {
    const std::size_t size = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, size));
    text.remove_prefix(std::min(size + 1, text.size()));
  }
}

std::size_t LineBlockReader::readMore(LineBlock& block, std::size_t size) {
  const std::size_t needed = size + kReadSize + JsonReader::kPadding;
  // Doubled, so that a very long line is not copied for every read.
  if (block.memory.size() < needed) block.memory.resize(std::max(needed, 2 * size));
  return input_.read(std::span(block.memory).subspan(size, kReadSize));
}

void LineBlockReader::throwIfForeign(std::string_view start) const {
  if (const char* const format = foreignFormat(start)) {
    throw InputError("cannot read " + inputName(input_.path()) + ": " + format);
  }
}

bool LineBlockReader::skipLine(LineBlock& block) {
  for (;;) {
    const std::size_t count = readMore(block, 0);
    if (count == 0) return false;
    const std::string_view text(block.memory.data(), count);
    if (const std::size_t newline = text.find('\n'); newline != std::string_view::npos) {
      begun_ = text.substr(newline + 1);
      return true;
    }
  }
}

std::size_t LineBlockReader::fill(LineBlock& block) {
  std::size_t size = begun_.size();
  block.memory.resize(std::max(block.memory.size(), size + JsonReader::kPadding));
  std::copy(begun_.begin(), begun_.end(), block.memory.begin());
  std::size_t searched = 0;
  for (;;) {
    if (isAtStart_ && searched < kMostExamined) {
      throwIfForeign({block.memory.data(), std::min(size, kMostExamined)});
    }
    const std::string_view added(block.memory.data() + searched, size - searched);
    if (const std::size_t newline = added.rfind('\n'); newline != std::string_view::npos) {
      const std::size_t end = searched + newline + 1;
      begun_.assign(block.memory.data() + end, size - end);
      return end;
    }
    begun_.clear();
    if (size > maxLine_) {
      block.isCut = true;
      return maxLine_ + 1;
    }
    searched = size;
    try {
      const std::size_t count = readMore(block, size);
      // An interrupt discards the begun line.
      if (count == 0) return isInterrupted() ? 0 : size;
      size += count;
    } catch (const std::bad_alloc&) {
      if (size == 0) throw;
      block.isCut = true;
      return size;
    }
  }
}

bool LineBlockReader::next(LineBlock& block) {
  if (block.memory.size() > kKeptSize) std::vector<char>().swap(block.memory);
  if (isSkipping_ && !skipLine(block)) return false;
  block.isCut = false;
  const std::size_t size = fill(block);
  if (size == 0) return false;
  isSkipping_ = block.isCut;
  isAtStart_ = false;
  splitLines({block.memory.data(), size}, block.lines);
  block.firstLineNumber = nextLineNumber_;
  nextLineNumber_ += block.lines.size();
  return true;
}

}  // namespace qel::tool
