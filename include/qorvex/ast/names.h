#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qorvex/ast/node.h"

namespace qorvex {

namespace ast {
class TSQLFromSourceBlockIndex;
}

class TSQLFromSource;

// A dotted name such as db.schema.table. The parts are kept innermost first: index 0 is
// the object name, higher indexes are ever outer prefixes.
class TSQLQualifiedName : public TastNode {
  QX_CLASS(TastClass)

 public:
  explicit TSQLQualifiedName(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}

  // Inserts a new innermost part: adding a, b, c in that order makes c the object name.
  void AddName(std::string Name);
  // Appends a new outermost prefix.
  void AddPrefix(std::string Prefix);
  // Replaces all parts by `Parts`, given outermost first as they are written; takes
  // over their storage.
  void SetWrittenParts(TastVector<std::string>&& Parts) {
    if (Parts.size() > 1)
      std::reverse(Parts.begin(), Parts.end());
    Names_.swap(Parts);
    Parts.clear();
  }
  // Index 0; empty when there are no parts.
  std::string GetObjName() const;
  // Replaces index 0 (adds it when there are no parts).
  void SetObjName(std::string Name);
  // The Index-th qualifier counted outwards: GetPrefix(0) is the part just before the
  // object name (index 1).
  std::string GetPrefix(int Index) const;
  std::string GetNames(int Index) const;
  void SetNames(int Index, std::string Name);
  int Count() const { return static_cast<int>(Names_.size()); }
  void Clear() { Names_.clear(); }
  // A copy of the parts, innermost first.
  std::vector<std::string> GetNameParts() const { return {Names_.begin(), Names_.end()}; }
  // The parts outermost first joined by "." (no quoting).
  std::string GetQualifiedName() const;

  // Every part through WriteIdentifier, outermost first, separated by "."; an empty
  // part writes nothing between its points.
  virtual void BuildFullName(TSQLBuilder& Builder) const;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;

 private:
  TastVector<std::string> Names_;
};

// The name of a table, view or other database object, with the FROM source it was bound
// to (not owned). Bound names write themselves the way their source is named: by its
// alias if it has one, else by the FROM object's own name.
//
// Binding (FixupObjects) reads `List` as a stack of visible FROM sources: every SELECT
// block pushes a null entry followed by its sources, so the entries after the last null
// are the innermost block's. A qualified name is searched block by block from the top
// of the stack; within a block a source whose alias matches wins over one whose object
// name matches, and among object-name matches a source without an alias wins. Names are
// compared through the syntax provider. A name that finds nothing keeps its current
// binding, so a name bound by hand is not lost; RemoveReferencesToFromSource clears a
// binding to a source that goes away.
class TSQLDatabaseObject : public TSQLQualifiedName {
  QX_CLASS(TastClass)

 public:
  explicit TSQLDatabaseObject(TastSyntaxProvider* SyntaxProvider)
      : TSQLQualifiedName(SyntaxProvider) {}

  TSQLFromSource* GetFromSource() const { return FromSource_; }
  void SetFromSource(TSQLFromSource* Source) { FromSource_ = Source; }

  // Copies the names and the binding.
  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;
  void RemoveReferencesToFromSource(const TSQLFromSource* Source) override;
  std::string DumpDetails() const override;

 protected:
  // Finds the source this name stands for in the stack of visible sources.
  virtual TSQLFromSource* FindFromSource(const std::vector<TSQLFromSource*>& List) const;
  // FindFromSource within one indexed block; Key is the name's key part.
  TSQLFromSource* FindInIndex(const std::vector<TSQLFromSource*>& List,
                              const ast::TSQLFromSourceBlockIndex& Index,
                              const std::string& Key) const;
  // Whether this name (or its qualifier) names `Source` by its alias or by its object.
  virtual bool MatchesAlias(const TSQLFromSource& Source) const;
  virtual bool MatchesObject(const TSQLFromSource& Source) const;

 private:
  TSQLFromSource* FromSource_ = nullptr;
};

// A column reference: index 0 is the column name, the prefixes qualify it by a table
// alias or an object name. Only qualified columns are bound by FixupObjects; an
// unqualified one keeps whatever binding it has and writes its own name when unbound.
class TSQLObjectColumn : public TSQLDatabaseObject {
  QX_CLASS(TastClass)

 public:
  explicit TSQLObjectColumn(TastSyntaxProvider* SyntaxProvider)
      : TSQLDatabaseObject(SyntaxProvider) {}

  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;

 protected:
  bool MatchesAlias(const TSQLFromSource& Source) const override;
  bool MatchesObject(const TSQLFromSource& Source) const override;
};

// Pairs of (original source, copy) used after a copy to move the bindings of the copied
// names from the original's sources to the copy's.
using TSQLFromSourceMap = std::vector<std::pair<const TSQLFromSource*, TSQLFromSource*>>;

// Rebinds every name under Root that is bound to a source listed first in a pair to the
// second of that pair.
void RemapFromSourceReferences(TastExtender& Root, const TSQLFromSourceMap& Map);

}  // namespace qorvex
