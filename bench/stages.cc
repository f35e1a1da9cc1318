#include "stages.h"

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "diagnostics_collector.h"
#include "input_file.h"
#include "json_values.h"
#include "line_blocks.h"
#include "output_file.h"
#include "purchase_reader.h"
#include "result_writer.h"

namespace qel::bench {
namespace {

using Seconds = std::chrono::duration<double>;

// The stages of a line in their order. A measurement takes lines up to one of them.
enum Stage : std::size_t { kSplit, kRead, kEvent, kDiagnostics, kWrite, kStages };
constexpr std::array<const char*, kStages> kStageNames = {"split", "read", "event", "diagnostics",
                                                          "write"};

// Bytes of a block: as many as the command reads at a time.
constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

// Other load on the machine only adds time, so the least of several rounds counts.
constexpr int kRounds = 7;

std::vector<std::string_view> blocksOf(std::string_view text) {
  std::vector<std::string_view> blocks;
  while (!text.empty()) {
    const std::size_t newline = text.find('\n', std::min(kBlockSize, text.size()));
    const std::size_t size = newline == std::string_view::npos ? text.size() : newline + 1;
    blocks.push_back(text.substr(0, size));
    text.remove_prefix(size);
  }
  return blocks;
}

std::optional<EventParameters> eventOf(const tool::Purchase& purchase) {
  return plainPurchaseEvent(purchase.product.has_value() ? &*purchase.product : nullptr,
                            purchase.transaction.has_value() ? &*purchase.transaction : nullptr,
                            purchase.receipt);
}

// Takes lines through the stages.
class Lines {
 public:
  explicit Lines(std::string_view text) : blocks_(blocksOf(text)) {}

  // Returns the time of all lines up to the stage `last`.
  Seconds timeUpTo(Stage last) {
    // Without a monitor there are no diagnostics.
    std::shared_ptr<DiagnosticsMonitor> monitor;
    if (last >= kDiagnostics) monitor = std::make_shared<tool::DiagnosticsCollector>();
    QELMeasurement::setMonitor(monitor);
    count_ = 0;
    outputSize_ = 0;
    const auto start = std::chrono::steady_clock::now();
    for (const std::string_view block : blocks_) {
      output_.clear();
      tool::splitLines(block, lines_);
      if (last >= kRead) takeLines(last);
      count_ += lines_.size();
      outputSize_ += output_.size();
      if (output_.size() > longest_.size()) std::swap(output_, longest_);
    }
    const Seconds time = std::chrono::steady_clock::now() - start;
    QELMeasurement::setMonitor(nullptr);
    return time;
  }

  // Returns the time in which simdjson goes over all values.
  Seconds timeOfJsonValues() {
    simdjson::ondemand::parser parser;
    Seconds time(0);
    for (const std::string_view block : blocks_) {
      tool::splitLines(block, lines_);
      const auto start = std::chrono::steady_clock::now();
      for (const std::string_view line : lines_) readJsonValues(parser, line);
      time += std::chrono::steady_clock::now() - start;
    }
    return time;
  }

  // Returns the time of all events. The time to read the purchases is left out.
  Seconds timeOfEvents() {
    std::deque<tool::PurchaseReader> readers;
    std::vector<const tool::Purchase*> purchases;
    Seconds time(0);
    for (const std::string_view block : blocks_) {
      tool::splitLines(block, lines_);
      while (readers.size() < lines_.size()) readers.emplace_back(tool::UnknownKeys::kAreErrors);
      purchases.clear();
      for (std::size_t i = 0; i < lines_.size(); ++i) {
        purchases.push_back(&readers[i].read(lines_[i]));
      }
      const auto start = std::chrono::steady_clock::now();
      for (const tool::Purchase* const purchase : purchases) {
        benchmark::DoNotOptimize(eventOf(*purchase));
      }
      time += std::chrono::steady_clock::now() - start;
    }
    return time;
  }

  // The next two need timeUpTo(kWrite) before. They use the longest output of a block, as often as
  // the size of the whole output takes.

  // Returns the time in which the output is copied.
  Seconds timeOfCopies() {
    std::vector<char> copy(longest_.size());
    return timeOfOutput([&copy](std::string_view text) {
      std::copy(text.begin(), text.end(), copy.begin());
      benchmark::DoNotOptimize(copy.data());
      benchmark::ClobberMemory();
    });
  }

