#include "explain/explain_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "explain/display_text.h"
#include "explain/explanation.h"
#include "explain/html_report.h"
#include "explain/text_report.h"
#include "input_file.h"
#include "interrupt.h"
#include "line_blocks.h"
#include "purchase_reader.h"
#include "unreadable_line.h"

namespace qel::tool {
namespace {

// Lines that are longer are rejected, as by the subcommand events.
constexpr std::size_t kMaxLine = std::size_t{1} << 30;

// A reason to end the run, for people.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string reasonOf(const std::error_code& error) { return error.message(); }

// Colour is for terminals, unless the user does not want it (https://no-color.org).
TextColor colorOfOutput() {
  const char* const noColor = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  const bool isUnwanted = (noColor != nullptr && *noColor != '\0') ||
                          (terminal != nullptr && std::string_view(terminal) == "dumb");
  return isatty(STDOUT_FILENO) != 0 && !isUnwanted ? TextColor::kAnsi : TextColor::kNone;
}

// Receives the purchases of a run.
class Report {
 public:
  virtual ~Report() = default;
  virtual void add(const Explanation& explanation, std::uint64_t lineNumber) = 0;
  virtual void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) = 0;
  // Writes what is left. Throws RunError.
  virtual void finish() = 0;
};

void writeOut(std::string& text) {
  try {
    writeAll(STDOUT_FILENO, text);
  } catch (const std::system_error& error) {
    throw RunError("cannot write standard output: " + reasonOf(error.code()));
  }
  text.clear();
}

// Each purchase in full, one after the other.
class FullText : public Report {
 public:
  void add(const Explanation& explanation, std::uint64_t lineNumber) override {
    append(textReport(explanation, lineNumber, color_));
  }
  void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) override {
    append(textRow(error, id, lineNumber, color_));
  }
  void finish() override { writeOut(out_); }

 private:
  void append(const std::string& text) {
    out_ += isFirst_ ? text : "\n\n" + text;
    isFirst_ = false;
    writeOut(out_);
  }

  const TextColor color_ = colorOfOutput();
  bool isFirst_ = true;
  std::string out_;
};

// One purchase in full; several as a list.
class ListText : public Report {
 public:
  explicit ListText(const std::string& input) : input_(input) {}

  void add(const Explanation& explanation, std::uint64_t lineNumber) override {
    if (count_ == 0) full_ = textReport(explanation, lineNumber, color_);
    append(textRow(explanation, lineNumber, color_));
  }
  void add(const JsonError& error, const OptionalText& id, std::uint64_t lineNumber) override {
    append(textRow(error, id, lineNumber, color_));
    if (count_ == 1) full_ = out_;
  }
  void finish() override {
    if (count_ == 1) {
      out_ = full_;
    } else if (count_ > 1) {
      out_ += "\nTo explain one of them: qel-purchase explain " +
              (input_ == "-" ? std::string() : displayText(input_, 60) + " ") +
              "--line N, or --id ID\n";
    }
    writeOut(out_);
  }

 private:
  void append(const std::string& row) {
    constexpr std::size_t kMostBuffered = 65536;
    out_ += row;
    ++count_;
    if (count_ > 1 && out_.size() > kMostBuffered) writeOut(out_);
  }

  const std::string& input_;
  const TextColor color_ = colorOfOutput();
  std::size_t count_ = 0;
  std::string full_;
  std::string out_;
};

