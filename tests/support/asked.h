// The log that the doubles of one test share.

#ifndef QEL_TESTS_SUPPORT_ASKED_H_
#define QEL_TESTS_SUPPORT_ASKED_H_

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace qel::testing {

// The operations that were called on the doubles that share this log, in order. An entry names the
// double and its operation, and for some operations an argument: "product.price",
// "monitor.logWithLevel 40003".
struct Asked : std::vector<std::string> {
  using std::vector<std::string>::vector;

  // Appends `operation` and calls `onNote`.
  void note(std::string operation) {
    push_back(std::move(operation));
    if (onNote) onNote(back());
  }

  // Receives each operation before the double answers. May throw, or change the answer.
  std::function<void(const std::string& operation)> onNote;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_ASKED_H_
