# Sets QEL_FLOATING_POINT_OPTIONS to the options with which each operation on doubles rounds to a double, as the
# component's amounts need. Only 32-bit x86 needs any: its x87 unit rounds to 64 bits, SSE2 to 53.

include(CheckCXXSourceCompiles)

function(qel_check_rounding result)
  list(JOIN ARGN " " CMAKE_REQUIRED_FLAGS)
  check_cxx_source_compiles("#include <cfloat>
static_assert(FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1, \"\");
int main() {}" ${result})
endfunction()

set(QEL_FLOATING_POINT_OPTIONS)
qel_check_rounding(QEL_ROUNDS_TO_DOUBLE)
if(NOT QEL_ROUNDS_TO_DOUBLE)
  qel_check_rounding(QEL_ROUNDS_TO_DOUBLE_WITH_SSE2 -msse2 -mfpmath=sse)
  if(NOT QEL_ROUNDS_TO_DOUBLE_WITH_SSE2)
    message(FATAL_ERROR "Operations on doubles do not round to doubles here (FLT_EVAL_METHOD is neither 0 nor 1), "
      "and the compiler takes no -msse2 -mfpmath=sse. Choose a processor with SSE2 (such as -march=pentium4), or "
      "add the options that your compiler needs to CMAKE_CXX_FLAGS.")
  endif()
  set(QEL_FLOATING_POINT_OPTIONS -msse2 -mfpmath=sse)
endif()
