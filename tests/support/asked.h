// The log that the doubles of one test share.

#ifndef QEL_TESTS_SUPPORT_ASKED_H_
#define QEL_TESTS_SUPPORT_ASKED_H_

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace qel::testing {

// The operations that were called on the doubles that share this log, in order. An entry names the
// double and its operation, and for some operations an argument: "product.price",
// "monitor.logWithLevel 40003".
struct Asked : std::vector<std::string> {
  using std::vector<std::string>::vector;

  // Appends `operation`. Throws std::runtime_error when it is the throwing one.
  void note(std::string operation) {
    push_back(std::move(operation));
    if (back() == throwingOperation) throw std::runtime_error(back());
  }

  // Throws instead of returning; none when empty.
  std::string throwingOperation;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_ASKED_H_
