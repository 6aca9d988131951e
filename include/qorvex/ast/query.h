#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/child.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/sql_export.h"

namespace qorvex {

// ---------------------------------------------------------------------------------------
// Select list, grouping and ordering

// One entry of a select list. The base writes nothing.
class QORVEX_SQL_EXPORT TSQLSelectItem : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;
};

// The bare asterisk.
class QORVEX_SQL_EXPORT TSQLSelectItemAllColumns : public TSQLSelectItem {
  QX_CLASS(TastClass)

 public:
  using TSQLSelectItem::TSQLSelectItem;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// qualifier.* : all columns of one source.
class QORVEX_SQL_EXPORT TSQLSelectItemAllTableColumns : public TSQLSelectItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLDatabaseObject, Qualifier)

 public:
  explicit TSQLSelectItemAllTableColumns(TastSyntaxProvider* SyntaxProvider)
      : TSQLSelectItem(SyntaxProvider) {}
  ~TSQLSelectItemAllTableColumns() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// An expression with an optional alias: "alias=expression" for the alias-equals form,
// otherwise "expression [AS] alias".
class QORVEX_SQL_EXPORT TSQLSelectItemExpression : public TSQLSelectItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Expression)
  QX_CHILD_NODE(TSQLAlias, Alias)

 public:
  explicit TSQLSelectItemExpression(TastSyntaxProvider* SyntaxProvider)
      : TSQLSelectItem(SyntaxProvider) {}
  ~TSQLSelectItemExpression() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// The select list (TSQLSelectItem items).
class QORVEX_SQL_EXPORT TSQLSelectItems : public TastNodeWithList {
  QX_CLASS(TastClass)

 public:
  using TastNodeWithList::TastNodeWithList;
};

// GROUP BY with its expressions; writes its own line break and keywords.
class QORVEX_SQL_EXPORT TSQLGroupByList : public TSQLExpressionsList {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionsList::TSQLExpressionsList;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// One ORDER BY entry; ascending order writes no keyword.
class QORVEX_SQL_EXPORT TSQLOrderByItem : public TastNode {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Expression)

 public:
  explicit TSQLOrderByItem(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}
  ~TSQLOrderByItem() override;
  bool Descending = false;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// The ORDER BY entries (TSQLOrderByItem items), without the keywords.
class QORVEX_SQL_EXPORT TSQLOrderByClause : public TastNodeWithList {
  QX_CLASS(TastClass)

 public:
  using TastNodeWithList::TastNodeWithList;
};

// The set quantifier after SELECT. The default mode writes nothing.
class QORVEX_SQL_EXPORT TSQLSubQuerySelectMode : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;
};

// No quantifier written: the statement as read without ALL or DISTINCT.
class QORVEX_SQL_EXPORT TSQLSubQuerySelectModeDefault : public TSQLSubQuerySelectMode {
  QX_CLASS(TastClass)

 public:
  using TSQLSubQuerySelectMode::TSQLSubQuerySelectMode;
};

// Writes ALL.
class QORVEX_SQL_EXPORT TSQLSubQuerySelectModeAll : public TSQLSubQuerySelectMode {
  QX_CLASS(TastClass)

 public:
  using TSQLSubQuerySelectMode::TSQLSubQuerySelectMode;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// Writes DISTINCT.
class QORVEX_SQL_EXPORT TSQLSubQuerySelectModeDistinct : public TSQLSubQuerySelectMode {
  QX_CLASS(TastClass)

 public:
  using TSQLSubQuerySelectMode::TSQLSubQuerySelectMode;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// ---------------------------------------------------------------------------------------
// Query expressions

// One operand of a chain of SELECT blocks, with the set operator that joins it to the
// operand before it (lower-case "union" unless set) and its ALL flag.
class QORVEX_SQL_EXPORT TSQLSubQueryExpression : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;
  std::string UnionOperator = "union";
  bool All = false;

  // K(operator) [sp K("ALL")]
  void BuildUnionOperator(TSQLBuilder& Builder) const;
  // The operator on one line, with " ALL" when the flag is set.
  std::string GetSimpleUnionOperator() const;

  void Assign(const TastExtender& Source) override;
  std::string DumpDetails() const override;
};

// One SELECT block. Every clause may be missing; the clauses are written in the fixed
// order select list, FROM, WHERE, GROUP BY, HAVING, ORDER BY. Binding pushes the
// block's FROM sources (after a null block marker) for the walk over its children.
class QORVEX_SQL_EXPORT TSQLSubQuerySelectExpression : public TSQLSubQueryExpression {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLSubQuerySelectMode, SelectMode)
  QX_CHILD_NODE(TSQLSelectItems, SelectItems)
  QX_CHILD_NODE(TSQLFromClause, FromClause)
  QX_CHILD_NODE(TSQLExpressionItem, Where)
  QX_CHILD_NODE(TSQLGroupByList, GroupBy)
  QX_CHILD_NODE(TSQLExpressionItem, Having)
  QX_CHILD_NODE(TSQLOrderByClause, OrderBy)

 public:
  explicit TSQLSubQuerySelectExpression(TastSyntaxProvider* SyntaxProvider)
      : TSQLSubQueryExpression(SyntaxProvider) {}
  ~TSQLSubQuerySelectExpression() override;

  // Clones every clause and rebinds names in the copy to the copy's FROM sources.
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;
};

// A chain of operands joined by set operators; an operand that is itself a chain is a
// bracketed group. The list operations are virtual so that a proxy can refuse them.
class QORVEX_SQL_EXPORT TSQLSubQueryExpressions : public TSQLSubQueryExpression {
  QX_CLASS(TastClass)

