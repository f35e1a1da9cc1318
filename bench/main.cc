// Runs the benchmarks: qel-bench [--benchmark_filter=REGEX ...]. Measures simdjson alone on a file
// of purchases: qel-bench --parse-floor FILE.

#include <benchmark/benchmark.h>

#include <string_view>

#include "parse_floor.h"

int main(int argc, char** argv) {
  if (argc == 3 && std::string_view(argv[1]) == "--parse-floor") {
    return qel::bench::measureParseFloor(argv[2]);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
