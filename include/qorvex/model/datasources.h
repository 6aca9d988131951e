#pragma once

#include <memory>
#include <string>
#include <typeinfo>
#include <unordered_map>
#include <vector>

#include "qorvex/ast/names.h"
#include "qorvex/model/control_owner.h"
#include "qorvex/model/types.h"
#include "qorvex/model_export.h"

namespace qorvex {

class TSQLDatabaseObject;
class TSQLExpressionItem;
class TSQLFromClause;
class TSQLFromItem;
class TSQLFromSource;
class TSQLJoinKind;
class TqxDatasource;
class TqxDataSourceObject;
class TqxDatasourceGroup;
class TqxLink;
class TqxUnionSubQuery;

// A part of one union operand's FROM clause: a table, view or derived table, or a
// bracketed join group. It owns the FROM source node it stands for (whose join kind is
// the datasource's join kind; its ON condition lives in the links) and the links of its
// join.
class QORVEX_MODEL_EXPORT TqxDatasourceBase : public TqxQueryBuilderControlOwner {
 public:
  TqxDatasourceBase(TqxUnionSubQuery* UnionSubQuery, TqxQueryBuilderControlOwner* Parent);
  ~TqxDatasourceBase() override;

  TqxUnionSubQuery* GetUnionSubQuery() const { return UnionSubQuery_; }
  // The enclosing group; null for the FROM clause itself.
  TqxDatasourceGroup* GetGroup() const;
  TSQLFromSource* GetFromSource() const { return Source_.get(); }

  // Takes the FROM source node: its join condition waits in a slot until LoadJoins
  // turns it into links.
  virtual void LoadFromAST(std::unique_ptr<TSQLFromSource> Source);
  // Turns the waiting condition into links, Prev being the item before this one in
  // Group. Raises "Can't bind join expression (prev=nil)" for a condition on a first item.
  void LoadJoins(TqxDatasourceGroup* Group, TqxDatasourceBase* Prev);
  // A copy of the FROM source, its ON condition the AND of the links' expressions. Names
  // refer to the copy's sources.
  std::unique_ptr<TSQLFromSource> GetASTTree() const;
  // The same, recording (model source, copy) pairs instead of rebinding names.
  virtual std::unique_ptr<TSQLFromSource> BuildAST(TSQLFromSourceMap& Map) const;

  // The join kind node of the FROM source (null for a first or comma-joined source).
  TSQLJoinKind* GetJoinKind() const;
  // Stores the join kind in the FROM source, repaints the links and reports the change.
  void SetJoinKind(std::unique_ptr<TSQLJoinKind> Kind);

  TqxLink* GetJoins(int Index) const;
  int GetJoinsCount() const { return static_cast<int>(Links_.size()); }
  // A new link of this datasource's join.
  TqxLink* CreateDatasourceLink(TqxDatasourceBase* Left, const std::string& LeftField,
                                TqxDatasourceBase* Right, const std::string& RightField,
                                std::unique_ptr<TSQLExpressionItem> Expression);
  // The first link with exactly these two ends, in this direction, whose field names are
  // equal ignoring letter case; null if none.
  TqxLink* FindLink(const TqxDatasourceBase* Left, const std::string& LeftField,
                    const TqxDatasourceBase* Right, const std::string& RightField) const;
  // Frees a link of this datasource. When it was the last one, the join becomes a cross
  // join.
  void RemoveLink(TqxLink* Link);

  // Whether DS is this datasource or, for a group, one of its items (with Recursive, at
  // any depth).
  virtual bool ContainsDatasource(const TqxDatasourceBase* DS, bool Recursive) const;
  // The datasource (this or one nested in it) that owns Source.
  virtual TqxDatasourceBase* FindBySource(const TSQLFromSource* Source);
  // Appends the plain datasources of this one: itself, or a group's, in FROM order.
  virtual void GetAllDatasources(std::vector<TqxDatasource*>& List);
  void NotifyDatasourceDestroyingInternal(TqxDatasourceBase* DS) override;
  void RepaintLinks();

