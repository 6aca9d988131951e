#include "qorvex/ast/expressions.h"

#include <charconv>
#include <cmath>
#include <string>

#include "ast/node_util.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/query.h"

namespace qorvex {

QX_DEFINE_CLASS(TSQLFunctionParamExpression, TastNode)
QX_DEFINE_CLASS(TSQLFunctionParamNamedExpression, TSQLFunctionParamExpression)
QX_DEFINE_CLASS(TSQLFunctionParams, TastNodeWithList)
QX_DEFINE_CLASS(TSQLFunction, TastNodeWithList)
QX_DEFINE_CLASS(TSQLOperator, TastNode)
QX_DEFINE_CLASS(TSQLExpressionItem, TastNode)
QX_DEFINE_CLASS(TSQLExpressionConstant, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionVariable, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionColumn, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionParameterlessFunction, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionFunction, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionSelect, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLCaseFunctionItem, TastNode)
QX_DEFINE_CLASS(TSQLExpressionCaseFunction, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionAggregate, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionAggregate1Param, TSQLExpressionAggregate)
QX_DEFINE_CLASS(TSQLExpressionAggregate1ParamWPrefix, TSQLExpressionAggregate1Param)
QX_DEFINE_CLASS(TSQLExpressionAggregateWParams, TSQLExpressionAggregate)
QX_DEFINE_CLASS(TSQLExpressionExpressionItem, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionOperation, TSQLExpressionExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionLogicalOperation, TSQLExpressionOperation)
QX_DEFINE_CLASS(TSQLExpressionIs, TSQLExpressionLogicalOperation)
QX_DEFINE_CLASS(TSQLExpressionIsNull, TSQLExpressionIs)
QX_DEFINE_CLASS(TSQLExpressionIn, TSQLExpressionLogicalOperation)
QX_DEFINE_CLASS(TSQLExpressionInSet, TSQLExpressionIn)
QX_DEFINE_CLASS(TSQLExpressionInSubQuery, TSQLExpressionIn)
QX_DEFINE_CLASS(TSQLExpressionLikeTemplate, TSQLExpressionLogicalOperation)
QX_DEFINE_CLASS(TSQLExpressionCast, TSQLExpressionOperation)
QX_DEFINE_CLASS(TSQLExpressionOperator, TSQLExpressionOperation)
QX_DEFINE_CLASS(TSQLExpressionOperatorPrefix, TSQLExpressionOperator)
QX_DEFINE_CLASS(TSQLExpressionOperatorPostfix, TSQLExpressionOperator)
QX_DEFINE_CLASS(TSQLExpressionOperatorBinary, TSQLExpressionOperator)
QX_DEFINE_CLASS(TSQLExpressionCompWithSet, TSQLExpressionOperator)
QX_DEFINE_CLASS(TSQLExpressionCompWithSubQuery, TSQLExpressionCompWithSet)
QX_DEFINE_CLASS(TSQLExpressionCompWithSetExpression, TSQLExpressionCompWithSet)
QX_DEFINE_CLASS(TSQLExpressionBetween, TSQLExpressionOperation)
QX_DEFINE_CLASS(TSQLExpressionBrackets, TSQLExpressionExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionFieldSelection, TSQLExpressionExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionNot, TSQLExpressionExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionExists, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionOverlaps, TSQLExpressionItem)
QX_DEFINE_CLASS(TSQLExpressionItemsList, TSQLExpressionItem)
QX_DEFINE_ABSTRACT_CLASS(TSQLExpressionLogicalCollection, TSQLExpressionItemsList)
QX_DEFINE_CLASS(TSQLExpressionAnd, TSQLExpressionLogicalCollection)
QX_DEFINE_CLASS(TSQLExpressionOr, TSQLExpressionLogicalCollection)
QX_DEFINE_CLASS(TSQLExpressionsList, TastNodeWithList)

QX_DEFINE_CHILD_NODE(TSQLFunctionParamExpression, TSQLExpressionItem, Expression)
QX_DEFINE_CHILD_NODE(TSQLFunction, TSQLFunctionParams, Params)
QX_DEFINE_CHILD_NODE(TSQLExpressionColumn, TSQLObjectColumn, Column)
QX_DEFINE_CHILD_NODE(TSQLExpressionFunction, TSQLFunction, Function)
QX_DEFINE_CHILD_NODE(TSQLExpressionSelect, TSQLSubSelectStatement, SubQuery)
QX_DEFINE_CHILD_NODE(TSQLCaseFunctionItem, TSQLExpressionItem, When)
QX_DEFINE_CHILD_NODE(TSQLCaseFunctionItem, TSQLExpressionItem, Then)
QX_DEFINE_CHILD_NODE(TSQLExpressionCaseFunction, TSQLExpressionItem, Operand)
QX_DEFINE_CHILD_NODE(TSQLExpressionCaseFunction, TSQLExpressionItem, Else)
QX_DEFINE_CHILD_NODE(TSQLExpressionAggregate1Param, TSQLExpressionItem, Argument)
QX_DEFINE_CHILD_NODE(TSQLExpressionAggregateWParams, TSQLFunctionParams, Params)
QX_DEFINE_CHILD_NODE(TSQLExpressionExpressionItem, TSQLExpressionItem, Inner)
QX_DEFINE_CHILD_NODE(TSQLExpressionInSet, TSQLExpressionsList, List)
QX_DEFINE_CHILD_NODE(TSQLExpressionInSubQuery, TSQLSubSelectStatement, SubQuery)
QX_DEFINE_CHILD_NODE(TSQLExpressionLikeTemplate, TSQLExpressionItem, Pattern)
QX_DEFINE_CHILD_NODE(TSQLExpressionLikeTemplate, TSQLExpressionItem, Escape)
QX_DEFINE_CHILD_NODE(TSQLExpressionCast, TSQLType, Type)
QX_DEFINE_CHILD_NODE(TSQLExpressionOperator, TSQLOperator, Operator)
QX_DEFINE_CHILD_NODE(TSQLExpressionOperatorBinary, TSQLExpressionItem, Right)
QX_DEFINE_CHILD_NODE(TSQLExpressionCompWithSubQuery, TSQLSubSelectStatement, SubQuery)
QX_DEFINE_CHILD_NODE(TSQLExpressionCompWithSetExpression, TSQLExpressionItem, SetExpression)
QX_DEFINE_CHILD_NODE(TSQLExpressionBetween, TSQLExpressionItem, Low)
QX_DEFINE_CHILD_NODE(TSQLExpressionBetween, TSQLExpressionItem, High)
QX_DEFINE_CHILD_NODE(TSQLExpressionExists, TSQLSubSelectStatement, SubQuery)
QX_DEFINE_CHILD_NODE(TSQLExpressionOverlaps, TSQLExpressionItem, First)
QX_DEFINE_CHILD_NODE(TSQLExpressionOverlaps, TSQLExpressionItem, Second)
QX_DEFINE_CHILD_NODE(TSQLExpressionOverlaps, TSQLExpressionItem, Third)
QX_DEFINE_CHILD_NODE(TSQLExpressionOverlaps, TSQLExpressionItem, Fourth)

using detail::AddChild;
using detail::CloneChild;
using detail::Write;

namespace {
const char* NotFlag(bool Not) {
  return Not ? "NOT" : "";
}

void WriteBracketed(const TastNode* Child, TSQLBuilder& Builder, bool MultiLine) {
  Builder.WriteSymbol("(");
  Write(Child, Builder, MultiLine);
  Builder.WriteSymbol(")");
}
}  // namespace

// ---------------------------------------------------------------------------------------
// Functions and operators

TSQLFunctionParamExpression::~TSQLFunctionParamExpression() = default;

void TSQLFunctionParamExpression::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  const auto* param = dynamic_cast<const TSQLFunctionParamExpression*>(&Source);
  if (param != nullptr && param != this)
    Expression_ = CloneChild(param->Expression_);
}

