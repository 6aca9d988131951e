#include "qorvex/ast/query.h"

#include <string>
#include <unordered_set>

#include "ast/node_util.h"
#include "ast/source_index.h"
#include "ast/syntax_provider_text.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/core/errors.h"

namespace qorvex {

QX_DEFINE_CLASS(TSQLSelectItem, TastNode)
QX_DEFINE_CLASS(TSQLSelectItemAllColumns, TSQLSelectItem)
QX_DEFINE_CLASS(TSQLSelectItemAllTableColumns, TSQLSelectItem)
QX_DEFINE_CLASS(TSQLSelectItemExpression, TSQLSelectItem)
QX_DEFINE_CLASS(TSQLSelectItems, TastNodeWithList)
QX_DEFINE_CLASS(TSQLGroupByList, TSQLExpressionsList)
QX_DEFINE_CLASS(TSQLOrderByItem, TastNode)
QX_DEFINE_CLASS(TSQLOrderByClause, TastNodeWithList)
QX_DEFINE_CLASS(TSQLSubQuerySelectMode, TastNode)
QX_DEFINE_CLASS(TSQLSubQuerySelectModeDefault, TSQLSubQuerySelectMode)
QX_DEFINE_CLASS(TSQLSubQuerySelectModeAll, TSQLSubQuerySelectMode)
QX_DEFINE_CLASS(TSQLSubQuerySelectModeDistinct, TSQLSubQuerySelectMode)
QX_DEFINE_CLASS(TSQLSubQueryExpression, TastNode)
QX_DEFINE_CLASS(TSQLSubQuerySelectExpression, TSQLSubQueryExpression)
QX_DEFINE_CLASS(TSQLSubQueryExpressions, TSQLSubQueryExpression)
QX_DEFINE_CLASS(TSQLSubSelectStatement, TSQLSubQueryExpressions)
QX_DEFINE_CLASS(TSQLSelectStatement, TSQLSubSelectStatement)
QX_DEFINE_ABSTRACT_CLASS(TSQLSubSelectStatementProxy, TSQLSubSelectStatement)

QX_DEFINE_CHILD_NODE(TSQLSelectItemAllTableColumns, TSQLDatabaseObject, Qualifier)
QX_DEFINE_CHILD_NODE(TSQLSelectItemExpression, TSQLExpressionItem, Expression)
QX_DEFINE_CHILD_NODE(TSQLSelectItemExpression, TSQLAlias, Alias)
QX_DEFINE_CHILD_NODE(TSQLOrderByItem, TSQLExpressionItem, Expression)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLSubQuerySelectMode, SelectMode)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLSelectItems, SelectItems)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLFromClause, FromClause)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLExpressionItem, Where)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLGroupByList, GroupBy)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLExpressionItem, Having)
QX_DEFINE_CHILD_NODE(TSQLSubQuerySelectExpression, TSQLOrderByClause, OrderBy)
QX_DEFINE_CHILD_NODE(TSQLSubSelectStatement, TSQLOrderByClause, OrderBy)

using detail::AddChild;
using detail::CloneChild;
using detail::Write;

// ---------------------------------------------------------------------------------------
// Select list, grouping and ordering

void TSQLSelectItemAllColumns::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteSymbol("*");
}

TSQLSelectItemAllTableColumns::~TSQLSelectItemAllTableColumns() = default;

void TSQLSelectItemAllTableColumns::Assign(const TastExtender& Source) {
  TSQLSelectItem::Assign(Source);
  const auto* item = dynamic_cast<const TSQLSelectItemAllTableColumns*>(&Source);
  if (item != nullptr && item != this)
    Qualifier_ = CloneChild(item->Qualifier_);
}

void TSQLSelectItemAllTableColumns::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLSelectItem::GetMyChildren(List);
  AddChild(List, Qualifier_.get());
}

void TSQLSelectItemAllTableColumns::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(Qualifier_.get(), Builder, MultiLine);
  Builder.WriteSymbol(".*");
}

TSQLSelectItemExpression::~TSQLSelectItemExpression() = default;

