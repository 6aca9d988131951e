#include "qorvex/ast/from.h"

#include <algorithm>
#include <string>

#include "ast/node_util.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/query.h"

namespace qorvex {

QX_DEFINE_CLASS(TSQLAlias, TastNode)
QX_DEFINE_CLASS(TSQLAliasAliasEqualsObject, TSQLAlias)
QX_DEFINE_CLASS(TSQLAliasObjectAlias, TSQLAlias)
QX_DEFINE_CLASS(TSQLAliasObjectAsAlias, TSQLAliasObjectAlias)
QX_DEFINE_CLASS(TSQLJoinKind, TastNode)
QX_DEFINE_CLASS(TSQLJoinKindCross, TSQLJoinKind)
QX_DEFINE_CLASS(TSQLJoinKindInner, TSQLJoinKind)
QX_DEFINE_CLASS(TSQLJoinKindOuter, TSQLJoinKind)
QX_DEFINE_CLASS(TSQLJoinKindLeft, TSQLJoinKindOuter)
QX_DEFINE_CLASS(TSQLJoinKindRight, TSQLJoinKindOuter)
QX_DEFINE_CLASS(TSQLJoinKindFull, TSQLJoinKindOuter)
QX_DEFINE_ABSTRACT_CLASS(TSQLFromSource, TastNode)
QX_DEFINE_CLASS(TSQLFromQuery, TSQLFromSource)
QX_DEFINE_CLASS(TSQLFromFunction, TSQLFromSource)
QX_DEFINE_CLASS(TSQLFromBuiltInFunction, TSQLFromFunction)
QX_DEFINE_CLASS(TSQLFromObject, TSQLFromSource)
QX_DEFINE_CLASS(TSQLFromVariable, TSQLFromSource)
QX_DEFINE_CLASS(TSQLFromItem, TSQLFromSource)
QX_DEFINE_CLASS(TSQLFromClause, TSQLFromItem)

QX_DEFINE_CHILD_NODE(TSQLFromSource, TSQLJoinKind, JoinKind)
QX_DEFINE_CHILD_NODE(TSQLFromSource, TSQLExpressionItem, JoinCondition)
QX_DEFINE_CHILD_NODE(TSQLFromSource, TSQLAlias, Alias)
QX_DEFINE_CHILD_NODE(TSQLFromQuery, TSQLSubSelectStatement, SubQuery)
QX_DEFINE_CHILD_NODE(TSQLFromFunction, TSQLFunction, Function)
QX_DEFINE_CHILD_NODE(TSQLFromObject, TSQLDatabaseObject, DatabaseObject)

// ---------------------------------------------------------------------------------------
// Aliases

void TSQLAlias::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  if (const auto* alias = dynamic_cast<const TSQLAlias*>(&Source)) {
    Name = alias->Name;
    Quoted = alias->Quoted;
  }
}

void TSQLAlias::WriteName(TSQLBuilder& Builder) const {
  Builder.WriteIdentifier(Name, GetSyntaxProvider(), Quoted);
}

void TSQLAlias::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  WriteName(Builder);
}

std::string TSQLAlias::DumpDetails() const {
  return Quoted ? "\"" + Name + "\"" : Name;
}

void TSQLAliasObjectAsAlias::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteKeyword("AS");
  Builder.Space();
  WriteName(Builder);
}

// ---------------------------------------------------------------------------------------
// Join kinds

void TSQLJoinKindCross::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.Space();
  Builder.WriteKeyword("CROSS");
  Builder.Space();
  Builder.WriteKeyword("JOIN");
}

void TSQLJoinKindInner::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.Space();
  Builder.WriteKeyword("INNER");
  Builder.Space();
  Builder.WriteKeyword("JOIN");
}

void TSQLJoinKindOuter::Assign(const TastExtender& Source) {
  TSQLJoinKind::Assign(Source);
  if (const auto* kind = dynamic_cast<const TSQLJoinKindOuter*>(&Source))
    Outer = kind->Outer;
}

std::string TSQLJoinKindOuter::DumpDetails() const {
  return Outer ? "OUTER" : "";
}

void TSQLJoinKindOuter::BuildJoin(TSQLBuilder& Builder, const char* Word) const {
  Builder.Space();
  Builder.WriteKeyword(Word);
  if (Outer) {
    Builder.Space();
    Builder.WriteKeyword("OUTER");
  }
  Builder.Space();
  Builder.WriteKeyword("JOIN");
}

void TSQLJoinKindLeft::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  BuildJoin(Builder, "LEFT");
}

