// The subcommand `events`: purchases in, events out.

#ifndef QEL_TOOL_EVENTS_COMMAND_H_
#define QEL_TOOL_EVENTS_COMMAND_H_

#include <cstdint>
#include <string>

#include "result_writer.h"

namespace qel::tool {

// Exit statuses of the command.
enum ExitStatus : int {
  kAllRead = 0,
  kSomeRejected = 1,
  kFailed = 2,        // wrong usage, or input or output that fails
  kInterrupted = 130  // as a shell reports the end by SIGINT
};

struct EventsOptions {
  // Path of the input; - is standard input.
  std::string input = "-";
  // The number of the input's first line: more than 1 when it is a part of a larger input.
  std::uint64_t firstLineNumber = 1;
  bool ignoresUnknownKeys = false;
  Int64Form int64Form = Int64Form::kNumber;
  // Threads to work on; at least 1.
  int jobs = 1;
  bool showsProgress = true;
};

// Reads JSON Lines from the input and writes one line for each, in the same order, to standard
// output. Tells on standard error what went wrong, and at the end how many purchases were read and
// rejected.
ExitStatus runEvents(const EventsOptions& options);

}  // namespace qel::tool

#endif  // QEL_TOOL_EVENTS_COMMAND_H_
