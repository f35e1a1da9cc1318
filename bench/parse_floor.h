// The speed at which purchases can be read at all.

#ifndef QEL_BENCH_PARSE_FLOOR_H_
#define QEL_BENCH_PARSE_FLOOR_H_

#include <string>

namespace qel::bench {

// Reads every field of every line of a file of purchases with simdjson alone, on one thread, and
// prints the speed in bytes per second. Returns the exit status.
int measureParseFloor(const std::string& path);

}  // namespace qel::bench

#endif  // QEL_BENCH_PARSE_FLOOR_H_
