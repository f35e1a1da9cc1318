#include "result_writer.h"

namespace qel::tool {
namespace {

void appendId(const OptionalText& id, UnpairedSurrogates surrogates, TextBuffer& out) {
  if (!id.has_value()) return;
  out.append(R"("id":)");
  appendJsonString(*id, surrogates, out);
  out.append(',');
}

bool isWrittenAsString(std::string_view key, Int64Form form) {
  return form == Int64Form::kString ||
         (form == Int64Form::kDidAsString && key == textOf(ParameterKey::kDedupeId));
}

void appendValue(std::string_view key, const QELValue& value, const ResultForm& form,
                 TextBuffer& out) {
  if (const OptionalText string = value.stringValue()) {
    appendJsonString(*string, form.surrogates, out);
  } else if (isWrittenAsString(key, form.int64)) {
    out.append('"');
    out.append(value.int64Value());
    out.append('"');
  } else {
    out.append(value.int64Value());
  }
}

void appendEvent(const EventParameters& event, const ResultForm& form, TextBuffer& out) {
  char before = '{';
  for (const auto& [key, value] : event) {
    out.append(before);
    // Keys have no characters that need an escape.
    out.append('"');
    out.append(key);
    out.append("\":");
    appendValue(key, value, form, out);
    before = ',';
  }
  out.append(event.empty() ? "{}" : "}");
}

}  // namespace

void appendResult(const OptionalText& id, const std::optional<EventParameters>& event,
                  std::string_view diagnostics, const ResultForm& form, TextBuffer& out) {
  out.append('{');
  appendId(id, form.surrogates, out);
  out.append(R"("event":)");
  if (event.has_value()) {
    appendEvent(*event, form, out);
  } else {
    out.append("null");
  }
  out.append(R"(,"diagnostics":[)");
  out.append(diagnostics);
  out.append("]}\n");
}

void appendError(const OptionalText& id, const ErrorPlace& place, const JsonError& error,
                 UnpairedSurrogates surrogates, TextBuffer& out) {
  out.append('{');
  appendId(id, surrogates, out);
  out.append(R"("error":{)");
  if (place.file.has_value()) {
    out.append(R"("file":)");
    appendJsonString(*place.file, surrogates, out);
    out.append(',');
  }
  out.append(R"("line":)");
  out.append(place.line);
  out.append(R"(,"path":)");
  appendJsonString(error.pointer, surrogates, out);
  out.append(R"(,"message":)");
  appendJsonString(error.message, surrogates, out);
  out.append("}}\n");
}

}  // namespace qel::tool
