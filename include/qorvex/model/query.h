#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/names.h"
#include "qorvex/ast/query.h"
#include "qorvex/model/control_owner.h"
#include "qorvex/model/types.h"
#include "qorvex/model_export.h"

namespace qorvex {

class TSQLDatabaseObject;
class TqxDataSourceObject;
class TqxDataSourceQuery;
class TqxDatasource;
class TqxDatasourceBase;
class TqxFromClause;
class TqxLink;
class TqxSelectList;
class TqxSubQuery;
class TqxUnionGroup;
class TqxUnionSubQuery;

// Base of the query hierarchy: sub-queries, union groups and union operands. An item of
// a union group carries the set operator that joins it to the item before it, in the
// spelling of the syntax provider's list ("Union", "Union All", ...).
class QORVEX_MODEL_EXPORT TqxQueryBase : public TqxQueryBuilderControlOwner {
 public:
  using TqxQueryBuilderControlOwner::TqxQueryBuilderControlOwner;

  // The group holding this item; null for a sub-query.
  TqxUnionGroup* GetParentGroup() const;
  // The sub-query this item belongs to (a sub-query itself for a sub-query).
  virtual TqxSubQuery* GetSubQuery() const;
  // Whether the item belongs to the builder's top query.
  bool IsMainQuery() const;

  const std::string& GetUnionOperator() const { return UnionOperator_; }
  // Stores the operator (with " all" for ALL) normalised by the syntax provider.
  void SetUnionOperator(const std::string& Operator);
  // The same, reporting the change (the union bar's operator menu).
  void SetUnionOperatorEvent(const std::string& Operator);
  // Has the controls show the operator again.
  void UpdateUnionOperator() { UpdateContolParams(); }

 protected:
  friend class TqxUnionGroup;
  // Operands and groups are shown on their sub-query's tab page.
  TqxQueryBuilderControlOwner* GetControlParent() const override;

  std::string UnionOperator_ = "Union";
};

// A bracketed list of union operands and nested groups. The top group of a sub-query
// writes the sub-query's chain; a nested one writes a bracketed group.
class QORVEX_MODEL_EXPORT TqxUnionGroup : public TqxQueryBase {
 public:
  TqxUnionGroup(TqxBaseQueryBuilder* QueryBuilder, TqxQueryBuilderControlOwner* Parent);
  ~TqxUnionGroup() override;

  int GetCount() const { return static_cast<int>(Items_.size()); }
  TqxQueryBase* GetItems(int Index) const;
  int IndexOf(const TqxQueryBase* Item) const;

  // A new empty operand at the end. A second operand makes a union, which the dialect
  // must support ("This server don't support unions!", or "... in subqueries!"). Null
  // while the builder is being destroyed.
  TqxUnionSubQuery* Add();
  // A new bracketed group (holding one empty operand) at the end. Needs brackets in
  // unions ("This server don't support brackets in unions!", or "... in subqueries!").
  TqxUnionGroup* AddGroup();
  TqxUnionSubQuery* Insert(int Index);
  TqxUnionGroup* InsertGroup(int Index);
  // Frees an item. A nested group left empty goes too; the top group gets an empty
  // operand back, so a query always has one.
  void Remove(TqxQueryBase* Item);
  void Clear();
  // Model objects for tree nodes, appended.
  TqxUnionSubQuery* AddAST(std::unique_ptr<TSQLSubQuerySelectExpression> Node);
  TqxUnionGroup* AddGroupAST(std::unique_ptr<TSQLSubQueryExpressions> Node);
  TqxUnionSubQuery* InsertAST(int Index, std::unique_ptr<TSQLSubQuerySelectExpression> Node);
  TqxUnionGroup* InsertGroupAST(int Index, std::unique_ptr<TSQLSubQueryExpressions> Node);
  // Takes a chain's operands (the node keeps its other fields).
  void LoadFromAST(TSQLSubQueryExpressions& Node);
  // The chain: a group node with the items' trees, each with its operator.
  std::unique_ptr<TSQLSubQueryExpressions> BuildAST(TSQLFromSourceMap& Map) const;

  // ---- editing the union structure (the union bar)
  // Puts the group's items in its place in the parent group (the first takes the
  // group's operator) and frees the group. Nothing for a top group.
  void RemoveBrackets();
  // A new group in Item's place holding Item.
  TqxUnionGroup* EncloseWithBrackets(TqxQueryBase* Item);
  // Moves Item (from anywhere in the sub-query) to the group's begin or end.
  void AddToBegin(TqxQueryBase* Item);
  void AddToEnd(TqxQueryBase* Item);
  // Moves the group's first (last) item out, before (after) the group.
  void RemoveFromBegin();
  void RemoveFromEnd();
  // Moves Item next to Target, which may be in another group of the same sub-query.
  static void InsertBefore(TqxQueryBase* Item, TqxQueryBase* Target);
  static void InsertAfter(TqxQueryBase* Item, TqxQueryBase* Target);

