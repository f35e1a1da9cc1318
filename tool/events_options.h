// The options of the subcommand `events`.

#ifndef QEL_TOOL_EVENTS_OPTIONS_H_
#define QEL_TOOL_EVENTS_OPTIONS_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "result_writer.h"

namespace qel::tool {

struct EventsOptions {
  // Paths of the inputs; - is standard input. At least one.
  std::vector<std::string> inputs = {"-"};
  // Path of the output; - is standard output.
  std::string output = "-";
  // Number of the first line of the first input. More than 1 if it is a part of a larger input.
  std::uint64_t firstLineNumber = 1;
  // The longest line that is read, in bytes.
  std::size_t maxLine = std::size_t{1} << 30;
  // With more rejected lines the run stops.
  std::uint64_t maxRejected = std::numeric_limits<std::uint64_t>::max();
  bool ignoresUnknownKeys = false;
  ResultForm resultForm;
  // Number of threads, at least 1.
  int jobs = 1;
  bool showsProgress = true;
};

}  // namespace qel::tool

#endif  // QEL_TOOL_EVENTS_OPTIONS_H_
