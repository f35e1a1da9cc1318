// The part of CommonCrypto that computes MD5, with the declarations of Apple's systems, over libmd.
// It lets the digest with CommonCrypto compile and run on other systems.

#ifndef QEL_TESTS_PLATFORM_STUBS_COMMONCRYPTO_COMMONDIGEST_H_
#define QEL_TESTS_PLATFORM_STUBS_COMMONCRYPTO_COMMONDIGEST_H_

#include <md5.h>
#include <stdint.h>

#define CC_MD5_DIGEST_LENGTH 16

typedef uint32_t CC_LONG;
typedef MD5_CTX CC_MD5_CTX;

// Deprecated there, too.
#define QEL_DEPRECATED __attribute__((deprecated))

QEL_DEPRECATED inline int CC_MD5_Init(CC_MD5_CTX* context) {
  MD5Init(context);
  return 1;
}

QEL_DEPRECATED inline int CC_MD5_Update(CC_MD5_CTX* context, const void* data, CC_LONG length) {
  MD5Update(context, static_cast<const uint8_t*>(data), length);
  return 1;
}

QEL_DEPRECATED inline int CC_MD5_Final(unsigned char* digest, CC_MD5_CTX* context) {
  MD5Final(digest, context);
  return 1;
}

#endif  // QEL_TESTS_PLATFORM_STUBS_COMMONCRYPTO_COMMONDIGEST_H_
