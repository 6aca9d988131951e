#pragma once

// An index of one block of the visible-sources stack that name binding reads, so that a
// name finds its source without comparing itself with every source of a large FROM
// clause.

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qorvex/sql_export.h"

namespace qorvex {

class TSQLFromSource;

namespace ast {

// While alive, indexes List[Begin, List.size()) (one SELECT block's sources) by the
// ASCII upper-case text of each source's alias and of the innermost part of its object
// name. A syntax provider's name comparison only finds names equal whose innermost parts
// are equal ignoring ASCII case, so a bucket holds every candidate; the candidates are
// still compared through the provider, in list order. Small blocks are not indexed.
// Scopes nest like the stack they describe and are undone in reverse order.
// Not public, but exported: the model's select list binds names with it too.
class QORVEX_SQL_EXPORT TSQLFromSourceBlockIndex {
 public:
  TSQLFromSourceBlockIndex(const std::vector<TSQLFromSource*>& List, std::size_t Begin);
  ~TSQLFromSourceBlockIndex();
  TSQLFromSourceBlockIndex(const TSQLFromSourceBlockIndex&) = delete;
  TSQLFromSourceBlockIndex& operator=(const TSQLFromSourceBlockIndex&) = delete;

  // The index of the block of List that ends at End, or null.
  static const TSQLFromSourceBlockIndex* Find(const std::vector<TSQLFromSource*>& List,
                                              std::size_t End);
  std::size_t GetBegin() const { return Begin_; }

  // Positions in the list of the sources whose alias (object name) has this key, in
  // ascending order; null when there are none.
  const std::vector<std::size_t>* ByAlias(const std::string& Key) const;
  const std::vector<std::size_t>* ByObject(const std::string& Key) const;

  // The sources of the block that have a field of this name (compared ignoring ASCII
  // case), each once: how many there are and the last of them. Built on first use.
  struct FieldSources {
    int Count = 0;
    TSQLFromSource* Last = nullptr;
  };
  FieldSources SourcesWithField(std::string_view Name) const;
  // Whether a source of the block has no known fields.
  bool HasSourceWithoutFields() const;

  // The key of a name part.
  static std::string Key(std::string_view Part);

  // Blocks with fewer sources are searched directly.
  static constexpr std::size_t kMinSources = 16;

 private:
  const std::vector<TSQLFromSource*>* List_;
  std::size_t Begin_;
  std::size_t End_;
  bool Registered_ = false;
  std::unordered_map<std::string, std::vector<std::size_t>> Aliases_;
  std::unordered_map<std::string, std::vector<std::size_t>> Objects_;
  mutable bool FieldsBuilt_ = false;
  mutable bool SourceWithoutFields_ = false;
  mutable std::unordered_map<std::string, FieldSources> Fields_;
};

}  // namespace ast
}  // namespace qorvex