 public:
  using TSQLSubQueryExpression::TSQLSubQueryExpression;
  ~TSQLSubQueryExpressions() override;

  virtual TSQLSubQueryExpression* GetItems(int Index) const;
  virtual int GetCount() const;
  virtual void Add(std::unique_ptr<TSQLSubQueryExpression> Operand);
  virtual void Insert(int Index, std::unique_ptr<TSQLSubQueryExpression> Operand);
  virtual void Remove(const TSQLSubQueryExpression* Operand);
  virtual void Delete(int Index);
  virtual std::unique_ptr<TSQLSubQueryExpression> Extract(int Index);
  virtual std::unique_ptr<TSQLSubQueryExpression> Extract(const TSQLSubQueryExpression* Operand);
  virtual void Clear();
  virtual int IndexOf(const TSQLSubQueryExpression* Operand) const;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;

 protected:
  TastVector<std::unique_ptr<TSQLSubQueryExpression>> Operands_;
};

// A statement: the chain plus an ORDER BY for the whole chain.
class QORVEX_SQL_EXPORT TSQLSubSelectStatement : public TSQLSubQueryExpressions {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLOrderByClause, OrderBy)

 public:
  explicit TSQLSubSelectStatement(TastSyntaxProvider* SyntaxProvider)
      : TSQLSubQueryExpressions(SyntaxProvider) {}
  ~TSQLSubSelectStatement() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void FixupObjects(std::vector<TSQLFromSource*>& List) override;
};

// The top-level statement.
class QORVEX_SQL_EXPORT TSQLSelectStatement : public TSQLSubSelectStatement {
  QX_CLASS(TastClass)

 public:
  using TSQLSubSelectStatement::TSQLSubSelectStatement;
};

// Stands in for a statement that the query model builds on demand. It writes itself
// through a fresh tree from GetASTTree and copies itself as such a tree; every list
// operation and Assign raise EqxError ("<operation> can't be called with
// TSQLSubSelectStatementProxy").
//
// A concrete proxy class declares QX_CLASS(TastClass) and QX_PROXY_CLASS() in its body
// and QX_DEFINE_PROXY_CLASS(Cls, Parent) in its source file; Cls::ProxyStaticClass() is
// then the TSQLProxyClass to hand to MoveSubQueryInProxy.
class QORVEX_SQL_EXPORT TSQLSubSelectStatementProxy : public TSQLSubSelectStatement {
  QX_CLASS(TastClass)

 public:
  static const TSQLProxyClass& ProxyStaticClass() noexcept;

  // Owner is the model object the proxy belongs to; Statement is the statement it
  // replaces, kept for the concrete proxy (TakeStatement) and freed with the proxy
  // otherwise.
  TSQLSubSelectStatementProxy(TastSyntaxProvider* SyntaxProvider,
                              TqxQueryBuilderControlOwner* Owner,
                              std::unique_ptr<TSQLSubSelectStatement> Statement);
  ~TSQLSubSelectStatementProxy() override;

  // A new statement tree owned by the caller.
  virtual std::unique_ptr<TSQLSubSelectStatement> GetASTTree() const = 0;

  TqxQueryBuilderControlOwner* GetOwner() const { return Owner_; }

  void BuildSQL(TSQLBuilder& Builder, bool MultiLine) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::unique_ptr<TastNode> Clone() const override;
  void Assign(const TastExtender& Source) override;

  TSQLSubQueryExpression* GetItems(int Index) const override;
  int GetCount() const override;
  void Add(std::unique_ptr<TSQLSubQueryExpression> Operand) override;
  void Insert(int Index, std::unique_ptr<TSQLSubQueryExpression> Operand) override;
  void Remove(const TSQLSubQueryExpression* Operand) override;
  void Delete(int Index) override;
  std::unique_ptr<TSQLSubQueryExpression> Extract(int Index) override;
  std::unique_ptr<TSQLSubQueryExpression> Extract(const TSQLSubQueryExpression* Operand) override;
  void Clear() override;
  int IndexOf(const TSQLSubQueryExpression* Operand) const override;

 protected:
  const TSQLSubSelectStatement* GetStatement() const { return Statement_.get(); }
  std::unique_ptr<TSQLSubSelectStatement> TakeStatement() { return std::move(Statement_); }

 private:
  TqxQueryBuilderControlOwner* Owner_;
  std::unique_ptr<TSQLSubSelectStatement> Statement_;
};

// Replaces the statement held in `SubQuery` by a proxy of ProxyClass that takes it over.
// A missing statement or one that already is a proxy is left alone.
QORVEX_SQL_EXPORT void MoveStatementInProxy(std::unique_ptr<TSQLSubSelectStatement>& SubQuery,
                                            TastSyntaxProvider* SyntaxProvider,
                                            TqxQueryBuilderControlOwner* Owner,
                                            const TSQLProxyClass& ProxyClass);

}  // namespace qorvex

// Declares the TSQLProxyClass of a concrete proxy class inside its body.
#define QX_PROXY_CLASS() \
 public:                 \
  static const ::qorvex::TSQLProxyClass& ProxyStaticClass() noexcept;

// Defines both class references of a concrete proxy class. The TastClass one is
// abstract: a proxy is created only with its owner and statement.
#define QX_DEFINE_PROXY_CLASS(Cls, Parent)                                           \
  QX_DEFINE_ABSTRACT_CLASS(Cls, Parent)                                              \
  const ::qorvex::TSQLProxyClass& Cls::ProxyStaticClass() noexcept {                 \
    static const ::qorvex::TSQLProxyClass cls(#Cls, &Parent::ProxyStaticClass(),     \
                                              &::qorvex::TSQLProxyClass::Make<Cls>); \
    return cls;                                                                      \
  }
