// Ownership of Objective-C objects, with or without automatic reference counting (ARC).
//
// Only this header retains, releases, or tests whether ARC is on.

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

// An owning reference to an object, or nil. Copies own the same object.
template <typename Object>
class Strong {
 public:
  Strong() = default;
  explicit Strong(Object object) : object_(object) { retain(object_); }

  // Returns a reference that takes over the caller's ownership of `object`, as after alloc and
  // init.
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

  // Returns the object, valid while it has an owner.
  Object get() const { return object_; }

  // Gives up ownership to the current autorelease pool and returns the object.
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
