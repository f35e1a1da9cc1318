#include "diagnostics_collector.h"

#include <array>
#include <cstdint>
#include <span>
#include <variant>

namespace qel::tool {
namespace {

// Where the messages of this thread go; null without a collection.
thread_local TextBuffer* collected = nullptr;
thread_local UnpairedSurrogates surrogateForm = UnpairedSurrogates::kEscape;

void appendContext(const DiagnosticContext& context, TextBuffer& out) {
  if (const auto* text = std::get_if<std::string_view>(&context)) {
    appendJsonString(*text, surrogateForm, out);
  } else {
    out.append(std::get<std::uint64_t>(context));
  }
}

void appendDiagnostic(int level, int messageCode, std::string_view message,
                      std::span<const DiagnosticContext> contexts) {
  if (collected == nullptr) return;
  TextBuffer& out = *collected;
  if (!out.empty()) out.append(',');
  out.append(R"({"level":)");
  out.append(level);
  out.append(R"(,"code":)");
  out.append(messageCode);
  out.append(R"(,"message":)");
  appendJsonString(message, surrogateForm, out);
  out.append(R"(,"context":[)");
  for (std::size_t i = 0; i < contexts.size(); ++i) {
    if (i > 0) out.append(',');
    appendContext(contexts[i], out);
  }
  out.append("]}");
}

}  // namespace

DiagnosticsCollector::Collection::Collection(TextBuffer& out, UnpairedSurrogates surrogates) {
  out.clear();
  collected = &out;
  surrogateForm = surrogates;
}

DiagnosticsCollector::Collection::~Collection() { collected = nullptr; }

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message) {
  appendDiagnostic(level, messageCode, message, {});
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message,
                                        const DiagnosticContext& context) {
  appendDiagnostic(level, messageCode, message, std::span(&context, 1));
}

void DiagnosticsCollector::logWithLevel(int level, int messageCode, std::string_view message,
                                        const DiagnosticContext& context1,
                                        const DiagnosticContext& context2) {
  appendDiagnostic(level, messageCode, message, std::array{context1, context2});
}

}  // namespace qel::tool
