// The stages in a build without the command.

#include <cstdio>

#include "stages.h"

namespace qel::bench {

int measureStages(const std::string&) {
  std::fputs("qel-bench: --stages needs a build with the command (QEL_BUILD_TOOL)\n", stderr);
  return 2;
}

}  // namespace qel::bench
