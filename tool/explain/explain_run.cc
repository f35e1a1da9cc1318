#include "explain/explain_run.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "byte_order_mark.h"
#include "excerpt.h"
#include "explain/display_text.h"
#include "explain/explanation.h"
#include "explain/html_report.h"
#include "explain/text_report.h"
#include "input_file.h"
#include "interrupt.h"
#include "line_blocks.h"
#include "messages.h"
#include "output_file.h"
#include "purchase_reader.h"
#include "terminal.h"
#include "unreadable_line.h"

namespace qel::tool {
namespace {

// Longer lines are rejected.
constexpr std::size_t kMaxLine = std::size_t{1} << 30;

// Why a run cannot do what it was asked for, for people.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Colour is for terminals, unless the user does not want it (https://no-color.org).
TextColor colorOfOutput() {
  const char* const noColor = std::getenv("NO_COLOR");
  const bool isUnwanted = noColor != nullptr && *noColor != '\0';
  return isTerminal(STDOUT_FILENO) && !isUnwanted ? TextColor::kAnsi : TextColor::kNone;
}

// Receives the purchases of a run. The functions throw OutputError and RunError.
class Report {
 public:
  virtual ~Report() = default;
  virtual void add(const Explanation& explanation, std::uint64_t lineNumber) = 0;
  virtual void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) = 0;
  // Writes what is left.
  virtual void finish() = 0;
};

// Each purchase in full, one after the other.
class FullText : public Report {
 public:
  explicit FullText(OutputFile& output) : output_(output) {}

  void add(const Explanation& explanation, std::uint64_t lineNumber) override {
    write(textReport(explanation, lineNumber, color_));
  }
  void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) override {
    write(textRow(error, id, lineNumber, color_));
  }
  void finish() override {}

 private:
  void write(const std::string& text) {
    output_.write(isFirst_ ? text : "\n\n" + text);
    isFirst_ = false;
  }

  OutputFile& output_;
  const TextColor color_ = colorOfOutput();
  bool isFirst_ = true;
};

// One purchase in full; several as a list.
class ListText : public Report {
 public:
  ListText(const std::string& input, OutputFile& output) : input_(input), output_(output) {}

  void add(const Explanation& explanation, std::uint64_t lineNumber) override {
    if (count_ == 0) full_ = textReport(explanation, lineNumber, color_);
    append(textRow(explanation, lineNumber, color_));
  }
  void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) override {
    const std::string row = textRow(error, id, lineNumber, color_);
    if (count_ == 0) full_ = row;
    append(row);
  }
  void finish() override {
    if (count_ == 1) {
      rows_ = full_;
    } else if (count_ > 1) {
      rows_ += "\nTo explain one of them: qel-purchase explain " +
               (input_ == "-" ? std::string() : displayText(input_, 60) + " ") +
               "--line N, or --id ID\n";
    }
    output_.write(rows_);
  }

 private:
  void append(const std::string& row) {
    constexpr std::size_t kMostBuffered = 65536;
    rows_ += row;
    ++count_;
    if (count_ < 2 || rows_.size() < kMostBuffered) return;
    output_.write(rows_);
    rows_.clear();
  }

  const std::string& input_;
  OutputFile& output_;
  const TextColor color_ = colorOfOutput();
  std::size_t count_ = 0;
  // The explanation of the first purchase, in case that it is the only one.
  std::string full_;
  std::string rows_;
};

// A page, written as a whole at the end.
class Page : public Report {
 public:
  explicit Page(OutputFile& output) : output_(output) {}

  void add(const Explanation& explanation, std::uint64_t lineNumber) override {
    checkSize();
    report_.add(explanation, lineNumber);
  }
  void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) override {
    checkSize();
    report_.add(error, id, lineNumber);
  }
  void finish() override {
    if (report_.size() == 0) throw RunError("no page written: the input has no purchases");
    output_.write(report_.page());
    if (report_.withoutDetails() == 0) return;
    report("the page explains " + counted(report_.size() - report_.withoutDetails(), "purchase") +
           ", and lists " + std::to_string(report_.withoutDetails()) +
           " more with their outcome only; select with --id or --line");
  }

 private:
  void checkSize() const {
    if (report_.size() < HtmlReport::kMostPurchases) return;
    throw RunError("no page written: the input has more than " +
                   std::to_string(HtmlReport::kMostPurchases) +
                   " purchases; select with --id or --line, or give a part of the input, as in "
                   "head -n 1000 FILE | qel-purchase explain --html PAGE");
  }

  OutputFile& output_;
  HtmlReport report_;
};