void TSQLFunctionParamExpression::GetMyChildren(std::vector<TastExtender*>& List) const {
  TastNode::GetMyChildren(List);
  AddChild(List, Expression_.get());
}

void TSQLFunctionParamExpression::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(Expression_.get(), Builder, MultiLine);
}

void TSQLFunctionParamNamedExpression::Assign(const TastExtender& Source) {
  TSQLFunctionParamExpression::Assign(Source);
  if (const auto* param = dynamic_cast<const TSQLFunctionParamNamedExpression*>(&Source))
    Name = param->Name;
}

void TSQLFunctionParamNamedExpression::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteIdentifier(Name, GetSyntaxProvider());
  Builder.WriteSymbol("=");
  Write(GetExpression(), Builder, MultiLine);
}

std::string TSQLFunctionParamNamedExpression::DumpDetails() const {
  return Name;
}

TSQLFunction::~TSQLFunction() = default;

void TSQLFunction::Assign(const TastExtender& Source) {
  TastNodeWithList::Assign(Source);
  const auto* function = dynamic_cast<const TSQLFunction*>(&Source);
  if (function == nullptr || function == this)
    return;
  Name = function->Name;
  Qualifiers = function->Qualifiers;
  NameQuoted = function->NameQuoted;
  QualifiersQuoted = function->QualifiersQuoted;
  Params_ = CloneChild(function->Params_);
}

void TSQLFunction::GetMyChildren(std::vector<TastExtender*>& List) const {
  TastNodeWithList::GetMyChildren(List);
  AddChild(List, Params_.get());
}

void TSQLFunction::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  for (std::size_t i = 0; i < Qualifiers.size(); ++i) {
    if (!Qualifiers[i].empty()) {
      Builder.WriteIdentifier(Qualifiers[i], GetSyntaxProvider(),
                              i < QualifiersQuoted.size() && QualifiersQuoted[i]);
    }
    Builder.WriteSymbol(".");
  }
  Builder.WriteIdentifier(Name, GetSyntaxProvider(), NameQuoted);
  WriteBracketed(Params_.get(), Builder, MultiLine);
}

