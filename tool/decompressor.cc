#include "decompressor.h"

#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <string>

namespace qel::tool {
namespace {

struct Magic {
  std::string_view bytes;
  Compression compression;
};

constexpr Magic kMagics[] = {
    {"\x1F\x8B", Compression::kGzip},
    {"\x28\xB5\x2F\xFD", Compression::kZstd},
    {std::string_view("\xFD\x37\x7A\x58\x5A\x00", 6), Compression::kXz},
};

std::string corrupt(const char* format, const char* reason) {
  return std::string("corrupt ") + format + " data: " + reason;
}

// Returns the number of zeros at the start of `input`. Tapes and disk images pad files with them.
std::size_t paddingOf(std::string_view input) {
  return std::min(input.find_first_not_of('\0'), input.size());
}

// zlib and lzma take bytes as unsigned char.
const std::uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

std::uint8_t* bytesOf(std::span<char> memory) {
  return reinterpret_cast<std::uint8_t*>(memory.data());
}

class GzipDecompressor : public Decompressor {
 public:
  GzipDecompressor() {
    constexpr int kGzipHeader = 16;
    if (inflateInit2(&stream_, MAX_WBITS + kGzipHeader) != Z_OK) throw std::bad_alloc();
  }
  ~GzipDecompressor() override { inflateEnd(&stream_); }
  GzipDecompressor(const GzipDecompressor&) = delete;
  GzipDecompressor& operator=(const GzipDecompressor&) = delete;

  Step step(std::string_view input, std::span<char> output) override {
    if (isAtEnd_) {
      const std::size_t padding = paddingOf(input);
      if (padding > 0 || input.empty()) return {.consumed = padding};
      inflateReset(&stream_);
    }
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    const auto inputSize = static_cast<uInt>(std::min(input.size(), kMost));
    const auto outputSize = static_cast<uInt>(std::min(output.size(), kMost));
    stream_.next_in = const_cast<Bytef*>(bytesOf(input));
    stream_.avail_in = inputSize;
    stream_.next_out = bytesOf(output);
    stream_.avail_out = outputSize;
    const int status = inflate(&stream_, Z_NO_FLUSH);
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    Step step = {inputSize - stream_.avail_in, outputSize - stream_.avail_out};
    if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
      step.failure = corrupt("gzip", stream_.msg != nullptr ? stream_.msg : "unknown error");
    }
    isAtEnd_ = status == Z_STREAM_END;
    return step;
  }

  bool isAtEnd() const override { return isAtEnd_; }

 private:
  z_stream stream_ = {};
  bool isAtEnd_ = false;
};

class ZstdDecompressor : public Decompressor {
 public:
  ZstdDecompressor() : stream_(ZSTD_createDStream()) {
    if (stream_ == nullptr) throw std::bad_alloc();
  }
  ~ZstdDecompressor() override { ZSTD_freeDStream(stream_); }
  ZstdDecompressor(const ZstdDecompressor&) = delete;
  ZstdDecompressor& operator=(const ZstdDecompressor&) = delete;

  Step step(std::string_view input, std::span<char> output) override {
    // zstd would expect the header of another stream.
    if (isAtEnd_ && input.empty()) return {};
    // A call that fails returns none of its output, so each call gets one block, or one checksum.
    ZSTD_inBuffer in = {input.data(), std::min(input.size(), nextSize_), 0};
    ZSTD_outBuffer out = {output.data(), output.size(), 0};
    const std::size_t status = ZSTD_decompressStream(stream_, &out, &in);
    if (ZSTD_isError(status) != 0) return {.failure = corrupt("zstd", ZSTD_getErrorName(status))};
    isAtEnd_ = status == 0;
    nextSize_ = isAtEnd_ ? kFirstSize : status;
    return {in.pos, out.pos};
  }

  bool isAtEnd() const override { return isAtEnd_; }

 private:
  // What every stream has at its start.
  static constexpr std::size_t kFirstSize = 5;

  ZSTD_DStream* const stream_;
  // Number of bytes that zstd wants next.
  std::size_t nextSize_ = kFirstSize;
  bool isAtEnd_ = false;
};

const char* xzErrorName(lzma_ret status) {
  switch (status) {
    case LZMA_FORMAT_ERROR:
      return "expected an xz stream";
    case LZMA_OPTIONS_ERROR:
      return "unsupported options";
    default:
      return "the data do not match their checksum or their format";
  }
}

class XzDecompressor : public Decompressor {
 public:
  XzDecompressor() { start(); }
  ~XzDecompressor() override { lzma_end(&stream_); }
  XzDecompressor(const XzDecompressor&) = delete;
  XzDecompressor& operator=(const XzDecompressor&) = delete;

  Step step(std::string_view input, std::span<char> output) override {
    if (isAtEnd_) {
      const std::size_t padding = paddingOf(input);
      if (padding > 0 || input.empty()) return {.consumed = padding};
      start();
    }
    stream_.next_in = bytesOf(input);
    stream_.avail_in = input.size();
    stream_.next_out = bytesOf(output);
    stream_.avail_out = output.size();
    const lzma_ret status = lzma_code(&stream_, LZMA_RUN);
    if (status == LZMA_MEM_ERROR) throw std::bad_alloc();
    Step step = {input.size() - stream_.avail_in, output.size() - stream_.avail_out};
    // LZMA_BUF_ERROR means that more input is needed.
    if (status != LZMA_OK && status != LZMA_STREAM_END && status != LZMA_BUF_ERROR) {
      step.failure = corrupt("xz", xzErrorName(status));
    }
    isAtEnd_ = status == LZMA_STREAM_END;
    return step;
  }

  bool isAtEnd() const override { return isAtEnd_; }

 private:
  void start() {
    constexpr std::uint64_t kNoMemoryLimit = UINT64_MAX;
    if (lzma_stream_decoder(&stream_, kNoMemoryLimit, 0) != LZMA_OK) throw std::bad_alloc();
  }

  lzma_stream stream_ = LZMA_STREAM_INIT;
  bool isAtEnd_ = false;
};

}  // namespace

Compression compressionOf(std::string_view start) {
  for (const Magic& magic : kMagics) {
    if (start.starts_with(magic.bytes)) return magic.compression;
    if (magic.bytes.starts_with(start)) return Compression::kUnknown;
  }
  return Compression::kNone;
}

std::unique_ptr<Decompressor> makeDecompressor(Compression compression) {
  switch (compression) {
    case Compression::kGzip:
      return std::make_unique<GzipDecompressor>();
    case Compression::kZstd:
      return std::make_unique<ZstdDecompressor>();
    default:
      return std::make_unique<XzDecompressor>();
  }
}

}  // namespace qel::tool