// A page, written as a whole at the end.
class Page : public Report {
 public:
  explicit Page(const std::string& path) : path_(path) {}

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
    std::string page = report_.page();
    if (path_ == "-") {
      writeOut(page);
      return;
    }
    writeFile(page);
    if (report_.withoutDetails() > 0) {
      std::fprintf(stderr,
                   "qel-purchase: the page explains %zu purchases and lists %zu more with their "
                   "outcome only; select with --id or --line\n",
                   report_.size() - report_.withoutDetails(), report_.withoutDetails());
    }
  }

 private:
  void checkSize() const {
    if (report_.size() < HtmlReport::kMostPurchases) return;
    throw RunError("no page written: the input has more than " +
                   std::to_string(HtmlReport::kMostPurchases) +
                   " purchases; select with --id or --line, or give a part of the input, such as "
                   "head -n 1000 FILE | qel-purchase explain --html PAGE");
  }

  // Replaces the file as a whole, so that no reader sees a part of a page.
  void writeFile(const std::string& page) const {
    const std::string unfinished = path_ + ".unfinished";
    const int descriptor = open(unfinished.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC,
                                S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH);
    if (descriptor < 0) fail(std::error_code(errno, std::generic_category()));
    std::error_code error;
    try {
      writeAll(descriptor, page);
    } catch (const std::system_error& failure) {
      error = failure.code();
    }
    if (close(descriptor) != 0 && !error) error.assign(errno, std::generic_category());
    if (!error && std::rename(unfinished.c_str(), path_.c_str()) != 0) {
      error.assign(errno, std::generic_category());
    }
    if (!error) return;
    unlink(unfinished.c_str());
    fail(error);
  }

  [[noreturn]] void fail(const std::error_code& error) const {
    throw RunError("cannot write " + path_ + ": " + reasonOf(error));
  }

  const std::string& path_;
  HtmlReport report_;
};

class Run {
 public:
  Run(const ExplainOptions& options, Report& report)
      : options_(options),
        report_(report),
        reader_(options.ignoresUnknownKeys ? UnknownKeys::kAreIgnored : UnknownKeys::kAreErrors) {}

  // Throws RunError and InputError.
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
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::uint64_t lineNumber = block.firstLineNumber;
    for (std::string_view line : block.lines) {
      if (lineNumber == 1 && line.starts_with(kByteOrderMark)) {
        line.remove_prefix(kByteOrderMark.size());
      }
      const bool isBlank = line.find_first_not_of(" \t\r") == std::string_view::npos;
      const bool isOther = options_.line.has_value() && *options_.line != lineNumber;
      if (!isBlank && !isOther) takeLine(line, lineNumber);
      lastLine_ = lineNumber++;
    }
  }

  void takeLine(std::string_view line, std::uint64_t lineNumber) {
    try {
      const Purchase& purchase = reader_.read(line);
      if (options_.id.has_value() && !isEqual(purchase.id, *options_.id)) return;
      report_.add(explain(purchase), lineNumber);
    } catch (const JsonError& error) {
      const std::optional<std::string> id = idOfUnreadableLine(line);
      if (options_.id.has_value() && id != options_.id) return;
      report_.add(error, id, lineNumber);
      ++rejected_;
    }
    ++taken_;
  }

  std::string nothingSelected() const {
    const std::string name = inputName(options_.input);
    if (options_.id.has_value()) {
      return "no purchase of " + name + " has the id " + displayText(*options_.id, 60) +
             "; without --id, the command lists all purchases";
    }
    return "line " + std::to_string(*options_.line) + " of " + name +
           (*options_.line > lastLine_
                ? " does not exist: there are " + std::to_string(lastLine_) + " lines"
                : std::string(" is blank"));
  }

  const ExplainOptions& options_;
  Report& report_;
  PurchaseReader reader_;
  std::uint64_t taken_ = 0;
  std::uint64_t rejected_ = 0;
  std::uint64_t lastLine_ = 0;
};

std::unique_ptr<Report> makeReport(const ExplainOptions& options) {
  if (options.html.has_value()) return std::make_unique<Page>(*options.html);
  if (options.id.has_value() || options.line.has_value()) return std::make_unique<FullText>();
  return std::make_unique<ListText>(options.input);
}

std::string counted(std::uint64_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace

ExitStatus runExplain(const ExplainOptions& options) {
  try {
    catchInterrupt();
    const std::unique_ptr<Report> report = makeReport(options);
    Run run(options, *report);
    run.execute();
    if (isInterrupted()) {
      std::fprintf(stderr, "qel-purchase: interrupted\n");
      return kInterrupted;
    }
    if (!run.hasSelection()) {
      std::fprintf(stderr, "qel-purchase: %s read, %s rejected\n",
                   counted(run.read(), "purchase").c_str(),
                   counted(run.rejected(), "line").c_str());
    }
    return run.rejected() > 0 ? kSomeRejected : kAllRead;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qel-purchase: %s\n", error.what());
    return kFailed;
  }
}

}  // namespace qel::tool
