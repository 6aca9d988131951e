#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qorvex/core/component.h"
#include "qorvex/model/controls.h"
#include "qorvex/model/types.h"
#include "qorvex/model_export.h"
#include "qorvex/syntax/components.h"

namespace qorvex {

class TSQLSelectStatement;
class TastSyntaxProvider;
class TqxBaseMetadataProvider;
class TqxBaseQueryBuilder;
class TqxBaseSQLBuilder;
class TqxDatasource;
class TqxQuery;
class TqxQueryBuilderControlOwner;
class TqxSubQuery;
class TqxUnionSubQuery;

using TqxOnSQLError = std::function<void(TqxBaseQueryBuilder* Sender, const std::string& ASQL,
                                         const std::string& AErrors)>;
// A datasource whose columns the metadata provider could not give: AMessage is the
// provider's error. The datasource stays in the model, showing only "*".
using TqxOnMetadataError = std::function<void(
    TqxBaseQueryBuilder* Sender, TqxDatasource* ADatasource, const std::string& AMessage)>;
using TqxOnOnGetTabHeaderText =
    std::function<void(TqxBaseQueryBuilder* Sender, TqxSubQuery* AFor, std::string& ACaption)>;

// The query builder without a toolkit: all of the component's properties with their
// defaults, its events and its logic. It owns the query model, parses SQL assigned to it
// (deferred to a queued message), and has its registered SQL builders write the model's
// SQL after every change. The platform reaches it through the virtual hooks below and a
// control factory; without one it creates no control and everything else works.
class QORVEX_MODEL_EXPORT TqxBaseQueryBuilder : public TqxComponent,
                                                public TqxSyntaxProviderClient {
 public:
  TqxBaseQueryBuilder();
  ~TqxBaseQueryBuilder() override;

  // ---- providers
  TqxBaseSyntaxProvider* GetSyntaxProvider() const { return SyntaxProvider_; }
  // Follows the provider with free notification, registers with it and re-reads its
  // feature flags (which resets the model to one empty operand).
  void SetSyntaxProvider(TqxBaseSyntaxProvider* Value);
  // The dialect every node of the model is made with; null without a syntax provider.
  TastSyntaxProvider* GetASTSyntaxProvider() const;
  TqxBaseMetadataProvider* GetMetadataProvider() const { return MetadataProvider_; }
  void SetMetadataProvider(TqxBaseMetadataProvider* Value);
  // Resets the model to one empty operand, so that it starts from a query the dialect
  // supports.
  void ReadSyntaxProviderCaps() override;

  // ---- SQL
  // The top query's SQL, one clause per line with CR LF breaks.
  std::string GetSQL() const;
  // Stores the text and posts the load message; the text is parsed when the message is
  // handled. Each assignment posts its own message, and each message loads whatever text
  // is pending when it arrives (none, for a second message: an empty query).
  void SetSQL(const std::string& Text);
  bool IsSQLLoading() const { return SQLLoading_; }
  // Delivers the queued load messages (the headless message loop).
  void ProcessMessages();
  int GetPendingMessages() const { return PendingMessages_; }
  // A copy of the top statement as the model stands, owned by the caller; null while
  // the builder is being destroyed.
  std::unique_ptr<TSQLSelectStatement> GetStatementCopy() const;

  // Has every registered SQL builder write the SQL anew, in registration order.
  void SQLUpdated();
  // A change of the model: remembered while updating, else SQLUpdated.
  void NotifySQLUpdated();
  void BeginUpdate();
  void EndUpdate();
  bool GetIsUpdating() const { return UpdateCount_ > 0; }
  // Resets the model to one empty operand.
  void Clear();

  void RegisterSQLBuilder(TqxBaseSQLBuilder* Builder);
  void UnregisterSQLBuilder(TqxBaseSQLBuilder* Builder);
  int GetSQLBuildersCount() const { return static_cast<int>(SQLBuilders_.size()); }

  // ---- model
  TqxQuery* GetQuery() const { return Query_.get(); }
  // Every sub-query of the model, the top query first, in the order they were made.
  int GetSubQueriesCount() const { return static_cast<int>(SubQueries_.size()); }
  TqxSubQuery* GetSubQueries(int Index) const;
  TqxSubQuery* GetActiveSubquery() const;
  void SetActiveSubquery(TqxSubQuery* Query);
  // The operand being edited: the active operand of the active sub-query.
  TqxUnionSubQuery* GetActiveUnionSubquery() const;
  // The caption of a sub-query's tab ("Main Query", "SubQuery 1", ...), as
  // OnGetTabHeaderText may change it.
  std::string GetTabHeaderText(TqxSubQuery* Query);

  // ---- screen
  TqxControlFactory* GetControlFactory() const { return ControlFactory_; }
  // Sets the factory (not owned) and creates the controls of the whole model; a null
  // factory frees them (saving their parameters).
  void SetControlFactory(TqxControlFactory* Factory);
  // Opens the Add object dialog; false without a factory.
  bool ShowAddObjectForm();
  // Refreshes the appearance of every control.
  void DoUpdateControlParams();
  // Appends the common closing items of every context menu.
  void PopupMenuCompleted(TqxPopupMenu& Menu);

  // ---- properties
  bool GetSnapToGrid() const { return SnapToGrid_; }
  void SetSnapToGrid(bool Value) { SnapToGrid_ = Value; }
  int GetGridSize() const { return GridSize_; }
  void SetGridSize(int Value);
  TqxUnionNavBarPosition GetUnionNavBarPos() const { return UnionNavBarPos_; }
  void SetUnionNavBarPos(TqxUnionNavBarPosition Value);
  int GetBorderWidth() const { return BorderWidth_; }
  void SetBorderWidth(int Value);
  TqxBorderStyle GetBorderStyle() const { return BorderStyle_; }
  void SetBorderStyle(TqxBorderStyle Value);
  TqxColor GetBorderColor() const { return BorderColor_; }
  void SetBorderColor(TqxColor Value);
  int GetSplitterHeight() const { return SplitterHeight_; }
  void SetSplitterHeight(int Value);
  // The class name of the link painter; the toolkit's builder creates painters by it.
  virtual std::string GetLinkTypeName() const { return LinkTypeName_; }
  virtual void SetLinkTypeName(const std::string& Value);
  TqxColor GetTableColor() const { return TableColor_; }
  void SetTableColor(TqxColor Value);
  const TqxFont& GetTableFont() const { return TableFont_; }
  void SetTableFont(const TqxFont& Value);
  const TqxPicture& GetBkImage() const { return BkImage_; }
  void SetBkImage(const TqxPicture& Value);
  TqxBkImagePos GetBkImagePos() const { return BkImagePos_; }
  void SetBkImagePos(TqxBkImagePos Value);
  TqxBkImageDarkness GetBkImageDarkness() const { return BkImageDarkness_; }
  void SetBkImageDarkness(TqxBkImageDarkness Value);
  TqxColor GetBkColor() const { return BkColor_; }
  void SetBkColor(TqxColor Value);
  bool GetTabHotTrack() const { return TabHotTrack_; }
  void SetTabHotTrack(bool Value);
  TqxTabStyle GetTabStyle() const { return TabStyle_; }
  void SetTabStyle(TqxTabStyle Value);
  int GetDefColumnsPaneHeight() const { return DefColumnsPaneHeight_; }
  void SetDefColumnsPaneHeight(int Value) { DefColumnsPaneHeight_ = Value; }
  const TqxAddObjectFormOptions& GetAddObjectFormOptions() const { return AddObjectFormOptions_; }
  // Stores the options; a change reaches an open Add object dialog through
  // DoAddObjectFormOptionsChanged.
  void SetAddObjectFormOptions(const TqxAddObjectFormOptions& Value);

  // Passes a metadata provider's error about a datasource to OnMetadataError; without a
  // handler it is dropped (the datasource simply shows no columns). A toolkit's builder
  // extends it to tell its own listeners as well.
  virtual void DoMetadataError(TqxDatasource* ADatasource, const std::string& AMessage);

  // ---- events
  TqxOnSQLError OnSQLError;
  TqxOnOnGetTabHeaderText OnGetTabHeaderText;
  TqxOnMetadataError OnMetadataError;

 protected:
  // Posts the deferred load message (message number 1024). The base queues it for
  // ProcessMessages; a toolkit posts it to its event loop and calls SetSQLMsg when it
  // arrives.
  virtual void PostLoadSQLMessage();
  // Handles one load message.
  void SetSQLMsg();
  // Hooks for the toolkit: the layout or the background changed.
  virtual void DoLayoutChanged() {}
  virtual void DoRepaintBackground() {}
  virtual void DoAddObjectFormOptionsChanged() {}

  void Notification(TqxComponent* Component, TOperation Operation) override;

 private:
  friend class TqxSubQuery;
  void RegisterSubQuery(TqxSubQuery* Query);
  void UnregisterSubQuery(TqxSubQuery* Query);
  void ResetModel();

  TqxBaseSyntaxProvider* SyntaxProvider_ = nullptr;
  TqxBaseMetadataProvider* MetadataProvider_ = nullptr;
  TqxControlFactory* ControlFactory_ = nullptr;
  std::vector<TqxBaseSQLBuilder*> SQLBuilders_;
  std::vector<TqxSubQuery*> SubQueries_;
  TqxSubQuery* ActiveSubquery_ = nullptr;
  std::unique_ptr<TqxQuery> Query_;

  std::string PendingSQL_;
  bool SQLLoading_ = false;
  int PendingMessages_ = 0;
  int UpdateCount_ = 0;
  bool UpdatePending_ = false;

  bool SnapToGrid_ = true;
  int GridSize_ = 2;
  TqxUnionNavBarPosition UnionNavBarPos_ = unbTopRight;
  int BorderWidth_ = 0;
  TqxBorderStyle BorderStyle_ = qbbs3D;
  TqxColor BorderColor_ = clNavy;
  int SplitterHeight_ = 3;
  std::string LinkTypeName_ = "TqxQueryBuilderLinkPainterAccess";
  TqxColor TableColor_ = clWindow;
  TqxFont TableFont_;
  TqxPicture BkImage_;
  TqxBkImagePos BkImagePos_ = bkipTopLeft;
  TqxBkImageDarkness BkImageDarkness_ = bgidWhite;
  TqxColor BkColor_ = clWhite;
  bool TabHotTrack_ = false;
  TqxTabStyle TabStyle_ = tsTabs;
  int DefColumnsPaneHeight_ = 0;
  TqxAddObjectFormOptions AddObjectFormOptions_;
};

}  // namespace qorvex
