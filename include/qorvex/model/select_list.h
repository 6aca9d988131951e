#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/node.h"
#include "qorvex/model/control_owner.h"
#include "qorvex/model/types.h"
#include "qorvex/model_export.h"

namespace qorvex {

class TSQLExpressionItem;
class TSQLGroupByList;
class TSQLOrderByClause;
class TSQLSelectItem;
class TSQLSelectItems;
class TqxDatasource;
class TqxSelectList;
class TqxUnionSubQuery;

// One row of the criteria grid: an expression (or an "all columns" item), whether it is
// output, its alias, its sorting, its part in grouping and its criteria, one condition
// per criteria column. A condition is kept without its left operand when that is the
// row's expression ("> 5" on row a), and gets it back when the SQL is written.
class QORVEX_MODEL_EXPORT TqxSelectItem : public TqxQueryBuilderControlOwner {
 public:
  explicit TqxSelectItem(TqxSelectList* List);
  ~TqxSelectItem() override;

  TqxSelectList* GetSelectList() const { return List_; }
  int GetIndex() const;

  // The row's expression: a TSQLExpressionItem, or a star select item ("*", "t.*");
  // null for an empty row.
  TastNode* GetExpression() const { return Expression_.get(); }
  // The expression when it is a value expression, else null.
  TSQLExpressionItem* GetExpressionItem() const;
  bool IsEmpty() const { return !Expression_; }
  // The expression's one-line text; empty for an empty row.
  std::string GetExpressionText() const;
  // Parses Text (an expression, or "*" / "t.*") and makes it the row's expression; an
  // empty text empties the row. Raises "No syntax provider specified!" without a syntax
  // provider, and the parser's error for bad text; the row is then unchanged.
  void SetExpression(const std::string& Text);
  // A column of a datasource ("*" for all its columns).
  void SetFieldExpression(TqxDatasource* DS, const std::string& Field);
  // Takes Node (an expression or a select item) as the row's expression.
  void LoadFromAST(std::unique_ptr<TastNode> Node);

  bool GetSelect() const { return Select_; }
  // Raises "Can't select this expression" when the row cannot be output.
  void SetSelect(bool Value);
  const std::string& GetAlias() const { return Alias_; }
  // Whether the alias is written quoted whatever it holds: it was quoted in the loaded
  // text, or typed between the dialect's quotes.
  bool IsAliasQuoted() const { return AliasQuoted_; }
  // A name typed between the dialect's quotes ("One") is taken as that quoted name;
  // any other text is the name itself, quoted when written only if it needs to be.
  void SetAlias(const std::string& Value);

  TqxQueryBuilderItemSortType GetSortType() const { return SortType_; }
  void SetSortType(TqxQueryBuilderItemSortType Value);
  // "Ascending", "Descending", or empty for no sorting.
  std::string GetSortTypeName() const;
  void SetSortTypeName(const std::string& Name);
  static void GetSortTypeNames(std::vector<std::string>& List);
  // The position among the sorted rows, from 1; 0 when the row is not sorted.
  int GetSortOrder() const;
  // Moves the row to that position among the sorted rows; an unsorted row becomes
  // sorted ascending. 0 removes the sorting.
  void SetSortOrder(int Value);
  std::string GetSortOrderName() const;
  void SetSortOrderName(const std::string& Name);

  TqxQueryBuilderGroupByType GetGroupByType() const { return GroupByType_; }
  void SetGroupByType(TqxQueryBuilderGroupByType Value);
  // "Expression", "Group By", "Having", "Where", and "Aggregate" for aggregate rows.
  std::string GetGroupByTypeName() const;
  static std::string GroupByTypeName(TqxQueryBuilderGroupByType Type);
  // Accepts the names GetGroupByNames offers, ignoring letter case.
  void SetGroupByTypeName(const std::string& Name);
  // The names the row may take: an aggregate row "Aggregate" and "Where", any other row
  // "Expression", "Group By", "Having" and "Where"; none for an empty row.
  void GetGroupByNames(std::vector<std::string>& List) const;
  // The type the expression calls for: gtAggregate or gtAggregateStar for aggregates the
  // syntax provider knows, else gtExpression.
  TqxQueryBuilderGroupByType CalcGroupByType() const;

  int GetConditionsCount() const { return static_cast<int>(Conditions_.size()); }
  // The condition of a criteria column as the grid shows it; empty when there is none.
  std::string GetCondition(int Index) const;
  TSQLExpressionItem* GetConditionNode(int Index) const;
  // The condition of a column as written into the SQL (with the row's expression), null
  // when there is none.
  std::unique_ptr<TSQLExpressionItem> GetFullCondition(int Index) const;
  // Parses the text of a criteria cell (see the source for the forms accepted); an empty
  // text clears the cell. A row that was neither grouped nor filtered joins the WHERE
  // rows.
  void SetCondition(int Index, const std::string& Text);
  // Stores a condition node (its left operand removed when it is the row's expression).
  void SetConditionNode(int Index, std::unique_ptr<TSQLExpressionItem> Condition);
  // Drops empty cells at the end of the condition list. Cells before a filled one stay:
  // a condition's column is the OR group it belongs to, so moving it would change the
  // query.
  void ShrinkConditionsList();
  bool HasConditions() const;

  bool IsSupportsAlias() const;
  bool IsCanSelect() const;
  bool IsCanSort() const;
  // Clears what the row no longer supports: alias, output, sorting.
  void CheckItemProperties();

  // Inserts an empty row before this one (the row menu's "Insert Empty Row").
  void InsertEmptyEvent();

  // The select item written for an output row (null for an empty row).
  std::unique_ptr<TSQLSelectItem> GetASTTree() const;

