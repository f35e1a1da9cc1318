#include "json_values.h"

#include <benchmark/benchmark.h>

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
      benchmark::DoNotOptimize(value.get_number().value());
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

}  // namespace

void readJsonValues(json::parser& parser, std::string_view line) {
  json::document document =
      parser.iterate(line.data(), line.size(), line.size() + simdjson::SIMDJSON_PADDING).value();
  for (auto field : document.get_object()) {
    benchmark::DoNotOptimize(field.unescaped_key().value());
    readValue(field.value().value());
  }
}

}  // namespace qel::bench
