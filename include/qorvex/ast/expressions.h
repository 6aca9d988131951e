#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "qorvex/ast/child.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/ast/types.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TSQLExpressionItem;
class TSQLSubSelectStatement;

// ---------------------------------------------------------------------------------------
// Functions and operators

// One argument of a function call.
class QORVEX_SQL_EXPORT TSQLFunctionParamExpression : public TastNode {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Expression)

 public:
  explicit TSQLFunctionParamExpression(TastSyntaxProvider* SyntaxProvider)
      : TastNode(SyntaxProvider) {}
  ~TSQLFunctionParamExpression() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A named argument, written name=expression.
class QORVEX_SQL_EXPORT TSQLFunctionParamNamedExpression : public TSQLFunctionParamExpression {
  QX_CLASS(TastClass)

 public:
  using TSQLFunctionParamExpression::TSQLFunctionParamExpression;
  std::string Name;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// The argument list of a function call (TSQLFunctionParamExpression items).
class QORVEX_SQL_EXPORT TSQLFunctionParams : public TastNodeWithList {
  QX_CLASS(TastClass)

 public:
  using TastNodeWithList::TastNodeWithList;
};

// A function call: name(arguments), the name optionally qualified (schema.f). The
// arguments are the Params child; the inherited item list is not used.
class QORVEX_SQL_EXPORT TSQLFunction : public TastNodeWithList {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLFunctionParams, Params)

 public:
  explicit TSQLFunction(TastSyntaxProvider* SyntaxProvider) : TastNodeWithList(SyntaxProvider) {}
  ~TSQLFunction() override;
  std::string Name;
  // Qualifying parts written before the name, outermost first; an empty part stays
  // empty (db..f).
  std::vector<std::string> Qualifiers;
  // Whether the name, and each qualifier (same order, empty when none), was quoted.
  bool NameQuoted = false;
  std::vector<bool> QualifiersQuoted;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// An operator's text, such as "=", "<>" or "+", written as a symbol.
class QORVEX_SQL_EXPORT TSQLOperator : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;
  TSQLOperator(TastSyntaxProvider* SyntaxProvider, std::string Text)
      : TastNode(SyntaxProvider), Text(std::move(Text)) {}
  std::string Text;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// ---------------------------------------------------------------------------------------
// Expression base

// Base of every value and condition expression. The logical operations serve the
// criteria grid, which shows a condition as an expression plus the rest of the
// condition.
class QORVEX_SQL_EXPORT TSQLExpressionItem : public TastNode {
  QX_CLASS(TastClass)

 public:
  using TastNode::TastNode;

  // True when every operand depends on `Source` only: a column bound to it, or a node
  // whose operands all do. A node without operands (a constant) answers false.
  virtual bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const;
  // Removes from a condition its left operand when it equals Expr (IsExpressionsEqual);
  // brackets, NOT and AND/OR apply it to every operand. Expr may lie inside this tree.
  virtual void RemoveLExpression(const TSQLExpressionItem* Expr);
  // Gives a condition whose left operand is missing a copy of Expr; brackets, NOT and
  // AND/OR apply it to every operand.
  virtual void RestoreLExpression(const TSQLExpressionItem* Expr);
  // Whether the node is a condition (a predicate, NOT, EXISTS, OVERLAPS, AND/OR).
  virtual bool IsLogical() const { return false; }
  // The condition of this term and the expression it is about. An operation is its own
  // condition and its left operand the expression (Expr = that operand; returns this).
  // Brackets, NOT and AND/OR take the expression of their first operand that has one and
  // are themselves the condition. Any other node stands for "node=True": a new condition
  // whose left operand is a copy of this node is returned and handed to the caller
  // through NewCondition, and Expr is that copy.
  virtual TSQLExpressionItem* FindExpressionItem(TSQLExpressionItem*& Expr,
                                                 std::unique_ptr<TSQLExpressionItem>& NewCondition);

  // The writer of WHERE and HAVING conditions; the same text as BuildSQL.
  void BuildSQLCosmetic(TSQLBuilder& Builder, bool MultiLine) const {
    BuildSQL(Builder, MultiLine);
  }