void TSQLSelectItemExpression::Assign(const TastExtender& Source) {
  TSQLSelectItem::Assign(Source);
  const auto* item = dynamic_cast<const TSQLSelectItemExpression*>(&Source);
  if (item == nullptr || item == this)
    return;
  Expression_ = CloneChild(item->Expression_);
  Alias_ = CloneChild(item->Alias_);
}

void TSQLSelectItemExpression::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLSelectItem::GetMyChildren(List);
  AddChild(List, Expression_.get());
  AddChild(List, Alias_.get());
}

void TSQLSelectItemExpression::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  if (dynamic_cast<const TSQLAliasAliasEqualsObject*>(Alias_.get()) != nullptr) {
    Alias_->BuildSQL(Builder, MultiLine);
    Builder.WriteSymbol("=");
    Write(Expression_.get(), Builder, MultiLine);
    return;
  }
  Write(Expression_.get(), Builder, MultiLine);
  // Any other alias follows the expression; a bare TSQLAlias is written like the
  // object-alias form rather than dropped.
  if (Alias_) {
    Builder.Space();
    Alias_->BuildSQL(Builder, MultiLine);
  }
}

void TSQLGroupByList::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  // GROUP BY without expressions is not SQL; an empty list (as in a new, empty block)
  // writes nothing.
  if (GetCount() == 0)
    return;
  Builder.NewLineOrSpace(MultiLine);
  Builder.WriteKeyword("GROUP");
  Builder.Space();
  Builder.WriteKeyword("BY");
  Builder.Space();
  TSQLExpressionsList::BuildSQLDirect(Builder, MultiLine);
}

TSQLOrderByItem::~TSQLOrderByItem() = default;

void TSQLOrderByItem::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  const auto* item = dynamic_cast<const TSQLOrderByItem*>(&Source);
  if (item == nullptr || item == this)
    return;
  Expression_ = CloneChild(item->Expression_);
  Descending = item->Descending;
}

void TSQLOrderByItem::GetMyChildren(std::vector<TastExtender*>& List) const {
  TastNode::GetMyChildren(List);
  AddChild(List, Expression_.get());
}

void TSQLOrderByItem::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(Expression_.get(), Builder, MultiLine);
  if (Descending) {
    Builder.Space();
    Builder.WriteKeyword("DESC");
  }
}

std::string TSQLOrderByItem::DumpDetails() const {
  return Descending ? "DESC" : "";
}

void TSQLSubQuerySelectModeAll::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.Space();
  Builder.WriteKeyword("ALL");
}

void TSQLSubQuerySelectModeDistinct::BuildSQLDirect(TSQLBuilder& Builder,
                                                    bool /*MultiLine*/) const {
  Builder.Space();
  Builder.WriteKeyword("DISTINCT");
}

// ---------------------------------------------------------------------------------------
// TSQLSubQueryExpression

void TSQLSubQueryExpression::BuildUnionOperator(TSQLBuilder& Builder) const {
  Builder.WriteKeyword(UnionOperator);
  if (All) {
    Builder.Space();
    Builder.WriteKeyword("ALL");
  }
}

std::string TSQLSubQueryExpression::GetSimpleUnionOperator() const {
  std::string text;
  TSQLBuilderPlainText builder(&text);
  builder.ResetBuilder();
  BuildUnionOperator(builder);
  return text;
}

void TSQLSubQueryExpression::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  if (const auto* operand = dynamic_cast<const TSQLSubQueryExpression*>(&Source)) {
    UnionOperator = operand->UnionOperator;
    All = operand->All;
  }
}

std::string TSQLSubQueryExpression::DumpDetails() const {
  return All ? UnionOperator + " ALL" : UnionOperator;
}

// ---------------------------------------------------------------------------------------
// TSQLSubQuerySelectExpression

TSQLSubQuerySelectExpression::~TSQLSubQuerySelectExpression() = default;

