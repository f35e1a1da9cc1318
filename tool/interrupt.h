// The signals that end the command early, as a flag and as a file descriptor that poll() can wait
// for.

#ifndef QEL_TOOL_INTERRUPT_H_
#define QEL_TOOL_INTERRUPT_H_

namespace qel::tool {

// Catches the first SIGINT, SIGTERM or SIGHUP: it makes `isInterrupted` true and
// `interruptDescriptor` readable. The second one, of any of the three, ends the program. Leaves a
// signal ignored if it was. Must be called once, before other threads start. Throws
// std::system_error.
void catchInterrupts();

// Returns whether one of the signals was received.
bool isInterrupted();

// Returns the signal that was received, 0 if none was.
int interruptSignal();

// Returns a file descriptor that becomes readable with the first signal, and stays so. Returns -1,
// which poll() ignores, before the signals are caught.
int interruptDescriptor();

}  // namespace qel::tool

#endif  // QEL_TOOL_INTERRUPT_H_
