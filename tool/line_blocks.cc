#include "line_blocks.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "interrupt.h"
#include "json_reader.h"

namespace qel::tool {
namespace {

// Large enough to make read() cheap, small enough for a few blocks to stay in the caches.
constexpr std::size_t kReadSize = std::size_t{256} * 1024;

// Waits until the descriptor can be read. Returns false if there is an interrupt first.
bool waitForInput(int descriptor) {
  std::array<pollfd, 2> waits = {{{.fd = descriptor, .events = POLLIN, .revents = 0},
                                  {.fd = interruptDescriptor(), .events = POLLIN, .revents = 0}}};
  while (poll(waits.data(), waits.size(), -1) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category());
  }
  return !isInterrupted();
}

void split(std::string_view text, std::vector<std::string_view>& lines) {
  lines.clear();
  while (!text.empty()) {
    const std::size_t size = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, size));
    text.remove_prefix(std::min(size + 1, text.size()));
  }
}

}  // namespace

std::size_t LineBlockReader::readMore(LineBlock& block, std::size_t size) const {
  const std::size_t needed = size + kReadSize + JsonReader::kPadding;
  // Doubled, so that a very long line is not copied for every read().
  if (block.memory.size() < needed) block.memory.resize(std::max(needed, 2 * size));
  const std::size_t room = block.memory.size() - size - JsonReader::kPadding;
  while (waitForInput(descriptor_)) {
    const ssize_t count = read(descriptor_, block.memory.data() + size, room);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR && errno != EAGAIN) {
      throw std::system_error(errno, std::generic_category());
    }
  }
  return 0;
}

bool LineBlockReader::next(LineBlock& block) {
  std::size_t size = begun_.size();
  if (block.memory.size() < size) block.memory.resize(size);
  std::copy(begun_.begin(), begun_.end(), block.memory.begin());

  std::size_t end = 0;
  while (end == 0) {
    const std::size_t count = readMore(block, size);
    const std::string_view added(block.memory.data() + size, count);
    size += count;
    if (count == 0) {
      if (size == 0 || isInterrupted()) return false;
      end = size;
    } else if (const std::size_t newline = added.rfind('\n'); newline != std::string_view::npos) {
      end = size - count + newline + 1;
    }
  }
  begun_.assign(block.memory.data() + end, size - end);
  block.size = end;
  split({block.memory.data(), end}, block.lines);
  block.firstLineNumber = nextLineNumber_;
  nextLineNumber_ += block.lines.size();
  return true;
}

void writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      // The descriptor is non-blocking, and its reader is slow.
      pollfd wait = {.fd = descriptor, .events = POLLOUT, .revents = 0};
      poll(&wait, 1, -1);
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category());
    }
  }
}

}  // namespace qel::tool
