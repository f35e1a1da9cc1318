// The run of the subcommand `events`: reads purchases, writes events.

#ifndef QEL_TOOL_EVENTS_RUN_H_
#define QEL_TOOL_EVENTS_RUN_H_

#include <cstdint>
#include <string>

#include "exit_status.h"
#include "result_writer.h"

namespace qel::tool {

struct EventsOptions {
  // Path of the input; - is standard input.
  std::string input = "-";
  // Number of the first line of the input. More than 1 if it is a part of a larger input.
  std::uint64_t firstLineNumber = 1;
  bool ignoresUnknownKeys = false;
  Int64Form int64Form = Int64Form::kNumber;
  // Number of threads, at least 1.
  int jobs = 1;
  bool showsProgress = true;
};

// Reads JSON Lines from the input and writes one line for each to standard output, in the same
// order. Writes failures of the input or output, and at the end the number of purchases read and of
// lines rejected, to standard error.
ExitStatus runEvents(const EventsOptions& options);

}  // namespace qel::tool

#endif  // QEL_TOOL_EVENTS_RUN_H_