  // The first operand, descending into groups; null when empty.
  TqxUnionSubQuery* GetFirstOperand() const;
  // The operands in order, descending into groups.
  void GetOperands(std::vector<TqxUnionSubQuery*>& List) const;
  // The items in display order, a group entered twice (before and after its contents).
  void BuildList(std::vector<TqxQueryBase*>& List) const;
  // Whether Item is held at any depth.
  bool Contains(const TqxQueryBase* Item) const;

  void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const override;

 protected:
  void FreeModelObject() override;
  void GetPopupMenu(TqxPopupMenu& Menu) override;

 private:
  void CheckCanAddOperand() const;
  void CheckCanAddGroup() const;
  std::unique_ptr<TqxQueryBase> ExtractItem(TqxQueryBase* Item);
  TqxQueryBase* InsertItem(int Index, std::unique_ptr<TqxQueryBase> Item);
  template <class T, class Load>
  T* InsertLoaded(int Index, const std::string& Operator, Load&& LoadInto);
  static std::unique_ptr<TqxQueryBase> Detach(TqxQueryBase* Item);
  void DropIfEmpty();

  std::vector<std::unique_ptr<TqxQueryBase>> Items_;
};

// One SELECT of a union: its FROM clause, its select list (which writes the select
// items, WHERE, GROUP BY and HAVING) and its select mode. The editing entry points of
// the diagram live here.
class QORVEX_MODEL_EXPORT TqxUnionSubQuery : public TqxQueryBase {
 public:
  TqxUnionSubQuery(TqxBaseQueryBuilder* QueryBuilder, TqxQueryBuilderControlOwner* Parent);
  ~TqxUnionSubQuery() override;

  TqxFromClause* GetFromClause() const { return FromClause_.get(); }
  TqxSelectList* GetSelectList() const { return SelectList_.get(); }
  // "Q1", "Q2", ... by the operand's place in its sub-query.
  std::string GetName() const;

  bool GetDistinct() const;
  void SetDistinct(bool Value);

  // Takes a SELECT block: FROM into datasources and links, the select list, GROUP BY,
  // WHERE and HAVING into rows; then sub-queries under them into model sub-queries.
  void LoadFromAST(std::unique_ptr<TSQLSubQuerySelectExpression> Node);
  // The SELECT block the model stands for, with names bound to its own FROM sources.
  std::unique_ptr<TSQLSubQuerySelectExpression> GetASTTree() const;
  std::unique_ptr<TSQLSubQuerySelectExpression> BuildAST(TSQLFromSourceMap& Map) const;

  // ---- editing the diagram
  TqxDataSourceObject* AddObject(const std::string& Name, const std::string& Alias = "");
  // Adds a table or view at Point with the alias given (none when empty). Null without a
  // syntax provider.
  TqxDataSourceObject* AddObjectAt(const std::string& Name, TqxPoint Point,
                                   const std::string& Alias = "");
  TqxDataSourceObject* AddObjectWithFK(const std::string& Name, const std::string& Alias = "");
  TqxDataSourceObject* AddObjectWithFKAt(const std::string& Name, TqxPoint Point,
                                         const std::string& Alias = "");
  // A derived table holding an empty query.
  TqxDataSourceQuery* AddQuery(const std::string& Alias = "");
  TqxDataSourceQuery* AddQueryAt(TqxPoint Point, const std::string& Alias = "");
  // The alias a new datasource of Name gets when the caller gives none: none while the
  // object is not yet in the query, else the name followed by the first number that
  // makes it unique.
  std::string MakeDefaultAlias(const std::string& Name) const;
  // Links a field of one datasource to a field of another (see the source for the
  // choice of the owning datasource).
  TqxLink* AddLink(TqxDatasourceBase* Left, const std::string& LeftField, TqxDatasourceBase* Right,
                   const std::string& RightField);
  // Links a datasource to the others along the foreign keys the metadata reports.
  void AddFKLinksForObject(TqxDataSourceObject* DS);
  // A link between these two fields in either direction, searched in the whole clause.
  TqxLink* FindLink(const TqxDatasourceBase* Left, const std::string& LeftField,
                    const TqxDatasourceBase* Right, const std::string& RightField) const;
  void FindTablesByDBName(const TSQLDatabaseObject& Name,
                          std::vector<TqxDataSourceObject*>& List) const;
  void FindTablesByDBName(const std::string& Name, std::vector<TqxDataSourceObject*>& List) const;
  // Removes a datasource with its links and the select-list rows that depend on it.
  void RemoveDatasource(TqxDatasourceBase* DS);
  // Removes a link.
  void RemoveLink(TqxLink* Link);
  // The plain datasources in FROM order.
  std::vector<TqxDatasource*> GetDatasources() const;

