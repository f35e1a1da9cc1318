# Finds libmd (message digests) and defines the target libmd::libmd. Debian's package has no CMake files.

find_library(LIBMD_LIBRARY md)
find_path(LIBMD_INCLUDE_DIR md5.h)
mark_as_advanced(LIBMD_LIBRARY LIBMD_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(libmd REQUIRED_VARS LIBMD_LIBRARY LIBMD_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install libmd-dev, or run script/bootstrap")

if(libmd_FOUND AND NOT TARGET libmd::libmd)
  add_library(libmd::libmd UNKNOWN IMPORTED)
  set_target_properties(libmd::libmd PROPERTIES
    IMPORTED_LOCATION "${LIBMD_LIBRARY}" INTERFACE_INCLUDE_DIRECTORIES "${LIBMD_INCLUDE_DIR}")
endif()
