#include "parse_floor.h"

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string_view>

namespace qel::bench {
namespace {

namespace json = simdjson::ondemand;

// Reads a value of any type, with all values in it.
void readValue(json::value value) {
  switch (value.type().value()) {
    case json::json_type::array:
      for (auto element : value.get_array()) readValue(element.value());
      break;
    case json::json_type::object:
      for (auto field : value.get_object()) {
        benchmark::DoNotOptimize(field.unescaped_key().value());
        readValue(field.value().value());
      }
      break;
    case json::json_type::number:
      benchmark::DoNotOptimize(value.get_int64().value());
      break;
    case json::json_type::string:
      benchmark::DoNotOptimize(value.get_string().value());
      break;
    case json::json_type::boolean:
      benchmark::DoNotOptimize(value.get_bool().value());
      break;
    case json::json_type::null:
      benchmark::DoNotOptimize(value.is_null());
      break;
  }
}

void readLines(std::string_view lines) {
  json::parser parser;
  while (!lines.empty()) {
    const std::size_t size = std::min(lines.find('\n'), lines.size());
    json::document document =
        parser.iterate(lines.data(), size, size + simdjson::SIMDJSON_PADDING).value();
    for (auto field : document.get_object()) {
      benchmark::DoNotOptimize(field.unescaped_key().value());
      readValue(field.value().value());
    }
    lines.remove_prefix(std::min(size + 1, lines.size()));
  }
}

}  // namespace

int measureParseFloor(const std::string& path) {
  using Clock = std::chrono::steady_clock;
  try {
    const simdjson::padded_string text = simdjson::padded_string::load(path);
    const Clock::time_point start = Clock::now();
    readLines(text);
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    std::printf("%.0f bytes per second\n", static_cast<double>(text.size()) / elapsed.count());
    return 0;
  } catch (const simdjson::simdjson_error& error) {
    std::fprintf(stderr, "qel-bench: cannot read %s: %s\n", path.c_str(), error.what());
    return 2;
  }
}

}  // namespace qel::bench
