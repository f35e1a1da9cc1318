#include "receipt_run.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "byte_order_mark.h"
#include "excerpt.h"
#include "input_file.h"
#include "interrupt.h"
#include "json_reader.h"
#include "messages.h"
#include "output_file.h"
#include "product_catalogue.h"
#include "purchase_reader.h"
#include "qel/app_receipt.h"
#include "receipt_writer.h"
#include "service_json.h"

namespace qel::tool {
namespace {

// A file that is given beside the receipts cannot be used. The text says which, and why.
struct OptionFailure {
  std::string message;
};

// How often something was found, and where first.
struct Count {
  std::uint64_t count = 0;
  std::string first;

  // Counts one more. `place` returns the text of its place.
  template <typename Place>
  void add(const Place& place) {
    if (++count == 1) first = place();
  }
};

// Returns the content of an input. JsonReader::kPadding bytes after it are readable.
std::string readPadded(const std::string& path) {
  std::string text = readInput(path, kMaxReceiptSize);
  text.reserve(text.size() + JsonReader::kPadding);
  return text;
}

// Throws JsonError if the text is of a kind that users mistake for a receipt.
void refuseOtherKinds(std::string_view text) {
  if (startsWithUtf16Mark(text)) {
    throw JsonError{{}, std::string("expected a receipt, but ") + kItIsUtf16};
  }
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  if (start != std::string_view::npos && text[start] == '[') {
    throw JsonError{{},
                    "expected a receipt, or one answer of the validation service, which is a JSON "
                    "object; found a JSON array"};
  }
}

// Returns whether the first line of a JSON text is a purchase, as `events` reads them. As for
// JsonReader, JsonReader::kPadding bytes after the text must be readable.
bool isPurchase(std::string_view text) {
  try {
    PurchaseReader reader(UnknownKeys::kAreIgnored);
    const Purchase& purchase = reader.read(text.substr(0, text.find('\n')));
    return purchase.product.has_value() || purchase.transaction.has_value();
  } catch (const JsonError&) {
    return false;
  }
}

bool isJson(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return start != std::string_view::npos && text[start] == '{';
}

class Run {
 public:
  Run(const ReceiptOptions& options, OutputFile& output) : options_(options), output_(output) {
    if (options.certificates.has_value()) readCertificates();
    if (options.products.has_value()) readCatalogue();
  }

  // Returns whether it has finished, which it has not after an interrupt.
  bool process(const std::string& path) {
    const std::string text = readPadded(path);
    // The text may be cut.
    if (isInterrupted()) return false;
    const std::string_view content = withoutByteOrderMark(text);
    const AppReceiptResult result = read(content);
    if (const auto* const error = std::get_if<ReceiptError>(&result)) {
      reject(path, *error);
      return true;
    }
    const auto& receipt = std::get<AppReceipt>(result);
    const std::string signature = signatureOf(content);
    ++readReceipts_;
    for (const std::string& date : receipt.unknownDates) {
      unknownDates_.add([&] { return foundText(date) + " in " + inputName(path); });
    }
    const bool isFailed = signature != kVerified && signature != kNotChecked;
    if (isFailed) ++failedSignatures_;
    bool isFinished = true;
    if (!options_.writesPurchases) {
      appendReceipt(path, signature, receipt, out_);
    } else if (isFailed) {
      report(inputName(path) +
             ": no purchases written, because the signature is not verified: " + signature);
    } else {
      isFinished = writePurchases(path, receipt);
    }
    flush();
    return isFinished;
  }

  // Writes the summary to standard error.
  void summarize() const {
    reportCount(unknownDates_, "date", "of unknown form, unchanged");
    reportCount(undatedPurchases_, "purchase", "without a date that can be read");
    reportCount(untypedRenewals_, "purchase",
                "without a type whose original transaction is another one, which events reports as "
                "invalid (code 40005)");
    if (!missingProducts_.empty()) {
      report(counted(purchasesWithoutProduct_, "purchase") + " of " +
             counted(missingProducts_.size(), "product") + " that " +
             inputName(*options_.products) + " lacks, such as " + *missingProducts_.begin());
    }
    if (failedSignatures_ > 0) {
      report(counted(failedSignatures_, "signature") + " not verified");
    }
    report(counted(readReceipts_, "receipt") + " read, " + std::to_string(rejectedReceipts_) +
           " rejected");
  }

  bool isAnyRejected() const { return rejectedReceipts_ > 0 || failedSignatures_ > 0; }

 private:
  static constexpr std::string_view kVerified = "verified";
  static constexpr std::string_view kNotChecked = "not checked";

  static void reportCount(const Count& found, const char* noun, const char* what) {
    if (found.count == 0) return;
    report(counted(found.count, noun) + " " + what + "; the first: " + found.first);
  }

  // After an interrupt, the text of a file may be cut, so it is not used.
  void readCertificates() {
    certificates_ = readPadded(*options_.certificates);
    if (isInterrupted()) return;
    const std::optional<std::string> fault = describeCertificateFault(*certificates_);
    if (fault.has_value()) throw OptionFailure{inputName(*options_.certificates) + ": " + *fault};
  }

  void readCatalogue() {
    const std::string text = readPadded(*options_.products);
    if (isInterrupted()) return;
    try {
      catalogue_ = readProductCatalogue(text);
    } catch (const JsonError& error) {
      const std::string where = error.pointer.empty() ? "" : ": " + error.pointer;
      throw OptionFailure{inputName(*options_.products) + where + ": " + error.message};
    }
  }

