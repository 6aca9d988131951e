#pragma once

// Small helpers shared by the node classes' sources.

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/node.h"
#include "qorvex/core/errors.h"

namespace qorvex::detail {

[[noreturn]] inline void ListIndexError(int Index) {
  throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
}

// Checks an index into a list of Count items (Count itself allowed for insertion).
inline void CheckIndex(int Index, std::size_t Count, bool ForInsert = false) {
  const auto limit = static_cast<long long>(Count) + (ForInsert ? 1 : 0);
  if (Index < 0 || Index >= limit)
    ListIndexError(Index);
}

// A deep copy of an optional child.
template <class T>
std::unique_ptr<T> CloneChild(const std::unique_ptr<T>& Child) {
  return Child ? CloneNode(*Child) : nullptr;
}
template <class T>
std::unique_ptr<T> CloneChild(const T* Child) {
  return Child ? CloneNode(*Child) : nullptr;
}

inline void AddChild(std::vector<TastExtender*>& List, TastExtender* Child) {
  if (Child != nullptr)
    List.push_back(Child);
}

// Writes an optional child through BuildSQL (nothing when it is missing).
inline void Write(const TastNode* Child, TSQLBuilder& Builder, bool MultiLine) {
  if (Child != nullptr)
    Child->BuildSQL(Builder, MultiLine);
}

// ASCII upper case.
inline std::string UpperAscii(std::string Text) {
  for (char& c : Text) {
    if (c >= 'a' && c <= 'z')
      c = static_cast<char>(c - 'a' + 'A');
  }
  return Text;
}

// Writes items with ", " between them, as lists do.
template <class Range>
void WriteCommaList(const Range& Items, TSQLBuilder& Builder, bool MultiLine) {
  bool first = true;
  for (const auto& item : Items) {
    if (!item)
      continue;
    if (!first) {
      Builder.WriteSymbol(",");
      Builder.Space();
    }
    item->BuildSQL(Builder, MultiLine);
    first = false;
  }
}

}  // namespace qorvex::detail
