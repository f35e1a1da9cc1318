// Tests that change the run time for good, such as by registering a class.

#ifndef QEL_TESTS_FOUNDATION_OWN_PROCESS_H_
#define QEL_TESTS_FOUNDATION_OWN_PROCESS_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace qel::testing {

// Writes the checks of the running test that have failed to standard error.
inline void reportFailures() {
  const ::testing::TestResult& result =
      *::testing::UnitTest::GetInstance()->current_test_info()->result();
  for (int i = 0; i < result.total_part_count(); ++i) {
    const ::testing::TestPartResult& part = result.GetTestPartResult(i);
    if (part.failed()) {
      std::cerr << part.file_name() << ":" << part.line_number() << ": " << part.summary() << "\n";
    }
  }
}

// Runs `body` in a copy of this process, and fails when a check in there does. What `body` changes
// ends with the copy.
template <typename Body>
void inProcessOfItsOwn(Body body) {
  const auto runAndExit = [&body] {
    body();
    reportFailures();
    std::cout.flush();
    // At once: the leak sanitizer, which asks at the end, does not see all that a copy can reach.
    std::_Exit(::testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  };
  EXPECT_EXIT(runAndExit(), ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

}  // namespace qel::testing

#endif  // QEL_TESTS_FOUNDATION_OWN_PROCESS_H_
