#include "terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace qel::tool {

bool isTerminal(int descriptor) {
  const char* const type = std::getenv("TERM");
  return isatty(descriptor) != 0 && type != nullptr && std::string_view(type) != "dumb";
}

}  // namespace qel::tool