void TSQLJoinKindRight::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  BuildJoin(Builder, "RIGHT");
}

void TSQLJoinKindFull::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  BuildJoin(Builder, "FULL");
}

// ---------------------------------------------------------------------------------------
// TSQLFromSource

TSQLFromSource::TSQLFromSource(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}

TSQLFromSource::~TSQLFromSource() = default;

std::string TSQLFromSource::GetAliasName() const {
  return Alias_ ? Alias_->Name : std::string();
}

void TSQLFromSource::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  const auto* source = dynamic_cast<const TSQLFromSource*>(&Source);
  if (source == nullptr || source == this)
    return;
  Fields = source->Fields;
  JoinKind_ = detail::CloneChild(source->JoinKind_);
  JoinCondition_ = detail::CloneChild(source->JoinCondition_);
  Alias_ = detail::CloneChild(source->Alias_);
  if (JoinCondition_)
    RemapFromSourceReferences(*JoinCondition_, {{source, this}});
}

void TSQLFromSource::GetMyChildren(std::vector<TastExtender*>& List) const {
  TastNode::GetMyChildren(List);
  detail::AddChild(List, JoinKind_.get());
  detail::AddChild(List, JoinCondition_.get());
  detail::AddChild(List, Alias_.get());
}

void TSQLFromSource::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  BuildExpression(Builder, MultiLine);
  if (Alias_) {
    Builder.Space();
    Alias_->BuildSQL(Builder, MultiLine);
  }
}

void TSQLFromSource::RefreshFieldsListRecursive(TqxBaseMetadataProvider* Provider) {
  TastNode::RefreshFieldsListRecursive(Provider);
  if (dynamic_cast<TSQLFromItem*>(this) == nullptr)
    RefreshFieldsList(Provider);
}

std::string TSQLFromSource::DumpDetails() const {
  if (Fields.empty())
    return {};
  std::string details = "[";
  for (std::size_t i = 0; i < Fields.size(); ++i) {
    if (i > 0)
      details += ", ";
    details += Fields[i];
  }
  return details + "]";
}

void TSQLFromSource::RefreshFieldsList(TqxBaseMetadataProvider* Provider) {
  Fields.clear();
  if (Provider != nullptr)
    Provider->GetFields("select * from " + GetSimpleSQL(), Fields);
}

void TSQLFromSource::BuildJoinOperator(TSQLBuilder& Builder, bool MultiLine) const {
  if (JoinKind_) {
    JoinKind_->BuildSQL(Builder, MultiLine);
  } else {
    Builder.WriteSymbol(",");
    Builder.Space();
  }
}

std::string TSQLFromSource::GetSimpleExpression() const {
  std::string text;
  TSQLBuilderPlainText builder(&text);
  builder.ResetBuilder();
  BuildExpression(builder, false);
  return text;
}

// ---------------------------------------------------------------------------------------
// TSQLFromQuery

TSQLFromQuery::TSQLFromQuery(TastSyntaxProvider* SyntaxProvider) : TSQLFromSource(SyntaxProvider) {}

TSQLFromQuery::~TSQLFromQuery() = default;

void TSQLFromQuery::Assign(const TastExtender& Source) {
  TSQLFromSource::Assign(Source);
  const auto* query = dynamic_cast<const TSQLFromQuery*>(&Source);
  if (query == nullptr || query == this)
    return;
  ColumnAliases = query->ColumnAliases;
  ColumnAliasesQuoted = query->ColumnAliasesQuoted;
  SubQuery_ = detail::CloneChild(query->SubQuery_);
}

void TSQLFromQuery::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLFromSource::GetMyChildren(List);
  detail::AddChild(List, SubQuery_.get());
}

// A derived table's query sees the blocks enclosing the one whose FROM holds it, but not
// that block's sources (its siblings); its ON condition sees them all.
void TSQLFromQuery::FixupObjects(std::vector<TSQLFromSource*>& List) {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children) {
    if (child != SubQuery_.get())
      child->FixupObjects(List);
  }
  if (!SubQuery_)
    return;
  std::size_t outer = List.size();
  while (outer > 0 && List[outer - 1] != nullptr)
    --outer;
  if (outer == 0) {
    SubQuery_->FixupObjects(List);
    return;
  }
  std::vector<TSQLFromSource*> visible(List.begin(), List.begin() + static_cast<long>(outer - 1));
  SubQuery_->FixupObjects(visible);
}

