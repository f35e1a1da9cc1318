// Which functions and constants the libraries export. Everything else stays inside them.

#ifndef QEL_PLATFORM_EXPORT_H_
#define QEL_PLATFORM_EXPORT_H_

// Marks a declaration as exported. The libraries are compiled with hidden visibility, so a shared
// library exports what is marked and nothing else.
#define QEL_EXPORT __attribute__((visibility("default")))

#endif  // QEL_PLATFORM_EXPORT_H_
