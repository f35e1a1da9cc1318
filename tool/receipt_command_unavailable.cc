// The subcommand `receipt` in a build without OpenSSL.

#include <cstdio>

#include "receipt_command.h"

namespace qel::tool {

Subcommand addReceipt(CLI::App& app) {
  CLI::App* const receipt = app.add_subcommand("receipt", "Read receipts (not in this build)");
  receipt->allow_extras();
  return {receipt, [] {
            std::fputs(
                "qel-purchase: receipt is not in this build: install OpenSSL's libcrypto and build "
                "with QEL_BUILD_RECEIPT=ON\n",
                stderr);
            return kFailed;
          }};
}

}  // namespace qel::tool
