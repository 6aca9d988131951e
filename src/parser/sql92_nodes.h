#pragma once

#include <charconv>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/small_blocks.h"
#include "qorvex/ast/syntax_provider.h"

// Node making shared by the two ways the SQL-92 parser builds a tree: the building pass
// that replays a way and the direct building.
namespace qorvex::sql92nodes {

// NewNode for the parser, which makes most of a parse's nodes: the block comes from the
// inline path of the per-thread lists (the same lists and size class that the node's
// operator delete gives it back to), and the extender registry is looked at only when it
// has entries, as AfterConstruction does.
template <class T, class... A>
std::unique_ptr<T> Make(TastSyntaxProvider* provider, A&&... args) {
  static_assert(
      static_cast<void* (*)(std::size_t)>(&T::operator new) == &TastExtender::operator new,
      "the node is freed through TastExtender::operator delete");
  void* block = AllocateSmallBlock(sizeof(T));
  T* node;
  try {
    node = ::new (block) T(provider, std::forward<A>(args)...);
  } catch (...) {
    FreeSmallBlock(block, sizeof(T));
    throw;
  }
  std::unique_ptr<T> owned(node);
  if (provider != nullptr && !provider->GetExtenders().empty()) [[unlikely]]
    owned->UpdateExtender();
  return owned;
}

inline int SizeValue(std::string_view text) {
  int value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// Marks the parts from `from` on as quoted; `quoted` stays empty until a part is.
inline void MarkQuoted(std::vector<bool>& quoted, std::size_t from, std::size_t to) {
  quoted.resize(from, false);
  quoted.resize(to, true);
}

// The text inside the quotes of a string literal, a doubled quote standing for one: the
// name that a string literal gives as an alias.
inline std::string StringLiteralText(std::string_view v) {
  std::string text;
  for (std::size_t i = 1; i + 1 < v.size(); ++i) {
    text += v[i];
    if (v[i] == '\'' && v[i + 1] == '\'' && i + 2 < v.size())
      ++i;
  }
  return text;
}

}  // namespace qorvex::sql92nodes
