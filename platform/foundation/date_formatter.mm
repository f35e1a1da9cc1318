#include "qel/date_formatter.h"

#import <Foundation/Foundation.h>

#include "strong.h"
#include "text_conversion.h"
#include "value_conversion.h"

namespace qel {

using foundation::Strong;

struct DateFormatter::State {
  Strong<NSDateFormatter*> formatter;
};

DateFormatter::DateFormatter() : state_(new State) {
  @autoreleasepool {
    state_->formatter = Strong<NSDateFormatter*>::adopt([[NSDateFormatter alloc] init]);
    NSDateFormatter* const formatter = state_->formatter.get();
    [formatter setLocale:Strong<NSLocale*>::adopt(
                             [[NSLocale alloc] initWithLocaleIdentifier:@"en_US_POSIX"])
                             .get()];
    [formatter setDateFormat:@"yyyy-MM-dd'T'HH:mm:ssZZZZZ"];
    [formatter setTimeZone:[NSTimeZone timeZoneForSecondsFromGMT:0]];
  }
}

DateFormatter::~DateFormatter() { delete state_; }

std::optional<Instant> DateFormatter::dateFromString(const OptionalText& text) const {
  if (!text.has_value()) return std::nullopt;
  @autoreleasepool {
    const Strong<NSString*> string = foundation::stringFrom(*text);
    return foundation::instantFrom([state_->formatter.get() dateFromString:string.get()]);
  }
}

}  // namespace qel