std::string TSQLFunction::DumpDetails() const {
  auto marked = [](const std::string& part, bool quoted) {
    return quoted ? "\"" + part + "\"" : part;
  };
  std::string text;
  for (std::size_t i = 0; i < Qualifiers.size(); ++i)
    text += marked(Qualifiers[i], i < QualifiersQuoted.size() && QualifiersQuoted[i]) + ".";
  return text + marked(Name, NameQuoted);
}

void TSQLOperator::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  if (const auto* op = dynamic_cast<const TSQLOperator*>(&Source))
    Text = op->Text;
}

void TSQLOperator::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteSymbol(Text);
}

std::string TSQLOperator::DumpDetails() const {
  return Text;
}

// ---------------------------------------------------------------------------------------
// Leaves

std::string ConstantValueToString(const TSQLConstantValue& Value) {
  struct Visitor {
    std::string operator()(std::monostate) const { return "NULL"; }
    std::string operator()(bool B) const { return B ? "True" : "False"; }
    std::string operator()(std::int64_t I) const { return std::to_string(I); }
    std::string operator()(double D) const {
      if (std::isnan(D))
        return "NaN";
      if (std::isinf(D))
        return D > 0 ? "Infinity" : "-Infinity";
      char buffer[64];
      const auto result = std::to_chars(buffer, buffer + sizeof buffer, D);
      return std::string(buffer, result.ptr);
    }
    std::string operator()(const std::string& S) const { return S; }
  };
  return std::visit(Visitor{}, Value);
}

TSQLExpressionConstant::TSQLExpressionConstant(TastSyntaxProvider* SyntaxProvider,
                                               TSQLConstantValue Value)
    : TSQLExpressionItem(SyntaxProvider), Value(std::move(Value)) {}

void TSQLExpressionConstant::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  if (const auto* constant = dynamic_cast<const TSQLExpressionConstant*>(&Source))
    Value = constant->Value;
}

void TSQLExpressionConstant::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteNumber(ConstantValueToString(Value));
}

std::string TSQLExpressionConstant::DumpDetails() const {
  return ConstantValueToString(Value);
}

void TSQLExpressionVariable::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  if (const auto* variable = dynamic_cast<const TSQLExpressionVariable*>(&Source))
    Text = variable->Text;
}

void TSQLExpressionVariable::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteNumber(Text);
}

std::string TSQLExpressionVariable::DumpDetails() const {
  return Text;
}

TSQLExpressionColumn::~TSQLExpressionColumn() = default;

void TSQLExpressionColumn::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* column = dynamic_cast<const TSQLExpressionColumn*>(&Source);
  if (column != nullptr && column != this)
    Column_ = CloneChild(column->Column_);
}

void TSQLExpressionColumn::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, Column_.get());
}

void TSQLExpressionColumn::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(Column_.get(), Builder, MultiLine);
}

void TSQLExpressionParameterlessFunction::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  if (const auto* function = dynamic_cast<const TSQLExpressionParameterlessFunction*>(&Source))
    Name = function->Name;
}

void TSQLExpressionParameterlessFunction::BuildSQLDirect(TSQLBuilder& Builder,
                                                         bool /*MultiLine*/) const {
  Builder.WriteFunctionWord(Name, GetSyntaxProvider());
}

std::string TSQLExpressionParameterlessFunction::DumpDetails() const {
  return Name;
}

TSQLExpressionFunction::~TSQLExpressionFunction() = default;

void TSQLExpressionFunction::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* function = dynamic_cast<const TSQLExpressionFunction*>(&Source);
  if (function != nullptr && function != this)
    Function_ = CloneChild(function->Function_);
}

void TSQLExpressionFunction::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, Function_.get());
}

void TSQLExpressionFunction::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(Function_.get(), Builder, MultiLine);
}

TSQLExpressionSelect::TSQLExpressionSelect(TastSyntaxProvider* SyntaxProvider)
    : TSQLExpressionItem(SyntaxProvider) {}

TSQLExpressionSelect::~TSQLExpressionSelect() = default;

void TSQLExpressionSelect::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* select = dynamic_cast<const TSQLExpressionSelect*>(&Source);
  if (select != nullptr && select != this)
    SubQuery_ = CloneChild(select->SubQuery_);
}

void TSQLExpressionSelect::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, SubQuery_.get());
}

void TSQLExpressionSelect::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  WriteBracketed(SubQuery_.get(), Builder, MultiLine);
}

void TSQLExpressionSelect::MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                                       const TSQLProxyClass& ProxyClass) {
  MoveStatementInProxy(SubQuery_, GetSyntaxProvider(), Owner, ProxyClass);
}

