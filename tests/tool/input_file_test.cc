#include "input_file.h"

#include <gtest/gtest.h>
#include <lzma.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace qel::tool {
namespace {

std::string gzip(std::string_view text) {
  z_stream stream = {};
  deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

std::string zstd(std::string_view text) {
  std::string out(ZSTD_compressBound(text.size()), '\0');
  ZSTD_CCtx* const context = ZSTD_createCCtx();
  ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
  out.resize(ZSTD_compress2(context, out.data(), out.size(), text.data(), text.size()));
  ZSTD_freeCCtx(context);
  return out;
}

std::string xz(std::string_view text) {
  std::string out(lzma_stream_buffer_bound(text.size()), '\0');
  std::size_t size = 0;
  EXPECT_EQ(lzma_easy_buffer_encode(0, LZMA_CHECK_CRC64, nullptr,
                                    reinterpret_cast<const std::uint8_t*>(text.data()), text.size(),
                                    reinterpret_cast<std::uint8_t*>(out.data()), &size, out.size()),
            LZMA_OK);
  out.resize(size);
  return out;
}

// A text that compresses well but not to nothing.
std::string someText(std::size_t size) {
  std::string text;
  for (std::size_t i = 0; text.size() < size; ++i) text += std::to_string(i * i * 7919) + "\n";
  return text.substr(0, size);
}

struct Format {
  const char* name;
  std::function<std::string(std::string_view)> compress;
};

std::string nameOfFormat(const ::testing::TestParamInfo<Format>& test) { return test.param.name; }

class InputFileTest : public ::testing::TestWithParam<Format> {
 protected:
  ~InputFileTest() override { std::filesystem::remove(path_); }

  void write(std::string_view content) const { std::ofstream(path_, std::ios::binary) << content; }

  std::string compressed(std::string_view text) const { return GetParam().compress(text); }

  // What can be read, in pieces of `pieceSize` bytes, and then the error, if there is one.
  std::string content(std::size_t pieceSize = 100'000) const {
    std::string content;
    try {
      InputFile file(path_);
      std::string piece(pieceSize, '\0');
      while (const std::size_t count = file.read(piece)) content += piece.substr(0, count);
    } catch (const InputError& error) {
      const std::string before = "cannot read " + path_ + ": ";
      EXPECT_TRUE(std::string_view(error.what()).starts_with(before)) << error.what();
      content += "!" + std::string(error.what()).substr(before.size());
    }
    return content;
  }

  const std::string path_ =
      std::filesystem::temp_directory_path() / ("qel-input-" + std::to_string(getpid()));
};

TEST_P(InputFileTest, ReadsAWholeFile) {
  for (const std::size_t size : {0U, 1U, 1000U, 65'536U, 1'000'000U}) {
    const std::string text = someText(size);
    write(compressed(text));
    EXPECT_EQ(content(), text) << size;
  }
}

TEST_P(InputFileTest, ReadsInPiecesOfAnySize) {
  const std::string text = someText(20'000);
  write(compressed(text));
  for (const std::size_t size : {InputFile::kLeastRead, std::size_t{17}, std::size_t{20'000}}) {
    EXPECT_EQ(content(size), text) << size;
  }
}

TEST_P(InputFileTest, ReadsSeveralStreamsOneAfterTheOther) {
  write(compressed("one\n") + compressed("") + compressed("two\n"));
  EXPECT_EQ(content(), "one\ntwo\n");
}

INSTANTIATE_TEST_SUITE_P(
    Formats, InputFileTest,
    ::testing::Values(Format{"plain", [](auto text) { return std::string(text); }},
                      Format{"gzip", gzip}, Format{"zstd", zstd}, Format{"xz", xz}),
    nameOfFormat);

class CompressedFileTest : public InputFileTest {};

TEST_P(CompressedFileTest, ReadsWhatATruncatedFileHasAndFailsThen) {
  constexpr std::size_t kSize = 1'000'000;
  // zstd decompresses whole blocks only.
  constexpr std::size_t kZstdBlock = 131'072;
  const std::string text = someText(kSize);
  const std::string whole = compressed(text);
  const struct {
    std::size_t size;
    std::size_t leastRead;
  } cases[] = {{whole.size() - 1, kSize - kZstdBlock},
               {whole.size() - 20, kSize - kZstdBlock},
               {whole.size() / 2, kSize * 2 / 5 - kZstdBlock}};
  for (const auto& [size, leastRead] : cases) {
    write(whole.substr(0, size));
    const std::string result = content();
    const std::string error = "!the compressed data are truncated";
    ASSERT_TRUE(result.ends_with(error));
    const std::string read = result.substr(0, result.size() - error.size());
    EXPECT_TRUE(text.starts_with(read));
    EXPECT_GE(read.size(), leastRead);
  }
}

TEST_P(CompressedFileTest, FailsAtTheFirstByteAfterAStreamThatStartsNone) {
  write(compressed("one\n") + "garbage that is long enough for any header");
  const std::string result = content();
  EXPECT_TRUE(result.starts_with("one\n!corrupt ")) << result;
}

TEST_P(CompressedFileTest, ReadsAllBeforeAWrongChecksum) {
  const std::string text = someText(100'000);
  const std::string whole = compressed(text);
  for (std::size_t i = 1; i <= 4; ++i) {
    std::string data = whole;
    data[data.size() - i] = static_cast<char>(data[data.size() - i] ^ 1);
    write(data);
    const std::string result = content();
    EXPECT_TRUE(result.starts_with(text + "!corrupt ")) << result.substr(text.size());
  }
}

TEST_P(CompressedFileTest, FailsIfTheDataAreCorrupt) {
  const std::string text = someText(100'000);
  std::string data = compressed(text);
  data[data.size() / 2] = static_cast<char>(~data[data.size() / 2]);
  write(data);
  const std::string result = content();
  const std::size_t error = result.find("!corrupt " + std::string(GetParam().name) + " data: ");
  ASSERT_NE(error, std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Formats, CompressedFileTest,
                         ::testing::Values(Format{"gzip", gzip}, Format{"zstd", zstd},
                                           Format{"xz", xz}),
                         nameOfFormat);

// zstd has frames for padding.
class PaddedFileTest : public InputFileTest {};

TEST_P(PaddedFileTest, ZerosBehindAStreamAreIgnored) {
  for (const std::size_t size : {1U, 512U, 200'000U}) {
    std::string file;
    for (const char* const text : {"one\n", "two\n"}) {
      file.append(compressed(text)).append(size, '\0');
    }
    write(file);
    EXPECT_EQ(content(), "one\ntwo\n");
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, PaddedFileTest,
                         ::testing::Values(Format{"gzip", gzip}, Format{"xz", xz}), nameOfFormat);

TEST(InputFileErrorTest, NamesAFileThatCannotBeOpened) {
  try {
    InputFile file("/no/such/file");
    FAIL();
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(), "cannot open /no/such/file: No such file or directory");
  }
}

TEST(ReadInputTest, ReturnsTheContentUpToALimit) {
  const std::string path =
      std::filesystem::temp_directory_path() / ("qel-content-" + std::to_string(getpid()));
  const std::string text = someText(200'000);
  std::ofstream(path, std::ios::binary) << gzip(text);
  EXPECT_EQ(readInput(path, text.size()), text);
  EXPECT_THROW(readInput(path, text.size() - 1), InputError);
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace qel::tool
