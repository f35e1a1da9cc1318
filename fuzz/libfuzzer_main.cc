// Where libFuzzer, which brings its own main, enters a fuzz target.

#include <cstddef>
#include <cstdint>

#include "fuzz_target.h"

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qel::testing::fuzz({reinterpret_cast<const char*>(data), size});
  return 0;
}
