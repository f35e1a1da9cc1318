// The lower bound for reading JSON: simdjson alone.

#ifndef QEL_BENCH_JSON_VALUES_H_
#define QEL_BENCH_JSON_VALUES_H_

#include <simdjson.h>

#include <string_view>

namespace qel::bench {

// Goes over every key and value of the object on a line, and keeps none. simdjson::SIMDJSON_PADDING
// bytes after the line must be readable. Throws simdjson::simdjson_error, also if a number is not a
// 64-bit integer.
void readJsonValues(simdjson::ondemand::parser& parser, std::string_view line);

}  // namespace qel::bench

#endif  // QEL_BENCH_JSON_VALUES_H_
