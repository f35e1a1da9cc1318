# Finds utf8proc (properties of Unicode characters) and defines the target utf8proc::utf8proc. Debian's package has
# no CMake files.

find_library(UTF8PROC_LIBRARY utf8proc)
find_path(UTF8PROC_INCLUDE_DIR utf8proc.h)
mark_as_advanced(UTF8PROC_LIBRARY UTF8PROC_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(utf8proc REQUIRED_VARS UTF8PROC_LIBRARY UTF8PROC_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install libutf8proc-dev, or run script/bootstrap")

if(utf8proc_FOUND AND NOT TARGET utf8proc::utf8proc)
  add_library(utf8proc::utf8proc UNKNOWN IMPORTED)
  set_target_properties(utf8proc::utf8proc PROPERTIES
    IMPORTED_LOCATION "${UTF8PROC_LIBRARY}" INTERFACE_INCLUDE_DIRECTORIES "${UTF8PROC_INCLUDE_DIR}")
endif()
