#include "result_writer.h"

#include <variant>

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
    // No key has a character to escape.
    out.append('"');
    out.append(key);
    out.append("\":");
    appendValue(value, int64Form, out);
    before = ',';
  }
  out.append(event.empty() ? "{}" : "}");
}

void appendContext(const DiagnosticContext& context, TextBuffer& out) {
  if (const auto* text = std::get_if<std::string_view>(&context)) {
    appendJsonString(*text, out);
  } else {
    out.append(std::get<std::uint64_t>(context));
  }
}

// Appends a diagnostic as far as its list of contexts, which is left open.
TextBuffer& beginDiagnostic(int level, int messageCode, std::string_view message) {
  TextBuffer& out = DiagnosticsCollector::ofThisThread();
  if (!out.empty()) out.append(',');
  out.append(R"({"level":)");
  out.append(level);
  out.append(R"(,"code":)");
  out.append(messageCode);
  out.append(R"(,"message":)");
  appendJsonString(message, out);
  out.append(R"(,"context":[)");
  return out;
}

constexpr std::string_view kEndOfDiagnostic = "]}";

}  // namespace

TextBuffer& DiagnosticsCollector::ofThisThread() {
  thread_local TextBuffer collected;
  return collected;
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message) {
  beginDiagnostic(level, messageCode, message).append(kEndOfDiagnostic);
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message,
                                        const DiagnosticContext& context) {
  TextBuffer& out = beginDiagnostic(level, messageCode, message);
  appendContext(context, out);
  out.append(kEndOfDiagnostic);
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message,
                                        const DiagnosticContext& context1,
                                        const DiagnosticContext& context2) {
  TextBuffer& out = beginDiagnostic(level, messageCode, message);
  appendContext(context1, out);
  out.append(',');
  appendContext(context2, out);
  out.append(kEndOfDiagnostic);
}

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

void appendError(const OptionalText& id, std::uint64_t lineNumber, const LineError& error,
                 TextBuffer& out) {
  out.append('{');
  appendId(id, out);
  out.append(R"("error":{"line":)");
  out.append(lineNumber);
  out.append(R"(,"path":)");
  appendJsonString(error.path, out);
  out.append(R"(,"message":)");
  appendJsonString(error.message, out);
  out.append("}}\n");
}

}  // namespace qel::tool
