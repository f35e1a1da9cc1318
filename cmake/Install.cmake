# What `cmake --install` installs, in four components: runtime (shared libraries), development (headers, archives,
# and the files for CMake and pkg-config), command, documentation. And the Debian packages of them.

include(CMakePackageConfigHelpers)
set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/qel-purchase)

# Installs libraries as a component of find_package: its name, the option that builds it, and its targets. Tells the
# file for find_package, with COMPONENT_FACTS, the packages that the users of the targets must find. These are the
# ones with imported targets in the link interface. A shared library has none there that only its implementation uses.
function(qel_install_component name option)
  list(APPEND COMPONENTS ${name})
  set(COMPONENTS ${COMPONENTS} PARENT_SCOPE)
  string(APPEND COMPONENT_FACTS "\n  set(option_of_${name} ${option})")
  list(GET ARGN 0 target)
  if(TARGET ${target})
    install(TARGETS ${ARGN} EXPORT qel-purchase-${name}
      LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
      ARCHIVE COMPONENT development
      PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qel COMPONENT development)
    install(EXPORT qel-purchase-${name} FILE qel-purchase-${name}-targets.cmake NAMESPACE qel::
      DESTINATION ${package_directory} COMPONENT development)
    foreach(target IN LISTS ARGN)
      get_target_property(libraries ${target} INTERFACE_LINK_LIBRARIES)
      string(REGEX MATCHALL "[A-Za-z0-9_]+::" namespaces "${libraries}")
      list(APPEND packages ${namespaces})
    endforeach()
    list(REMOVE_DUPLICATES packages)
    list(TRANSFORM packages REPLACE "::" "")
    foreach(package IN LISTS packages)
      if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/Find${package}.cmake)
        install(FILES cmake/Find${package}.cmake DESTINATION ${package_directory} COMPONENT development)
      endif()
    endforeach()
    string(APPEND COMPONENT_FACTS "\n  set(packages_of_${name} ${packages})")
  endif()
  set(COMPONENT_FACTS "${COMPONENT_FACTS}" PARENT_SCOPE)
endfunction()

# The files for find_package.
qel_install_component(purchase "" qel_purchase qel_platform)
qel_install_component(foundation QEL_PLATFORM_FOUNDATION qel_foundation)
qel_install_component(receipt QEL_BUILD_RECEIPT qel_receipt)
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
if(TARGET qel_completions)
  # Where the shells look for the completions of packages. Debian's zsh looks in vendor-completions instead.
  set(QEL_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING "Folder of zsh's completion")
  mark_as_advanced(QEL_ZSH_COMPLETIONS)
  set(completions ${PROJECT_BINARY_DIR}/tool/completions)
  install(FILES ${completions}/bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
          RENAME qel-purchase COMPONENT command)
  install(FILES ${completions}/zsh DESTINATION ${QEL_ZSH_COMPLETIONS} RENAME _qel-purchase COMPONENT command)
  install(FILES ${completions}/fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d
          RENAME qel-purchase.fish COMPONENT command)
endif()

install(FILES README.md CHANGELOG.md TYPE DOC COMPONENT documentation)
install(DIRECTORY docs examples TYPE DOC COMPONENT documentation
        PATTERN docs/man EXCLUDE PATTERN __pycache__ EXCLUDE)

if(PROJECT_IS_TOP_LEVEL)
  include(cmake/debian/Packages.cmake)
endif()
