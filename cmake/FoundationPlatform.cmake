# Checks QEL_DATE_FORMATTER, and enables Objective-C++ if QEL_PLATFORM_FOUNDATION is on.

if(NOT QEL_DATE_FORMATTER MATCHES "^(portable|foundation)$")
  message(FATAL_ERROR "QEL_DATE_FORMATTER is ${QEL_DATE_FORMATTER}; expected portable or foundation")
endif()
if(QEL_DATE_FORMATTER STREQUAL "foundation" AND NOT QEL_PLATFORM_FOUNDATION)
  message(FATAL_ERROR "QEL_DATE_FORMATTER=foundation needs QEL_PLATFORM_FOUNDATION=ON")
endif()
if(NOT QEL_PLATFORM_FOUNDATION)
  return()
endif()

# Requires clang: g++ 12 does not support `for ... in` in Objective-C++, and crashes on `@catch`.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER} CACHE FILEPATH "Objective-C++ compiler")
else()
  find_program(CMAKE_OBJCXX_COMPILER NAMES clang++ clang++-19 clang++-14 REQUIRED)
endif()

# Flags for C++, such as those of a sanitizer, apply to the whole program.
if(NOT DEFINED CMAKE_OBJCXX_FLAGS)
  set(CMAKE_OBJCXX_FLAGS "${CMAKE_CXX_FLAGS}" CACHE STRING "Flags of the Objective-C++ compiler")
endif()
enable_language(OBJCXX)
find_package(Foundation REQUIRED)
