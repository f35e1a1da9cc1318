// The run of the subcommand `events`: reads purchases, writes events.

#ifndef QEL_TOOL_EVENTS_RUN_H_
#define QEL_TOOL_EVENTS_RUN_H_

#include "events_options.h"
#include "exit_status.h"

namespace qel::tool {

// Reads JSON Lines from the inputs and writes one line for each to the output, in the same order.
// Writes failures of inputs and of the output to standard error, and at the end a summary.
ExitStatus runEvents(const EventsOptions& options);

}  // namespace qel::tool

#endif  // QEL_TOOL_EVENTS_RUN_H_
