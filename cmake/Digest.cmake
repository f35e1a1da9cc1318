# Chooses the implementation of qel_64LSBMD5, the digest behind the deduplication identifier.

set(default libmd)
if(APPLE)
  set(default commoncrypto)
endif()
set(QEL_DIGEST ${default} CACHE STRING
  "Digest: libmd, commoncrypto (Apple's systems), or external (the embedder defines qel::qel_64LSBMD5)")
set_property(CACHE QEL_DIGEST PROPERTY STRINGS libmd commoncrypto external)

if(NOT QEL_DIGEST MATCHES "^(libmd|commoncrypto|external)$")
  message(FATAL_ERROR "QEL_DIGEST is ${QEL_DIGEST}; expected libmd, commoncrypto or external")
endif()
if(QEL_DIGEST STREQUAL "external")
  if(BUILD_SHARED_LIBS)
    message(FATAL_ERROR "QEL_DIGEST=external needs static libraries, because the program that links them "
      "defines the digest: set BUILD_SHARED_LIBS to OFF")
  endif()
  # The parts of this project are such programs, and define none.
  foreach(part IN ITEMS TOOL TESTS BENCHMARKS)
    if(QEL_BUILD_${part} STREQUAL "AUTO")
      set(QEL_BUILD_${part} OFF)
    elseif(QEL_BUILD_${part})
      message(FATAL_ERROR "QEL_BUILD_${part}=${QEL_BUILD_${part}} needs a digest, and QEL_DIGEST=external has "
        "none: set QEL_BUILD_${part} to OFF, or QEL_DIGEST to libmd or commoncrypto")
    endif()
  endforeach()
endif()