 protected:
  // The "node=True" condition of FindExpressionItem.
  TSQLExpressionItem* MakeTrueCondition(TSQLExpressionItem*& Expr,
                                        std::unique_ptr<TSQLExpressionItem>& NewCondition) const;
};

// The value of a constant: null, a boolean, an integer, a floating-point number or text.
// The parser keeps every literal as the text typed (quotes included), so the text is
// written back unchanged.
using TSQLConstantValue = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

// The string form written for a constant: null "NULL", booleans "True"/"False", integers
// in decimal, floating-point numbers in the shortest form that reads back to the same
// value, text as it is.
QORVEX_SQL_EXPORT std::string ConstantValueToString(const TSQLConstantValue& Value);

// A literal, written as a number token.
class QORVEX_SQL_EXPORT TSQLExpressionConstant : public TSQLExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionItem::TSQLExpressionItem;
  TSQLExpressionConstant(TastSyntaxProvider* SyntaxProvider, TSQLConstantValue Value);
  TSQLExpressionConstant(TastSyntaxProvider* SyntaxProvider, std::string Text)
      : TSQLExpressionItem(SyntaxProvider), Value(std::move(Text)) {}
  TSQLConstantValue Value;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// A variable, with its prefix character, written as a number token.
class QORVEX_SQL_EXPORT TSQLExpressionVariable : public TSQLExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionItem::TSQLExpressionItem;
  std::string Text;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// A column reference.
class QORVEX_SQL_EXPORT TSQLExpressionColumn : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLObjectColumn, Column)

 public:
  explicit TSQLExpressionColumn(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionItem(SyntaxProvider) {}
  ~TSQLExpressionColumn() override;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A function written without brackets, such as CURRENT_USER.
class QORVEX_SQL_EXPORT TSQLExpressionParameterlessFunction : public TSQLExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionItem::TSQLExpressionItem;
  std::string Name;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// A function call used as a value.
class QORVEX_SQL_EXPORT TSQLExpressionFunction : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLFunction, Function)

 public:
  explicit TSQLExpressionFunction(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionItem(SyntaxProvider) {}
  ~TSQLExpressionFunction() override;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A scalar sub-query: (statement).
class QORVEX_SQL_EXPORT TSQLExpressionSelect : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLSubSelectStatement, SubQuery)

 public:
  explicit TSQLExpressionSelect(TastSyntaxProvider* SyntaxProvider);
  ~TSQLExpressionSelect() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                   const TSQLProxyClass& ProxyClass) override;
};

// One WHEN ... THEN ... branch of a CASE.
class QORVEX_SQL_EXPORT TSQLCaseFunctionItem : public TastNode {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, When)
  QX_CHILD_NODE(TSQLExpressionItem, Then)

 public:
  explicit TSQLCaseFunctionItem(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}
  ~TSQLCaseFunctionItem() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// CASE [operand] WHEN ... THEN ... [ELSE ...] END.
class QORVEX_SQL_EXPORT TSQLExpressionCaseFunction : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Operand)
  QX_CHILD_NODE(TSQLExpressionItem, Else)

 public:
  explicit TSQLExpressionCaseFunction(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionItem(SyntaxProvider) {}
  ~TSQLExpressionCaseFunction() override;

  void AddItem(std::unique_ptr<TSQLCaseFunctionItem> Item);
  int GetItemCount() const { return static_cast<int>(Items_.size()); }
  TSQLCaseFunctionItem* GetItem(int Index) const;
  std::unique_ptr<TSQLCaseFunctionItem> ExtractItem(int Index);

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;

 private:
  TastVector<std::unique_ptr<TSQLCaseFunctionItem>> Items_;
};

// An aggregate over the star: name(*).
class QORVEX_SQL_EXPORT TSQLExpressionAggregate : public TSQLExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionItem::TSQLExpressionItem;
  std::string Name;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// An aggregate of one argument: name(argument).
