// Writes the result of a line, as one line of JSON.

#ifndef QEL_TOOL_RESULT_WRITER_H_
#define QEL_TOOL_RESULT_WRITER_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "json_error.h"
#include "json_text.h"
#include "qel/event_parameters.h"
#include "qel/text.h"
#include "text_buffer.h"

namespace qel::tool {

// How the integers of an event are written, for readers that keep numbers in doubles: all as JSON
// numbers, the deduplication identifier as a string, or all as strings.
enum class Int64Form { kNumber, kDidAsString, kString };

struct ResultForm {
  Int64Form int64 = Int64Form::kNumber;
  UnpairedSurrogates surrogates = UnpairedSurrogates::kEscape;
};

// Where an input line is.
struct ErrorPlace {
  // Name of the input, absent if there is only one. UTF-8.
  OptionalText file;
  // The first line has the number 1.
  std::uint64_t line = 1;
};

// Appends the line of a purchase: its id if it has one, its event or null, and its diagnostics,
// which are the elements of a JSON array.
void appendResult(const OptionalText& id, const std::optional<EventParameters>& event,
                  std::string_view diagnostics, const ResultForm& form, TextBuffer& out);

// Appends the line of an input line that cannot be read.
void appendError(const OptionalText& id, const ErrorPlace& place, const JsonError& error,
                 UnpairedSurrogates surrogates, TextBuffer& out);

}  // namespace qel::tool

#endif  // QEL_TOOL_RESULT_WRITER_H_
