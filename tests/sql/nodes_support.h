#pragma once

// Builders of hand-made trees and writers of their text, shared by the node tests.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/nodes.h"
#include "qorvex/core/errors.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::test {

using Strings = std::vector<std::string>;

// A dialect keeping the base answers; the abstract questions answered from its fields.
class MinimalDialect : public TastSyntaxProvider {
 public:
  Strings Star, OneParam, Prefixed;
  bool Unions = false, DerivedTables = false;
  const TqxParserClass& GetParserClass() const override { throw EqxError("no parser"); }
  const TqxScannerClass& GetScannerClass() const override { throw EqxError("no scanner"); }
  void GetStarAggregateNames(Strings& List) const override { List = Star; }
  void Get1ParamAggregateNames(Strings& List) const override { List = OneParam; }
  void GetPrefixed1ParamAggregateNames(Strings& List) const override { List = Prefixed; }
  bool IsSupportViews() const override { return false; }
  bool IsSupportUnions() const override { return Unions; }
  bool IsSupportBracketsInUnions() const override { return false; }
  bool IsSupportDerivedTables() const override { return DerivedTables; }
  bool IsSupportSubQueryUnions() const override { return false; }
  bool IsSupportSubQueryBracketsInUnions() const override { return false; }
  bool IsSupportSubQueryDerivedTables() const override { return false; }
};

// The SQL-92 dialect (double-quoted identifiers).
inline TastSyntaxProvider* P() {
  static TastSQL92SyntaxProvider provider;
  return &provider;
}

template <class Builder = TSQLBuilderPlainText>
std::string Write(const TastNode& Node, bool MultiLine) {
  std::string out;
  Builder builder(&out);
  builder.ResetBuilder();
  Node.BuildSQL(builder, MultiLine);
  return out;
}
inline std::string Plain(const TastNode& Node, bool MultiLine) {
  return Write(Node, MultiLine);
}
inline std::string Html(const TastNode& Node, bool MultiLine) {
  return Write<TSQLBuilderHTML>(Node, MultiLine);
}

// The text of a hand-built node: one line, multi-line (null: same as one line) and the
// one-line HTML fragment (null: not checked).
struct TextCase {
  const char* what;
  std::function<std::unique_ptr<TastNode>()> make;
  const char* one;
  const char* multi;
  const char* html;
};
inline void PrintTo(const TextCase& Case, std::ostream* Out) {
  *Out << Case.what;
}
inline std::string CaseName(const testing::TestParamInfo<TextCase>& Info) {
  return "case" + std::to_string(Info.index);
}
// Checks the three texts, and that a copy is of the same class and writes the same.
inline void CheckText(const TextCase& Case) {
  std::unique_ptr<TastNode> node = Case.make();
  EXPECT_EQ(Plain(*node, false), Case.one);
  EXPECT_EQ(Plain(*node, true), Case.multi != nullptr ? Case.multi : Case.one);
  if (Case.html != nullptr) {
    EXPECT_EQ(Html(*node, false), Case.html);
  }
  std::unique_ptr<TastNode> copy = node->Clone();
  EXPECT_EQ(&copy->ClassType(), &node->ClassType());
  EXPECT_EQ(Plain(*copy, true), Plain(*node, true));
}

using Expr = std::unique_ptr<TSQLExpressionItem>;

// Trees read by the parser: an expression, a condition, a statement.
inline Expr Ex(const std::string& Text) {
  return P()->ParseExpression(Text);
}
inline Expr Cond(const std::string& Text) {
  return P()->ParseLogicalExpression(Text);
}
inline std::unique_ptr<TSQLSelectStatement> Sql(const std::string& Text) {
  return P()->ParseSelect(Text);
}

// A vector of move-only values.
template <class T, class... A>
std::vector<T> Vec(A... Args) {
  std::vector<T> items;
  (items.push_back(std::move(Args)), ...);
  return items;
}
template <class... A>
std::vector<Expr> Items(A... Args) {
  return Vec<Expr>(std::move(Args)...);
}
template <class... A>
std::vector<std::unique_ptr<TSQLFromSource>> Sources(A... Args) {
  return Vec<std::unique_ptr<TSQLFromSource>>(std::move(Args)...);
}
// A name written a.b.c: parts given outermost first.
template <class T>
std::unique_ptr<T> Name(const Strings& Parts, TastSyntaxProvider* Provider = P()) {
  auto name = NewNode<T>(Provider);
  for (const std::string& part : Parts)
    name->AddName(part);
  return name;
}