  void GetASTChildren(std::vector<TastNode*>& List) const override;
  void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const override;

 protected:
  TqxQueryBuilderControlOwner* GetControlParent() const override;
  void FreeModelObject() override;
  // The FROM source without its items (for groups); the base copies the node.
  virtual std::unique_ptr<TSQLFromSource> CopySource() const;

  std::unique_ptr<TSQLFromSource> Source_;
  std::vector<std::unique_ptr<TqxLink>> Links_;
  std::unique_ptr<TSQLExpressionItem> WaitingCondition_;

 private:
  friend class TqxLink;
  bool BindCondition(std::unique_ptr<TSQLExpressionItem>& Condition, TqxDatasourceGroup* Group,
                     TqxDatasourceBase* Prev);
  bool BindColumnPair(std::unique_ptr<TSQLExpressionItem>& Term, TqxDatasourceGroup* Group,
                      TqxDatasourceBase* Prev);

  TqxUnionSubQuery* UnionSubQuery_;
};

// A bracketed join: an ordered list of datasources and nested groups.
class QORVEX_MODEL_EXPORT TqxDatasourceGroup : public TqxDatasourceBase {
 public:
  using TqxDatasourceBase::TqxDatasourceBase;
  ~TqxDatasourceGroup() override;

  // Takes a join group node: one item per FROM source in order, then each item's
  // LoadJoins with its predecessor.
  void LoadFromAST(std::unique_ptr<TSQLFromSource> Source) override;
  std::unique_ptr<TSQLFromSource> BuildAST(TSQLFromSourceMap& Map) const override;

  TqxDatasourceBase* Add(std::unique_ptr<TqxDatasourceBase> Item);
  TqxDatasourceBase* Insert(int Index, std::unique_ptr<TqxDatasourceBase> Item);
  // Frees an item.
  void Remove(TqxDatasourceBase* Item);
  void Delete(int Index);
  std::unique_ptr<TqxDatasourceBase> Extract(TqxDatasourceBase* Item);
  TqxDatasourceBase* GetItems(int Index) const;
  int GetCount() const { return static_cast<int>(Items_.size()); }
  int IndexOf(const TqxDatasourceBase* Item) const;

  // Whether DS is held (at any depth) by an item standing before the item that holds
  // Before.
  bool ContainsDatasourceBefore(const TqxDatasourceBase* DS, const TqxDatasourceBase* Before) const;
  // The table and view datasources (at any depth) whose object the syntax provider finds
  // equal to Name.
  void FindTablesByDBName(const TSQLDatabaseObject& Name,
                          std::vector<TqxDataSourceObject*>& List) const;
  // The items (at any depth with Recursive) of class T, exactly T with Exact.
  template <class T>
  void GetItemsByType(std::vector<T*>& List, bool Exact, bool Recursive) const {
    for (const auto& item : Items_) {
      if (auto* typed = dynamic_cast<T*>(item.get())) {
        if (!Exact || typeid(*item) == typeid(T))
          List.push_back(typed);
      }
      if (Recursive) {
        if (const auto* group = dynamic_cast<const TqxDatasourceGroup*>(item.get()))
          group->GetItemsByType(List, Exact, Recursive);
      }
    }
  }

  bool ContainsDatasource(const TqxDatasourceBase* DS, bool Recursive) const override;
  TqxDatasourceBase* FindBySource(const TSQLFromSource* Source) override;
  void GetAllDatasources(std::vector<TqxDatasource*>& List) override;
  void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const override;

 protected:
  std::unique_ptr<TSQLFromSource> CopySource() const override;
  // A new datasource of the class that stands for Source.
  std::unique_ptr<TqxDatasourceBase> CreateItemFor(const TSQLFromSource& Source);
  // The first item of a group carries no join kind and no links.
  void ClearFirstItemJoin();