  // The stack of FROM sources names typed into this operand are bound against: those of
  // every enclosing operand, then this one's, each block after a null marker.
  void GetVisibleSources(std::vector<TSQLFromSource*>& List) const;
  // Binds the names under Root against the visible sources.
  void BindNames(TastExtender& Root) const;

  // The work area: the operand's control.
  TqxControl* GetWorkArea() const { return GetControl(); }
  // The work-area menu.
  void GetPopupMenuWA(TqxPopupMenu& Menu);
  // The "Union" items: a new operand after this one, brackets around it, its removal.
  void CreateUnionPopupMenu(TqxPopupMenu& Menu) { GetPopupMenu(Menu); }

  void GetASTChildren(std::vector<TastNode*>& List) const override;
  void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const override;

 protected:
  void FreeModelObject() override;
  void GetPopupMenu(TqxPopupMenu& Menu) override;
  bool GetEditPropsDialog(TqxDialogKind& Kind) const override;

 private:
  std::unique_ptr<TSQLSubQuerySelectExpression> Shell_;
  std::unique_ptr<TqxFromClause> FromClause_;
  std::unique_ptr<TqxSelectList> SelectList_;
};

// A query with its own union structure: the builder's top query, a sub-query in an
// expression or a derived table in FROM. Its statement's ORDER BY is kept by the select
// list of its first operand.
class QORVEX_MODEL_EXPORT TqxSubQuery : public TqxQueryBase {
 public:
  TqxSubQuery(TqxBaseQueryBuilder* QueryBuilder, TqxQueryBuilderControlOwner* Parent);
  ~TqxSubQuery() override;

  TqxSubQuery* GetSubQuery() const override { return const_cast<TqxSubQuery*>(this); }
  TqxUnionGroup* GetUnionGroup() const { return UnionGroup_.get(); }
  // The sub-query enclosing this one; null for the top query.
  TqxSubQuery* GetParentSubQuery() const;
  // The operand whose query this sub-query stands in; null for the top query.
  TqxUnionSubQuery* GetParentUnionSubQuery() const;

  // Replaces the model by one loaded from Statement; on failure the model is unchanged.
  void LoadFromAST(std::unique_ptr<TSQLSubSelectStatement> Statement);
  std::unique_ptr<TSQLSubSelectStatement> GetASTTree() const;
  // The SQL text, one clause per line.
  std::string GetSQL() const;

  TqxUnionSubQuery* GetFirstOperand() const;
  TqxUnionSubQuery* GetActiveUnionSubquery() const;
  void SetActiveUnionSubquery(TqxUnionSubQuery* Operand);
  // Resets to one empty operand.
  void Clear();

  void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const override;

 protected:
  virtual std::unique_ptr<TSQLSubSelectStatement> NewStatement() const;
  TqxQueryBuilderControlOwner* GetControlParent() const override { return nullptr; }
  void Notification(TqxComponent* Component, TOperation Operation) override;

 private:
  std::unique_ptr<TqxUnionGroup> UnionGroup_;
  TqxUnionSubQuery* ActiveOperand_ = nullptr;
};

// The builder's top query.
class QORVEX_MODEL_EXPORT TqxQuery : public TqxSubQuery {
 public:
  explicit TqxQuery(TqxBaseQueryBuilder* QueryBuilder);
  // The top statement.
  std::unique_ptr<TSQLSelectStatement> GetSelectStatement() const;

 protected:
  std::unique_ptr<TSQLSubSelectStatement> NewStatement() const override;
};

// The statement proxy the model puts in place of a sub-query in an expression or a FROM
// source: it owns the model sub-query made from the statement and writes (and copies)
// itself from that model.
class QORVEX_MODEL_EXPORT TqxSubSelectStatementProxy : public TSQLSubSelectStatementProxy {
  QX_CLASS(TastClass)
  QX_PROXY_CLASS()

 public:
  TqxSubSelectStatementProxy(TastSyntaxProvider* SyntaxProvider, TqxQueryBuilderControlOwner* Owner,
                             std::unique_ptr<TSQLSubSelectStatement> Statement);
  ~TqxSubSelectStatementProxy() override;

  std::unique_ptr<TSQLSubSelectStatement> GetASTTree() const override;
  TqxSubQuery* GetSubQuery() const { return SubQuery_.get(); }

 private:
  std::unique_ptr<TqxSubQuery> SubQuery_;
};

}  // namespace qorvex