void TSQLSubQuerySelectExpression::Assign(const TastExtender& Source) {
  TSQLSubQueryExpression::Assign(Source);
  const auto* block = dynamic_cast<const TSQLSubQuerySelectExpression*>(&Source);
  if (block == nullptr || block == this)
    return;
  SelectMode_ = CloneChild(block->SelectMode_);
  SelectItems_ = CloneChild(block->SelectItems_);
  FromClause_ = CloneChild(block->FromClause_);
  Where_ = CloneChild(block->Where_);
  GroupBy_ = CloneChild(block->GroupBy_);
  Having_ = CloneChild(block->Having_);
  OrderBy_ = CloneChild(block->OrderBy_);
  if (block->FromClause_ && FromClause_) {
    TSQLFromSourceMap map{{block->FromClause_.get(), FromClause_.get()}};
    PairFromSources(*block->FromClause_, *FromClause_, map);
    RemapFromSourceReferences(*this, map);
  }
}

void TSQLSubQuerySelectExpression::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLSubQueryExpression::GetMyChildren(List);
  AddChild(List, SelectMode_.get());
  AddChild(List, SelectItems_.get());
  AddChild(List, FromClause_.get());
  AddChild(List, Where_.get());
  AddChild(List, GroupBy_.get());
  AddChild(List, Having_.get());
  AddChild(List, OrderBy_.get());
}

void TSQLSubQuerySelectExpression::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteKeyword("SELECT");
  if (SelectMode_) {
    Builder.Space();
    SelectMode_->BuildSQL(Builder, MultiLine);
  }
  if (SelectItems_ && SelectItems_->GetCount() > 0) {
    Builder.Space();
    SelectItems_->BuildSQL(Builder, MultiLine);
  }
  if (FromClause_) {
    Builder.NewLineOrSpace(MultiLine);
    Builder.WriteKeyword("FROM");
    Builder.Space();
    FromClause_->BuildSQL(Builder, MultiLine);
  }
  if (Where_) {
    Builder.NewLineOrSpace(MultiLine);
    Builder.WriteKeyword("WHERE");
    Builder.Space();
    Where_->BuildSQLCosmetic(Builder, MultiLine);
  }
  if (GroupBy_)
    GroupBy_->BuildSQL(Builder, MultiLine);
  if (Having_) {
    Builder.NewLineOrSpace(MultiLine);
    Builder.WriteKeyword("HAVING");
    Builder.Space();
    Having_->BuildSQLCosmetic(Builder, MultiLine);
  }
  if (OrderBy_) {
    Builder.NewLineOrSpace(MultiLine);
    Builder.WriteKeyword("ORDER");
    Builder.Space();
    Builder.WriteKeyword("BY");
    Builder.Space();
    OrderBy_->BuildSQL(Builder, MultiLine);
  }
}

namespace {

// Leaves the stack of visible sources as it was found, whatever happens.
struct TRestoreSources {
  std::vector<TSQLFromSource*>& List;
  std::size_t Size;
  ~TRestoreSources() { List.resize(Size); }
};

// The output aliases of a select list, upper-cased, so that each ORDER BY term is
// looked up rather than compared with every output column.
std::unordered_set<std::string> OutputAliases(const TSQLSelectItems* Outputs) {
  std::unordered_set<std::string> aliases;
  if (Outputs == nullptr)
    return aliases;
  for (int i = 0; i < Outputs->GetCount(); ++i) {
    const auto* item = dynamic_cast<const TSQLSelectItemExpression*>(Outputs->GetItems(i));
    if (item != nullptr && item->GetAlias() != nullptr)
      aliases.insert(sptext::UpperCase(item->GetAlias()->Name));
  }
  return aliases;
}

// Whether an ORDER BY expression is a bare name that names an output column by its alias:
// such a term sorts by that column, and no FROM source may claim the name.
bool IsOutputAlias(const TSQLExpressionItem* Expression,
                   const std::unordered_set<std::string>& Aliases) {
  const auto* reference = dynamic_cast<const TSQLExpressionColumn*>(Expression);
  const TSQLObjectColumn* column = reference != nullptr ? reference->GetColumn() : nullptr;
  if (column == nullptr || column->Count() != 1 || Aliases.empty())
    return false;
  return Aliases.count(sptext::UpperCase(column->GetObjName())) != 0;
}

// Binds the names of ORDER BY terms; a term naming an output alias is left alone.
void FixupOrderBy(TSQLOrderByClause& OrderBy, const TSQLSelectItems* Outputs,
                  std::vector<TSQLFromSource*>& List) {
  const std::unordered_set<std::string> aliases = OutputAliases(Outputs);
  for (int i = 0; i < OrderBy.GetCount(); ++i) {
    auto* item = dynamic_cast<TSQLOrderByItem*>(OrderBy.GetItems(i));
    if (item == nullptr)
      continue;
    if (!IsOutputAlias(item->GetExpression(), aliases))
      item->FixupObjects(List);
  }
}

// The first SELECT block of a chain, descending into bracketed groups.
TSQLSubQuerySelectExpression* FirstBlock(const TSQLSubQueryExpressions& Chain) {
  if (Chain.GetCount() == 0)
    return nullptr;
  TSQLSubQueryExpression* first = Chain.GetItems(0);
  if (auto* block = dynamic_cast<TSQLSubQuerySelectExpression*>(first))
    return block;
  if (auto* group = dynamic_cast<TSQLSubQueryExpressions*>(first))
    return FirstBlock(*group);
  return nullptr;
}

}  // namespace