  void GetASTChildren(std::vector<TastNode*>& List) const override;
  void NotifyDatasourceDestroyingInternal(TqxDatasourceBase* DS) override {}

 protected:
  TqxQueryBuilderControlOwner* GetControlParent() const override;
  void FreeModelObject() override;
  void GetPopupMenu(TqxPopupMenu& Menu) override;

 private:
  friend class TqxSelectList;
  void SetExpressionNode(std::unique_ptr<TastNode> Node);
  void UpdateGroupByTypeForExpression();
  void BindNames(TastExtender& Root) const;

  TqxSelectList* List_;
  bool Select_ = false;
  std::unique_ptr<TastNode> Expression_;
  std::string Alias_;
  bool AliasQuoted_ = false;
  const TastClass* AliasClass_ = nullptr;  // how the alias is written; null: with AS
  TqxQueryBuilderItemSortType SortType_ = stNone;
  TqxQueryBuilderGroupByType GroupByType_ = gtExpression;
  std::vector<std::unique_ptr<TSQLExpressionItem>> Conditions_;
};

// The select list of one union operand: the rows of the criteria grid in grid order, and
// the sorted rows in sort order. It always ends with one empty row, the grid's row for a
// new entry. It writes the select items, WHERE, GROUP BY, HAVING and ORDER BY.
class QORVEX_MODEL_EXPORT TqxSelectList : public TqxQueryBuilderControlOwner {
 public:
  explicit TqxSelectList(TqxUnionSubQuery* UnionSubQuery);
  ~TqxSelectList() override;

  TqxUnionSubQuery* GetUnionSubQuery() const { return UnionSubQuery_; }
  int GetCount() const { return static_cast<int>(Items_.size()); }
  TqxSelectItem* GetItems(int Index) const;
  int IndexOf(const TqxSelectItem* Item) const;
  // Rows that have an expression.
  int GetFilledCount() const;

  // Ticks a field of a datasource: an output row for it ("*" for all its columns). A row
  // of that field that is not output yet is reused.
  TqxSelectItem* AddField(TqxDatasource* DS, const std::string& Field);
  TqxSelectItem* InsertField(int Index, TqxDatasource* DS, const std::string& Field);
  // The output row of that field, or null.
  TqxSelectItem* FindField(const TqxDatasource* DS, const std::string& Field) const;
  // Unticks a field (every field of DS with an empty Field): its output rows go, except
  // rows that still carry criteria, grouping or sorting, which only stop being output.
  void RemoveFields(const TqxDatasource* DS, const std::string& Field);
  TqxSelectItem* AddExpression(const std::string& Text);
  TqxSelectItem* InsertExpression(int Index, const std::string& Text);
  TqxSelectItem* AddEmptyRow();
  TqxSelectItem* InsertEmptyRow(int Index);
  // Removes the last row that has an expression.
  void RemoveLastRow();
  void RemoveItem(TqxSelectItem* Item);
  void Delete(int Index);
  void Move(int From, int To);
  void Clear();

  int GetSortedCount() const { return static_cast<int>(Sorted_.size()); }
  TqxSelectItem* GetSortedItems(int Index) const;

  std::unique_ptr<TSQLSelectItems> GetASTTree() const;
  // The criteria of the rows whose type is in Types: per criteria column the AND of the
  // rows' conditions, the columns joined by OR. Null when there is none.
  std::unique_ptr<TSQLExpressionItem> GetConditionTree(TqxQueryBuilderGroupByTypes Types) const;
  // Null when no row is grouped.
  std::unique_ptr<TSQLGroupByList> GetGroupByTree() const;
  // Null when no row is sorted.
  std::unique_ptr<TSQLOrderByClause> GetOrderByClause() const;
  // The number of an output row among the result columns (1 for the first); 0 for a row
  // that is not output or follows a star.
  int GetOutputPosition(const TqxSelectItem* Row) const;
  // The output row of that number; null out of range or at or after a star.
  TqxSelectItem* GetOutputRow(long long Position) const;

  void LoadSelectListFromAST(std::unique_ptr<TSQLSelectItems> Items);
  // The inverse of GetConditionTree: an OR is split into criteria columns, an AND into
  // rows; each term goes to the row of its expression (FindOrAddSelectItem).
  void LoadConditionFromAST(std::unique_ptr<TSQLExpressionItem> Condition,
                            TqxQueryBuilderGroupByTypes Types, TqxQueryBuilderGroupByType NewType);
  void LoadGroupByListFromAST(std::unique_ptr<TSQLGroupByList> GroupBy);
  void LoadOrderByListFromAST(std::unique_ptr<TSQLOrderByClause> OrderBy);
  TqxSelectItem* FindOrAddSelectItem(const TSQLExpressionItem* Expr,
                                     TqxQueryBuilderGroupByTypes Types,
                                     TqxQueryBuilderGroupByType NewType);

  void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const override;
  void NotifyDatasourceDestroyingInternal(TqxDatasourceBase* DS) override;

 private:
  friend class TqxSelectItem;
  TqxSelectItem* InsertItem(int Index);
  void EnsureEmptyRow();
  void RemoveFromSorted(TqxSelectItem* Item);

  // While conditions or a GROUP BY list load into a grid whose only empty row is the
  // last, the rows with an expression by the key of their one-line text (letter case ignored
  // outside quotes), in grid order, so that each term finds its row without writing every row's
  // expression.
  struct RowIndex;
  friend struct RowIndex;
  RowIndex* RowIndex_ = nullptr;

  TqxUnionSubQuery* UnionSubQuery_;
  std::vector<std::unique_ptr<TqxSelectItem>> Items_;
  std::vector<TqxSelectItem*> Sorted_;
};

}  // namespace qorvex
