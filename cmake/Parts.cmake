# Parts of the build that need packages which the library qel::purchase does not: the command, qel::receipt, the tests
# and the benchmarks.

# Declares the option `name` of a part. AUTO builds the part if its packages are installed. ON does too, and
# fails if one is missing. A project that embeds this one builds no parts by default.
function(qel_part_option name description)
  set(default OFF)
  if(PROJECT_IS_TOP_LEVEL)
    set(default AUTO)
  endif()
  set(${name} ${default} CACHE STRING "${description}: ON, OFF, or AUTO (if its packages are installed)")
  set_property(CACHE ${name} PROPERTY STRINGS AUTO ON OFF)
endfunction()

# Finds packages for the part that `option` turns on. Each further argument is the name of a package, followed by
# arguments of find_package, in one string. If packages are missing, sets QEL_MISSING to their names. Then the
# caller leaves `part` out. If the option is ON, that is an error.
macro(qel_find_packages option part)
  set(QEL_MISSING)
  foreach(qel_package IN ITEMS ${ARGN})
    separate_arguments(qel_package UNIX_COMMAND "${qel_package}")
    find_package(${qel_package} QUIET)
    list(GET qel_package 0 qel_package)
    if(NOT ${qel_package}_FOUND)
      list(APPEND QEL_MISSING ${qel_package})
    endif()
  endforeach()
  list(JOIN QEL_MISSING ", " QEL_MISSING)
  if(QEL_MISSING AND "${${option}}" STREQUAL "AUTO")
    message(STATUS "Left out: ${part} (not found: ${QEL_MISSING}). See script/bootstrap")
  elseif(QEL_MISSING)
    message(FATAL_ERROR "${option}=${${option}}, but ${part} cannot be built. Not found: ${QEL_MISSING}. Install "
      "what is missing (script/bootstrap does), or set ${option} to OFF or AUTO.")
  endif()
endmacro()
