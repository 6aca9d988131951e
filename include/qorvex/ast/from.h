#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/child.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TSQLExpressionItem;
class TSQLFunction;
class TSQLSubSelectStatement;

// The alias of a FROM source or a select item. This base form writes the bare name.
class QORVEX_SQL_EXPORT TSQLAlias : public TastNode {
  QX_CLASS(TastClass)

 public:
  explicit TSQLAlias(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}
  TSQLAlias(TastSyntaxProvider* SyntaxProvider, std::string Name, bool Quoted = false)
      : TastNode(SyntaxProvider), Name(std::move(Name)), Quoted(Quoted) {}
  std::string Name;
  // The name was quoted where it came from (a quoted identifier or a string literal)
  // and is written quoted.
  bool Quoted = false;

  // The name alone, through WriteIdentifier.
  void WriteName(TSQLBuilder& Builder) const;
  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// The select-item form "alias=expression".
class QORVEX_SQL_EXPORT TSQLAliasAliasEqualsObject : public TSQLAlias {
  QX_CLASS(TastClass)

 public:
  using TSQLAlias::TSQLAlias;
};

// An alias written after its object.
class QORVEX_SQL_EXPORT TSQLAliasObjectAlias : public TSQLAlias {
  QX_CLASS(TastClass)

 public:
  using TSQLAlias::TSQLAlias;
};

// An alias written after its object and introduced by AS.
class QORVEX_SQL_EXPORT TSQLAliasObjectAsAlias : public TSQLAliasObjectAlias {
  QX_CLASS(TastClass)

 public:
  using TSQLAliasObjectAlias::TSQLAliasObjectAlias;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// How a FROM source is joined to the one before it. IsLeftOuter/IsRightOuter tell which
// side keeps all its rows.
class QORVEX_SQL_EXPORT TSQLJoinKind : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;
  virtual bool IsLeftOuter() const { return false; }
  virtual bool IsRightOuter() const { return false; }
};

// Writes CROSS JOIN.
class QORVEX_SQL_EXPORT TSQLJoinKindCross : public TSQLJoinKind {
  QX_CLASS(TastClass)

 public:
  using TSQLJoinKind::TSQLJoinKind;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// Writes INNER JOIN.
class QORVEX_SQL_EXPORT TSQLJoinKindInner : public TSQLJoinKind {
  QX_CLASS(TastClass)

 public:
  using TSQLJoinKind::TSQLJoinKind;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// An outer join. Outer records whether the word OUTER was written; it changes only the
// spelling.
class QORVEX_SQL_EXPORT TSQLJoinKindOuter : public TSQLJoinKind {
  QX_CLASS(TastClass)

 public:
  using TSQLJoinKind::TSQLJoinKind;
  bool Outer = false;

  void Assign(const TastExtender& Source) override;
  std::string DumpDetails() const override;

 protected:
  // sp K(Word) [sp K("OUTER")] sp K("JOIN")
  void BuildJoin(TSQLBuilder& Builder, const char* Word) const;
};

// Writes LEFT [OUTER] JOIN: every row of the left source is kept.
class QORVEX_SQL_EXPORT TSQLJoinKindLeft : public TSQLJoinKindOuter {
  QX_CLASS(TastClass)

 public:
  using TSQLJoinKindOuter::TSQLJoinKindOuter;
  bool IsLeftOuter() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// Writes RIGHT [OUTER] JOIN: every row of the right source is kept.
class QORVEX_SQL_EXPORT TSQLJoinKindRight : public TSQLJoinKindOuter {
  QX_CLASS(TastClass)

 public:
  using TSQLJoinKindOuter::TSQLJoinKindOuter;
  bool IsRightOuter() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// Writes FULL [OUTER] JOIN: the rows of both sources are kept.
class QORVEX_SQL_EXPORT TSQLJoinKindFull : public TSQLJoinKindOuter {
  QX_CLASS(TastClass)

 public:
  using TSQLJoinKindOuter::TSQLJoinKindOuter;
  bool IsLeftOuter() const override { return true; }
  bool IsRightOuter() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// One source of a FROM clause: its field names (filled from the metadata provider), the
// join kind and ON condition that attach it to the source before it, and its alias.
class QORVEX_SQL_EXPORT TSQLFromSource : public TastNode {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLJoinKind, JoinKind)
  QX_CHILD_NODE(TSQLExpressionItem, JoinCondition)
  QX_CHILD_NODE(TSQLAlias, Alias)

 public:
  explicit TSQLFromSource(TastSyntaxProvider* SyntaxProvider);
  ~TSQLFromSource() override;

  std::vector<std::string> Fields;

  // The alias name, empty without an alias.
  std::string GetAliasName() const;

  // Copies the field names and clones join kind, condition and alias. Names in the copied
  // condition bound to Source itself are rebound to this source.
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  // The source's own text, then its alias.
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  // Children first, then the own field list (join groups have none).
  void RefreshFieldsListRecursive(TqxBaseMetadataProvider* Provider) override;
  std::string DumpDetails() const override;

