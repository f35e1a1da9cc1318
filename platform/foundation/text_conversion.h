// The platform's strings and the component's texts.
//
// Threads: pure functions, safe from any thread.

#ifndef QEL_PLATFORM_FOUNDATION_TEXT_CONVERSION_H_
#define QEL_PLATFORM_FOUNDATION_TEXT_CONVERSION_H_

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "strong.h"

namespace qel::foundation {

// The text of `string` in UTF-8, an unpaired surrogate as the three bytes of its code point; absent
// for nil.
std::optional<std::string> textFrom(NSString* string);

// A new string of `text`, never nil. Bytes that belong to no character, not even to a surrogate,
// become U+FFFD.
Strong<NSString*> stringFrom(std::string_view text);

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_TEXT_CONVERSION_H_