// The block's names see its own FROM sources above those of the enclosing blocks. Its
// ORDER BY terms may name output aliases, which win over the sources' columns.
void TSQLSubQuerySelectExpression::FixupObjects(std::vector<TSQLFromSource*>& List) {
  TRestoreSources restore{List, List.size()};
  List.push_back(nullptr);
  const std::size_t begin = List.size();
  if (FromClause_)
    FromClause_->GetAllSources(List);
  const ast::TSQLFromSourceBlockIndex index(List, begin);
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children) {
    if (child == OrderBy_.get())
      FixupOrderBy(*OrderBy_, SelectItems_.get(), List);
    else
      child->FixupObjects(List);
  }
}

// ---------------------------------------------------------------------------------------
// TSQLSubQueryExpressions

TSQLSubQueryExpressions::~TSQLSubQueryExpressions() = default;

TSQLSubQueryExpression* TSQLSubQueryExpressions::GetItems(int Index) const {
  detail::CheckIndex(Index, Operands_.size());
  return Operands_[static_cast<std::size_t>(Index)].get();
}

int TSQLSubQueryExpressions::GetCount() const {
  return static_cast<int>(Operands_.size());
}

void TSQLSubQueryExpressions::Add(std::unique_ptr<TSQLSubQueryExpression> Operand) {
  Operands_.push_back(std::move(Operand));
}

void TSQLSubQueryExpressions::Insert(int Index, std::unique_ptr<TSQLSubQueryExpression> Operand) {
  detail::CheckIndex(Index, Operands_.size(), true);
  Operands_.insert(Operands_.begin() + Index, std::move(Operand));
}

void TSQLSubQueryExpressions::Remove(const TSQLSubQueryExpression* Operand) {
  std::unique_ptr<TSQLSubQueryExpression> removed = TSQLSubQueryExpressions::Extract(Operand);
}

void TSQLSubQueryExpressions::Delete(int Index) {
  std::unique_ptr<TSQLSubQueryExpression> removed = TSQLSubQueryExpressions::Extract(Index);
}

std::unique_ptr<TSQLSubQueryExpression> TSQLSubQueryExpressions::Extract(int Index) {
  detail::CheckIndex(Index, Operands_.size());
  auto operand = std::move(Operands_[static_cast<std::size_t>(Index)]);
  Operands_.erase(Operands_.begin() + Index);
  return operand;
}

std::unique_ptr<TSQLSubQueryExpression> TSQLSubQueryExpressions::Extract(
    const TSQLSubQueryExpression* Operand) {
  const int index = TSQLSubQueryExpressions::IndexOf(Operand);
  return index < 0 ? nullptr : TSQLSubQueryExpressions::Extract(index);
}

void TSQLSubQueryExpressions::Clear() {
  decltype(Operands_) old;
  old.swap(Operands_);
}

