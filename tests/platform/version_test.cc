#include "qel/version.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Version, AsANumberAndAsATextIsTheSame) {
  EXPECT_EQ(std::to_string(QEL_PURCHASE_VERSION / 10000) + "." +
                std::to_string(QEL_PURCHASE_VERSION / 100 % 100) + "." +
                std::to_string(QEL_PURCHASE_VERSION % 100),
            QEL_PURCHASE_VERSION_STRING);
}

// The preprocessor can compare the number.
#if QEL_PURCHASE_VERSION < 10000
#error "expected version 1.0.0 or later"
#endif

}  // namespace
