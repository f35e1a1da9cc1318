// As much of the store's header as the example in docs/foundation.md needs.

#ifndef QEL_TESTS_FOUNDATION_STORE_HEADERS_STOREKIT_H_
#define QEL_TESTS_FOUNDATION_STORE_HEADERS_STOREKIT_H_

#import <Foundation/Foundation.h>

@interface SKProduct : NSObject
@end

@interface SKPaymentTransaction : NSObject
@end

#endif  // QEL_TESTS_FOUNDATION_STORE_HEADERS_STOREKIT_H_
