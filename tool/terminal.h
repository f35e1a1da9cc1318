// Whether an output is a terminal.

#ifndef QEL_TOOL_TERMINAL_H_
#define QEL_TOOL_TERMINAL_H_

namespace qel::tool {

// Returns whether the file descriptor is a terminal that understands escape sequences. One whose
// type is not known (TERM is not set) or "dumb" may not.
bool isTerminal(int descriptor);

}  // namespace qel::tool

#endif  // QEL_TOOL_TERMINAL_H_