namespace {
// " (a, b)" after a derived table's alias.
void WriteColumnAliases(const std::vector<std::string>& Names, const std::vector<bool>& Quoted,
                        const TastSyntaxProvider* Provider, TSQLBuilder& Builder) {
  if (Names.empty())
    return;
  Builder.Space();
  Builder.WriteSymbol("(");
  for (std::size_t i = 0; i < Names.size(); ++i) {
    if (i > 0) {
      Builder.WriteSymbol(",");
      Builder.Space();
    }
    Builder.WriteIdentifier(Names[i], Provider, i < Quoted.size() && Quoted[i]);
  }
  Builder.WriteSymbol(")");
}
}  // namespace

void TSQLFromQuery::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  TSQLFromSource::BuildSQLDirect(Builder, MultiLine);
  WriteColumnAliases(ColumnAliases, ColumnAliasesQuoted, GetSyntaxProvider(), Builder);
}

void TSQLFromQuery::MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                                const TSQLProxyClass& ProxyClass) {
  MoveStatementInProxy(SubQuery_, GetSyntaxProvider(), Owner, ProxyClass);
}

void TSQLFromQuery::RefreshFieldsList(TqxBaseMetadataProvider* Provider) {
  Fields.clear();
  if (Provider == nullptr)
    return;
  std::string tail;
  TSQLBuilderPlainText builder(&tail);
  builder.ResetBuilder();
  if (const TSQLAlias* alias = GetAlias()) {
    builder.Space();
    alias->BuildSQL(builder, false);
  }
  WriteColumnAliases(ColumnAliases, ColumnAliasesQuoted, GetSyntaxProvider(), builder);
  const std::string query = SubQuery_ ? SubQuery_->GetSimpleSQL() : std::string();
  // The builder drops a leading space, so the separator is put back here.
  Provider->GetFields("select * from (" + query + ")" + (tail.empty() ? "" : " ") + tail, Fields);
}

void TSQLFromQuery::BuildExpression(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteSymbol("(");
  detail::Write(SubQuery_.get(), Builder, MultiLine);
  Builder.WriteSymbol(")");
}

// ---------------------------------------------------------------------------------------
// TSQLFromFunction, TSQLFromObject, TSQLFromVariable

TSQLFromFunction::TSQLFromFunction(TastSyntaxProvider* SyntaxProvider)
    : TSQLFromSource(SyntaxProvider) {}

TSQLFromFunction::~TSQLFromFunction() = default;

void TSQLFromFunction::Assign(const TastExtender& Source) {
  TSQLFromSource::Assign(Source);
  const auto* function = dynamic_cast<const TSQLFromFunction*>(&Source);
  if (function != nullptr && function != this)
    Function_ = detail::CloneChild(function->Function_);
}

void TSQLFromFunction::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLFromSource::GetMyChildren(List);
  detail::AddChild(List, Function_.get());
}

void TSQLFromFunction::BuildExpression(TSQLBuilder& Builder, bool MultiLine) const {
  detail::Write(Function_.get(), Builder, MultiLine);
}

TSQLFromObject::~TSQLFromObject() = default;

void TSQLFromObject::Assign(const TastExtender& Source) {
  TSQLFromSource::Assign(Source);
  const auto* object = dynamic_cast<const TSQLFromObject*>(&Source);
  if (object != nullptr && object != this)
    DatabaseObject_ = detail::CloneChild(object->DatabaseObject_);
}

void TSQLFromObject::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLFromSource::GetMyChildren(List);
  detail::AddChild(List, DatabaseObject_.get());
}

void TSQLFromObject::FixupObjects(std::vector<TSQLFromSource*>& List) {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children) {
    if (child != DatabaseObject_.get())
      child->FixupObjects(List);
  }
}

void TSQLFromObject::BuildExpression(TSQLBuilder& Builder, bool MultiLine) const {
  detail::Write(DatabaseObject_.get(), Builder, MultiLine);
}

void TSQLFromVariable::Assign(const TastExtender& Source) {
  TSQLFromSource::Assign(Source);
  if (const auto* variable = dynamic_cast<const TSQLFromVariable*>(&Source))
    VariableName = variable->VariableName;
}

void TSQLFromVariable::BuildExpression(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteIdentifier(VariableName, GetSyntaxProvider());
}

std::string TSQLFromVariable::DumpDetails() const {
  const std::string fields = TSQLFromSource::DumpDetails();
  return fields.empty() ? VariableName : VariableName + " " + fields;
}

// ---------------------------------------------------------------------------------------
// TSQLFromItem

TSQLFromItem::~TSQLFromItem() = default;

