// Writes the result of a line, as one line of JSON.

#ifndef QEL_TOOL_RESULT_WRITER_H_
#define QEL_TOOL_RESULT_WRITER_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "json_error.h"
#include "qel/event_parameters.h"
#include "qel/text.h"
#include "text_buffer.h"

namespace qel::tool {

// How the integers of an event are written: as JSON numbers, or as strings for readers that keep
// numbers in doubles.
enum class Int64Form { kNumber, kString };

// Appends the line of a purchase: its id if it has one, its event or null, and its diagnostics,
// which are the elements of a JSON array.
void appendResult(const OptionalText& id, const std::optional<EventParameters>& event,
                  std::string_view diagnostics, Int64Form int64Form, TextBuffer& out);

// Appends the line of an input line that cannot be read. The first line has the number 1.
void appendError(const OptionalText& id, std::uint64_t lineNumber, const JsonError& error,
                 TextBuffer& out);

}  // namespace qel::tool

#endif  // QEL_TOOL_RESULT_WRITER_H_