// ---------------------------------------------------------------------------------------
// CASE

TSQLCaseFunctionItem::~TSQLCaseFunctionItem() = default;

void TSQLCaseFunctionItem::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  const auto* item = dynamic_cast<const TSQLCaseFunctionItem*>(&Source);
  if (item == nullptr || item == this)
    return;
  When_ = CloneChild(item->When_);
  Then_ = CloneChild(item->Then_);
}

void TSQLCaseFunctionItem::GetMyChildren(std::vector<TastExtender*>& List) const {
  TastNode::GetMyChildren(List);
  AddChild(List, When_.get());
  AddChild(List, Then_.get());
}

void TSQLCaseFunctionItem::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteKeyword("WHEN");
  Builder.Space();
  Write(When_.get(), Builder, MultiLine);
  Builder.Space();
  Builder.WriteKeyword("THEN");
  Builder.Space();
  Write(Then_.get(), Builder, MultiLine);
}

TSQLExpressionCaseFunction::~TSQLExpressionCaseFunction() = default;

void TSQLExpressionCaseFunction::AddItem(std::unique_ptr<TSQLCaseFunctionItem> Item) {
  Items_.push_back(std::move(Item));
}

TSQLCaseFunctionItem* TSQLExpressionCaseFunction::GetItem(int Index) const {
  detail::CheckIndex(Index, Items_.size());
  return Items_[static_cast<std::size_t>(Index)].get();
}

std::unique_ptr<TSQLCaseFunctionItem> TSQLExpressionCaseFunction::ExtractItem(int Index) {
  detail::CheckIndex(Index, Items_.size());
  auto item = std::move(Items_[static_cast<std::size_t>(Index)]);
  Items_.erase(Items_.begin() + Index);
  return item;
}

void TSQLExpressionCaseFunction::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* function = dynamic_cast<const TSQLExpressionCaseFunction*>(&Source);
  if (function == nullptr || function == this)
    return;
  Operand_ = CloneChild(function->Operand_);
  Items_.clear();
  for (const auto& item : function->Items_)
    Items_.push_back(CloneChild(item));
  Else_ = CloneChild(function->Else_);
}

void TSQLExpressionCaseFunction::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, Operand_.get());
  for (const auto& item : Items_)
    AddChild(List, item.get());
  AddChild(List, Else_.get());
}

void TSQLExpressionCaseFunction::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteKeyword("CASE");
  if (Operand_) {
    Builder.Space();
    Operand_->BuildSQL(Builder, MultiLine);
  }
  Builder.Space();
  for (const auto& item : Items_) {
    if (!item)
      continue;
    item->BuildSQL(Builder, MultiLine);
    Builder.Space();
  }
  if (Else_) {
    Builder.WriteKeyword("ELSE");
    Builder.Space();
    Else_->BuildSQL(Builder, MultiLine);
    Builder.Space();
  }
  Builder.WriteKeyword("END");
}

// ---------------------------------------------------------------------------------------
// Aggregates

void TSQLExpressionAggregate::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  if (const auto* aggregate = dynamic_cast<const TSQLExpressionAggregate*>(&Source))
    Name = aggregate->Name;
}

void TSQLExpressionAggregate::BuildSQLDirect(TSQLBuilder& Builder, bool /*MultiLine*/) const {
  Builder.WriteFunctionWord(Name, GetSyntaxProvider());
  Builder.WriteSymbol("(*)");
}

std::string TSQLExpressionAggregate::DumpDetails() const {
  return Name;
}

TSQLExpressionAggregate1Param::~TSQLExpressionAggregate1Param() = default;

void TSQLExpressionAggregate1Param::Assign(const TastExtender& Source) {
  TSQLExpressionAggregate::Assign(Source);
  const auto* aggregate = dynamic_cast<const TSQLExpressionAggregate1Param*>(&Source);
  if (aggregate != nullptr && aggregate != this)
    Argument_ = CloneChild(aggregate->Argument_);
}

void TSQLExpressionAggregate1Param::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionAggregate::GetMyChildren(List);
  AddChild(List, Argument_.get());
}

void TSQLExpressionAggregate1Param::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteFunctionWord(Name, GetSyntaxProvider());
  WriteBracketed(Argument_.get(), Builder, MultiLine);
}

void TSQLExpressionAggregate1ParamWPrefix::Assign(const TastExtender& Source) {
  TSQLExpressionAggregate1Param::Assign(Source);
  if (const auto* aggregate = dynamic_cast<const TSQLExpressionAggregate1ParamWPrefix*>(&Source))
    Quantifier = aggregate->Quantifier;
}

void TSQLExpressionAggregate1ParamWPrefix::BuildSQLDirect(TSQLBuilder& Builder,
                                                          bool MultiLine) const {
  Builder.WriteFunctionWord(Name, GetSyntaxProvider());
  Builder.WriteSymbol("(");
  if (Quantifier == sqDistinct) {
    Builder.WriteKeyword("DISTINCT");
    Builder.Space();
  }
  Write(GetArgument(), Builder, MultiLine);
  Builder.WriteSymbol(")");
}

