#include "qorvex/model/query_builder.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "model/model_util.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/sql_builder.h"

namespace qorvex {

TqxBaseQueryBuilder::TqxBaseQueryBuilder() {
  Query_ = std::make_unique<TqxQuery>(this);
  Query_->Clear();
}

TqxBaseQueryBuilder::~TqxBaseQueryBuilder() {
  // Providers and SQL builders let go of this builder first; then the model goes while
  // the syntax provider it was made with still exists.
  BeginDestroy();
  if (SyntaxProvider_ != nullptr) {
    SyntaxProvider_->UnregisterQueryBuilder(this);
    SyntaxProvider_ = nullptr;
  }
  Query_.reset();
}

// ---------------------------------------------------------------------------------------
// Providers

TastSyntaxProvider* TqxBaseQueryBuilder::GetASTSyntaxProvider() const {
  return SyntaxProvider_ != nullptr ? SyntaxProvider_->GetASTSyntaxProvider() : nullptr;
}

void TqxBaseQueryBuilder::SetSyntaxProvider(TqxBaseSyntaxProvider* Value) {
  if (Value == SyntaxProvider_)
    return;
  TqxBaseSyntaxProvider* old = SyntaxProvider_;
  if (old != nullptr) {
    RemoveFreeNotification(old);
    old->UnregisterQueryBuilder(this);
  }
  // The model made with the old dialect goes while that dialect still exists.
  SyntaxProvider_ = Value;
  if (Value != nullptr) {
    FreeNotification(Value);
    Value->RegisterQueryBuilder(this);
  }
  ReadSyntaxProviderCaps();
}

void TqxBaseQueryBuilder::SetMetadataProvider(TqxBaseMetadataProvider* Value) {
  if (Value == MetadataProvider_)
    return;
  if (MetadataProvider_ != nullptr)
    RemoveFreeNotification(MetadataProvider_);
  MetadataProvider_ = Value;
  if (Value != nullptr)
    FreeNotification(Value);
}

void TqxBaseQueryBuilder::ReadSyntaxProviderCaps() {
  if (IsDestroying())
    return;
  ResetModel();
}

void TqxBaseQueryBuilder::ResetModel() {
  BeginUpdate();
  try {
    Query_->Clear();
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TqxBaseQueryBuilder::Notification(TqxComponent* Component, TOperation Operation) {
  TqxComponent::Notification(Component, Operation);
  if (Operation != TOperation::opRemove)
    return;
  if (Component == SyntaxProvider_) {
    // The provider still holds its dialect while it tells us: the model made with it
    // goes now.
    SyntaxProvider_ = nullptr;
    ReadSyntaxProviderCaps();
  }
  if (Component == MetadataProvider_)
    MetadataProvider_ = nullptr;
  SQLBuilders_.erase(std::remove(SQLBuilders_.begin(), SQLBuilders_.end(), Component),
                     SQLBuilders_.end());
}

// ---------------------------------------------------------------------------------------
// SQL

std::string TqxBaseQueryBuilder::GetSQL() const {
  return Query_->GetSQL();
}

void TqxBaseQueryBuilder::SetSQL(const std::string& Text) {
  PendingSQL_ = Text;
  SQLLoading_ = true;
  PostLoadSQLMessage();
}

void TqxBaseQueryBuilder::PostLoadSQLMessage() {
  ++PendingMessages_;
}

void TqxBaseQueryBuilder::ProcessMessages() {
  while (PendingMessages_ > 0) {
    --PendingMessages_;
    SetSQLMsg();
  }
}

namespace {
// The statement of an empty text: one SELECT with an empty list and an empty FROM.
std::unique_ptr<TSQLSelectStatement> EmptyStatement(TastSyntaxProvider* Provider) {
  auto select = NewNode<TSQLSubQuerySelectExpression>(Provider);
  select->SetSelectItems(NewNode<TSQLSelectItems>(Provider));
  select->SetFromClause(NewNode<TSQLFromClause>(Provider));
  auto statement = NewNode<TSQLSelectStatement>(Provider);
  statement->Add(std::move(select));
  return statement;
}

// The FROM sources whose fields the metadata provider could not give, with its message.
using TqxFieldsFailures = std::unordered_map<const TSQLFromSource*, std::string>;

// Asks the metadata provider for the fields of every FROM source in a tree, inner ones
// first. A source the provider cannot describe (an unknown table, a function the
// database lacks) keeps no fields, and the failure is noted: loading never depends on
// the metadata.
void RefreshFieldsLists(TastExtender& Node, TqxBaseMetadataProvider* Provider,
                        TqxFieldsFailures& Failures) {
  std::vector<TastExtender*> children;
  Node.GetMyChildren(children);
  for (TastExtender* child : children) {
    if (child != nullptr)
      RefreshFieldsLists(*child, Provider, Failures);
  }
  auto* source = dynamic_cast<TSQLFromSource*>(&Node);
  if (source == nullptr || dynamic_cast<TSQLFromItem*>(source) != nullptr)
    return;
  try {
    source->RefreshFieldsList(Provider);
  } catch (const std::exception& error) {
    source->Fields.clear();
    Failures.emplace(source, error.what());
  }
}

}  // namespace

void TqxBaseQueryBuilder::DoMetadataError(TqxDatasource* ADatasource, const std::string& AMessage) {
  if (OnMetadataError && !IsDestroying())
    OnMetadataError(this, ADatasource, AMessage);
}

void TqxBaseQueryBuilder::SetSQLMsg() {
  if (SyntaxProvider_ == nullptr || MetadataProvider_ == nullptr)
    throw EqxError("No syntax provider!");
  const std::string text = PendingSQL_;
  std::unique_ptr<TSQLSelectStatement> tree;
  TqxFieldsFailures failures;
  try {
    if (!model::Trim(text).empty()) {
      tree = SyntaxProvider_->ParseSelect(text);
    } else {
      tree = EmptyStatement(GetASTSyntaxProvider());
    }
    PendingSQL_.clear();
    // Names are bound and every FROM source learns its fields; then unqualified column
    // names, which need the fields to find their source, are bound.
    std::vector<TSQLFromSource*> sources;
    tree->FixupObjects(sources);
    RefreshFieldsLists(*tree, MetadataProvider_, failures);
    tree->FixupObjects(sources);
  } catch (const std::exception& error) {
    tree.reset();
    PendingSQL_.clear();
    SQLLoading_ = false;
    if (OnSQLError) {
      OnSQLError(this, text, error.what());
      return;
    }
    throw;
  }
  struct LoadingScope {
    bool& Flag;
    ~LoadingScope() { Flag = false; }
  } loading{SQLLoading_};
  // The same statement (in any letter case of its words and bare names) keeps the model
  // and its layout; quoted names and literals must match exactly.
  const std::unique_ptr<TSQLSelectStatement> current = Query_->GetSelectStatement();
  const TastSyntaxProvider* dialect = tree->GetSyntaxProvider();
  const std::string quoteBegin = dialect != nullptr ? dialect->GetQuoteBegin() : std::string();
  const std::string quoteEnd = dialect != nullptr ? dialect->GetQuoteEnd() : std::string();
  if (model::LowerCaseOutsideQuotes(current->GetSimpleSQL(), quoteBegin, quoteEnd) ==
      model::LowerCaseOutsideQuotes(tree->GetSimpleSQL(), quoteBegin, quoteEnd))
    return;
  BeginUpdate();
  try {
    Query_->LoadFromAST(std::move(tree));
  } catch (const std::exception& error) {
    EndUpdate();
    if (OnSQLError) {
      OnSQLError(this, text, error.what());
      return;
    }
    throw;
  }
  EndUpdate();
  // Each datasource whose fields are unknown is reported once the model stands.
  if (failures.empty())
    return;
  std::vector<std::pair<TqxDatasource*, std::string>> reports;
  for (TqxSubQuery* query : SubQueries_) {
    std::vector<TqxUnionSubQuery*> operands;
    query->GetUnionGroup()->GetOperands(operands);
    for (TqxUnionSubQuery* operand : operands) {
      for (TqxDatasource* ds : operand->GetDatasources()) {
        const auto failure = failures.find(ds->GetFromSource());
        if (failure != failures.end())
          reports.emplace_back(ds, failure->second);
      }
    }
  }
  for (const auto& [ds, message] : reports)
    DoMetadataError(ds, message);
}

std::unique_ptr<TSQLSelectStatement> TqxBaseQueryBuilder::GetStatementCopy() const {
  if (IsDestroying() || !Query_)
    return nullptr;
  return Query_->GetSelectStatement();
}

void TqxBaseQueryBuilder::SQLUpdated() {
  // A builder may leave the list while it is told.
  const std::vector<TqxBaseSQLBuilder*> builders = SQLBuilders_;
  for (TqxBaseSQLBuilder* builder : builders) {
    if (std::find(SQLBuilders_.begin(), SQLBuilders_.end(), builder) != SQLBuilders_.end())
      builder->SQLUpdated();
  }
}

void TqxBaseQueryBuilder::NotifySQLUpdated() {
  if (IsDestroying())
    return;
  if (UpdateCount_ > 0) {
    UpdatePending_ = true;
    return;
  }
  SQLUpdated();
}

void TqxBaseQueryBuilder::BeginUpdate() {
  ++UpdateCount_;
}

void TqxBaseQueryBuilder::EndUpdate() {
  if (UpdateCount_ == 0)
    return;
  if (--UpdateCount_ > 0 || !UpdatePending_)
    return;
  UpdatePending_ = false;
  SQLUpdated();
}

void TqxBaseQueryBuilder::Clear() {
  ResetModel();
}

void TqxBaseQueryBuilder::RegisterSQLBuilder(TqxBaseSQLBuilder* Builder) {
  if (Builder != nullptr &&
      std::find(SQLBuilders_.begin(), SQLBuilders_.end(), Builder) == SQLBuilders_.end())
    SQLBuilders_.push_back(Builder);
}

void TqxBaseQueryBuilder::UnregisterSQLBuilder(TqxBaseSQLBuilder* Builder) {
  SQLBuilders_.erase(std::remove(SQLBuilders_.begin(), SQLBuilders_.end(), Builder),
                     SQLBuilders_.end());
}

// ---------------------------------------------------------------------------------------
// Sub-queries

TqxSubQuery* TqxBaseQueryBuilder::GetSubQueries(int Index) const {
  if (Index < 0 || Index >= GetSubQueriesCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return SubQueries_[static_cast<std::size_t>(Index)];
}

void TqxBaseQueryBuilder::RegisterSubQuery(TqxSubQuery* Query) {
  SubQueries_.push_back(Query);
}

void TqxBaseQueryBuilder::UnregisterSubQuery(TqxSubQuery* Query) {
  // Searched from the back: a model is freed from its last sub-query to its first.
  auto it = std::find(SubQueries_.rbegin(), SubQueries_.rend(), Query);
  if (it != SubQueries_.rend())
    SubQueries_.erase(std::next(it).base());
  if (ActiveSubquery_ == Query)
    ActiveSubquery_ = nullptr;
}

TqxSubQuery* TqxBaseQueryBuilder::GetActiveSubquery() const {
  return ActiveSubquery_ != nullptr ? ActiveSubquery_ : Query_.get();
}

void TqxBaseQueryBuilder::SetActiveSubquery(TqxSubQuery* Query) {
  if (Query != nullptr &&
      std::find(SubQueries_.begin(), SubQueries_.end(), Query) == SubQueries_.end())
    throw EqxError("The sub-query does not belong to this query builder");
  ActiveSubquery_ = Query;
  if (Query != nullptr)
    Query->MakeVisible();
}

TqxUnionSubQuery* TqxBaseQueryBuilder::GetActiveUnionSubquery() const {
  TqxSubQuery* query = GetActiveSubquery();
  return query != nullptr ? query->GetActiveUnionSubquery() : nullptr;
}

std::string TqxBaseQueryBuilder::GetTabHeaderText(TqxSubQuery* Query) {
  std::string caption;
  if (Query == Query_.get()) {
    caption = "Main Query";
  } else {
    int number = 0;
    for (const TqxSubQuery* query : SubQueries_) {
      if (query != Query_.get())
        ++number;
      if (query == Query)
        break;
    }
    caption = "SubQuery " + std::to_string(number);
  }
  if (OnGetTabHeaderText)
    OnGetTabHeaderText(this, Query, caption);
  return caption;
}

// ---------------------------------------------------------------------------------------
// Screen

void TqxBaseQueryBuilder::SetControlFactory(TqxControlFactory* Factory) {
  if (Factory == ControlFactory_)
    return;
  if (ControlFactory_ != nullptr)
    Query_->DestroyControlsRecursive();
  ControlFactory_ = Factory;
  if (Factory != nullptr)
    Query_->CreateControlsRecursive();
}

bool TqxBaseQueryBuilder::ShowAddObjectForm() {
  TqxUnionSubQuery* operand = GetActiveUnionSubquery();
  if (ControlFactory_ == nullptr || operand == nullptr)
    return false;
  return ControlFactory_->ExecuteDialog(*operand, TqxDialogKind::dkAddObject);
}

namespace {
void UpdateAll(TqxQueryBuilderControlOwner* Owner) {
  Owner->UpdateContolParams();
  std::vector<TqxQueryBuilderControlOwner*> children;
  Owner->GetChildOwners(children);
  for (TqxQueryBuilderControlOwner* child : children)
    UpdateAll(child);
}
}  // namespace

void TqxBaseQueryBuilder::DoUpdateControlParams() {
  if (ControlFactory_ != nullptr)
    UpdateAll(Query_.get());
}

void TqxBaseQueryBuilder::PopupMenuCompleted(TqxPopupMenu& Menu) {
  TqxMenuItem separator;
  separator.Caption = "-";
  Menu.push_back(std::move(separator));
  TqxMenuItem about;
  about.Caption = "About Qorvex...";
  about.OnClick = [this] {
    if (ControlFactory_ != nullptr)
      ControlFactory_->ShowAbout();
  };
  Menu.push_back(std::move(about));
}

// ---------------------------------------------------------------------------------------
// Properties

void TqxBaseQueryBuilder::SetGridSize(int Value) {
  if (Value < 0)
    throw EqxError("GridSize can't be negative");
  GridSize_ = Value;
}

void TqxBaseQueryBuilder::SetUnionNavBarPos(TqxUnionNavBarPosition Value) {
  if (Value == UnionNavBarPos_)
    return;
  UnionNavBarPos_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetBorderWidth(int Value) {
  if (Value < 0)
    throw EqxError("BorderWidth can't be negative");
  if (Value == BorderWidth_)
    return;
  BorderWidth_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetBorderStyle(TqxBorderStyle Value) {
  if (Value == BorderStyle_)
    return;
  BorderStyle_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetBorderColor(TqxColor Value) {
  if (Value == BorderColor_)
    return;
  BorderColor_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetSplitterHeight(int Value) {
  if (Value < 0)
    throw EqxError("SplitterHeight can't be negative");
  if (Value == SplitterHeight_)
    return;
  SplitterHeight_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetLinkTypeName(const std::string& Value) {
  LinkTypeName_ = Value;
}

void TqxBaseQueryBuilder::SetTableColor(TqxColor Value) {
  TableColor_ = Value;
  DoUpdateControlParams();
}

void TqxBaseQueryBuilder::SetTableFont(const TqxFont& Value) {
  TableFont_ = Value;
  DoUpdateControlParams();
}

void TqxBaseQueryBuilder::SetBkImage(const TqxPicture& Value) {
  BkImage_ = Value;
  DoRepaintBackground();
}

void TqxBaseQueryBuilder::SetBkImagePos(TqxBkImagePos Value) {
  BkImagePos_ = Value;
  DoRepaintBackground();
}

void TqxBaseQueryBuilder::SetBkImageDarkness(TqxBkImageDarkness Value) {
  BkImageDarkness_ = Value;
  DoRepaintBackground();
}

void TqxBaseQueryBuilder::SetBkColor(TqxColor Value) {
  BkColor_ = Value;
  DoRepaintBackground();
}

void TqxBaseQueryBuilder::SetTabHotTrack(bool Value) {
  if (Value == TabHotTrack_)
    return;
  TabHotTrack_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetTabStyle(TqxTabStyle Value) {
  if (Value == TabStyle_)
    return;
  TabStyle_ = Value;
  DoLayoutChanged();
}

void TqxBaseQueryBuilder::SetAddObjectFormOptions(const TqxAddObjectFormOptions& Value) {
  if (Value == AddObjectFormOptions_)
    return;
  AddObjectFormOptions_.Assign(Value);
  DoAddObjectFormOptionsChanged();
}

}  // namespace qorvex