void TSQLFromItem::Add(std::unique_ptr<TSQLFromSource> Source) {
  // Lists seldom stay at one item: room for four saves the first regrowths.
  if (Sources_.capacity() == 0)
    Sources_.reserve(4);
  Sources_.push_back(std::move(Source));
}

void TSQLFromItem::Insert(int Index, std::unique_ptr<TSQLFromSource> Source) {
  detail::CheckIndex(Index, Sources_.size(), true);
  Sources_.insert(Sources_.begin() + Index, std::move(Source));
}

void TSQLFromItem::Delete(int Index) {
  std::unique_ptr<TSQLFromSource> source = Extract(Index);
}

void TSQLFromItem::Clear() {
  decltype(Sources_) old;
  old.swap(Sources_);
}

std::unique_ptr<TSQLFromSource> TSQLFromItem::Extract(int Index) {
  detail::CheckIndex(Index, Sources_.size());
  std::unique_ptr<TSQLFromSource> source = std::move(Sources_[static_cast<std::size_t>(Index)]);
  Sources_.erase(Sources_.begin() + Index);
  return source;
}

std::unique_ptr<TSQLFromSource> TSQLFromItem::Extract(const TSQLFromSource* Source) {
  const int index = IndexOf(Source);
  return index < 0 ? nullptr : Extract(index);
}

TSQLFromSource* TSQLFromItem::GetItems(int Index) const {
  detail::CheckIndex(Index, Sources_.size());
  return Sources_[static_cast<std::size_t>(Index)].get();
}

int TSQLFromItem::IndexOf(const TSQLFromSource* Source) const {
  for (std::size_t i = 0; i < Sources_.size(); ++i) {
    if (Sources_[i].get() == Source)
      return static_cast<int>(i);
  }
  return -1;
}

void TSQLFromItem::GetAllSources(std::vector<TSQLFromSource*>& List) const {
  for (const auto& source : Sources_) {
    if (!source)
      continue;
    if (const auto* item = dynamic_cast<const TSQLFromItem*>(source.get()))
      item->GetAllSources(List);
    else
      List.push_back(source.get());
  }
}

void PairFromSources(const TSQLFromItem& From, TSQLFromItem& To, TSQLFromSourceMap& Map) {
  const int count = std::min(From.Count(), To.Count());
  for (int i = 0; i < count; ++i) {
    const TSQLFromSource* from = From.GetItems(i);
    TSQLFromSource* to = To.GetItems(i);
    if (from == nullptr || to == nullptr)
      continue;
    Map.emplace_back(from, to);
    const auto* fromItem = dynamic_cast<const TSQLFromItem*>(from);
    auto* toItem = dynamic_cast<TSQLFromItem*>(to);
    if (fromItem != nullptr && toItem != nullptr)
      PairFromSources(*fromItem, *toItem, Map);
  }
}

void TSQLFromItem::Assign(const TastExtender& Source) {
  TSQLFromSource::Assign(Source);
  const auto* item = dynamic_cast<const TSQLFromItem*>(&Source);
  if (item == nullptr || item == this)
    return;
  Clear();
  Sources_.reserve(item->Sources_.size());
  for (const auto& source : item->Sources_)
    Sources_.push_back(detail::CloneChild(source));
  TSQLFromSourceMap map{{item, this}};
  PairFromSources(*item, *this, map);
  RemapFromSourceReferences(*this, map);
}

void TSQLFromItem::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLFromSource::GetMyChildren(List);
  for (const auto& source : Sources_)
    detail::AddChild(List, source.get());
}

void TSQLFromItem::BuildExpression(TSQLBuilder& Builder, bool MultiLine) const {
  bool first = true;
  for (const auto& source : Sources_) {
    if (!source)
      continue;
    if (!first) {
      source->BuildJoinOperator(Builder, MultiLine);
      Builder.NewLineOrSpace(MultiLine);
      Builder.SpaceForce();
    }
    first = false;
    if (dynamic_cast<const TSQLFromItem*>(source.get()) != nullptr) {
      Builder.WriteSymbol("(");
      source->BuildSQL(Builder, MultiLine);
      Builder.WriteSymbol(")");
    } else {
      source->BuildSQL(Builder, MultiLine);
    }
    if (const TSQLExpressionItem* condition = source->GetJoinCondition()) {
      Builder.Space();
      Builder.WriteKeyword("ON");
      Builder.Space();
      condition->BuildSQL(Builder, MultiLine);
    }
  }
}

}  // namespace qorvex