std::string TSQLExpressionAggregate1ParamWPrefix::DumpDetails() const {
  return Quantifier == sqDistinct ? Name + " DISTINCT" : Name;
}

TSQLExpressionAggregateWParams::~TSQLExpressionAggregateWParams() = default;

void TSQLExpressionAggregateWParams::Assign(const TastExtender& Source) {
  TSQLExpressionAggregate::Assign(Source);
  const auto* aggregate = dynamic_cast<const TSQLExpressionAggregateWParams*>(&Source);
  if (aggregate != nullptr && aggregate != this)
    Params_ = CloneChild(aggregate->Params_);
}

void TSQLExpressionAggregateWParams::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionAggregate::GetMyChildren(List);
  AddChild(List, Params_.get());
}

void TSQLExpressionAggregateWParams::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteFunctionWord(Name, GetSyntaxProvider());
  WriteBracketed(Params_.get(), Builder, MultiLine);
}

// ---------------------------------------------------------------------------------------
// Expressions over one inner expression

TSQLExpressionExpressionItem::~TSQLExpressionExpressionItem() = default;

void TSQLExpressionExpressionItem::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* item = dynamic_cast<const TSQLExpressionExpressionItem*>(&Source);
  if (item != nullptr && item != this)
    Inner_ = CloneChild(item->Inner_);
}

void TSQLExpressionExpressionItem::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, Inner_.get());
}

void TSQLExpressionExpressionItem::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(Inner_.get(), Builder, MultiLine);
}

void TSQLExpressionIs::Assign(const TastExtender& Source) {
  TSQLExpressionLogicalOperation::Assign(Source);
  if (const auto* is = dynamic_cast<const TSQLExpressionIs*>(&Source))
    Not = is->Not;
}

void TSQLExpressionIs::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  Builder.Space();
  Builder.WriteKeyword("IS");
  if (Not) {
    Builder.Space();
    Builder.WriteKeyword("NOT");
  }
}

std::string TSQLExpressionIs::DumpDetails() const {
  return NotFlag(Not);
}

void TSQLExpressionIsNull::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  TSQLExpressionIs::BuildSQLDirect(Builder, MultiLine);
  Builder.Space();
  Builder.WriteKeyword("NULL");
}

void TSQLExpressionIn::Assign(const TastExtender& Source) {
  TSQLExpressionLogicalOperation::Assign(Source);
  if (const auto* in = dynamic_cast<const TSQLExpressionIn*>(&Source))
    Not = in->Not;
}

void TSQLExpressionIn::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  if (Not) {
    Builder.Space();
    Builder.WriteKeyword("NOT");
  }
  Builder.Space();
  Builder.WriteKeyword("IN");
}

std::string TSQLExpressionIn::DumpDetails() const {
  return NotFlag(Not);
}

TSQLExpressionInSet::~TSQLExpressionInSet() = default;

void TSQLExpressionInSet::Assign(const TastExtender& Source) {
  TSQLExpressionIn::Assign(Source);
  const auto* in = dynamic_cast<const TSQLExpressionInSet*>(&Source);
  if (in != nullptr && in != this)
    List_ = CloneChild(in->List_);
}

void TSQLExpressionInSet::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionIn::GetMyChildren(List);
  AddChild(List, List_.get());
}

void TSQLExpressionInSet::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  TSQLExpressionIn::BuildSQLDirect(Builder, MultiLine);
  Builder.Space();
  WriteBracketed(List_.get(), Builder, MultiLine);
}

TSQLExpressionInSubQuery::TSQLExpressionInSubQuery(TastSyntaxProvider* SyntaxProvider)
    : TSQLExpressionIn(SyntaxProvider) {}

TSQLExpressionInSubQuery::~TSQLExpressionInSubQuery() = default;

void TSQLExpressionInSubQuery::Assign(const TastExtender& Source) {
  TSQLExpressionIn::Assign(Source);
  const auto* in = dynamic_cast<const TSQLExpressionInSubQuery*>(&Source);
  if (in != nullptr && in != this)
    SubQuery_ = CloneChild(in->SubQuery_);
}

void TSQLExpressionInSubQuery::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionIn::GetMyChildren(List);
  AddChild(List, SubQuery_.get());
}

void TSQLExpressionInSubQuery::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  TSQLExpressionIn::BuildSQLDirect(Builder, MultiLine);
  Builder.Space();
  WriteBracketed(SubQuery_.get(), Builder, MultiLine);
}

void TSQLExpressionInSubQuery::MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                                           const TSQLProxyClass& ProxyClass) {
  MoveStatementInProxy(SubQuery_, GetSyntaxProvider(), Owner, ProxyClass);
}

TSQLExpressionLikeTemplate::~TSQLExpressionLikeTemplate() = default;

