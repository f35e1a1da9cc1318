// The version of the library. CMake reads it from here, too.

#ifndef QEL_PLATFORM_VERSION_H_
#define QEL_PLATFORM_VERSION_H_

// docs/embedding.md states what each of the three parts promises.
#define QEL_PURCHASE_VERSION_MAJOR 1
#define QEL_PURCHASE_VERSION_MINOR 0
#define QEL_PURCHASE_VERSION_PATCH 0

// The version as one number for the preprocessor, 10203 for 1.2.3. Minor and patch stay below 100.
//
// Example:
//   #if QEL_PURCHASE_VERSION >= 10100
#define QEL_PURCHASE_VERSION                                               \
  (QEL_PURCHASE_VERSION_MAJOR * 10000 + QEL_PURCHASE_VERSION_MINOR * 100 + \
   QEL_PURCHASE_VERSION_PATCH)

// The version as a string literal, "1.2.3".
#define QEL_PURCHASE_VERSION_STRING                                           \
  QEL_PURCHASE_DOTTED(QEL_PURCHASE_VERSION_MAJOR, QEL_PURCHASE_VERSION_MINOR, \
                      QEL_PURCHASE_VERSION_PATCH)

// Private. Two steps, so that the parts are replaced by their values first.
#define QEL_PURCHASE_DOTTED(major, minor, patch) QEL_PURCHASE_QUOTED(major, minor, patch)
#define QEL_PURCHASE_QUOTED(major, minor, patch) #major "." #minor "." #patch

#endif  // QEL_PLATFORM_VERSION_H_
