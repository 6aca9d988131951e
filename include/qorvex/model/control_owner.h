#pragma once

#include <exception>
#include <memory>
#include <vector>

#include "qorvex/core/component.h"
#include "qorvex/model/controls.h"
#include "qorvex/model_export.h"

namespace qorvex {

class TastExtender;
class TastNode;
class TastSyntaxProvider;
class TqxBaseQueryBuilder;
class TqxDatasourceBase;
class TqxSubQuery;

// Base of every model object that can be shown on screen: union operands, datasources,
// links, select lists and their rows, queries and union groups. It ties the object to
// its controls without depending on them, merges change reports and passes them up the
// chain of owners to the query builder, which then has the SQL written anew.
class QORVEX_MODEL_EXPORT TqxQueryBuilderControlOwner : public TqxComponent {
 public:
  // Parent is the owner above this one in the chain; null for the top query, whose
  // parent is the query builder itself.
  TqxQueryBuilderControlOwner(TqxBaseQueryBuilder* QueryBuilder,
                              TqxQueryBuilderControlOwner* Parent);
  ~TqxQueryBuilderControlOwner() override;

  TqxBaseQueryBuilder* GetQueryBuilder() const { return QueryBuilder_; }
  TqxQueryBuilderControlOwner* GetParent() const { return Parent_; }
  // Moves the object under another parent (the union structure is rearranged so).
  void SetParent(TqxQueryBuilderControlOwner* Parent) { Parent_ = Parent; }
  // The dialect of the builder's syntax provider; null without one.
  TastSyntaxProvider* GetASTSyntaxProvider() const;

  // ---- controls
  // Creates the controls through the builder's factory when there are none yet and
  // CanCreateControls allows.
  void CreateControl();
  // Saves the controls' parameters into the model, then frees them. Nothing without one.
  void DestroyControl();
  // Creates the controls of this owner and, below it, of every owner whose parent's
  // control now exists.
  void CreateControlsRecursive();
  // Saves and frees the controls of every owner below this one, then this one's.
  void DestroyControlsRecursive();
  // True when the owner hosting this one's control has its control (for an owner placed
  // directly on the builder: when the builder has a control factory).
  bool CanCreateControls() const;
  TqxControl* GetControl() const { return Controls_.empty() ? nullptr : Controls_[0].get(); }
  TqxControl* GetControls(int Index) const;
  int GetControlsCount() const { return static_cast<int>(Controls_.size()); }
  bool IsDestroyingControls() const { return DestroyingControls_; }
  void MakeVisible();
  // Forgets a control that is being freed elsewhere (without freeing the model object).
  void NotifyControlDestroying(TqxControl* Control);
  // Pushes the builder's appearance and the owner's content to the controls.
  void UpdateContolParams();
  void RepaintControls();

  // ---- screen commands
  // Runs the owner's properties dialog; true when it was accepted. False without a
  // control factory or without a dialog for this kind of object.
  bool EditProps();
  void EditPropsEvent() { EditProps(); }
  // Removes the model object from its parent (frees it).
  void RemoveEvent();
  // Makes Query the builder's active sub-query.
  void EditSubquery(TqxSubQuery* Query);
  // With one sub-query under Root it becomes the active one; with several, a menu of them
  // is shown at ScreenPos.
  void ShowSubQueriesPopup(const TastNode* Root, TqxPoint ScreenPos);
  // The owner's context menu, closed by the builder's common items; empty when the owner
  // offers none.
  TqxPopupMenu BuildPopupMenu();
  void ShowPopupMenu(TqxPoint ScreenPos);

  // ---- change reports
  // Nesting brackets: a report that arrives inside is remembered, and the EndUpdate that
  // closes the outermost bracket sends one report if any arrived.
  void BeginUpdate();
  void EndUpdate();
  bool GetIsUpdating() const { return UpdateCount_ > 0; }
  // A change of this object: remembered while updating, else passed up the chain.
  virtual void NotifySQLUpdated();
  // Passes a report to the parent owner (or, at the top, to the builder).
  void DoSQLUpdated();

