// Ownership of Objective-C objects, with automatic reference counting or without.
//
// Nothing else in these sources retains, releases or asks which of the two is on.

#ifndef QEL_PLATFORM_FOUNDATION_STRONG_H_
#define QEL_PLATFORM_FOUNDATION_STRONG_H_

#import <Foundation/Foundation.h>

#include <utility>

namespace qel::foundation {

#if __has_feature(objc_arc)
inline void retain(id) {}
inline void release(id) {}
inline id autorelease(id object) { return object; }
#else
inline void retain(id object) { [object retain]; }
inline void release(id object) { [object release]; }
inline id autorelease(id object) { return [object autorelease]; }
#endif

// Keeps an object, or nil, for as long as it lives. Copies keep the same object.
template <typename Object>
class Strong {
 public:
  Strong() = default;
  explicit Strong(Object object) : object_(object) { retain(object_); }

  // Takes over an object that the caller owns, fresh from alloc and init.
  static Strong adopt(Object object) {
    Strong result;
    result.object_ = object;
    return result;
  }

  Strong(const Strong& other) : Strong(other.object_) {}
  Strong(Strong&& other) noexcept : object_(other.object_) { other.object_ = nil; }
  Strong& operator=(Strong other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Strong() { release(object_); }

  // The object, valid while something keeps it.
  Object get() const { return object_; }

  // Leaves the object to the autorelease pool at hand, for a caller who does not own it.
  Object toPool() && {
    Object object = object_;
    object_ = nil;
    return autorelease(object);
  }

 private:
  Object object_ = nil;
};

}  // namespace qel::foundation

#endif  // QEL_PLATFORM_FOUNDATION_STRONG_H_
