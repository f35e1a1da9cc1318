// Texts made of pieces.

#ifndef QEL_TESTS_REFERENCE_JOINED_H_
#define QEL_TESTS_REFERENCE_JOINED_H_

#include <initializer_list>
#include <string>
#include <string_view>

namespace qel::testing {

inline std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

}  // namespace qel::testing

#endif  // QEL_TESTS_REFERENCE_JOINED_H_