  // ---- syntax tree
  // Appends the tree nodes this owner itself holds (not those of child owners).
  virtual void GetASTChildren(std::vector<TastNode*>& List) const;
  // Appends the nodes of this owner and of every owner below it.
  void GetASTChildrenForSubtree(std::vector<TastNode*>& List) const;
  // Appends the owners directly below this one, including sub-queries under its nodes.
  virtual void GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const;
  // The sub-queries whose statements stand under Root (as proxies), in tree order.
  void GetSubqueriesByRootNode(const TastExtender* Root, std::vector<TqxSubQuery*>& List) const;
  int GetSubqueriesByRootNodeCount(const TastExtender* Root) const;
  // The sub-queries under all of this owner's own nodes.
  void GetSubqueries(std::vector<TqxSubQuery*>& List) const;
  // Turns every sub-query statement under Root into a model sub-query owned by this
  // owner (the statement is replaced by a proxy that writes the model).
  void LoadSubQueries(TastExtender* Root);

  // ---- datasource removal
  // Tells every owner of this one's subtree that DS is going, so they drop what refers to
  // it; then unbinds every name of the subtree bound to DS's sources.
  void NotifyDatasourceDestroying(TqxDatasourceBase* DS);
  virtual void NotifyDatasourceDestroyingInternal(TqxDatasourceBase* DS) {}

 protected:
  // The controls for this owner, made by the builder's factory.
  virtual std::vector<std::unique_ptr<TqxControl>> CreateControlInternal();
  virtual void DoCreateControl();
  virtual void DoDestroyControl();
  // Copies the controls' position and size into the model, and back.
  virtual void SaveControlParams() {}
  virtual void RestoreControlParams();
  virtual void DoUpdateContolParams();
  // Fills the owner's own context-menu items.
  virtual void GetPopupMenu(TqxPopupMenu& Menu) {}
  // The dialog EditProps runs; false when the owner has none.
  virtual bool GetEditPropsDialog(TqxDialogKind& Kind) const { return false; }
  // The owner whose control hosts this one's controls; null for an owner placed on the
  // builder itself.
  virtual TqxQueryBuilderControlOwner* GetControlParent() const { return Parent_; }
  // Frees this model object through its parent (RemoveEvent and a control freed by the
  // screen end here). The base does nothing: an owner that cannot be removed stays.
  virtual void FreeModelObject() {}

  // The controls are dropped without saving (the object is going away).
  void DiscardControls();

  void Notification(TqxComponent* Component, TOperation Operation) override;

 private:
  void AdoptControls(std::vector<std::unique_ptr<TqxControl>> Controls);

  TqxBaseQueryBuilder* QueryBuilder_;
  TqxQueryBuilderControlOwner* Parent_;
  std::vector<std::unique_ptr<TqxControl>> Controls_;
  int UpdateCount_ = 0;
  bool UpdatePending_ = false;
  bool DestroyingControls_ = false;
};

// Opens an update bracket on an owner for the lifetime of the guard.
class QORVEX_MODEL_EXPORT TqxUpdateGuard {
 public:
  explicit TqxUpdateGuard(TqxQueryBuilderControlOwner* Owner) : Owner_(Owner) {
    if (Owner_ != nullptr)
      Owner_->BeginUpdate();
  }
  // Closing the bracket may report the change; while an exception unwinds, a failure of
  // that report is dropped so the original exception reaches the caller.
  ~TqxUpdateGuard() noexcept(false) {
    if (Owner_ == nullptr)
      return;
    if (std::uncaught_exceptions() > Exceptions_) {
      try {
        Owner_->EndUpdate();
      } catch (...) {
      }
    } else {
      Owner_->EndUpdate();
    }
  }
  TqxUpdateGuard(const TqxUpdateGuard&) = delete;
  TqxUpdateGuard& operator=(const TqxUpdateGuard&) = delete;

 private:
  TqxQueryBuilderControlOwner* Owner_;
  int Exceptions_ = std::uncaught_exceptions();
};

}  // namespace qorvex
