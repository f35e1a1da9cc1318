// Conversion between the platform's strings and the library's texts.
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

// Returns `string` in UTF-8, with an unpaired surrogate as the three bytes of its code point.
// Returns std::nullopt for nil.
std::optional<std::string> textFrom(NSString* string);

// Returns a new string with the characters of `text`, never nil. Each byte that is part of neither
// a character nor a surrogate becomes U+FFFD.
Strong<NSString*> stringFrom(std::string_view text);

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_TEXT_CONVERSION_H_
