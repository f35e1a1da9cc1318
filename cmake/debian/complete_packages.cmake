# cpack runs this on the staged files. It adds what Debian's policy asks of every package: compressed manuals, and
# usr/share/doc/PACKAGE with the copyright and the change logs. It also fixes the prefix for pkg-config, which then
# omits the directories that compilers search anyway.

# Compresses `file` to `file`.gz, without a time stamp, as the policy asks.
function(compress file)
  execute_process(COMMAND gzip -9n --force ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP timestamp "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(group IN ITEMS RUNTIME DEVELOPMENT COMMAND)
  string(TOLOWER ${group} directory)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/${directory}${CPACK_PACKAGING_INSTALL_PREFIX})
  # Without the command there is no package for it.
  if(NOT IS_DIRECTORY ${root})
    continue()
  endif()
  file(GLOB manuals ${root}/share/man/man*/*.[1-9])
  foreach(manual IN LISTS manuals)
    compress(${manual})
  endforeach()

  set(documents ${root}/share/doc/${CPACK_DEBIAN_${group}_PACKAGE_NAME})
  file(REMOVE ${documents}/CHANGELOG.md)
  configure_file(${CPACK_QEL_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog COPYONLY)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${documents}/changelog.Debian @ONLY)
  compress(${documents}/changelog)
  compress(${documents}/changelog.Debian)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${documents}/copyright COPYONLY)
endforeach()

file(GLOB_RECURSE pc_files ${CPACK_TEMPORARY_DIRECTORY}/development/*.pc)
foreach(pc_file IN LISTS pc_files)
  file(READ ${pc_file} text)
  string(REGEX REPLACE "prefix=[^\n]*" "prefix=${CPACK_PACKAGING_INSTALL_PREFIX}" text "${text}")
  file(WRITE ${pc_file} "${text}")
endforeach()
