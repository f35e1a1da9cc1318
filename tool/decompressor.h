// Decompresses streams of gzip (RFC 1952), zstd (RFC 8878) and xz.
//
// Uses the library of each format. libarchive would serve all three, but it returns nothing of the
// last 64 KiB before the point where a stream is truncated or corrupt.

#ifndef QEL_TOOL_DECOMPRESSOR_H_
#define QEL_TOOL_DECOMPRESSOR_H_

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace qel::tool {

enum class Compression {
  kNone,
  kGzip,
  kZstd,
  kXz,
  kUnknown  // more bytes are needed to decide
};

// Returns the compression of a file that starts with the bytes `start`.
Compression compressionOf(std::string_view start);

// Decompresses a file, which is one stream or several, one after the other.
class Decompressor {
 public:
  struct Step {
    std::size_t consumed = 0;
    std::size_t produced = 0;
    // Why what follows cannot be decompressed: the data are corrupt. Empty if they are not.
    std::string failure = {};
  };

  virtual ~Decompressor() = default;

  // Decompresses from `input` into `output`, which is not empty, until one of them is used up or a
  // stream ends. Must not be called after a failure.
  virtual Step step(std::string_view input, std::span<char> output) = 0;

  // Returns whether the input so far ends where a stream ends.
  virtual bool isAtEnd() const = 0;
};

// `compression` is one of the three formats.
std::unique_ptr<Decompressor> makeDecompressor(Compression compression);

}  // namespace qel::tool

#endif  // QEL_TOOL_DECOMPRESSOR_H_