int TSQLSubQueryExpressions::IndexOf(const TSQLSubQueryExpression* Operand) const {
  for (std::size_t i = 0; i < Operands_.size(); ++i) {
    if (Operands_[i].get() == Operand)
      return static_cast<int>(i);
  }
  return -1;
}

void TSQLSubQueryExpressions::Assign(const TastExtender& Source) {
  TSQLSubQueryExpression::Assign(Source);
  const auto* chain = dynamic_cast<const TSQLSubQueryExpressions*>(&Source);
  if (chain == nullptr || chain == this)
    return;
  // A proxy hands out its operands only through a real tree.
  std::unique_ptr<TSQLSubSelectStatement> built;
  if (const auto* proxy = dynamic_cast<const TSQLSubSelectStatementProxy*>(chain)) {
    built = proxy->GetASTTree();
    chain = built.get();
  }
  TSQLSubQueryExpressions::Clear();
  if (chain == nullptr)
    return;
  for (const auto& operand : chain->Operands_)
    Operands_.push_back(CloneChild(operand));
}

void TSQLSubQueryExpressions::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLSubQueryExpression::GetMyChildren(List);
  for (const auto& operand : Operands_)
    AddChild(List, operand.get());
}

void TSQLSubQueryExpressions::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  bool first = true;
  for (const auto& operand : Operands_) {
    if (!operand)
      continue;
    if (!first) {
      Builder.NewLineOrSpace(MultiLine);
      operand->BuildUnionOperator(Builder);
      Builder.NewLineOrSpace(MultiLine);
    }
    first = false;
    if (dynamic_cast<const TSQLSubQueryExpressions*>(operand.get()) != nullptr) {
      Builder.WriteSymbol("(");
      operand->BuildSQL(Builder, MultiLine);
      Builder.WriteSymbol(")");
    } else {
      operand->BuildSQL(Builder, MultiLine);
    }
  }
}

// ---------------------------------------------------------------------------------------
// Statements

TSQLSubSelectStatement::~TSQLSubSelectStatement() = default;

void TSQLSubSelectStatement::Assign(const TastExtender& Source) {
  TSQLSubQueryExpressions::Assign(Source);
  const auto* statement = dynamic_cast<const TSQLSubSelectStatement*>(&Source);
  if (statement == nullptr || statement == this)
    return;
  if (const auto* proxy = dynamic_cast<const TSQLSubSelectStatementProxy*>(statement)) {
    std::unique_ptr<TSQLSubSelectStatement> built = proxy->GetASTTree();
    OrderBy_ = built ? CloneChild(built->OrderBy_) : nullptr;
    return;
  }
  OrderBy_ = CloneChild(statement->OrderBy_);
}

void TSQLSubSelectStatement::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLSubQueryExpressions::GetMyChildren(List);
  AddChild(List, OrderBy_.get());
}

// The statement's ORDER BY follows the whole chain; it sorts by the columns of the first
// SELECT block, so its names are bound against that block's FROM sources.
void TSQLSubSelectStatement::FixupObjects(std::vector<TSQLFromSource*>& List) {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children) {
    if (child != OrderBy_.get())
      child->FixupObjects(List);
  }
  if (!OrderBy_)
    return;
  TRestoreSources restore{List, List.size()};
  TSQLSubQuerySelectExpression* first = FirstBlock(*this);
  List.push_back(nullptr);
  const std::size_t begin = List.size();
  if (first != nullptr && first->GetFromClause() != nullptr)
    first->GetFromClause()->GetAllSources(List);
  const ast::TSQLFromSourceBlockIndex index(List, begin);
  FixupOrderBy(*OrderBy_, first != nullptr ? first->GetSelectItems() : nullptr, List);
}

void TSQLSubSelectStatement::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  TSQLSubQueryExpressions::BuildSQLDirect(Builder, MultiLine);
  if (OrderBy_) {
    Builder.NewLineOrSpace(MultiLine);
    Builder.WriteKeyword("ORDER");
    Builder.Space();
    Builder.WriteKeyword("BY");
    Builder.Space();
    OrderBy_->BuildSQL(Builder, MultiLine);
  }
}

