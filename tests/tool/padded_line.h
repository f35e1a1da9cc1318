// A line of input in memory that the reader may look past the end of.

#ifndef QEL_TESTS_TOOL_PADDED_LINE_H_
#define QEL_TESTS_TOOL_PADDED_LINE_H_

#include <string>
#include <string_view>

#include "json_reader.h"

namespace qel::tool::testing {

class PaddedLine {
 public:
  // `padding` is what every byte after the line holds.
  explicit PaddedLine(std::string_view line, char padding = ' ')
      : memory_(std::string(line) + std::string(JsonReader::kPadding, padding)),
        size_(line.size()) {}

  std::string_view view() const { return std::string_view(memory_).substr(0, size_); }

 private:
  std::string memory_;
  std::size_t size_;
};

}  // namespace qel::tool::testing

#endif  // QEL_TESTS_TOOL_PADDED_LINE_H_
