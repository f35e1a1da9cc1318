// What a line costs in each stage of `qel-purchase events`.

#ifndef QEL_BENCH_STAGES_H_
#define QEL_BENCH_STAGES_H_

#include <string>

namespace qel::bench {

// Measures the stages on the lines of the file `path`, in memory and on one thread. Measures also
//
// - what a line is compared with: simdjson going over its values, its event alone, and a copy of
//   its output,
// - what only one thread of the command does at a time: reading blocks of the file and splitting
//   them, and writing results.
//
// Prints a table. Returns the exit status of the program: 2 if the file cannot be read, a line is
// blank or not a purchase, or a number in it is not a 64-bit integer.
int measureStages(const std::string& path);

}  // namespace qel::bench

#endif  // QEL_BENCH_STAGES_H_
