// The subcommand `receipt` in a build without OpenSSL or libcsv.

#include "messages.h"
#include "receipt_command.h"

namespace qel::tool {
namespace {

constexpr const char* kReason =
    "receipt was left out of this build: it needs OpenSSL's libcrypto, libcsv, and "
    "QEL_BUILD_RECEIPT=ON";

}  // namespace

Subcommand addReceipt(CLI::App& app) {
  CLI::App* const receipt = app.add_subcommand("receipt", "Read receipts (left out of this build)");
  receipt->footer(std::string("Always ends with status 2: ") + kReason + ".");
  receipt->allow_extras();
  return {receipt, [] {
            report(kReason);
            return kFailed;
          }};
}

}  // namespace qel::tool
