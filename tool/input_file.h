// Reads an input: a file or standard input, as it is or decompressed.

#ifndef QEL_TOOL_INPUT_FILE_H_
#define QEL_TOOL_INPUT_FILE_H_

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "decompressor.h"

namespace qel::tool {

// Why an input cannot be read, for people: "cannot open a.jsonl: No such file or directory".
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Returns the name of an input for people: its path, "standard input" for "-", or quotes for "".
std::string inputName(const std::string& path);

// Throws InputError if several of the paths are standard input, which can be read once only.
void checkStandardInput(const std::vector<std::string>& paths);

// Returns the status of an input, or std::nullopt if there is no such file.
std::optional<struct stat> inputStatus(const std::string& path);

// An input that is read as a stream. gzip, zstd and xz are recognised by their first bytes, and
// decompressed.
class InputFile {
 public:
  // Opens a file; the path "-" is standard input. Throws InputError.
  explicit InputFile(std::string path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  const std::string& path() const { return path_; }

  // Reads what there is, at most the size of `memory`, which is at least kLeastRead. Waits until
  // there is something. Returns the number of bytes, 0 at the end and after an interrupt. Throws
  // InputError if the file cannot be read, and if compressed data are corrupt or truncated: all
  // bytes before that were returned earlier.
  std::size_t read(std::span<char> memory);
  static constexpr std::size_t kLeastRead = 16;

  // Number of bytes that were read, before decompression.
  std::uint64_t bytesRead() const { return bytesRead_; }

 private:
  std::size_t readStart(std::span<char> memory);
  std::size_t readRaw(std::span<char> memory);
  std::size_t decompress(std::span<char> memory);
  [[noreturn]] void fail(const std::string& reason) const;

  const std::string path_;
  const int descriptor_;
  std::uint64_t bytesRead_ = 0;
  Compression compression_ = Compression::kUnknown;

  // Null unless the input is compressed.
  std::unique_ptr<Decompressor> decompressor_;
  std::vector<char> compressed_;
  // The part of compressed_ that is not decompressed yet.
  std::string_view unread_;
  // Whether the decompressor may have output left that did not fit.
  bool isOutputLeft_ = false;
  // Why what follows cannot be decompressed, empty if it can.
  std::string failure_;
};

// Returns the whole content of an input. Throws InputError, also if it has more than `most` bytes.
std::string readInput(const std::string& path, std::size_t most);

}  // namespace qel::tool

#endif  // QEL_TOOL_INPUT_FILE_H_
