# Finds Foundation and defines the target Foundation::Foundation: Apple's framework on Apple's systems,
# GNUstep's library elsewhere. Sets FOUNDATION_ARC_CHECK_OPTIONS: options for clang to compile
# Objective-C++ with automatic reference counting, even if the installed runtime cannot run the result.

include(FindPackageHandleStandardArgs)

if(APPLE)
  find_library(FOUNDATION_LIBRARY Foundation)
  mark_as_advanced(FOUNDATION_LIBRARY)
  find_package_handle_standard_args(Foundation REQUIRED_VARS FOUNDATION_LIBRARY)
  if(Foundation_FOUND AND NOT TARGET Foundation::Foundation)
    add_library(Foundation::Foundation INTERFACE IMPORTED)
    set_target_properties(Foundation::Foundation PROPERTIES
      INTERFACE_LINK_LIBRARIES "${FOUNDATION_LIBRARY}")
  endif()
  set(FOUNDATION_ARC_CHECK_OPTIONS -fobjc-arc)
  return()
endif()

find_program(GNUSTEP_CONFIG gnustep-config)
find_library(GNUSTEP_BASE_LIBRARY gnustep-base)
# GNUstep uses libobjc, GCC's Objective-C runtime, which is in GCC's own directories.
file(GLOB foundation_gcc_directories LIST_DIRECTORIES true /usr/lib/gcc/*/*)
find_path(OBJC_INCLUDE_DIR objc/objc.h PATHS ${foundation_gcc_directories} PATH_SUFFIXES include)
find_library(OBJC_LIBRARY objc PATHS ${foundation_gcc_directories})
mark_as_advanced(GNUSTEP_CONFIG GNUSTEP_BASE_LIBRARY OBJC_INCLUDE_DIR OBJC_LIBRARY)
find_package_handle_standard_args(Foundation
  REQUIRED_VARS GNUSTEP_CONFIG GNUSTEP_BASE_LIBRARY OBJC_INCLUDE_DIR OBJC_LIBRARY
  REASON_FAILURE_MESSAGE "install libgnustep-base-dev and gobjc, or run script/bootstrap")

if(Foundation_FOUND)
  execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags
    OUTPUT_VARIABLE foundation_flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(foundation_flags UNIX_COMMAND "${foundation_flags}")
  # Keeps definitions and -f options only: the build sets optimization, warnings and dependency files.
  set(foundation_options ${foundation_flags})
  list(FILTER foundation_options INCLUDE REGEX "^-(D|f)")
  set(foundation_directories ${foundation_flags})
  list(FILTER foundation_directories INCLUDE REGEX "^-I/")
  list(TRANSFORM foundation_directories REPLACE "^-I" "")
  foreach(directory IN LISTS foundation_directories)
    if(NOT IS_DIRECTORY ${directory})
      list(REMOVE_ITEM foundation_directories ${directory})
    endif()
  endforeach()

  # Searched last, so that only the headers of the runtime come from GCC's directory.
  set(foundation_run_time_headers "SHELL:-idirafter ${OBJC_INCLUDE_DIR}")
  if(NOT TARGET Foundation::Foundation)
    add_library(Foundation::Foundation INTERFACE IMPORTED)
    set(is_objc "$<COMPILE_LANGUAGE:OBJC,OBJCXX>")
    set_target_properties(Foundation::Foundation PROPERTIES
      INTERFACE_INCLUDE_DIRECTORIES "${foundation_directories}"
      INTERFACE_COMPILE_OPTIONS
        "$<${is_objc}:-fobjc-runtime=gcc>;$<${is_objc}:${foundation_options}>;$<${is_objc}:${foundation_run_time_headers}>"
      INTERFACE_LINK_LIBRARIES "${GNUSTEP_BASE_LIBRARY};${OBJC_LIBRARY}")
  endif()

  # Clang supports automatic reference counting only for GNUstep's newer runtime.
  list(TRANSFORM foundation_directories PREPEND "-isystem" OUTPUT_VARIABLE foundation_includes)
  set(FOUNDATION_ARC_CHECK_OPTIONS -fobjc-arc -fobjc-runtime=gnustep-1.9 ${foundation_options}
    ${foundation_includes} -idirafter ${OBJC_INCLUDE_DIR})
endif()