void TSQLExpressionLikeTemplate::Assign(const TastExtender& Source) {
  TSQLExpressionLogicalOperation::Assign(Source);
  const auto* like = dynamic_cast<const TSQLExpressionLikeTemplate*>(&Source);
  if (like == nullptr || like == this)
    return;
  Keyword = like->Keyword;
  Not = like->Not;
  Pattern_ = CloneChild(like->Pattern_);
  Escape_ = CloneChild(like->Escape_);
}

void TSQLExpressionLikeTemplate::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionLogicalOperation::GetMyChildren(List);
  AddChild(List, Pattern_.get());
  AddChild(List, Escape_.get());
}

void TSQLExpressionLikeTemplate::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  if (Not) {
    Builder.Space();
    Builder.WriteKeyword("Not");
  }
  Builder.Space();
  Builder.WriteKeyword(Keyword);
  Builder.Space();
  Write(Pattern_.get(), Builder, MultiLine);
  if (Escape_) {
    Builder.Space();
    Builder.WriteKeyword("Escape");
    Builder.Space();
    Escape_->BuildSQL(Builder, MultiLine);
  }
}

std::string TSQLExpressionLikeTemplate::DumpDetails() const {
  return Not ? "NOT " + Keyword : Keyword;
}

TSQLExpressionCast::~TSQLExpressionCast() = default;

void TSQLExpressionCast::Assign(const TastExtender& Source) {
  TSQLExpressionOperation::Assign(Source);
  const auto* cast = dynamic_cast<const TSQLExpressionCast*>(&Source);
  if (cast != nullptr && cast != this)
    Type_ = CloneChild(cast->Type_);
}

void TSQLExpressionCast::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionOperation::GetMyChildren(List);
  AddChild(List, Type_.get());
}

void TSQLExpressionCast::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteKeyword("Cast");
  Builder.WriteSymbol("(");
  Write(GetInner(), Builder, MultiLine);
  Builder.Space();
  Builder.WriteKeyword("As");
  Builder.Space();
  Write(Type_.get(), Builder, MultiLine);
  Builder.WriteSymbol(")");
}

TSQLExpressionOperator::~TSQLExpressionOperator() = default;

std::string TSQLExpressionOperator::GetOperatorText() const {
  return Operator_ ? Operator_->Text : std::string();
}

void TSQLExpressionOperator::Assign(const TastExtender& Source) {
  TSQLExpressionOperation::Assign(Source);
  const auto* op = dynamic_cast<const TSQLExpressionOperator*>(&Source);
  if (op != nullptr && op != this)
    Operator_ = CloneChild(op->Operator_);
}

void TSQLExpressionOperator::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionOperation::GetMyChildren(List);
  AddChild(List, Operator_.get());
}

void TSQLExpressionOperatorPrefix::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.Space();
  Write(GetOperator(), Builder, MultiLine);
  Write(GetInner(), Builder, MultiLine);
}

void TSQLExpressionOperatorPostfix::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  Write(GetOperator(), Builder, MultiLine);
}

TSQLExpressionOperatorBinary::~TSQLExpressionOperatorBinary() = default;

void TSQLExpressionOperatorBinary::Assign(const TastExtender& Source) {
  TSQLExpressionOperator::Assign(Source);
  const auto* op = dynamic_cast<const TSQLExpressionOperatorBinary*>(&Source);
  if (op != nullptr && op != this)
    Right_ = CloneChild(op->Right_);
}

void TSQLExpressionOperatorBinary::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionOperator::GetMyChildren(List);
  AddChild(List, Right_.get());
}

void TSQLExpressionOperatorBinary::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  Write(GetOperator(), Builder, MultiLine);
  Write(Right_.get(), Builder, MultiLine);
}

void TSQLExpressionCompWithSet::Assign(const TastExtender& Source) {
  TSQLExpressionOperator::Assign(Source);
  if (const auto* comp = dynamic_cast<const TSQLExpressionCompWithSet*>(&Source))
    Quantifier = comp->Quantifier;
}

void TSQLExpressionCompWithSet::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  switch (Quantifier) {
    case cqAll:
      Builder.WriteKeyword("All");
      break;
    case cqSome:
      Builder.WriteKeyword("Some");
      break;
    case cqAny:
      Builder.WriteKeyword("Any");
      break;
    default:
      break;
  }
}

std::string TSQLExpressionCompWithSet::DumpDetails() const {
  switch (Quantifier) {
    case cqAll:
      return "All";
    case cqSome:
      return "Some";
    case cqAny:
      return "Any";
    default:
      return "?" + std::to_string(Quantifier);
  }
}

TSQLExpressionCompWithSubQuery::TSQLExpressionCompWithSubQuery(TastSyntaxProvider* SyntaxProvider)
    : TSQLExpressionCompWithSet(SyntaxProvider) {}

TSQLExpressionCompWithSubQuery::~TSQLExpressionCompWithSubQuery() = default;

