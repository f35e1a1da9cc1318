// The upper bound for the throughput of the command: simdjson alone.

#ifndef QEL_BENCH_PARSE_FLOOR_H_
#define QEL_BENCH_PARSE_FLOOR_H_

#include <string>

namespace qel::bench {

// Reads every field of every line of the file `path` with simdjson, on one thread, and prints the
// throughput in bytes per second. Returns the exit status of the program.
int measureParseFloor(const std::string& path);

}  // namespace qel::bench

#endif  // QEL_BENCH_PARSE_FLOOR_H_
