#include "events_run.h"

#include <oneapi/tbb/enumerable_thread_specific.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <sys/stat.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "block_processor.h"
#include "diagnostics_collector.h"
#include "events_summary.h"
#include "input_sequence.h"
#include "interrupt.h"
#include "messages.h"
#include "output_file.h"
#include "progress.h"
#include "tally.h"

namespace qel::tool {
namespace {

// Returns the size of all inputs in bytes, or std::nullopt if one is not a file.
std::optional<std::uint64_t> totalSize(const std::vector<std::string>& inputs) {
  std::uint64_t size = 0;
  for (const std::string& input : inputs) {
    const std::optional<struct stat> status = inputStatus(input);
    if (!status.has_value() || !S_ISREG(status->st_mode)) return std::nullopt;
    size += static_cast<std::uint64_t>(status->st_size);
  }
  return size;
}

// Reads blocks, processes several in parallel, and writes them in order.
class Run {
 public:
  Run(const EventsOptions& options, OutputFile& output)
      : options_(options),
        output_(output),
        inputs_(options.inputs, options.firstLineNumber, options.maxLine),
        progress_(options.showsProgress, totalSize(options.inputs)),
        processors_([&options] { return std::make_unique<BlockProcessor>(options); }),
        // One block waits to be processed and one to be written while the others are processed.
        works_(static_cast<std::size_t>(options.jobs) + 2),
        next_{.input = 0, .line = options.firstLineNumber} {}

  ExitStatus execute() {
    runPipeline();
    progress_.erase();
    if (!hasFailed_ && !isInterrupted()) commit();
    reportEnd();
    reportSummary(tally_, options_.inputs);
    if (hasFailed_) return kFailed;
    if (isInterrupted()) return static_cast<ExitStatus>(128 + interruptSignal());
    return tally_.rejected.count > 0 ? kSomeRejected : kAllRead;
  }

 private:
  // A block and its results.
  struct Work {
    InputBlock block;
    BlockResults results;
  };

  void runPipeline() {
    namespace tbb = oneapi::tbb;
    using tbb::filter_mode;
    // Never destroyed: TBB then raises the limit, for which it may need memory that is not there.
    [[maybe_unused]] static const auto* const threads = new tbb::global_control(
        tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(options_.jobs));
    const auto readFilter = tbb::make_filter<void, Work*>(
        filter_mode::serial_in_order, [this](tbb::flow_control& flow) { return read(flow); });
    const auto processFilter = tbb::make_filter<Work*, Work*>(
        filter_mode::parallel, [this](Work* work) { return process(work); });
    const auto writeFilter = tbb::make_filter<Work*, void>(filter_mode::serial_in_order,
                                                           [this](Work* work) { write(*work); });
    tbb::parallel_pipeline(works_.size(), readFilter & processFilter & writeFilter);
  }

  // Returns the next block to process. Stops the flow at the end of the run.
  Work* read(oneapi::tbb::flow_control& flow) {
    // At most works_.size() blocks are in progress, and they finish in order, so the oldest one is
    // free again.
    Work* const work = &works_[nextWork_++ % works_.size()];
    if (isStopped_ || isInterrupted() || !inputs_.next(work->block)) flow.stop();
    return work;
  }

  Work* process(Work* work) {
    processors_.local()->process(work->block, options_.maxRejected, work->results);
    return work;
  }

  void write(Work& work) {
    if (isStopped_) return;
    const std::uint64_t mayBeRejected = options_.maxRejected - tally_.rejected.count;
    const bool isLast = work.results.tally.rejected.count > mayBeRejected;
    // Processes the block again, up to the first line that exceeds the limit, so that the output
    // does not depend on where blocks end.
    if (isLast) processors_.local()->process(work.block, mayBeRejected, work.results);
    tally_ += work.results.tally;
    try {
      output_.write(work.results.output.text());
    } catch (const OutputError& error) {
      stop(error.what());
      return;
    }
    writtenLines_ += work.results.tally.lines();
    if (isLast) {
      stop("stopped: more than " + counted(options_.maxRejected, "line") + " rejected");
    } else {
      finish(work.block);
    }
  }

  // Records that a block is written: its failure, or the line that follows it.
  void finish(const InputBlock& block) {
    if (!block.failure.empty()) {
      reportFailure(block.failure);
      next_ = {.input = block.input + 1, .line = 1};
      // After a failure, the temporary output is never renamed, so more results are of no use.
      if (output_.needsCommit()) isStopped_ = true;
      return;
    }
    next_ = {.input = block.input, .line = block.lines.firstLineNumber + block.lines.lines.size()};
    progress_.update(block.bytesRead, writtenLines_, tally_.rejected.count);
  }

  void stop(const std::string& failure) {
    reportFailure(failure);
    isStopped_ = true;
  }

  void reportFailure(const std::string& failure) {
    progress_.erase();
    report(failure);
    hasFailed_ = true;
  }

  void commit() {
    try {
      output_.commit();
    } catch (const OutputError& error) {
      reportFailure(error.what());
    }
  }

  // Reports an interrupt, and a file that is not put in place.
  void reportEnd() const {
    if (output_.needsCommit() && (isInterrupted() || hasFailed_)) {
      report((isInterrupted() ? "interrupted: " : "") + output_.name() + " is not written");
    } else if (isInterrupted()) {
      const bool isMore = next_.input < options_.inputs.size();
      report("interrupted: " + counted(writtenLines_, "line") + " written" +
             (isMore ? "; the next is " + textOf(next_, options_.inputs) : ""));
    }
  }

  const EventsOptions& options_;
  OutputFile& output_;
  InputSequence inputs_;
  ProgressLine progress_;
  oneapi::tbb::enumerable_thread_specific<std::unique_ptr<BlockProcessor>> processors_;
  std::vector<Work> works_;
  std::size_t nextWork_ = 0;
  Tally tally_;
  std::uint64_t writtenLines_ = 0;
  // The line behind the last one that was written.
  LinePlace next_;
  bool hasFailed_ = false;
  // Read by another thread than the one that writes.
  std::atomic<bool> isStopped_ = false;
};

}  // namespace

ExitStatus runEvents(const EventsOptions& options) {
  try {
    catchInterrupts();
    checkStandardInput(options.inputs);
    OutputFile output(options.output, options.inputs);
    QELMeasurement::setMonitor(std::make_shared<DiagnosticsCollector>());
    const ExitStatus status = Run(options, output).execute();
    QELMeasurement::setMonitor(nullptr);
    return status;
  } catch (const InputError& error) {
    report(error.what());
  } catch (const OutputError& error) {
    report(error.what());
  } catch (const std::system_error& error) {
    report("cannot catch interrupts: " + error.code().message());
  }
  return kFailed;
}

}  // namespace qel::tool