void TSQLExpressionCompWithSubQuery::Assign(const TastExtender& Source) {
  TSQLExpressionCompWithSet::Assign(Source);
  const auto* comp = dynamic_cast<const TSQLExpressionCompWithSubQuery*>(&Source);
  if (comp != nullptr && comp != this)
    SubQuery_ = CloneChild(comp->SubQuery_);
}

void TSQLExpressionCompWithSubQuery::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionCompWithSet::GetMyChildren(List);
  AddChild(List, SubQuery_.get());
}

void TSQLExpressionCompWithSubQuery::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  TSQLExpressionCompWithSet::BuildSQLDirect(Builder, MultiLine);
  WriteBracketed(SubQuery_.get(), Builder, MultiLine);
}

void TSQLExpressionCompWithSubQuery::MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                                                 const TSQLProxyClass& ProxyClass) {
  MoveStatementInProxy(SubQuery_, GetSyntaxProvider(), Owner, ProxyClass);
}

TSQLExpressionCompWithSetExpression::TSQLExpressionCompWithSetExpression(
    TastSyntaxProvider* SyntaxProvider)
    : TSQLExpressionCompWithSet(SyntaxProvider) {}

TSQLExpressionCompWithSetExpression::~TSQLExpressionCompWithSetExpression() = default;

void TSQLExpressionCompWithSetExpression::Assign(const TastExtender& Source) {
  TSQLExpressionCompWithSet::Assign(Source);
  const auto* comp = dynamic_cast<const TSQLExpressionCompWithSetExpression*>(&Source);
  if (comp != nullptr && comp != this)
    SetExpression_ = CloneChild(comp->SetExpression_);
}

void TSQLExpressionCompWithSetExpression::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionCompWithSet::GetMyChildren(List);
  AddChild(List, SetExpression_.get());
}

void TSQLExpressionCompWithSetExpression::BuildSQLDirect(TSQLBuilder& Builder,
                                                         bool MultiLine) const {
  TSQLExpressionCompWithSet::BuildSQLDirect(Builder, MultiLine);
  WriteBracketed(SetExpression_.get(), Builder, MultiLine);
}

TSQLExpressionBetween::~TSQLExpressionBetween() = default;

void TSQLExpressionBetween::Assign(const TastExtender& Source) {
  TSQLExpressionOperation::Assign(Source);
  const auto* between = dynamic_cast<const TSQLExpressionBetween*>(&Source);
  if (between == nullptr || between == this)
    return;
  Not = between->Not;
  Low_ = CloneChild(between->Low_);
  High_ = CloneChild(between->High_);
}

void TSQLExpressionBetween::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionOperation::GetMyChildren(List);
  AddChild(List, Low_.get());
  AddChild(List, High_.get());
}

void TSQLExpressionBetween::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  if (Not) {
    Builder.Space();
    Builder.WriteKeyword("Not");
  }
  Builder.Space();
  Builder.WriteKeyword("Between");
  Builder.Space();
  Write(Low_.get(), Builder, MultiLine);
  Builder.Space();
  Builder.WriteKeyword("And");
  Builder.Space();
  Write(High_.get(), Builder, MultiLine);
}

std::string TSQLExpressionBetween::DumpDetails() const {
  return NotFlag(Not);
}

void TSQLExpressionBrackets::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  WriteBracketed(GetInner(), Builder, MultiLine);
}

void TSQLExpressionFieldSelection::Assign(const TastExtender& Source) {
  TSQLExpressionExpressionItem::Assign(Source);
  if (const auto* selection = dynamic_cast<const TSQLExpressionFieldSelection*>(&Source))
    FieldName = selection->FieldName;
}

void TSQLExpressionFieldSelection::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Write(GetInner(), Builder, MultiLine);
  Builder.WriteSymbol(".");
  Builder.WriteIdentifier(FieldName, GetSyntaxProvider());
}

std::string TSQLExpressionFieldSelection::DumpDetails() const {
  return FieldName;
}

void TSQLExpressionNot::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteKeyword("Not");
  Builder.Space();
  Write(GetInner(), Builder, MultiLine);
}

// ---------------------------------------------------------------------------------------
// EXISTS, OVERLAPS and lists

TSQLExpressionExists::TSQLExpressionExists(TastSyntaxProvider* SyntaxProvider)
    : TSQLExpressionItem(SyntaxProvider) {}

TSQLExpressionExists::~TSQLExpressionExists() = default;

void TSQLExpressionExists::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* exists = dynamic_cast<const TSQLExpressionExists*>(&Source);
  if (exists != nullptr && exists != this)
    SubQuery_ = CloneChild(exists->SubQuery_);
}

void TSQLExpressionExists::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, SubQuery_.get());
}

void TSQLExpressionExists::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteKeyword("Exists");
  WriteBracketed(SubQuery_.get(), Builder, MultiLine);
}

void TSQLExpressionExists::MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                                       const TSQLProxyClass& ProxyClass) {
  MoveStatementInProxy(SubQuery_, GetSyntaxProvider(), Owner, ProxyClass);
}

