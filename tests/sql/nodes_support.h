#pragma once

// Builders of hand-made trees and writers of their text, shared by the node tests.

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/nodes.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::test {

// The SQL-92 dialect (double-quoted identifiers).
inline TastSQL92SyntaxProvider& Provider() {
  static TastSQL92SyntaxProvider provider;
  return provider;
}
inline TastSyntaxProvider* P() {
  return &Provider();
}

inline std::string Plain(const TastNode& Node, bool MultiLine) {
  std::string out;
  TSQLBuilderPlainText builder(&out);
  builder.ResetBuilder();
  Node.BuildSQL(builder, MultiLine);
  return out;
}

inline std::string Html(const TastNode& Node, bool MultiLine) {
  std::string out;
  TSQLBuilderHTML builder(&out);
  builder.ResetBuilder();
  Node.BuildSQL(builder, MultiLine);
  return out;
}

using Expr = std::unique_ptr<TSQLExpressionItem>;

// A column reference written a.b.c: parts given outermost first.
inline std::unique_ptr<TSQLObjectColumn> ObjCol(std::initializer_list<const char*> Parts,
                                                TastSyntaxProvider* Provider = P()) {
  auto column = NewNode<TSQLObjectColumn>(Provider);
  for (const char* part : Parts)
    column->AddName(part);
  return column;
}

inline Expr Col(std::initializer_list<const char*> Parts, TastSyntaxProvider* Provider = P()) {
  auto column = NewNode<TSQLExpressionColumn>(Provider);
  column->SetColumn(ObjCol(Parts, Provider));
  return column;
}

inline Expr Const(std::string Text) {
  return NewNode<TSQLExpressionConstant>(P(), std::move(Text));
}

inline std::unique_ptr<TSQLOperator> Op(const char* Text) {
  return NewNode<TSQLOperator>(P(), std::string(Text));
}

inline Expr Bin(Expr Left, const char* Operator, Expr Right) {
  auto node = NewNode<TSQLExpressionOperatorBinary>(P());
  node->SetInner(std::move(Left));
  node->SetOperator(Op(Operator));
  node->SetRight(std::move(Right));
  return node;
}

// a=1 style comparison of a bare column with a constant.
inline Expr Cmp(const char* Column, const char* Operator, const char* Value) {
  return Bin(Col({Column}), Operator, Const(Value));
}

inline Expr Brackets(Expr Inner) {
  auto node = NewNode<TSQLExpressionBrackets>(P());
  node->SetInner(std::move(Inner));
  return node;
}

inline Expr Not(Expr Inner) {
  auto node = NewNode<TSQLExpressionNot>(P());
  node->SetInner(std::move(Inner));
  return node;
}

template <class Collection>
Expr Logical(std::vector<Expr> Items) {
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

template <class... T>
std::vector<Expr> Items(T... Args) {
  std::vector<Expr> items;
  (items.push_back(std::move(Args)), ...);
  return items;
}

inline std::unique_ptr<TSQLDatabaseObject> DbObj(std::initializer_list<const char*> Parts) {
  auto object = NewNode<TSQLDatabaseObject>(P());
  for (const char* part : Parts)
    object->AddName(part);
  return object;
}

// A table source with an optional alias (AS form when As is set).
inline std::unique_ptr<TSQLFromObject> Table(std::initializer_list<const char*> Parts,
                                             const char* Alias = nullptr, bool As = false) {
  auto source = NewNode<TSQLFromObject>(P());
  source->SetDatabaseObject(DbObj(Parts));
  if (Alias != nullptr) {
    if (As)
      source->SetAlias(NewNode<TSQLAliasObjectAsAlias>(P(), std::string(Alias)));
    else
      source->SetAlias(NewNode<TSQLAliasObjectAlias>(P(), std::string(Alias)));
  }
  return source;
}

template <class Kind>
std::unique_ptr<TSQLFromSource> Joined(std::unique_ptr<TSQLFromSource> Source, Expr Condition,
                                       bool Outer = false) {
  auto kind = NewNode<Kind>(P());
  if constexpr (std::is_base_of_v<TSQLJoinKindOuter, Kind>)
    kind->Outer = Outer;
  Source->SetJoinKind(std::move(kind));
  Source->SetJoinCondition(std::move(Condition));
  return Source;
}

template <class Item = TSQLFromClause>
std::unique_ptr<Item> From(std::vector<std::unique_ptr<TSQLFromSource>> Sources) {
  auto item = NewNode<Item>(P());
  for (auto& source : Sources)
    item->Add(std::move(source));
  return item;
}

template <class... T>
std::vector<std::unique_ptr<TSQLFromSource>> Sources(T... Args) {
  std::vector<std::unique_ptr<TSQLFromSource>> sources;
  (sources.push_back(std::move(Args)), ...);
  return sources;
}

inline std::unique_ptr<TSQLSelectItemExpression> SelectExpr(Expr Expression,
                                                            std::unique_ptr<TSQLAlias> Alias = {}) {
  auto item = NewNode<TSQLSelectItemExpression>(P());
  item->SetExpression(std::move(Expression));
  item->SetAlias(std::move(Alias));
  return item;
}

// SELECT items FROM sources [WHERE condition].
inline std::unique_ptr<TSQLSubQuerySelectExpression> Block(
    std::vector<std::unique_ptr<TastNode>> SelectList,
    std::unique_ptr<TSQLFromClause> FromClause = {}, Expr Where = {}) {
  auto block = NewNode<TSQLSubQuerySelectExpression>(P());
  auto items = NewNode<TSQLSelectItems>(P());
  for (auto& item : SelectList)
    items->Add(std::move(item));
  block->SetSelectItems(std::move(items));
  block->SetFromClause(std::move(FromClause));
  block->SetWhere(std::move(Where));
  return block;
}

template <class... T>
std::vector<std::unique_ptr<TastNode>> List(T... Args) {
  std::vector<std::unique_ptr<TastNode>> list;
  (list.push_back(std::move(Args)), ...);
  return list;
}

inline std::unique_ptr<TSQLSelectItemAllColumns> Star() {
  return NewNode<TSQLSelectItemAllColumns>(P());
}

template <class Statement = TSQLSubSelectStatement>
std::unique_ptr<Statement> Stmt(std::unique_ptr<TSQLSubQueryExpression> Operand) {
  auto statement = NewNode<Statement>(P());
  statement->Add(std::move(Operand));
  return statement;
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