inline Expr Col(const Strings& Parts) {
  auto column = NewNode<TSQLExpressionColumn>(P());
  column->SetColumn(Name<TSQLObjectColumn>(Parts));
  return column;
}

inline Expr Const(std::string Text) {
  return NewNode<TSQLExpressionConstant>(P(), std::move(Text));
}

inline std::unique_ptr<TSQLOperator> Op(const char* Text) {
  return NewNode<TSQLOperator>(P(), std::string(Text));
}

template <class T>
std::unique_ptr<T> WithInner(Expr Inner) {
  auto node = NewNode<T>(P());
  node->SetInner(std::move(Inner));
  return node;
}
inline Expr Brackets(Expr Inner) {
  return WithInner<TSQLExpressionBrackets>(std::move(Inner));
}
inline Expr Not(Expr Inner) {
  return WithInner<TSQLExpressionNot>(std::move(Inner));
}

inline Expr Bin(Expr Left, const char* Operator, Expr Right) {
  auto node = WithInner<TSQLExpressionOperatorBinary>(std::move(Left));
  node->SetOperator(Op(Operator));
  node->SetRight(std::move(Right));
  return node;
}
// a=1 style comparison of a bare column with a constant.
inline Expr Cmp(const char* Column, const char* Operator, const char* Value) {
  return Bin(Col({Column}), Operator, Const(Value));
}

template <class Collection>
std::unique_ptr<Collection> Logical(std::vector<Expr> Items) {
  auto node = NewNode<Collection>(P());
  for (auto& item : Items)
    node->Add(std::move(item));
  return node;
}
inline Expr And(std::vector<Expr> Items) {
  return Logical<TSQLExpressionAnd>(std::move(Items));
}
inline Expr Or(std::vector<Expr> Items) {
  return Logical<TSQLExpressionOr>(std::move(Items));
}

// name() without an argument list.
inline std::unique_ptr<TSQLFunction> Function(const char* FunctionName) {
  auto function = NewNode<TSQLFunction>(P());
  function->Name = FunctionName;
  return function;
}

template <class T>
std::unique_ptr<T> Named(const char* Text) {
  return NewNode<T>(P(), std::string(Text));
}

// A table source with an optional alias (AS form when As is set).
inline std::unique_ptr<TSQLFromObject> Table(const Strings& Parts, const char* Alias = nullptr,
                                             bool As = false) {
  auto source = NewNode<TSQLFromObject>(P());
  source->SetDatabaseObject(Name<TSQLDatabaseObject>(Parts));
  if (Alias != nullptr && As)
    source->SetAlias(Named<TSQLAliasObjectAsAlias>(Alias));
  else if (Alias != nullptr)
    source->SetAlias(Named<TSQLAliasObjectAlias>(Alias));
  return source;
}

template <class Kind>
std::unique_ptr<Kind> JoinKind(bool Outer = false) {
  auto kind = NewNode<Kind>(P());
  if constexpr (std::is_base_of_v<TSQLJoinKindOuter, Kind>)
    kind->Outer = Outer;
  return kind;
}
template <class Item = TSQLFromClause>
std::unique_ptr<Item> From(std::vector<std::unique_ptr<TSQLFromSource>> Sources) {
  auto item = NewNode<Item>(P());
  for (auto& source : Sources)
    item->Add(std::move(source));
  return item;
}

// Every node of a tree (extenders included), in walk order.
inline void CollectNodes(TastExtender& Root, std::vector<TastExtender*>& Out) {
  Out.push_back(&Root);
  std::vector<TastExtender*> children;
  Root.GetMyChildren(children);
  for (TastExtender* child : children)
    CollectNodes(*child, Out);
}

}  // namespace qorvex::test
