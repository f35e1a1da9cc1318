#include "events_run.h"

#include <fcntl.h>
#include <oneapi/tbb/enumerable_thread_specific.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "diagnostics_collector.h"
#include "input_file.h"
#include "interrupt.h"
#include "line_blocks.h"
#include "progress.h"
#include "purchase_reader.h"
#include "unreadable_line.h"

namespace qel::tool {
namespace {

// The longest line, in bytes.
constexpr std::size_t kMaxLine = std::size_t{1} << 30;

struct Counts {
  std::uint64_t read = 0;
  std::uint64_t rejected = 0;

  std::uint64_t all() const { return read + rejected; }
  Counts& operator+=(const Counts& other) {
    read += other.read;
    rejected += other.rejected;
    return *this;
  }
};

// A block of lines and its results.
struct Work {
  LineBlock block;
  // Bytes of the input up to the end of the block, before decompression.
  std::uint64_t bytesRead = 0;
  TextBuffer output;
  // Diagnostics of the line in progress.
  TextBuffer diagnostics;
  Counts counts;
};

bool isBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

void processLine(std::string_view line, std::uint64_t lineNumber, PurchaseReader& reader,
                 Int64Form int64Form, Work& work) {
  try {
    const Purchase& purchase = reader.read(line);
    const DiagnosticsCollector::Collection collection(work.diagnostics);
    const std::optional<EventParameters> event = plainPurchaseEvent(
        purchase.product.has_value() ? &*purchase.product : nullptr,
        purchase.transaction.has_value() ? &*purchase.transaction : nullptr, purchase.receipt);
    appendResult(purchase.id, event, work.diagnostics.text(), int64Form, work.output);
    ++work.counts.read;
  } catch (const JsonError& error) {
    appendError(idOfUnreadableLine(line), lineNumber, error, work.output);
    ++work.counts.rejected;
  }
}

void processBlock(PurchaseReader& reader, Int64Form int64Form, Work& work) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  work.output.clear();
  work.counts = Counts();
  std::uint64_t lineNumber = work.block.firstLineNumber;
  for (std::string_view line : work.block.lines) {
    if (lineNumber == 1 && line.starts_with(kByteOrderMark)) {
      line.remove_prefix(kByteOrderMark.size());
    }
    if (!isBlank(line)) processLine(line, lineNumber, reader, int64Form, work);
    ++lineNumber;
  }
}

void complain(const std::string& what) { std::fprintf(stderr, "qel-purchase: %s\n", what.c_str()); }

// Returns the size of an input in bytes, or std::nullopt if it is not known.
std::optional<std::uint64_t> sizeOf(const std::string& path) {
  const std::optional<struct stat> status = inputStatus(path);
  if (!status.has_value() || !S_ISREG(status->st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(status->st_size);
}

// One run over one input: reads blocks, processes several in parallel, writes them in order.
class Run {
 public:
  Run(const EventsOptions& options, InputFile& input)
      : options_(options),
        input_(input),
        reader_(input, options.firstLineNumber, kMaxLine),
        progress_(options.showsProgress, sizeOf(options.input)),
        readers_([&options] {
          return std::make_unique<PurchaseReader>(
              options.ignoresUnknownKeys ? UnknownKeys::kAreIgnored : UnknownKeys::kAreErrors);
        }),
        // One block waits to be processed and one to be written while the others are processed.
        works_(static_cast<std::size_t>(options.jobs) + 2) {}

  void execute() {
    namespace tbb = oneapi::tbb;
    const tbb::global_control threads(tbb::global_control::max_allowed_parallelism,
                                      static_cast<std::size_t>(options_.jobs));
    tbb::parallel_pipeline(
        works_.size(), tbb::make_filter<void, Work*>(tbb::filter_mode::serial_in_order,
                                                     [this](tbb::flow_control& flow) {
                                                       Work* const work = readNext();
                                                       if (work == nullptr) flow.stop();
                                                       return work;
                                                     }) &
                           tbb::make_filter<Work*, Work*>(tbb::filter_mode::parallel,
                                                          [this](Work* work) {
                                                            processBlock(*readers_.local(),
                                                                         options_.int64Form, *work);
                                                            return work;
                                                          }) &
                           tbb::make_filter<Work*, void>(tbb::filter_mode::serial_in_order,
                                                         [this](Work* work) { write(*work); }));
    progress_.erase();
  }

  // Number of lines that were processed.
  const Counts& counts() const { return counts_; }

  // Number of lines of results that were written.
  std::uint64_t writtenLines() const { return writtenLines_; }

  // Failure of the input, and of the output. Empty if there was none.
  const std::string& readError() const { return readError_; }
  const std::error_code& writeError() const { return writeError_; }

 private:
  // Returns the next block to process, or null at the end of the run.
  Work* readNext() {
    if (hasWriteFailed_ || isInterrupted()) return nullptr;
    // At most works_.size() blocks are in progress, and they finish in order, so the oldest one is
    // free again.
    Work& work = works_[nextWork_++ % works_.size()];
    try {
      if (!reader_.next(work.block)) return nullptr;
      work.bytesRead = input_.bytesRead();
      return &work;
    } catch (const InputError& error) {
      readError_ = error.what();
      return nullptr;
    }
  }

  void write(const Work& work) {
    counts_ += work.counts;
    if (writeError_) return;
    try {
      writeAll(STDOUT_FILENO, work.output.text());
    } catch (const std::system_error& error) {
      writeError_ = error.code();
      hasWriteFailed_ = true;
      return;
    }
    writtenLines_ += work.counts.all();
    progress_.update(work.bytesRead, writtenLines_);
  }

  const EventsOptions& options_;
  InputFile& input_;
  LineBlockReader reader_;
  ProgressLine progress_;
  oneapi::tbb::enumerable_thread_specific<std::unique_ptr<PurchaseReader>> readers_;
  std::vector<Work> works_;
  std::size_t nextWork_ = 0;
  Counts counts_;
  std::uint64_t writtenLines_ = 0;
  std::string readError_;
  std::error_code writeError_;
  // Stops reading after writing has failed.
  std::atomic<bool> hasWriteFailed_ = false;
};

std::string counted(std::uint64_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace

ExitStatus runEvents(const EventsOptions& options) {
  std::optional<InputFile> input;
  try {
    catchInterrupt();
  } catch (const std::system_error& error) {
    complain("cannot catch interrupts: " + error.code().message());
    return kFailed;
  }
  try {
    input.emplace(options.input);
  } catch (const InputError& error) {
    complain(error.what());
    return kFailed;
  }

  QELMeasurement::setMonitor(std::make_shared<DiagnosticsCollector>());
  Run run(options, *input);
  run.execute();
  QELMeasurement::setMonitor(nullptr);

  const Counts& counts = run.counts();
  if (!run.readError().empty()) complain(run.readError());
  if (run.writeError()) complain("cannot write standard output: " + run.writeError().message());
  if (isInterrupted()) {
    std::fprintf(stderr, "qel-purchase: interrupted, %s written\n",
                 counted(run.writtenLines(), "line").c_str());
  }
  std::fprintf(stderr, "qel-purchase: %s read, %s rejected\n",
               counted(counts.read, "purchase").c_str(), counted(counts.rejected, "line").c_str());
  if (!run.readError().empty() || run.writeError()) return kFailed;
  if (isInterrupted()) return kInterrupted;
  return counts.rejected > 0 ? kSomeRejected : kAllRead;
}

}  // namespace qel::tool
