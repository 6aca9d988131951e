#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qorvex/ast/node.h"
#include "qorvex/sql_export.h"

namespace qorvex {

namespace ast {
class TSQLFromSourceBlockIndex;
}

class TSQLFromSource;

// A dotted name such as db.schema.table. The parts are kept innermost first: index 0 is
// the object name, higher indexes are ever outer prefixes.
class QORVEX_SQL_EXPORT TSQLQualifiedName : public TastNode {
  QX_CLASS(TastClass)

 public:
  explicit TSQLQualifiedName(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}

  // Inserts a new innermost part: adding a, b, c in that order makes c the object name.
  // `Quoted` tells that the part was written quoted and is to stay so.
  void AddName(std::string Name, bool Quoted = false);
  // Appends a new outermost prefix.
  void AddPrefix(std::string Prefix, bool Quoted = false);
  // Replaces all parts by `Parts`, given outermost first as they are written; takes
  // over their storage. `Quoted`, in the same order, tells which parts were quoted
  // (parts beyond its end were not; empty when none was).
  void SetWrittenParts(TastVector<std::string>&& Parts, std::vector<bool>&& Quoted = {}) {
    if (Parts.size() > 1)
      std::reverse(Parts.begin(), Parts.end());
    Names_.swap(Parts);
    Parts.clear();
    Quoted_.clear();
    if (!Quoted.empty()) {
      Quoted.resize(Names_.size(), false);
      std::reverse(Quoted.begin(), Quoted.end());
      Quoted_.swap(Quoted);
    }
  }
  // Replaces all parts by `Parts`, given innermost first, none of them quoted.
  void SetStoredParts(TastVector<std::string>&& Parts) {
    Names_.swap(Parts);
    Quoted_.clear();
  }
  // Index 0; empty when there are no parts.
  std::string GetObjName() const;
  // Replaces index 0 (adds it when there are no parts), as a bare name unless `Quoted`.
  void SetObjName(std::string Name, bool Quoted = false);
  // The Index-th qualifier counted outwards: GetPrefix(0) is the part just before the
  // object name (index 1).
  std::string GetPrefix(int Index) const;
  std::string GetNames(int Index) const;
  // Replaces part Index, as a bare name unless `Quoted`.
  void SetNames(int Index, std::string Name, bool Quoted = false);
  // Whether part Index was quoted where the name came from (never for an empty part); a
  // quoted part is written quoted whatever it holds.
  bool IsQuoted(int Index) const;
  void SetQuoted(int Index, bool Quoted);
  int Count() const { return static_cast<int>(Names_.size()); }
  void Clear() {
    Names_.clear();
    Quoted_.clear();
  }
  // A copy of the parts, innermost first.
  std::vector<std::string> GetNameParts() const { return {Names_.begin(), Names_.end()}; }
  // The parts outermost first joined by "." (no quoting).
  std::string GetQualifiedName() const;
  // The parts outermost first joined by ".", quoted parts between double quotes (for
  // dumps and messages).
  std::string GetMarkedName() const;

  // Every part through WriteIdentifier, outermost first, separated by "."; an empty
  // part writes nothing between its points.
  virtual void BuildFullName(TSQLBuilder& Builder) const;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;

 private:
  TastVector<std::string> Names_;
  // One flag per part, innermost first; empty while no part is quoted.
  std::vector<bool> Quoted_;
};

// The name of a table, view or other database object, with the FROM source it was bound
// to (not owned). Bound names write themselves the way their source is named: by its
// alias if it has one, else by the FROM object's own name.
//
// Binding (FixupObjects) reads `List` as a stack of visible FROM sources: every SELECT
// block pushes a null entry followed by its sources, so the entries after the last null
// are the innermost block's. A qualified name is searched block by block from the top
// of the stack; within a block a source whose alias matches wins over one whose object
// name matches; a source with an alias answers only to its alias. Names are compared
// through the syntax provider. A name that finds nothing keeps its current
// binding, so a name bound by hand is not lost; RemoveReferencesToFromSource clears a
// binding to a source that goes away.
class QORVEX_SQL_EXPORT TSQLDatabaseObject : public TSQLQualifiedName {
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
// alias or an object name. An unqualified column is bound by FixupObjects to the source
// of the innermost block that has such a field (the sources' field lists, read from the
// metadata); while that is not certain it keeps whatever binding it has and writes its
// own name when unbound.
class QORVEX_SQL_EXPORT TSQLObjectColumn : public TSQLDatabaseObject {
  QX_CLASS(TastClass)

 public:
  explicit TSQLObjectColumn(TastSyntaxProvider* SyntaxProvider)
      : TSQLDatabaseObject(SyntaxProvider) {}

  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;

 protected:
  bool MatchesAlias(const TSQLFromSource& Source) const override;
  bool MatchesObject(const TSQLFromSource& Source) const override;

 private:
  TSQLFromSource* FindColumnSource(const std::vector<TSQLFromSource*>& List) const;
};

// Pairs of (original source, copy) used after a copy to move the bindings of the copied
// names from the original's sources to the copy's.
using TSQLFromSourceMap = std::vector<std::pair<const TSQLFromSource*, TSQLFromSource*>>;

// Rebinds every name under Root that is bound to a source listed first in a pair to the
// second of that pair.
QORVEX_SQL_EXPORT void RemapFromSourceReferences(TastExtender& Root, const TSQLFromSourceMap& Map);

}  // namespace qorvex
