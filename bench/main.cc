// Runs the benchmarks: qel-bench [--benchmark_filter=REGEX ...]. Measures the stages of the command
// on a file of purchases: qel-bench --stages FILE.

#include <benchmark/benchmark.h>

#include <string_view>

#include "stages.h"

int main(int argc, char** argv) {
  if (argc == 3 && std::string_view(argv[1]) == "--stages") {
    return qel::bench::measureStages(argv[2]);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
