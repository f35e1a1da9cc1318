// SIGINT, as a flag and as a file descriptor that poll() can wait for.

#ifndef QEL_TOOL_INTERRUPT_H_
#define QEL_TOOL_INTERRUPT_H_

namespace qel::tool {

// Catches the first SIGINT: it makes `isInterrupted` true and `interruptDescriptor` readable. The
// second one ends the program. Leaves SIGINT ignored if it was. Must be called once, before other
// threads start. Throws std::system_error.
void catchInterrupt();

// Returns whether a SIGINT was received.
bool isInterrupted();

// Returns a file descriptor that becomes readable with the first SIGINT, and stays so.
int interruptDescriptor();

}  // namespace qel::tool

#endif  // QEL_TOOL_INTERRUPT_H_
