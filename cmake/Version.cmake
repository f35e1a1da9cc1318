# Reads the version from platform/qel/version.h, so that sources that are built without CMake have it, too.
# Sets QEL_VERSION.

set(version_header ${CMAKE_CURRENT_LIST_DIR}/../platform/qel/version.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_header})
file(READ ${version_header} version_text)
set(QEL_VERSION)
foreach(part IN ITEMS MAJOR MINOR PATCH)
  if(NOT version_text MATCHES "#define QEL_PURCHASE_VERSION_${part} ([0-9]+)\n")
    message(FATAL_ERROR "${version_header}: expected a line #define QEL_PURCHASE_VERSION_${part} NUMBER")
  endif()
  list(APPEND QEL_VERSION ${CMAKE_MATCH_1})
endforeach()
list(JOIN QEL_VERSION "." QEL_VERSION)