  static AppReceiptResult read(std::string_view content) {
    try {
      refuseOtherKinds(content);
      return isJson(content) ? readServiceAnswer(content) : readAppReceipt(content);
    } catch (const JsonError& error) {
      if (isPurchase(content)) {
        return ReceiptError{"", 0,
                            "expected a receipt, found purchases, which qel-purchase events reads"};
      }
      return ReceiptError{error.pointer, 0, error.message};
    }
  }

  std::string signatureOf(std::string_view content) const {
    if (!certificates_.has_value()) return std::string(kNotChecked);
    if (isJson(content)) return "an answer of the validation service has no signature";
    const ReceiptVerification verification = verifyReceiptSignature(content, *certificates_);
    return verification.isVerified ? std::string(kVerified) : verification.failure;
  }

  void reject(const std::string& path, const ReceiptError& error) {
    ++rejectedReceipts_;
    if (options_.writesPurchases) {
      report(inputName(path) + ": " + (error.path.empty() ? "" : error.path + ", ") + "byte " +
             std::to_string(error.offset) + ": " + error.message);
    } else {
      appendReceiptError(path, error, out_);
      flush();
    }
  }

  // A product whose latest entry has no type counts as a non-consumable. `events` takes a purchase
  // of it with another original transaction for a restored one, which is invalid.
  static bool isUntypedRenewal(const QELInAppPurchaseItem& item,
                               const QELInAppPurchaseItem& latest) {
    return !latest.purchaseType.has_value() && !isEmpty(item.transactionID) &&
           !isEmpty(item.originalTransactionID) && item.transactionID != item.originalTransactionID;
  }

  // Returns whether all are written, which they are not after an interrupt.
  bool writePurchases(const std::string& path, const AppReceipt& receipt) {
    constexpr std::size_t kFlushSize = std::size_t{1} << 20;
    const PurchaseEntries entries(receipt, options_.entryChoice);
    for (std::size_t i = 0; i < receipt.entries.size(); ++i) {
      if (isInterrupted()) return false;
      const QELInAppPurchaseItem& item = receipt.entries[i].item;
      const auto place = [&] {
        return inputName(path) + (item.transactionID.has_value()
                                      ? ", transaction " + foundText(*item.transactionID)
                                      : ", the entry with index " + std::to_string(i));
      };
      if (!entries.dateOf(i).has_value()) undatedPurchases_.add(place);
      const QELInAppPurchaseItem& latest = receipt.entries[entries.latestFor(i)].item;
      if (isUntypedRenewal(item, latest)) untypedRenewals_.add(place);
      appendPurchase(receipt, i, entries, productOf(item), out_);
      if (out_.text().size() >= kFlushSize) flush();
    }
    return true;
  }

  const CatalogueProduct* productOf(const QELInAppPurchaseItem& item) {
    if (!options_.products.has_value()) return nullptr;
    const std::string identifier = item.productID.value_or("");
    const auto product = catalogue_.find(identifier);
    if (product != catalogue_.end()) return &product->second;
    ++purchasesWithoutProduct_;
    missingProducts_.insert(identifier);
    return nullptr;
  }

  void flush() {
    output_.write(out_.text());
    out_.clear();
  }

  const ReceiptOptions& options_;
  OutputFile& output_;
  std::optional<std::string> certificates_;
  ProductCatalogue catalogue_;
  TextBuffer out_;
  std::uint64_t readReceipts_ = 0;
  std::uint64_t rejectedReceipts_ = 0;
  std::uint64_t failedSignatures_ = 0;
  Count unknownDates_;
  Count undatedPurchases_;
  Count untypedRenewals_;
  std::uint64_t purchasesWithoutProduct_ = 0;
  std::set<std::string> missingProducts_;
};

}  // namespace

ExitStatus runReceipt(const ReceiptOptions& options) {
  try {
    catchInterrupts();
    std::vector<std::string> files = options.inputs;
    for (const auto& file : {options.products, options.certificates}) {
      if (file.has_value()) files.push_back(*file);
    }
    checkStandardInput(files);
    OutputFile output(options.output, files);
    Run run(options, output);
    bool hasFailed = false;
    std::size_t finished = 0;
    for (const std::string& input : options.inputs) {
      if (isInterrupted()) break;
      try {
        if (run.process(input)) ++finished;
      } catch (const InputError& error) {
        report(error.what());
        hasFailed = true;
      }
    }
    if (!hasFailed && !isInterrupted()) {
      output.commit();
    } else if (output.needsCommit()) {
      report((isInterrupted() ? "interrupted: " : "") + output.name() + " is not written");
    } else if (isInterrupted()) {
      report("interrupted: " + std::to_string(finished) + " of " +
             counted(options.inputs.size(), "input") + " finished");
    }
    run.summarize();
    if (isInterrupted()) return static_cast<ExitStatus>(128 + interruptSignal());
    if (hasFailed) return kFailed;
    return run.isAnyRejected() ? kSomeRejected : kAllRead;
  } catch (const InputError& error) {
    report(error.what());
  } catch (const OptionFailure& failure) {
    report(failure.message);
  } catch (const OutputError& error) {
    report(error.what());
  } catch (const std::system_error& error) {
    report("cannot catch interrupts: " + error.code().message());
  }
  return kFailed;
}

}  // namespace qel::tool
