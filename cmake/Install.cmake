# What `cmake --install` installs, in four components: runtime (shared libraries), development (headers, archives,
# and the files for CMake and pkg-config), command, documentation. And the Debian packages of them.

include(CMakePackageConfigHelpers)
set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/qel-purchase)

# Installs `targets`, libraries, as the component `name` of find_package.
function(qel_install_libraries name)
  install(TARGETS ${ARGN} EXPORT qel-purchase-${name}
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qel COMPONENT development)
  install(EXPORT qel-purchase-${name} FILE qel-purchase-${name}-targets.cmake NAMESPACE qel::
    DESTINATION ${package_directory} COMPONENT development)
endfunction()

# Sets `result` to the packages that users of `targets` must find: those whose imported targets are in the link
# interface. A shared library has none of the libraries in it that only its implementation uses.
function(qel_packages_of result)
  foreach(target IN LISTS ARGN)
    get_target_property(libraries ${target} INTERFACE_LINK_LIBRARIES)
    string(REGEX MATCHALL "[A-Za-z0-9_]+::" namespaces "${libraries}")
    list(APPEND packages ${namespaces})
  endforeach()
  list(REMOVE_DUPLICATES packages)
  list(TRANSFORM packages REPLACE "::" "")
  set(${result} "${packages}" PARENT_SCOPE)
endfunction()

# The files for find_package.
qel_install_libraries(purchase qel_purchase qel_platform)
qel_packages_of(QEL_PURCHASE_PACKAGES qel_purchase qel_platform)
if(QEL_PLATFORM_FOUNDATION)
  qel_install_libraries(foundation qel_foundation)
  qel_packages_of(QEL_FOUNDATION_PACKAGES qel_foundation)
endif()
set(find_modules ${QEL_PURCHASE_PACKAGES} ${QEL_FOUNDATION_PACKAGES})
list(REMOVE_DUPLICATES find_modules)
foreach(package IN LISTS find_modules)
  if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/Find${package}.cmake)
    install(FILES cmake/Find${package}.cmake DESTINATION ${package_directory} COMPONENT development)
  endif()
endforeach()
configure_file(cmake/qel-purchase-config.cmake.in qel-purchase-config.cmake @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qel-purchase-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qel-purchase-config.cmake
              ${PROJECT_BINARY_DIR}/qel-purchase-config-version.cmake
        DESTINATION ${package_directory} COMPONENT development)

# The file for pkg-config. It finds the installation from its own place, so that the whole can be moved.
set(flags_of_Foundation -lgnustep-base -lobjc)
if(APPLE)
  set(flags_of_Foundation "-framework Foundation")
endif()
set(flags_of_Threads ${CMAKE_THREAD_LIBS_INIT})
set(flags_of_libmd -lmd)
get_target_property(platform_libraries qel_platform LINK_LIBRARIES)
string(REGEX MATCHALL "[A-Za-z0-9_]+::" platform_packages "${platform_libraries}")
set(QEL_PC_PRIVATE_LIBS)
foreach(package IN LISTS platform_packages)
  string(REPLACE "::" "" package ${package})
  list(APPEND QEL_PC_PRIVATE_LIBS ${flags_of_${package}})
endforeach()
list(JOIN QEL_PC_PRIVATE_LIBS " " QEL_PC_PRIVATE_LIBS)
# Archives are linked with what they need even without --static, because there is nothing else to link.
set(QEL_PC_LIBS)
get_target_property(platform_type qel_platform TYPE)
if(platform_type STREQUAL "STATIC_LIBRARY")
  set(QEL_PC_LIBS ${QEL_PC_PRIVATE_LIBS})
  set(QEL_PC_PRIVATE_LIBS)
endif()
file(RELATIVE_PATH QEL_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" QEL_PC_TO_PREFIX ${QEL_PC_TO_PREFIX})
file(RELATIVE_PATH QEL_PC_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH QEL_PC_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/qel-purchase.pc.in qel-purchase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qel-purchase.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(DIRECTORY include/qel TYPE INCLUDE COMPONENT development)

if(TARGET qel-purchase)
  install(TARGETS qel-purchase
    RUNTIME COMPONENT command
    BUNDLE DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
  file(GLOB manuals CONFIGURE_DEPENDS docs/man/*.1)
  install(FILES ${manuals} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT command)
endif()

install(FILES README.md CHANGELOG.md TYPE DOC COMPONENT documentation)
install(DIRECTORY docs examples TYPE DOC COMPONENT documentation
        PATTERN docs/man EXCLUDE PATTERN __pycache__ EXCLUDE)

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/debian/Packages.cmake)
endif()
