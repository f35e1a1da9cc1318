// A diagnostics monitor that keeps the messages that it receives.

#ifndef QEL_TESTS_SUPPORT_RECORDING_MONITOR_H_
#define QEL_TESTS_SUPPORT_RECORDING_MONITOR_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "qel/measurement.h"
#include "support/asked.h"

namespace qel::testing {

// One message as the monitor received it.
struct Diagnostic {
  using Context = std::variant<std::string, std::uint64_t>;

  int level = 0;
  int code = 0;
  std::string message;
  std::vector<Context> context;

  friend bool operator==(const Diagnostic&, const Diagnostic&) = default;
};

// What a recording monitor notes in its log when it receives the message `code`.
inline std::string monitorCall(int code) { return "monitor.logWithLevel " + std::to_string(code); }

// Keeps the messages. Notes each in a log too, if there is one.
class RecordingMonitor : public DiagnosticsMonitor {
 public:
  explicit RecordingMonitor(Asked* asked = nullptr) : asked_(asked) {}

  void logWithLevel(int level, int messageCode, std::string_view message) override {
    record(level, messageCode, message, {});
  }
  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context) override {
    record(level, messageCode, message, {owned(context)});
  }
  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context1, const DiagnosticContext& context2) override {
    record(level, messageCode, message, {owned(context1), owned(context2)});
  }

  const std::vector<Diagnostic>& diagnostics() const { return diagnostics_; }
  void clear() { diagnostics_.clear(); }

 private:
  static Diagnostic::Context owned(const DiagnosticContext& context) {
    if (const auto* text = std::get_if<std::string_view>(&context)) return std::string(*text);
    return std::get<std::uint64_t>(context);
  }

  void record(int level, int code, std::string_view message,
              std::vector<Diagnostic::Context> context) {
    if (asked_ != nullptr) asked_->note(monitorCall(code));
    diagnostics_.push_back({level, code, std::string(message), std::move(context)});
  }

  Asked* asked_;
  std::vector<Diagnostic> diagnostics_;
};

// Installs a recording monitor for as long as it lives.
class ScopedRecordingMonitor {
 public:
  explicit ScopedRecordingMonitor(Asked* asked = nullptr)
      : monitor_(std::make_shared<RecordingMonitor>(asked)) {
    QELMeasurement::setMonitor(monitor_);
  }
  ~ScopedRecordingMonitor() { QELMeasurement::setMonitor(nullptr); }
  ScopedRecordingMonitor(const ScopedRecordingMonitor&) = delete;
  ScopedRecordingMonitor& operator=(const ScopedRecordingMonitor&) = delete;

  RecordingMonitor* operator->() const { return monitor_.get(); }

 private:
  std::shared_ptr<RecordingMonitor> monitor_;
};

}  // namespace qel::testing

#endif  // QEL_TESTS_SUPPORT_RECORDING_MONITOR_H_
