// A promise about lifetimes that the compiler can check.

#ifndef QEL_PLATFORM_LIFETIME_H_
#define QEL_PLATFORM_LIFETIME_H_

// Marks a parameter, or after a member function the object, whose lifetime bounds that of the
// result. Clang warns of results that outlive it; other compilers ignore the mark.
#if defined(__has_cpp_attribute) && __has_cpp_attribute(clang::lifetimebound)
#define QEL_LIFETIME_BOUND [[clang::lifetimebound]]
#else
#define QEL_LIFETIME_BOUND
#endif

#endif  // QEL_PLATFORM_LIFETIME_H_