// ---------------------------------------------------------------------------------------
// TSQLSubSelectStatementProxy

namespace {
[[noreturn]] void Refuse(const char* Operation) {
  throw EqxError(std::string(Operation) + " can't be called with TSQLSubSelectStatementProxy");
}
}  // namespace

const TSQLProxyClass& TSQLSubSelectStatementProxy::ProxyStaticClass() noexcept {
  static const TSQLProxyClass cls("TSQLSubSelectStatementProxy", nullptr, nullptr);
  return cls;
}

TSQLSubSelectStatementProxy::TSQLSubSelectStatementProxy(
    TastSyntaxProvider* SyntaxProvider, TqxQueryBuilderControlOwner* Owner,
    std::unique_ptr<TSQLSubSelectStatement> Statement)
    : TSQLSubSelectStatement(SyntaxProvider), Owner_(Owner), Statement_(std::move(Statement)) {}

TSQLSubSelectStatementProxy::~TSQLSubSelectStatementProxy() = default;

void TSQLSubSelectStatementProxy::BuildSQL(TSQLBuilder& Builder, bool MultiLine) const {
  std::unique_ptr<TSQLSubSelectStatement> tree = GetASTTree();
  if (tree)
    tree->BuildSQL(Builder, MultiLine);
}

void TSQLSubSelectStatementProxy::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  std::unique_ptr<TSQLSubSelectStatement> tree = GetASTTree();
  if (tree)
    tree->BuildSQLDirect(Builder, MultiLine);
}

std::unique_ptr<TastNode> TSQLSubSelectStatementProxy::Clone() const {
  return GetASTTree();
}

void TSQLSubSelectStatementProxy::Assign(const TastExtender& /*Source*/) {
  Refuse("Assign");
}

TSQLSubQueryExpression* TSQLSubSelectStatementProxy::GetItems(int /*Index*/) const {
  Refuse("GetItems");
}

int TSQLSubSelectStatementProxy::GetCount() const {
  Refuse("GetCount");
}

void TSQLSubSelectStatementProxy::Add(std::unique_ptr<TSQLSubQueryExpression> /*Operand*/) {
  Refuse("Add");
}

void TSQLSubSelectStatementProxy::Insert(int /*Index*/,
                                         std::unique_ptr<TSQLSubQueryExpression> /*Operand*/) {
  Refuse("Insert");
}

void TSQLSubSelectStatementProxy::Remove(const TSQLSubQueryExpression* /*Operand*/) {
  Refuse("Remove");
}

void TSQLSubSelectStatementProxy::Delete(int /*Index*/) {
  Refuse("Delete");
}

std::unique_ptr<TSQLSubQueryExpression> TSQLSubSelectStatementProxy::Extract(int /*Index*/) {
  Refuse("Extract");
}

std::unique_ptr<TSQLSubQueryExpression> TSQLSubSelectStatementProxy::Extract(
    const TSQLSubQueryExpression* /*Operand*/) {
  Refuse("Extract");
}

void TSQLSubSelectStatementProxy::Clear() {
  Refuse("Clear");
}

int TSQLSubSelectStatementProxy::IndexOf(const TSQLSubQueryExpression* /*Operand*/) const {
  Refuse("IndexOf");
}

void MoveStatementInProxy(std::unique_ptr<TSQLSubSelectStatement>& SubQuery,
                          TastSyntaxProvider* SyntaxProvider, TqxQueryBuilderControlOwner* Owner,
                          const TSQLProxyClass& ProxyClass) {
  if (!SubQuery || dynamic_cast<const TSQLSubSelectStatementProxy*>(SubQuery.get()) != nullptr)
    return;
  // Checked before the statement is handed over, so that a refusal loses nothing.
  if (ProxyClass.IsAbstract()) {
    throw EqxError("Abstract class " + std::string(ProxyClass.ClassName()) + " can't be created");
  }
  SubQuery = ProxyClass.Create(SyntaxProvider, Owner, std::move(SubQuery));
}

}  // namespace qorvex
