#include "receipt_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "json_reader.h"
#include "line_blocks.h"
#include "product_catalogue.h"
#include "qel/app_receipt.h"
#include "receipt_writer.h"
#include "service_json.h"

namespace qel::tool {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

void complain(const std::string& what) { std::fprintf(stderr, "qel-purchase: %s\n", what.c_str()); }

std::string counted(std::uint64_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string nameOf(const std::string& path) { return path == "-" ? "standard input" : path; }

// A file that cannot be opened or read. The text says which.
struct InputFailure {
  std::string message;
};

// Reads all of an input, up to one byte more than a receipt can have. JsonReader::kPadding bytes
// after the text are readable.
std::string readWhole(const std::string& path) {
  const auto fail = [&path](const char* what) {
    throw InputFailure{std::string("cannot ") + what + " " + nameOf(path) + ": " +
                       std::generic_category().message(errno)};
  };
  const bool isStandard = path == "-";
  const int descriptor = isStandard ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) fail("open");
  struct Closer {
    int descriptor;
    ~Closer() {
      if (descriptor != STDIN_FILENO) close(descriptor);
    }
  } const closer{descriptor};

  constexpr std::size_t kStep = std::size_t{1} << 18;
  std::string text;
  std::size_t size = 0;
  while (size <= kMaxReceiptSize) {
    text.resize(size + kStep);
    const ssize_t count = read(descriptor, text.data() + size, kStep);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("read");
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  text.resize(size);
  text.reserve(size + JsonReader::kPadding);
  return text;
}

bool isJson(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return start != std::string_view::npos && text[start] == '{';
}

class Run {
 public:
  explicit Run(const ReceiptOptions& options) : options_(options) {
    if (!options.certificates.empty()) certificates_ = readWhole(options.certificates);
    if (!options.products.empty()) {
      try {
        catalogue_ = readProductCatalogue(readWhole(options.products));
      } catch (const JsonError& error) {
        const std::string where = error.pointer.empty() ? "" : ": " + error.pointer;
        throw InputFailure{nameOf(options.products) + where + ": " + error.message};
      }
    }
  }

  void process(const std::string& path) {
    const std::string text = readWhole(path);
    std::string_view content = text;
    if (content.starts_with(kByteOrderMark)) content.remove_prefix(kByteOrderMark.size());
    const AppReceiptResult result = read(content);
    if (const auto* const error = std::get_if<ReceiptError>(&result)) {
      reject(path, *error);
      return;
    }
    const auto& receipt = std::get<AppReceipt>(result);
    const std::string signature = signatureOf(content);
    ++readReceipts_;
    unknownDates_ += receipt.unknownDates;
    const bool isFailed = signature != kVerified && signature != kNotChecked;
    if (isFailed) ++failedSignatures_;
    if (!options_.writesPurchases) {
      appendReceipt(path, signature, receipt, out_);
    } else if (isFailed) {
      complain(nameOf(path) +
               ": no purchases written, because the signature is not verified: " + signature);
    } else {
      writePurchases(receipt);
    }
    flush();
  }

  // Writes the summary to standard error.
  void summarize() const {
    if (unknownDates_ > 0) complain(counted(unknownDates_, "date") + " of unknown form, unchanged");
    if (undatedPurchases_ > 0) {
      complain(counted(undatedPurchases_, "purchase") + " without a date that can be read");
    }
    if (!missingProducts_.empty()) {
      complain(counted(purchasesWithoutProduct_, "purchase") + " of " +
               counted(missingProducts_.size(), "product") + " that " + nameOf(options_.products) +
               " lacks, such as " + *missingProducts_.begin());
    }
    if (failedSignatures_ > 0) {
      complain(counted(failedSignatures_, "signature") + " not verified");
    }
    complain(counted(readReceipts_, "receipt") + " read, " + std::to_string(rejectedReceipts_) +
             " rejected");
  }

  bool isAnyRejected() const { return rejectedReceipts_ > 0 || failedSignatures_ > 0; }

 private:
  static constexpr std::string_view kVerified = "verified";
  static constexpr std::string_view kNotChecked = "not checked";

  static AppReceiptResult read(std::string_view content) {
    if (!isJson(content) || content.size() > kMaxReceiptSize) return readAppReceipt(content);
    try {
      return readServiceAnswer(content);
    } catch (const JsonError& error) {
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
      complain(nameOf(path) + ": " + (error.path.empty() ? "" : error.path + ", ") + "byte " +
               std::to_string(error.offset) + ": " + error.message);
    } else {
      appendReceiptError(path, error, out_);
      flush();
    }
  }

  void writePurchases(const AppReceipt& receipt) {
    constexpr std::size_t kFlushSize = std::size_t{1} << 20;
    const PurchaseEntries entries(receipt, options_.entryChoice);
    for (std::size_t i = 0; i < receipt.entries.size(); ++i) {
      if (!entries.dateOf(i).has_value()) ++undatedPurchases_;
      appendPurchase(receipt, i, entries, productOf(receipt.entries[i].item), out_);
      if (out_.text().size() >= kFlushSize) flush();
    }
  }

  const CatalogueProduct* productOf(const QELInAppPurchaseItem& item) {
    if (options_.products.empty()) return nullptr;
    const std::string identifier = item.productID.value_or("");
    const auto product = catalogue_.find(identifier);
    if (product != catalogue_.end()) return &product->second;
    ++purchasesWithoutProduct_;
    missingProducts_.insert(identifier);
    return nullptr;
  }

  void flush() {
    writeAll(STDOUT_FILENO, out_.text());
    out_.clear();
  }

  const ReceiptOptions& options_;
  std::optional<std::string> certificates_;
  ProductCatalogue catalogue_;
  TextBuffer out_;
  std::uint64_t readReceipts_ = 0;
  std::uint64_t rejectedReceipts_ = 0;
  std::uint64_t failedSignatures_ = 0;
  std::uint64_t unknownDates_ = 0;
  std::uint64_t undatedPurchases_ = 0;
  std::uint64_t purchasesWithoutProduct_ = 0;
  std::set<std::string> missingProducts_;
};

}  // namespace

ExitStatus runReceipt(const ReceiptOptions& options) {
  std::optional<Run> run;
  try {
    run.emplace(options);
  } catch (const InputFailure& failure) {
    complain(failure.message);
    return kFailed;
  }
  bool hasFailed = false;
  for (const std::string& input : options.inputs) {
    try {
      run->process(input);
    } catch (const InputFailure& failure) {
      complain(failure.message);
      hasFailed = true;
    } catch (const std::system_error& error) {
      complain("cannot write standard output: " + error.code().message());
      hasFailed = true;
      break;
    }
  }
  run->summarize();
  if (hasFailed) return kFailed;
  return run->isAnyRejected() ? kSomeRejected : kAllRead;
}

}  // namespace qel::tool