TSQLExpressionOverlaps::~TSQLExpressionOverlaps() = default;

void TSQLExpressionOverlaps::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* overlaps = dynamic_cast<const TSQLExpressionOverlaps*>(&Source);
  if (overlaps == nullptr || overlaps == this)
    return;
  First_ = CloneChild(overlaps->First_);
  Second_ = CloneChild(overlaps->Second_);
  Third_ = CloneChild(overlaps->Third_);
  Fourth_ = CloneChild(overlaps->Fourth_);
}

void TSQLExpressionOverlaps::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  AddChild(List, First_.get());
  AddChild(List, Second_.get());
  AddChild(List, Third_.get());
  AddChild(List, Fourth_.get());
}

void TSQLExpressionOverlaps::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  Builder.WriteSymbol("(");
  Write(First_.get(), Builder, MultiLine);
  Builder.WriteSymbol(",");
  Write(Second_.get(), Builder, MultiLine);
  Builder.WriteSymbol(")");
  Builder.Space();
  Builder.WriteKeyword("Overlaps");
  Builder.Space();
  Builder.WriteSymbol("(");
  Write(Third_.get(), Builder, MultiLine);
  Builder.WriteSymbol(",");
  Write(Fourth_.get(), Builder, MultiLine);
  Builder.WriteSymbol(")");
}

TSQLExpressionItemsList::~TSQLExpressionItemsList() = default;

void TSQLExpressionItemsList::Add(std::unique_ptr<TSQLExpressionItem> Item) {
  // Lists seldom stay at one item: room for four saves the first regrowths.
  if (Items_.capacity() == 0)
    Items_.reserve(4);
  Items_.push_back(std::move(Item));
}

void TSQLExpressionItemsList::Insert(int Index, std::unique_ptr<TSQLExpressionItem> Item) {
  detail::CheckIndex(Index, Items_.size(), true);
  Items_.insert(Items_.begin() + Index, std::move(Item));
}

void TSQLExpressionItemsList::Delete(int Index) {
  std::unique_ptr<TSQLExpressionItem> item = Extract(Index);
}

void TSQLExpressionItemsList::Clear() {
  decltype(Items_) old;
  old.swap(Items_);
}

std::unique_ptr<TSQLExpressionItem> TSQLExpressionItemsList::Extract(int Index) {
  detail::CheckIndex(Index, Items_.size());
  auto item = std::move(Items_[static_cast<std::size_t>(Index)]);
  Items_.erase(Items_.begin() + Index);
  return item;
}

std::unique_ptr<TSQLExpressionItem> TSQLExpressionItemsList::Extract(
    const TSQLExpressionItem* Item) {
  const int index = IndexOf(Item);
  return index < 0 ? nullptr : Extract(index);
}

TSQLExpressionItem* TSQLExpressionItemsList::GetItems(int Index) const {
  detail::CheckIndex(Index, Items_.size());
  return Items_[static_cast<std::size_t>(Index)].get();
}

int TSQLExpressionItemsList::IndexOf(const TSQLExpressionItem* Item) const {
  for (std::size_t i = 0; i < Items_.size(); ++i) {
    if (Items_[i].get() == Item)
      return static_cast<int>(i);
  }
  return -1;
}

void TSQLExpressionItemsList::Assign(const TastExtender& Source) {
  TSQLExpressionItem::Assign(Source);
  const auto* list = dynamic_cast<const TSQLExpressionItemsList*>(&Source);
  if (list == nullptr || list == this)
    return;
  Clear();
  for (const auto& item : list->Items_)
    Items_.push_back(CloneChild(item));
}

void TSQLExpressionItemsList::GetMyChildren(std::vector<TastExtender*>& List) const {
  TSQLExpressionItem::GetMyChildren(List);
  for (const auto& item : Items_)
    AddChild(List, item.get());
}

void TSQLExpressionItemsList::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  detail::WriteCommaList(Items_, Builder, MultiLine);
}

void TSQLExpressionLogicalCollection::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  bool first = true;
  for (int i = 0; i < Count(); ++i) {
    const TSQLExpressionItem* item = GetItems(i);
    if (item == nullptr)
      continue;
    if (!first) {
      Builder.Space();
      WriteLogicalOperator(Builder);
      Builder.Space();
    }
    item->BuildSQL(Builder, MultiLine);
    first = false;
  }
}

void TSQLExpressionAnd::WriteLogicalOperator(TSQLBuilder& Builder) const {
  Builder.WriteKeyword("And");
}

void TSQLExpressionOr::WriteLogicalOperator(TSQLBuilder& Builder) const {
  Builder.WriteKeyword("Or");
}

TSQLExpressionItem* TSQLExpressionsList::GetExpression(int Index) const {
  return dynamic_cast<TSQLExpressionItem*>(GetItems(Index));
}

}  // namespace qorvex
