#pragma once

#include <string>
#include <string_view>

// ASCII letter-case helpers for SQL words and names (the library folds case in ASCII).
namespace qorvex::sptext {

inline char Upper(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
inline char Lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}
inline std::string UpperCase(std::string_view Text) {
  std::string s(Text);
  for (char& c : s)
    c = Upper(c);
  return s;
}
inline std::string LowerCase(std::string_view Text) {
  std::string s(Text);
  for (char& c : s)
    c = Lower(c);
  return s;
}
inline bool SameText(std::string_view A, std::string_view B) {
  if (A.size() != B.size())
    return false;
  for (std::size_t i = 0; i < A.size(); ++i) {
    if (Upper(A[i]) != Upper(B[i]))
      return false;
  }
  return true;
}

}  // namespace qorvex::sptext
