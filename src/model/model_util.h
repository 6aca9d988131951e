#pragma once

// Small helpers shared by the model's sources.

#include <memory>
#include <string>
#include <string_view>

#include "qorvex/ast/node.h"
#include "qorvex/core/errors.h"

namespace qorvex::model {

inline char UpperChar(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
inline char LowerChar(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Letter-case folding of SQL words and names is ASCII.
inline std::string UpperCase(std::string_view Text) {
  std::string out(Text);
  for (char& c : out)
    c = UpperChar(c);
  return out;
}
inline std::string LowerCase(std::string_view Text) {
  std::string out(Text);
  for (char& c : out)
    c = LowerChar(c);
  return out;
}
// Text with its letters folded to lower case except inside quoted names (between
// QuoteBegin and QuoteEnd, a doubled QuoteEnd standing for one) and string literals: two
// written statements that differ only in the letter case of keywords and bare names fold
// to the same text, while a quoted name or a literal keeps its letter case.
inline std::string LowerCaseOutsideQuotes(std::string_view Text, std::string_view QuoteBegin,
                                          std::string_view QuoteEnd) {
  std::string out;
  out.reserve(Text.size());
  std::size_t i = 0;
  // Copies up to and including the closing `end` that is not doubled.
  auto copyQuoted = [&](std::string_view end) {
    while (i < Text.size()) {
      if (Text.substr(i).starts_with(end)) {
        out += end;
        i += end.size();
        if (!Text.substr(i).starts_with(end))
          return;
        out += end;
        i += end.size();
      } else {
        out += Text[i++];
      }
    }
  };
  while (i < Text.size()) {
    if (!QuoteBegin.empty() && !QuoteEnd.empty() && Text.substr(i).starts_with(QuoteBegin)) {
      out += QuoteBegin;
      i += QuoteBegin.size();
      copyQuoted(QuoteEnd);
    } else if (Text[i] == '\'') {
      out += Text[i++];
      copyQuoted("'");
    } else {
      out += LowerChar(Text[i++]);
    }
  }
  return out;
}
inline bool SameText(std::string_view A, std::string_view B) {
  if (A.size() != B.size())
    return false;
  for (std::size_t i = 0; i < A.size(); ++i) {
    if (UpperChar(A[i]) != UpperChar(B[i]))
      return false;
  }
  return true;
}

inline bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}
inline std::string Trim(std::string_view Text) {
  std::size_t begin = 0;
  std::size_t end = Text.size();
  while (begin < end && IsBlank(Text[begin]))
    ++begin;
  while (end > begin && IsBlank(Text[end - 1]))
    --end;
  return std::string(Text.substr(begin, end - begin));
}

// Whether two nodes write the same one-line text, ignoring letter case (both missing
// counts as equal).
inline bool SameNodeText(const TastNode* A, const TastNode* B) {
  if (A == nullptr || B == nullptr)
    return A == B;
  return SameText(A->GetSimpleSQL(), B->GetSimpleSQL());
}

// The text with its letters upper-cased outside quotes ('...', "...", `...`, [...]): two
// texts have the same key exactly when they are equal ignoring letter case only outside
// quotes, so rows can be found by the key of their expression.
inline std::string ExpressionKey(std::string_view Text) {
  std::string key(Text);
  char close = 0;  // the character that ends the quoted text we are in
  for (char& c : key) {
    if (close != 0) {
      if (c == close)
        close = 0;
      continue;
    }
    if (c == '\'' || c == '"' || c == '`')
      close = c;
    else if (c == '[')
      close = ']';
    else
      c = UpperChar(c);
  }
  return key;
}

// Whether two nodes write the same one-line text, letter case ignored only outside
// quotes: 'a' and 'A', or "Name" and "NAME", are different values and names.
inline bool SameExpressionText(const TastNode* A, const TastNode* B) {
  if (A == nullptr || B == nullptr)
    return A == B;
  return ExpressionKey(A->GetSimpleSQL()) == ExpressionKey(B->GetSimpleSQL());
}

// The node as T (null when it is of another class).
template <class T, class U>
T* As(U* Node) {
  return dynamic_cast<T*>(Node);
}

// Takes ownership of a node known to be of class T.
template <class T, class U>
std::unique_ptr<T> Downcast(std::unique_ptr<U> Node) {
  if (!Node)
    return nullptr;
  T* typed = dynamic_cast<T*>(Node.get());
  if (typed == nullptr)
    throw EqxError("Unexpected node class");
  Node.release();
  return std::unique_ptr<T>(typed);
}

}  // namespace qorvex::model