class QORVEX_SQL_EXPORT TSQLExpressionAggregate1Param : public TSQLExpressionAggregate {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Argument)

 public:
  explicit TSQLExpressionAggregate1Param(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionAggregate(SyntaxProvider) {}
  ~TSQLExpressionAggregate1Param() override;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// An aggregate of one argument with a set quantifier: 1 writes DISTINCT before the
// argument, any other value nothing.
class QORVEX_SQL_EXPORT TSQLExpressionAggregate1ParamWPrefix
    : public TSQLExpressionAggregate1Param {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionAggregate1Param::TSQLExpressionAggregate1Param;
  static constexpr std::uint8_t sqDistinct = 1;
  std::uint8_t Quantifier = 0;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// An aggregate with an argument list: name(arguments).
class QORVEX_SQL_EXPORT TSQLExpressionAggregateWParams : public TSQLExpressionAggregate {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLFunctionParams, Params)

 public:
  explicit TSQLExpressionAggregateWParams(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionAggregate(SyntaxProvider) {}
  ~TSQLExpressionAggregateWParams() override;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// ---------------------------------------------------------------------------------------
// Expressions over one inner expression

// An expression built around one inner expression (for operations, the left operand).
class QORVEX_SQL_EXPORT TSQLExpressionExpressionItem : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Inner)

 public:
  explicit TSQLExpressionExpressionItem(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionItem(SyntaxProvider) {}
  ~TSQLExpressionExpressionItem() override;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// An operation on a left operand (the inner expression): its own condition for the grid.
class QORVEX_SQL_EXPORT TSQLExpressionOperation : public TSQLExpressionExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionExpressionItem::TSQLExpressionExpressionItem;

  void RemoveLExpression(const TSQLExpressionItem* Expr) override;
  void RestoreLExpression(const TSQLExpressionItem* Expr) override;
  TSQLExpressionItem* FindExpressionItem(
      TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) override;
};

// A predicate.
class QORVEX_SQL_EXPORT TSQLExpressionLogicalOperation : public TSQLExpressionOperation {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionOperation::TSQLExpressionOperation;
  bool IsLogical() const override { return true; }
};

// operand IS [NOT].
class QORVEX_SQL_EXPORT TSQLExpressionIs : public TSQLExpressionLogicalOperation {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionLogicalOperation::TSQLExpressionLogicalOperation;
  bool Not = false;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// operand IS [NOT] NULL.
class QORVEX_SQL_EXPORT TSQLExpressionIsNull : public TSQLExpressionIs {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionIs::TSQLExpressionIs;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// operand [NOT] IN.
class QORVEX_SQL_EXPORT TSQLExpressionIn : public TSQLExpressionLogicalOperation {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionLogicalOperation::TSQLExpressionLogicalOperation;
  bool Not = false;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

class TSQLExpressionsList;

// operand [NOT] IN (value, ...).
class QORVEX_SQL_EXPORT TSQLExpressionInSet : public TSQLExpressionIn {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionsList, List)

 public:
  explicit TSQLExpressionInSet(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionIn(SyntaxProvider) {}
  ~TSQLExpressionInSet() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// operand [NOT] IN (statement).
class QORVEX_SQL_EXPORT TSQLExpressionInSubQuery : public TSQLExpressionIn {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLSubSelectStatement, SubQuery)

 public:
  explicit TSQLExpressionInSubQuery(TastSyntaxProvider* SyntaxProvider);
  ~TSQLExpressionInSubQuery() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                   const TSQLProxyClass& ProxyClass) override;
};

// operand [Not] keyword pattern [Escape escape]; the keyword is kept as parsed.
class QORVEX_SQL_EXPORT TSQLExpressionLikeTemplate : public TSQLExpressionLogicalOperation {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Pattern)
  QX_CHILD_NODE(TSQLExpressionItem, Escape)

 public:
  explicit TSQLExpressionLikeTemplate(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionLogicalOperation(SyntaxProvider) {}
  ~TSQLExpressionLikeTemplate() override;
  std::string Keyword = "LIKE";
  bool Not = false;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// Cast(operand As type).
class QORVEX_SQL_EXPORT TSQLExpressionCast : public TSQLExpressionOperation {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLType, Type)

 public:
  explicit TSQLExpressionCast(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionOperation(SyntaxProvider) {}
  ~TSQLExpressionCast() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// An operation with an operator node.
class QORVEX_SQL_EXPORT TSQLExpressionOperator : public TSQLExpressionOperation {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLOperator, Operator)

 public:
  explicit TSQLExpressionOperator(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionOperation(SyntaxProvider) {}
  ~TSQLExpressionOperator() override;

  // The operator's text, empty without an operator.
  std::string GetOperatorText() const;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
};

// A prefix operator: -operand.
class QORVEX_SQL_EXPORT TSQLExpressionOperatorPrefix : public TSQLExpressionOperator {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionOperator::TSQLExpressionOperator;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A postfix operator: operand followed by the operator.
class QORVEX_SQL_EXPORT TSQLExpressionOperatorPostfix : public TSQLExpressionOperator {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionOperator::TSQLExpressionOperator;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A two-operand operator written tight: left+right, a=1. The inner expression is the
// left operand.
class QORVEX_SQL_EXPORT TSQLExpressionOperatorBinary : public TSQLExpressionOperator {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Right)

 public:
  explicit TSQLExpressionOperatorBinary(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionOperator(SyntaxProvider) {}
  ~TSQLExpressionOperatorBinary() override;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// A quantified comparison. The inner expression writes the compared operand together
// with the comparison operator (for example a postfix operator node "a>"); the
// quantifier follows without a space: 0 All, 1 Some, 2 Any. The inherited operator
// field is not written.
class QORVEX_SQL_EXPORT TSQLExpressionCompWithSet : public TSQLExpressionOperator {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionOperator::TSQLExpressionOperator;
  static constexpr std::uint8_t cqAll = 0;
  static constexpr std::uint8_t cqSome = 1;
  static constexpr std::uint8_t cqAny = 2;
  std::uint8_t Quantifier = cqAll;

  // The left operand is the operand of the inner operator node; the operations of the
  // criteria grid act on it there.
  const TSQLExpressionItem* GetComparedOperand() const;
  void RemoveLExpression(const TSQLExpressionItem* Expr) override;
  void RestoreLExpression(const TSQLExpressionItem* Expr) override;
  TSQLExpressionItem* FindExpressionItem(
      TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) override;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// operand op All|Some|Any(statement).
class QORVEX_SQL_EXPORT TSQLExpressionCompWithSubQuery : public TSQLExpressionCompWithSet {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLSubSelectStatement, SubQuery)

 public:
  explicit TSQLExpressionCompWithSubQuery(TastSyntaxProvider* SyntaxProvider);
  ~TSQLExpressionCompWithSubQuery() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                   const TSQLProxyClass& ProxyClass) override;
};

// operand op All|Some|Any(set expression).
class QORVEX_SQL_EXPORT TSQLExpressionCompWithSetExpression : public TSQLExpressionCompWithSet {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, SetExpression)

 public:
  explicit TSQLExpressionCompWithSetExpression(TastSyntaxProvider* SyntaxProvider);
  ~TSQLExpressionCompWithSetExpression() override;

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// operand [Not] Between low And high.
class QORVEX_SQL_EXPORT TSQLExpressionBetween : public TSQLExpressionOperation {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, Low)
  QX_CHILD_NODE(TSQLExpressionItem, High)

 public:
  explicit TSQLExpressionBetween(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionOperation(SyntaxProvider) {}
  ~TSQLExpressionBetween() override;
  bool Not = false;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// (inner).
class QORVEX_SQL_EXPORT TSQLExpressionBrackets : public TSQLExpressionExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionExpressionItem::TSQLExpressionExpressionItem;

  void RemoveLExpression(const TSQLExpressionItem* Expr) override;
  void RestoreLExpression(const TSQLExpressionItem* Expr) override;
  TSQLExpressionItem* FindExpressionItem(
      TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// inner.field: a field of a composite value.
class QORVEX_SQL_EXPORT TSQLExpressionFieldSelection : public TSQLExpressionExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionExpressionItem::TSQLExpressionExpressionItem;
  std::string FieldName;

  void Assign(const TastExtender& Source) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  std::string DumpDetails() const override;
};

// Not inner.
class QORVEX_SQL_EXPORT TSQLExpressionNot : public TSQLExpressionExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionExpressionItem::TSQLExpressionExpressionItem;

  bool IsLogical() const override { return true; }
  void RemoveLExpression(const TSQLExpressionItem* Expr) override;
  void RestoreLExpression(const TSQLExpressionItem* Expr) override;
  TSQLExpressionItem* FindExpressionItem(
      TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// ---------------------------------------------------------------------------------------
// Other predicates and lists

// Exists(statement).
class QORVEX_SQL_EXPORT TSQLExpressionExists : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLSubSelectStatement, SubQuery)

 public:
  explicit TSQLExpressionExists(TastSyntaxProvider* SyntaxProvider);
  ~TSQLExpressionExists() override;

  bool IsLogical() const override { return true; }
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                   const TSQLProxyClass& ProxyClass) override;
};

// (first,second) Overlaps (third,fourth).
class QORVEX_SQL_EXPORT TSQLExpressionOverlaps : public TSQLExpressionItem {
  QX_CLASS(TastClass)
  QX_CHILD_NODE(TSQLExpressionItem, First)
  QX_CHILD_NODE(TSQLExpressionItem, Second)
  QX_CHILD_NODE(TSQLExpressionItem, Third)
  QX_CHILD_NODE(TSQLExpressionItem, Fourth)

 public:
  explicit TSQLExpressionOverlaps(TastSyntaxProvider* SyntaxProvider)
      : TSQLExpressionItem(SyntaxProvider) {}
  ~TSQLExpressionOverlaps() override;

  bool IsLogical() const override { return true; }
  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
};

// An owning list of expressions, written comma-separated.
class QORVEX_SQL_EXPORT TSQLExpressionItemsList : public TSQLExpressionItem {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionItem::TSQLExpressionItem;
  ~TSQLExpressionItemsList() override;

  void Add(std::unique_ptr<TSQLExpressionItem> Item);
  void Insert(int Index, std::unique_ptr<TSQLExpressionItem> Item);
  void Delete(int Index);
  void Clear();
  std::unique_ptr<TSQLExpressionItem> Extract(int Index);
  std::unique_ptr<TSQLExpressionItem> Extract(const TSQLExpressionItem* Item);
  int Count() const { return static_cast<int>(Items_.size()); }
  TSQLExpressionItem* GetItems(int Index) const;
  int IndexOf(const TSQLExpressionItem* Item) const;

  bool ContainsOnlyItemsWithFromSource(const TSQLFromSource* Source) const override;
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;

 private:
  TastVector<std::unique_ptr<TSQLExpressionItem>> Items_;
};

// Conditions joined by one logical operator, written without added brackets.
class QORVEX_SQL_EXPORT TSQLExpressionLogicalCollection : public TSQLExpressionItemsList {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionItemsList::TSQLExpressionItemsList;

  bool IsLogical() const override { return true; }
  void RemoveLExpression(const TSQLExpressionItem* Expr) override;
  void RestoreLExpression(const TSQLExpressionItem* Expr) override;
  TSQLExpressionItem* FindExpressionItem(
      TSQLExpressionItem*& Expr, std::unique_ptr<TSQLExpressionItem>& NewCondition) override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;
  virtual void WriteLogicalOperator(TSQLBuilder& Builder) const = 0;
};

// Conditions joined by AND.
class QORVEX_SQL_EXPORT TSQLExpressionAnd : public TSQLExpressionLogicalCollection {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionLogicalCollection::TSQLExpressionLogicalCollection;
  void WriteLogicalOperator(TSQLBuilder& Builder) const override;
};

// Conditions joined by OR.
class QORVEX_SQL_EXPORT TSQLExpressionOr : public TSQLExpressionLogicalCollection {
  QX_CLASS(TastClass)

 public:
  using TSQLExpressionLogicalCollection::TSQLExpressionLogicalCollection;
  void WriteLogicalOperator(TSQLBuilder& Builder) const override;
};

// A comma-separated list of expressions (IN lists, GROUP BY).
class QORVEX_SQL_EXPORT TSQLExpressionsList : public TastNodeWithList {
  QX_CLASS(TastClass)

 public:
  using TastNodeWithList::TastNodeWithList;

  // The item at Index as an expression (none if it is another kind of node).
  TSQLExpressionItem* GetExpression(int Index) const;
};

// ---------------------------------------------------------------------------------------
// Logical helpers

// True when both are none, or both exist and their one-line texts are equal ignoring
// ASCII letter case.
QORVEX_SQL_EXPORT bool IsExpressionsEqual(const TSQLExpressionItem* A, const TSQLExpressionItem* B);

// Normalises a condition: strips a double NOT, moves NOT into AND/OR (De Morgan) and
// flattens nested AND in AND and OR in OR, dropping empty collections. Returns the new
// root (possibly none); dropped nodes are freed. An OR that ends up directly inside an
// AND, or an AND/OR negated as a whole, is given brackets so that the text keeps its
// meaning.
QORVEX_SQL_EXPORT std::unique_ptr<TSQLExpressionItem> SimplifyLogicalExpression(
    std::unique_ptr<TSQLExpressionItem> E);

// What the query model runs on a WHERE or HAVING condition before loading it.
QORVEX_SQL_EXPORT std::unique_ptr<TSQLExpressionItem> PrepareLogicalExpressionForLoading(
    std::unique_ptr<TSQLExpressionItem> E);

}  // namespace qorvex
