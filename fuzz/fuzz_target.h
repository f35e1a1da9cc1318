// What a fuzz target is, and what the targets share.

#ifndef QEL_FUZZ_FUZZ_TARGET_H_
#define QEL_FUZZ_FUZZ_TARGET_H_

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace qel::testing {

// Each target defines this: tries one input, any bytes, and ends the program when it finds a fault.
void fuzz(std::string_view input);

// Ends the program, so that the fuzzer keeps the input, unless `holds`.
inline void check(bool holds, std::string_view rule) {
  if (holds) return;
  std::cerr << "This does not hold: " << rule << std::endl;
  std::abort();
}

// Takes the text up to the next end of line off `text`, and the end of line with it.
inline std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

}  // namespace qel::testing

#endif  // QEL_FUZZ_FUZZ_TARGET_H_
