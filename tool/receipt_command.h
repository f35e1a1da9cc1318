// The subcommand `receipt`: its options and its help.

#ifndef QEL_TOOL_RECEIPT_COMMAND_H_
#define QEL_TOOL_RECEIPT_COMMAND_H_

#include "subcommand.h"

namespace qel::tool {

Subcommand addReceipt(CLI::App& app);

}  // namespace qel::tool

#endif  // QEL_TOOL_RECEIPT_COMMAND_H_
