// The exit statuses of the command.

#ifndef QEL_TOOL_EXIT_STATUS_H_
#define QEL_TOOL_EXIT_STATUS_H_

namespace qel::tool {

enum ExitStatus : int {
  kAllRead = 0,
  kSomeRejected = 1,
  kFailed = 2,        // wrong usage, or input or output that fails
  kInterrupted = 130  // what a shell reports for a program that SIGINT ended
};

}  // namespace qel::tool

#endif  // QEL_TOOL_EXIT_STATUS_H_
