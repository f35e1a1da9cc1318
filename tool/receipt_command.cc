#include "receipt_command.h"

#include <memory>

#include "option_values.h"
#include "receipt_run.h"

namespace qel::tool {
namespace {

constexpr const char* kFooter =
    R"(Reads an app's receipt from each FILE: DER, BER, base64, PEM, or the JSON with
which the store's validation service answers. Writes one line of JSON for each
receipt to standard output, or one for each purchase in the form that events reads.

Exit status: 0 all receipts were read, 1 some were rejected or not verified,
2 wrong usage or a file that cannot be read or written. After an interrupt 130,
after SIGTERM 143, after SIGHUP 129.

Examples:

  qel-purchase receipt --verify examples/receipts/ca.pem examples/receipts/production.b64

  qel-purchase receipt examples/receipts/production.b64 --purchases \
    --products examples/receipts/products.csv | qel-purchase events)";

}  // namespace

Subcommand addReceipt(CLI::App& app) {
  const auto options = std::make_shared<ReceiptOptions>();
  CLI::App* const receipt =
      app.add_subcommand("receipt", "Read receipts, and list their purchases");
  receipt->footer(kFooter);
  receipt->add_option("FILE", options->inputs, "Receipts, one in each file; - is standard input")
      ->take_all();
  receipt
      ->add_option("-o,--output", options->output,
                   "Write to FILE, which appears when it is whole,\ninstead of standard output")
      ->type_name("FILE");
  CLI::Option* const purchases = receipt->add_flag(
      "--purchases", options->writesPurchases, "Write purchases, one a line, instead of receipts");
  receipt
      ->add_option(
          "--products", options->products,
          "Catalogue of products, CSV or JSON, that fills in\nprices, currencies and titles")
      ->type_name("FILE")
      ->needs(purchases);
  receipt
      ->add_option_function<std::string>(
          "--as-of", [options](const std::string&) { options->entryChoice.isAsOfPurchase = true; },
          "Give each purchase only the entries up to its\ndate, as the receipt was then")
      ->type_name("purchase")
      ->check(oneOf({"purchase"}))
      ->needs(purchases);
  receipt
      ->add_flag("--all-entries", options->entryChoice.isAll,
                 "Give each purchase every entry of the receipt,\nnot only those that its event "
                 "depends on")
      ->needs(purchases);
  receipt
      ->add_option("--verify", options->certificates,
                   "Verify signatures: certificates that are trusted,\nPEM or DER")
      ->type_name("FILE");
  return {receipt, [options] {
            if (options->inputs.empty()) options->inputs = {"-"};
            return runReceipt(*options);
          }};
}

}  // namespace qel::tool
