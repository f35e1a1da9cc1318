#include "result_writer.h"

#include "json_text.h"

namespace qel::tool {
namespace {

void appendId(const OptionalText& id, TextBuffer& out) {
  if (!id.has_value()) return;
  out.append(R"("id":)");
  appendJsonString(*id, out);
  out.append(',');
}

void appendValue(const QELValue& value, Int64Form int64Form, TextBuffer& out) {
  if (const OptionalText string = value.stringValue()) {
    appendJsonString(*string, out);
  } else if (int64Form == Int64Form::kString) {
    out.append('"');
    out.append(value.int64Value());
    out.append('"');
  } else {
    out.append(value.int64Value());
  }
}

void appendEvent(const EventParameters& event, Int64Form int64Form, TextBuffer& out) {
  char before = '{';
  for (const auto& [key, value] : event) {
    out.append(before);
    // Keys have no characters that need an escape.
    out.append('"');
    out.append(key);
    out.append("\":");
    appendValue(value, int64Form, out);
    before = ',';
  }
  out.append(event.empty() ? "{}" : "}");
}

}  // namespace

void appendResult(const OptionalText& id, const std::optional<EventParameters>& event,
                  std::string_view diagnostics, Int64Form int64Form, TextBuffer& out) {
  out.append('{');
  appendId(id, out);
  out.append(R"("event":)");
  if (event.has_value()) {
    appendEvent(*event, int64Form, out);
  } else {
    out.append("null");
  }
  out.append(R"(,"diagnostics":[)");
  out.append(diagnostics);
  out.append("]}\n");
}

void appendError(const OptionalText& id, std::uint64_t lineNumber, const JsonError& error,
                 TextBuffer& out) {
  out.append('{');
  appendId(id, out);
  out.append(R"("error":{"line":)");
  out.append(lineNumber);
  out.append(R"(,"path":)");
  appendJsonString(error.pointer, out);
  out.append(R"(,"message":)");
  appendJsonString(error.message, out);
  out.append("}}\n");
}

}  // namespace qel::tool
