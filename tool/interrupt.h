// The interrupt from the keyboard, as something that a wait can see.

#ifndef QEL_TOOL_INTERRUPT_H_
#define QEL_TOOL_INTERRUPT_H_

namespace qel::tool {

// From now on, unless SIGINT is ignored, the first only makes `isInterrupted` true and
// `interruptDescriptor` readable; the second ends the program as ever. Called once, before other
// threads start. Throws std::system_error.
void catchInterrupt();

// Whether a SIGINT has come.
bool isInterrupted();

// A file descriptor that becomes, and stays, readable when a SIGINT comes.
int interruptDescriptor();

}  // namespace qel::tool

#endif  // QEL_TOOL_INTERRUPT_H_