  std::vector<std::unique_ptr<TqxDatasourceBase>> Items_;

 private:
  // The item of this group that DS is or lies in (through nested groups only), by
  // walking up from DS; null when there is none.
  const TqxDatasourceBase* ItemHolding(const TqxDatasourceBase* DS) const;
  // While the group binds its items' join conditions, each item's position.
  const std::unordered_map<const TqxDatasourceBase*, std::size_t>* LoadPositions_ = nullptr;

  friend class TqxUnionSubQuery;
};

// The root group: the whole FROM clause of one union operand.
class QORVEX_MODEL_EXPORT TqxFromClause : public TqxDatasourceGroup {
 public:
  explicit TqxFromClause(TqxUnionSubQuery* UnionSubQuery);

  // Takes the FROM clause node (null gives an empty clause).
  void LoadFromAST(std::unique_ptr<TSQLFromSource> Source) override;
  // Null when the clause is empty.
  std::unique_ptr<TSQLFromClause> BuildClause(TSQLFromSourceMap& Map) const;
  TqxDatasourceBase* FindBySource(const TSQLFromSource* Source) override;

 protected:
  void FreeModelObject() override {}

 private:
  friend class TqxDatasourceGroup;
  // While the clause loads, every datasource made so far by its source, so that binding
  // a join condition finds the datasources of its columns without a search.
  void IndexSource(TqxDatasourceBase* DS);
  bool Loading_ = false;
  std::unordered_map<const TSQLFromSource*, TqxDatasourceBase*> SourceIndex_;
};

// One source shown as a box on the work area: a table, view, derived table or other FROM
// source. It keeps the box's position and size while no control exists.
class QORVEX_MODEL_EXPORT TqxDatasource : public TqxDatasourceBase {
 public:
  using TqxDatasourceBase::TqxDatasourceBase;

  void LoadFromAST(std::unique_ptr<TSQLFromSource> Source) override;

  // The alias, empty without one.
  std::string GetAlias() const;
  // Empty text removes the alias. Raises "Can't assign alias if astFromSource=nil!"
  // without a FROM source.
  void SetAlias(const std::string& Alias);
  // The box title: the source's text and its alias.
  virtual std::string GetCaption() const;
  // The name columns are qualified with: the alias, else the source's text.
  std::string GetQualifier() const;
  // Reads the source's field list from the metadata provider and shows it ("*" first).
  void RefreshMetadata();
  // The field names of the source, in metadata order (without "*").
  const std::vector<std::string>& GetFields() const;
  // The field list as the box shows it: "*" and the fields.
  std::vector<std::string> GetFieldsWithStar() const;

  int GetLeft() const { return Left_; }
  int GetTop() const { return Top_; }
  int GetWidth() const { return Width_; }
  int GetHeight() const { return Height_; }
  void SetLeft(int Value);
  void SetTop(int Value);
  void SetWidth(int Value);
  void SetHeidht(int Value);
  TqxControl* GetDSControl() const { return GetControl(); }
  // Removes the datasource from its query, with its links and select-list rows.
  void SendDestroyNotification();

  bool ContainsDatasource(const TqxDatasourceBase* DS, bool Recursive) const override;
  void GetAllDatasources(std::vector<TqxDatasource*>& List) override;

 protected:
  void SaveControlParams() override;
  void RestoreControlParams() override;
  void GetPopupMenu(TqxPopupMenu& Menu) override;
  bool GetEditPropsDialog(TqxDialogKind& Kind) const override;

