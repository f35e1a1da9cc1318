#include "input_file.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "interrupt.h"

namespace qel::tool {
namespace {

// Bytes of compressed data that are read at once.
constexpr std::size_t kCompressedSize = std::size_t{64} * 1024;

std::string errorText() { return std::generic_category().message(errno); }

int openDescriptor(const std::string& path) {
  if (path == "-") return STDIN_FILENO;
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw InputError("cannot open " + inputName(path) + ": " + errorText());
  return descriptor;
}

}  // namespace

std::string inputName(const std::string& path) {
  if (path.empty()) return "\"\"";
  return path == "-" ? "standard input" : path;
}

void checkStandardInput(const std::vector<std::string>& paths) {
  if (std::count(paths.begin(), paths.end(), "-") > 1) {
    throw InputError("standard input is given more than once, but it can be read once only");
  }
}

std::optional<struct stat> inputStatus(const std::string& path) {
  struct stat status = {};
  const int result = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
  if (result != 0) return std::nullopt;
  return status;
}

InputFile::InputFile(std::string path)
    : path_(std::move(path)), descriptor_(openDescriptor(path_)) {}

InputFile::~InputFile() {
  if (descriptor_ != STDIN_FILENO) close(descriptor_);
}

void InputFile::fail(const std::string& reason) const {
  throw InputError("cannot read " + inputName(path_) + ": " + reason);
}

std::size_t InputFile::read(std::span<char> memory) {
  if (compression_ == Compression::kUnknown) return readStart(memory);
  return decompressor_ != nullptr ? decompress(memory) : readRaw(memory);
}

// The first bytes go where the caller wants them, so that input without compression is not copied.
std::size_t InputFile::readStart(std::span<char> memory) {
  std::size_t size = 0;
  do {
    const std::size_t count = readRaw(memory.subspan(size));
    size += count;
    compression_ = count == 0 ? Compression::kNone : compressionOf({memory.data(), size});
  } while (compression_ == Compression::kUnknown);
  if (compression_ == Compression::kNone) return size;

  decompressor_ = makeDecompressor(compression_);
  compressed_.assign(memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(size));
  unread_ = {compressed_.data(), compressed_.size()};
  return decompress(memory);
}

// Reads bytes of the file. Returns 0 at the end and after an interrupt.
std::size_t InputFile::readRaw(std::span<char> memory) {
  std::array<pollfd, 2> waits = {{{.fd = descriptor_, .events = POLLIN, .revents = 0},
                                  {.fd = interruptDescriptor(), .events = POLLIN, .revents = 0}}};
  for (;;) {
    if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) fail(errorText());
    if (isInterrupted()) return 0;
    const ssize_t count = ::read(descriptor_, memory.data(), memory.size());
    if (count >= 0) {
      bytesRead_ += static_cast<std::size_t>(count);
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR && errno != EAGAIN) fail(errorText());
  }
}

std::size_t InputFile::decompress(std::span<char> memory) {
  for (;;) {
    if (!failure_.empty()) fail(failure_);
    if (unread_.empty() && !isOutputLeft_) {
      compressed_.resize(kCompressedSize);
      unread_ = {compressed_.data(), readRaw(compressed_)};
      if (unread_.empty()) {
        if (!isInterrupted() && !decompressor_->isAtEnd())
          fail("the compressed data are truncated");
        return 0;
      }
    }
    const Decompressor::Step step = decompressor_->step(unread_, memory);
    unread_.remove_prefix(step.consumed);
    failure_ = step.failure;
    isOutputLeft_ = step.produced == memory.size();
    if (step.produced > 0) return step.produced;
  }
}

std::string readInput(const std::string& path, std::size_t most) {
  constexpr std::size_t kReadSize = std::size_t{64} * 1024;
  InputFile file(path);
  std::string content;
  std::size_t count = 0;
  do {
    const std::size_t size = content.size();
    content.resize(size + kReadSize);
    count = file.read(std::span(content).subspan(size));
    content.resize(size + count);
    if (content.size() > most) {
      throw InputError("cannot read " + inputName(path) + ": it has more than " +
                       std::to_string(most) + " bytes");
    }
  } while (count > 0);
  return content;
}

}  // namespace qel::tool