class Run {
 public:
  Run(const ExplainOptions& options, Report& report)
      : options_(options),
        report_(report),
        reader_(options.ignoresUnknownKeys ? UnknownKeys::kAreIgnored : UnknownKeys::kAreErrors) {}

  // Reads the input. Throws InputError, OutputError and RunError.
  void execute() {
    InputFile input(options_.input);
    LineBlockReader blocks(input, 1, kMaxLine);
    LineBlock block;
    while (!isDone() && blocks.next(block)) takeBlock(block);
    if (isInterrupted()) return;
    if (hasSelection() && taken_ == 0) throw RunError(nothingSelected());
    report_.finish();
  }

  std::uint64_t read() const { return taken_ - rejected_; }
  std::uint64_t rejected() const { return rejected_; }
  bool hasSelection() const { return options_.id.has_value() || options_.line.has_value(); }

 private:
  // Lines have one number each, so nothing comes after the selected one.
  bool isDone() const { return options_.line.has_value() && taken_ > 0; }

  void takeBlock(const LineBlock& block) {
    std::uint64_t lineNumber = block.firstLineNumber;
    for (std::string_view line : block.lines) {
      if (lineNumber == 1) line = withoutByteOrderMark(line);
      const bool isBlank = line.find_first_not_of(" \t\r") == std::string_view::npos;
      const bool isOther = options_.line.has_value() && *options_.line != lineNumber;
      if (!isBlank && !isOther) takeLine(line, lineNumber, block.isCut);
      lastLine_ = lineNumber++;
    }
  }

  void takeLine(std::string_view line, std::uint64_t lineNumber, bool isCut) {
    try {
      if (isCut) {
        throw JsonError{{},
                        "expected a line of at most " + std::to_string(kMaxLine) +
                            " bytes that fits into memory, found a longer one"};
      }
      const Purchase& purchase = reader_.read(line);
      if (options_.id.has_value() && !isEqual(purchase.id, *options_.id)) return;
      report_.add(explain(purchase), lineNumber);
    } catch (const JsonError& error) {
      constexpr std::size_t kSearchedSize = 65536;
      const std::optional<std::string> id =
          idOfUnreadableLine(isCut ? line.substr(0, kSearchedSize) : line);
      if (options_.id.has_value() && id != options_.id) return;
      report_.add(error, id, lineNumber);
      ++rejected_;
    }
    ++taken_;
  }

  std::string nothingSelected() const {
    const std::string name = inputName(options_.input);
    if (options_.id.has_value()) {
      return "no purchase of " + name + " has the id " + foundText(*options_.id) +
             "; without --id, the command lists all purchases";
    }
    const std::string line = "line " + std::to_string(*options_.line) + " of " + name;
    if (*options_.line <= lastLine_) return line + " is blank";
    return line + " does not exist: the input has " + counted(lastLine_, "line");
  }

  const ExplainOptions& options_;
  Report& report_;
  PurchaseReader reader_;
  std::uint64_t taken_ = 0;
  std::uint64_t rejected_ = 0;
  std::uint64_t lastLine_ = 0;
};

std::unique_ptr<Report> makeReport(const ExplainOptions& options, OutputFile& output) {
  if (options.html.has_value()) return std::make_unique<Page>(output);
  if (options.id.has_value() || options.line.has_value()) return std::make_unique<FullText>(output);
  return std::make_unique<ListText>(options.input, output);
}

}  // namespace

ExitStatus runExplain(const ExplainOptions& options) {
  try {
    catchInterrupts();
    OutputFile output(options.html.value_or("-"), {options.input});
    const std::unique_ptr<Report> content = makeReport(options, output);
    Run run(options, *content);
    run.execute();
    if (isInterrupted()) {
      report("interrupted");
      return static_cast<ExitStatus>(128 + interruptSignal());
    }
    output.commit();
    if (!run.hasSelection()) {
      report(counted(run.read(), "purchase") + " read, " + counted(run.rejected(), "line") +
             " rejected");
    }
    return run.rejected() > 0 ? kSomeRejected : kAllRead;
  } catch (const std::runtime_error& error) {
    report(error.what());
    return kFailed;
  }
}

}  // namespace qel::tool
