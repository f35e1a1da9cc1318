// What the leak sanitizer passes over: what GNUstep makes once and never frees.

#import <Foundation/Foundation.h>

#include <gtest/gtest.h>
#include <sanitizer/lsan_interface.h>

// The run time's tables of classes, methods and selectors. Objects do not come from there, and are
// watched.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:objc_malloc\n"
         "leak:class_copyMethodList\n";
}

// Null in a program without the sanitizer.
#pragma weak __lsan_disable
#pragma weak __lsan_enable

namespace {

// The user's defaults, over which GNUstep loses two objects when it sets them up.
class UserDefaults : public ::testing::Environment {
 public:
  void SetUp() override {
    if (__lsan_disable != nullptr) __lsan_disable();
    @autoreleasepool {
      [NSUserDefaults standardUserDefaults];
    }
    if (__lsan_enable != nullptr) __lsan_enable();
  }
};

[[maybe_unused]] const ::testing::Environment* const userDefaults =
    ::testing::AddGlobalTestEnvironment(new UserDefaults);

}  // namespace
