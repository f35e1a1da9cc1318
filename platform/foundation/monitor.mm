#import "qel/foundation.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>

#include "qel/measurement.h"
#include "strong.h"
#include "text_conversion.h"

namespace qel::foundation {
namespace {

Strong<id> objectOf(const DiagnosticContext& context) {
  if (const auto* text = std::get_if<std::string_view>(&context)) {
    return Strong<id>(stringFrom(*text).get());
  }
  return Strong<id>([NSNumber numberWithUnsignedLongLong:std::get<std::uint64_t>(context)]);
}

// Passes messages to an Objective-C object. The calling thread may have no autorelease pool, so
// each message has its own.
class FoundationMonitor : public DiagnosticsMonitor {
 public:
  explicit FoundationMonitor(id<QELDiagnosticsMonitor> monitor) : monitor_(monitor) {}

  void logWithLevel(int level, int messageCode, std::string_view message) noexcept override {
    @autoreleasepool {
      [monitor_.get() logWithLevel:level messageCode:messageCode message:stringFrom(message).get()];
    }
  }

  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context) noexcept override {
    @autoreleasepool {
      [monitor_.get() logWithLevel:level
                       messageCode:messageCode
                           message:stringFrom(message).get()
                           context:objectOf(context).get()];
    }
  }

  void logWithLevel(int level, int messageCode, std::string_view message,
                    const DiagnosticContext& context1,
                    const DiagnosticContext& context2) noexcept override {
    @autoreleasepool {
      [monitor_.get() logWithLevel:level
                       messageCode:messageCode
                           message:stringFrom(message).get()
                           context:objectOf(context1).get()
                           context:objectOf(context2).get()];
    }
  }

 private:
  const Strong<id<QELDiagnosticsMonitor>> monitor_;
};

}  // namespace
}  // namespace qel::foundation

void QELSetDiagnosticsMonitor(id<QELDiagnosticsMonitor> monitor) {
  std::shared_ptr<qel::DiagnosticsMonitor> adapter;
  if (monitor != nil) adapter = std::make_shared<qel::foundation::FoundationMonitor>(monitor);
  qel::QELMeasurement::setMonitor(std::move(adapter));
}