  // Returns the time in which the output is written to a temporary file beside `path`.
  Seconds timeOfWriting(const std::string& path) {
    tool::OutputFile output(path + ".results", {});
    return timeOfOutput([&output](std::string_view text) { output.write(text); });
  }

  std::size_t count() const { return count_; }

 private:
  Seconds timeOfOutput(auto take) {
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t size = 0; size < outputSize_; size += longest_.size()) take(longest_.text());
    return std::chrono::steady_clock::now() - start;
  }

  void takeLines(Stage last) {
    for (const std::string_view line : lines_) {
      const tool::Purchase& purchase = reader_.read(line);
      if (last == kRead) continue;
      const tool::DiagnosticsCollector::Collection collection(diagnostics_, form_.surrogates);
      const std::optional<EventParameters> event = eventOf(purchase);
      benchmark::DoNotOptimize(event);
      if (last < kWrite) continue;
      appendResult(purchase.id, event, diagnostics_.text(), form_, output_);
    }
  }

  const std::vector<std::string_view> blocks_;
  const tool::ResultForm form_;
  tool::PurchaseReader reader_ = tool::PurchaseReader(tool::UnknownKeys::kAreErrors);
  std::vector<std::string_view> lines_;
  tool::TextBuffer diagnostics_;
  // The output of one block, and the longest one.
  tool::TextBuffer output_;
  tool::TextBuffer longest_;
  std::size_t count_ = 0;
  std::size_t outputSize_ = 0;
};

// Returns the time in which the command reads a file and splits its blocks into lines.
Seconds timeOfReading(const std::string& path) {
  const auto start = std::chrono::steady_clock::now();
  tool::InputFile input(path);
  tool::LineBlockReader reader(input, 1, std::numeric_limits<std::size_t>::max());
  tool::LineBlock block;
  while (reader.next(block)) benchmark::DoNotOptimize(block.lines.data());
  return std::chrono::steady_clock::now() - start;
}

void printTimes(const std::string& path, std::string_view text) {
  Lines lines(text);
  std::array<Seconds, kStages> upTo;
  upTo.fill(Seconds::max());
  Seconds values = Seconds::max();
  Seconds events = Seconds::max();
  Seconds copies = Seconds::max();
  Seconds reading = Seconds::max();
  Seconds writing = Seconds::max();
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t stage = 0; stage < kStages; ++stage) {
      upTo[stage] = std::min(upTo[stage], lines.timeUpTo(static_cast<Stage>(stage)));
    }
    copies = std::min(copies, lines.timeOfCopies());
    values = std::min(values, lines.timeOfJsonValues());
    events = std::min(events, lines.timeOfEvents());
    reading = std::min(reading, timeOfReading(path));
    writing = std::min(writing, lines.timeOfWriting(path));
  }

  const auto count = static_cast<double>(lines.count());
  const auto print = [count](const char* name, Seconds time) {
    std::printf("  %-27s %7.0f ns\n", name, time.count() / count * 1e9);
  };
  std::printf("A line, on one thread: %zu lines, %.0f bytes each\n", lines.count(),
              static_cast<double>(text.size()) / count);
  for (std::size_t stage = 0; stage < kStages; ++stage) {
    print(kStageNames[stage], stage == 0 ? upTo[0] : upTo[stage] - upTo[stage - 1]);
  }
  print("whole line", upTo.back());
  print("simdjson over all values", values);
  print("event alone", events);
  print("copy of the output", copies);
  print("serial: read and split", reading);
  print("serial: write", writing);
  std::printf("A whole line takes %.2f times as long as the values, the event and the copy.\n",
              upTo.back() / (values + events + copies));
}

}  // namespace

int measureStages(const std::string& path) {
  try {
    const simdjson::padded_string text = simdjson::padded_string::load(path);
    if (text.size() == 0) throw std::runtime_error("expected purchases, found an empty file");
    printTimes(path, text);
    return 0;
  } catch (const tool::JsonError& error) {
    std::fprintf(stderr, "qel-bench: %s: expected a purchase on each line; at \"%s\": %s\n",
                 path.c_str(), error.pointer.c_str(), error.message.c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qel-bench: %s: %s\n", path.c_str(), error.what());
  }
  return 2;
}

}  // namespace qel::bench