  // Replaces Fields with the result columns of "select * from " + the one-line text of
  // this source (alias included), as the metadata provider reports them. Without a
  // provider the list is only cleared.
  virtual void RefreshFieldsList(TqxBaseMetadataProvider* Provider);
  // The source's own text without the alias.
  virtual void BuildExpression(TSQLBuilder& Builder, bool MultiLine) const = 0;
  // The join kind, or ", " for a source without one.
  virtual void BuildJoinOperator(TSQLBuilder& Builder, bool MultiLine) const;

  // BuildExpression alone on one line.
  std::string GetSimpleExpression() const;
};

// A derived table: a bracketed statement, with an optional list of column aliases
// written after its alias, as in "(SELECT 1) x (c)".
class QORVEX_SQL_EXPORT TSQLFromQuery : public TSQLFromSource {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLSubSelectStatement, SubQuery)

 public:
  explicit TSQLFromQuery(TastSyntaxProvider* SyntaxProvider);
  ~TSQLFromQuery() override;

  std::vector<std::string> ColumnAliases;
  // Which column aliases were quoted, in the same order (empty when none was).
  std::vector<bool> ColumnAliasesQuoted;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                   const TSQLProxyClass& ProxyClass) override;
  // Asks for "select * from (" + the statement on one line + ")", the alias and the
  // column aliases.
  void RefreshFieldsList(TqxBaseMetadataProvider* Provider) override;
  void BuildExpression(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A table-valued function call.
class QORVEX_SQL_EXPORT TSQLFromFunction : public TSQLFromSource {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLFunction, Function)

 public:
  explicit TSQLFromFunction(TastSyntaxProvider* SyntaxProvider);
  ~TSQLFromFunction() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildExpression(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A function built into the dialect, used as a FROM source.
class QORVEX_SQL_EXPORT TSQLFromBuiltInFunction : public TSQLFromFunction {
  QX_CLASS(TastClass)

 public:
  using TSQLFromFunction::TSQLFromFunction;
};

// A table or view.
class QORVEX_SQL_EXPORT TSQLFromObject : public TSQLFromSource {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLDatabaseObject, DatabaseObject)

 public:
  explicit TSQLFromObject(TastSyntaxProvider* SyntaxProvider) : TSQLFromSource(SyntaxProvider) {}
  ~TSQLFromObject() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  // The object's own name is what others bind to; it is never bound itself.
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;
  void BuildExpression(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A table variable.
class QORVEX_SQL_EXPORT TSQLFromVariable : public TSQLFromSource {
  QX_CLASS(TastClass)

 public:
  explicit TSQLFromVariable(TastSyntaxProvider* SyntaxProvider) : TSQLFromSource(SyntaxProvider) {}
  std::string VariableName;

  void Assign(const TastExtender& Source) override;
  void BuildExpression(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// A chain of joined sources; a source may itself be a TSQLFromItem, which is written
// in brackets. Each joined source writes its join operator, a line break (multi-line)
// or a space, one forced space, itself and its ON condition.
class QORVEX_SQL_EXPORT TSQLFromItem : public TSQLFromSource {
  QX_CLASS(TastClass)

 public:
  explicit TSQLFromItem(TastSyntaxProvider* SyntaxProvider) : TSQLFromSource(SyntaxProvider) {}
  ~TSQLFromItem() override;

  void Add(std::unique_ptr<TSQLFromSource> Source);
  void Insert(int Index, std::unique_ptr<TSQLFromSource> Source);
  void Delete(int Index);
  void Clear();
  std::unique_ptr<TSQLFromSource> Extract(int Index);
  std::unique_ptr<TSQLFromSource> Extract(const TSQLFromSource* Source);
  int Count() const { return static_cast<int>(Sources_.size()); }
  TSQLFromSource* GetItems(int Index) const;
  int IndexOf(const TSQLFromSource* Source) const;

  // Appends to List every source that is not a join group, nested groups flattened, in
  // text order.
  void GetAllSources(std::vector<TSQLFromSource*>& List) const;

  // Clones the sources too and rebinds names in the copy to the copied sources.
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildExpression(TSQLBuilder& Builder, bool MultiLine) const override;

 private:
  TastVector<std::unique_ptr<TSQLFromSource>> Sources_;
};

// Pairs every source of From, nested groups included, with the source at the same place
// in To (a copy of From), for RemapFromSourceReferences.
QORVEX_SQL_EXPORT void PairFromSources(const TSQLFromItem& From, TSQLFromItem& To,
                                       TSQLFromSourceMap& Map);

// The FROM clause of one SELECT block.
class QORVEX_SQL_EXPORT TSQLFromClause : public TSQLFromItem {
  QX_CLASS(TastClass)

 public:
  using TSQLFromItem::TSQLFromItem;
};

}  // namespace qorvex
