# Finds MPFR, and GMP with its C++ interface. Defines the targets MPFR::mpfr and MPFR::gmpxx. Debian's packages
# have no CMake files.

find_library(MPFR_LIBRARY mpfr)
find_library(GMP_LIBRARY gmp)
find_library(GMPXX_LIBRARY gmpxx)
find_path(MPFR_INCLUDE_DIR mpfr.h)
find_path(GMPXX_INCLUDE_DIR gmpxx.h)
mark_as_advanced(MPFR_LIBRARY GMP_LIBRARY GMPXX_LIBRARY MPFR_INCLUDE_DIR GMPXX_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(MPFR
  REQUIRED_VARS MPFR_LIBRARY GMP_LIBRARY GMPXX_LIBRARY MPFR_INCLUDE_DIR GMPXX_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install libmpfr-dev and libgmp-dev, or run script/bootstrap")

if(MPFR_FOUND AND NOT TARGET MPFR::mpfr)
  add_library(MPFR::gmpxx INTERFACE IMPORTED)
  set_target_properties(MPFR::gmpxx PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${GMPXX_INCLUDE_DIR}" INTERFACE_LINK_LIBRARIES "${GMPXX_LIBRARY};${GMP_LIBRARY}")
  add_library(MPFR::mpfr INTERFACE IMPORTED)
  set_target_properties(MPFR::mpfr PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${MPFR_INCLUDE_DIR}" INTERFACE_LINK_LIBRARIES "${MPFR_LIBRARY};${GMP_LIBRARY}")
endif()
