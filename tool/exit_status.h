// The exit statuses of the command.

#ifndef QEL_TOOL_EXIT_STATUS_H_
#define QEL_TOOL_EXIT_STATUS_H_

namespace qel::tool {

enum ExitStatus : int {
  kAllRead = 0,
  kSomeRejected = 1,
  kFailed = 2,  // wrong usage, or input or output that fails
  // A signal ended the command: what a shell reports for it.
  kHungUp = 129,
  kInterrupted = 130,
  kTerminated = 143
};

}  // namespace qel::tool

#endif  // QEL_TOOL_EXIT_STATUS_H_
