#include "result_writer.h"

#include <array>
#include <charconv>
#include <limits>
#include <variant>

#include "json_text.h"

namespace qel::tool {
namespace {

template <typename Integer>
void appendInteger(Integer integer, std::string& out) {
  std::array<char, std::numeric_limits<Integer>::digits10 + 2> digits;
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), integer);
  out.append(digits.data(), end);
}

void appendId(const OptionalText& id, std::string& out) {
  if (!id.has_value()) return;
  out += R"("id":)";
  appendJsonString(*id, out);
  out.push_back(',');
}

void appendValue(const QELValue& value, Int64Form int64Form, std::string& out) {
  if (const OptionalText string = value.stringValue()) {
    appendJsonString(*string, out);
    return;
  }
  const std::string_view quote = int64Form == Int64Form::kString ? "\"" : "";
  out += quote;
  appendInteger(value.int64Value(), out);
  out += quote;
}

void appendEvent(const EventParameters& event, Int64Form int64Form, std::string& out) {
  out.push_back('{');
  std::string_view separator;
  for (const auto& [key, value] : event) {
    // No key has a character to escape.
    out += separator;
    out.push_back('"');
    out += key;
    out += "\":";
    appendValue(value, int64Form, out);
    separator = ",";
  }
  out.push_back('}');
}

void appendContext(const DiagnosticContext& context, std::string& out) {
  if (const auto* text = std::get_if<std::string_view>(&context)) {
    appendJsonString(*text, out);
  } else {
    appendInteger(std::get<std::uint64_t>(context), out);
  }
}

// Appends a diagnostic as far as its list of contexts, which is left open.
std::string& beginDiagnostic(int level, int messageCode, std::string_view message) {
  std::string& out = DiagnosticsCollector::ofThisThread();
  if (!out.empty()) out.push_back(',');
  out += R"({"level":)";
  appendInteger(level, out);
  out += R"(,"code":)";
  appendInteger(messageCode, out);
  out += R"(,"message":)";
  appendJsonString(message, out);
  out += R"(,"context":[)";
  return out;
}

constexpr std::string_view kEndOfDiagnostic = "]}";

}  // namespace

std::string& DiagnosticsCollector::ofThisThread() {
  thread_local std::string collected;
  return collected;
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message) {
  beginDiagnostic(level, messageCode, message) += kEndOfDiagnostic;
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message,
                                        const DiagnosticContext& context) {
  std::string& out = beginDiagnostic(level, messageCode, message);
  appendContext(context, out);
  out += kEndOfDiagnostic;
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message,
                                        const DiagnosticContext& context1,
                                        const DiagnosticContext& context2) {
  std::string& out = beginDiagnostic(level, messageCode, message);
  appendContext(context1, out);
  out.push_back(',');
  appendContext(context2, out);
  out += kEndOfDiagnostic;
}

void appendResult(const OptionalText& id, const std::optional<EventParameters>& event,
                  std::string_view diagnostics, Int64Form int64Form, std::string& out) {
  out.push_back('{');
  appendId(id, out);
  out += R"("event":)";
  if (event.has_value()) {
    appendEvent(*event, int64Form, out);
  } else {
    out += "null";
  }
  out += R"(,"diagnostics":[)";
  out += diagnostics;
  out += "]}\n";
}

void appendError(const OptionalText& id, std::uint64_t lineNumber, const LineError& error,
                 std::string& out) {
  out.push_back('{');
  appendId(id, out);
  out += R"("error":{"line":)";
  appendInteger(lineNumber, out);
  out += R"(,"path":)";
  appendJsonString(error.path, out);
  out += R"(,"message":)";
  appendJsonString(error.message, out);
  out += "}}\n";
}

}  // namespace qel::tool
