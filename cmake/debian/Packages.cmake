# The Debian packages: `cpack --preset package` makes them from the components of the installation.

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
# Empty, so that each package has a summary of its own: the first line of its description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VENDOR "QEL developers")
set(CPACK_PACKAGE_CONTACT "QEL developers <maintainers@qel.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/complete_packages.cmake)
set(CPACK_QEL_SOURCE_DIR ${PROJECT_SOURCE_DIR})

# One package for each group.
set(CPACK_COMPONENTS_ALL runtime development command documentation)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
foreach(component IN ITEMS runtime development command)
  string(TOUPPER ${component} upper)
  set(CPACK_COMPONENT_${upper}_GROUP ${component})
endforeach()
set(CPACK_COMPONENT_DOCUMENTATION_GROUP development)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/platform ${PROJECT_BINARY_DIR}/receipt)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(library_package libqel-purchase${PROJECT_VERSION_MAJOR})
set(same_version "${library_package} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(description "The library computes the event to report for an in-app purchase, from the
product, the payment transaction and the receipt of an app's store. It
classifies the purchase and computes amounts in decimal.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "parameters of in-app purchase events: shared libraries
${description}")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqel-purchase-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${same_version})
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "parameters of in-app purchase events: development files
${description}
.
This package contains the headers, the files for CMake and pkg-config, and the
documents.")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME qel-purchase)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_COMMAND_PACKAGE_DEPENDS ${same_version})
set(CPACK_DEBIAN_COMMAND_DESCRIPTION "parameters of in-app purchase events: command
The command reads purchases as JSON Lines and writes their events.
.
${description}")

include(CPack)