 private:
  void ApplyBounds();
  int Left_ = 0;
  int Top_ = 0;
  int Width_ = 0;
  int Height_ = 0;
};

// A table or view.
class QORVEX_MODEL_EXPORT TqxDataSourceObject : public TqxDatasource {
 public:
  using TqxDatasource::TqxDatasource;
  // The object's name node; null when the source is not a FROM object.
  TSQLDatabaseObject* GetObjectName() const;
};

// A derived table: a sub-query in FROM, itself modelled as a TqxSubQuery.
class QORVEX_MODEL_EXPORT TqxDataSourceQuery : public TqxDatasource {
 public:
  using TqxDatasource::TqxDatasource;
  void LoadFromAST(std::unique_ptr<TSQLFromSource> Source) override;
  TqxSubQuery* GetSubQuery() const;
  std::string GetCaption() const override;
  // A change of the sub-query changes the derived table's columns: the field list is read
  // again (empty while the sub-query cannot be described).
  void NotifySQLUpdated() override;
};

// One join condition between two datasources: two ends with a field each (no fields for
// a condition that is not a column pair), the cardinality of each end, and the condition
// itself. It belongs to the datasource whose join it is part of.
class QORVEX_MODEL_EXPORT TqxLink : public TqxQueryBuilderControlOwner {
 public:
  TqxLink(TqxUnionSubQuery* UnionSubQuery, TqxDatasourceBase* Owner);
  ~TqxLink() override;

  TqxUnionSubQuery* GetUnionSubQuery() const { return UnionSubQuery_; }
  TqxDatasourceBase* GetOwnerDatasource() const { return Owner_; }

  TqxDatasourceBase* GetLeftDatasource() const { return Left_; }
  TqxDatasourceBase* GetRightDatasource() const { return Right_; }
  const std::string& GetLeftField() const { return LeftField_; }
  const std::string& GetRightField() const { return RightField_; }
  void SetLeftDatasource(TqxDatasourceBase* Value);
  void SetRightDatasource(TqxDatasourceBase* Value);
  void SetLeftField(const std::string& Value);
  void SetRightField(const std::string& Value);

  TqxQueryBuilderLinkCardinality GetLeftCardinality() const { return LeftCardinality_; }
  TqxQueryBuilderLinkCardinality GetRightCardinality() const { return RightCardinality_; }

  TSQLExpressionItem* GetLinkExpression() const { return Expression_.get(); }
  // A condition whose one-line text equals the current one's is dropped; otherwise it
  // replaces the current one and the cardinalities are computed again.
  void SetLinkExpression(std::unique_ptr<TSQLExpressionItem> Expression);

  // Whether all rows of the left (right) datasource are kept, by the owner's join kind.
  TqxQueryBuilderLinkConnectType GetLeftType() const;
  TqxQueryBuilderLinkConnectType GetRightType() const;
  // Sets the owner's join kind from the two "select all" choices: both full, left only
  // left outer, right only right outer, neither inner.
  void SetJoinSides(bool AllFromLeft, bool AllFromRight);

  // The cardinalities from the foreign keys the metadata provider reports.
  void CalcCardinality();
  // The first plain datasource of DS (DS itself when it is one; null for an empty group).
  static TqxDatasource* CalcDatasource(TqxDatasourceBase* DS);

  void GetASTChildren(std::vector<TastNode*>& List) const override;

 protected:
  TqxQueryBuilderControlOwner* GetControlParent() const override;
  void FreeModelObject() override;
  void GetPopupMenu(TqxPopupMenu& Menu) override;
  bool GetEditPropsDialog(TqxDialogKind& Kind) const override;
  void Notification(TqxComponent* Component, TOperation Operation) override;

 private:
  void Follow(TqxDatasourceBase* Old, TqxDatasourceBase* New);

  TqxUnionSubQuery* UnionSubQuery_;
  TqxDatasourceBase* Left_ = nullptr;
  std::string LeftField_;
  TqxDatasourceBase* Right_ = nullptr;
  std::string RightField_;
  TqxQueryBuilderLinkCardinality LeftCardinality_ = qblcUnknown;
  TqxQueryBuilderLinkCardinality RightCardinality_ = qblcUnknown;
  TqxDatasourceBase* Owner_;
  std::unique_ptr<TSQLExpressionItem> Expression_;
};

}  // namespace qorvex
