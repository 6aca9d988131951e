#include "qorvex/model/select_list.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "ast/source_index.h"
#include "model/model_nodes.h"
#include "model/model_util.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/query.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"
#include "qorvex/syntax/components.h"

namespace qorvex {

using model::As;
using model::Downcast;

namespace {

constexpr TqxQueryBuilderGroupByTypes kWhereTypes{gtWhere};
constexpr TqxQueryBuilderGroupByTypes kHavingTypes{gtGroupBy, gtHaving, gtAggregateStar,
                                                   gtAggregate};

bool IsAggregateType(TqxQueryBuilderGroupByType Type) {
  return Type == gtAggregate || Type == gtAggregateStar;
}

// A criteria cell that asks for a logical expression to be true or false.
bool IsBooleanCell(const std::string& Text, bool& Value) {
  std::string compact;
  for (char c : Text) {
    if (!model::IsBlank(c))
      compact += model::UpperChar(c);
  }
  if (compact == "=TRUE") {
    Value = true;
    return true;
  }
  if (compact == "=FALSE") {
    Value = false;
    return true;
  }
  return false;
}

// The cell "=True" or "=False": a comparison whose left operand is the row's expression.
std::unique_ptr<TSQLExpressionItem> MakeBooleanCell(TastSyntaxProvider* Provider, bool Value) {
  auto comparison = NewNode<TSQLExpressionOperatorBinary>(Provider);
  comparison->SetOperator(NewNode<TSQLOperator>(Provider, std::string("=")));
  comparison->SetRight(NewNode<TSQLExpressionConstant>(Provider, TSQLConstantValue(Value)));
  return comparison;
}

std::unique_ptr<TSQLExpressionItem> InBrackets(std::unique_ptr<TSQLExpressionItem> E) {
  auto brackets = NewNode<TSQLExpressionBrackets>(E->GetSyntaxProvider());
  brackets->SetInner(std::move(E));
  return brackets;
}

bool IsCollection(const TSQLExpressionItem* E) {
  return As<const TSQLExpressionLogicalCollection>(E) != nullptr;
}

TSQLExpressionItem* StripBrackets(TSQLExpressionItem* E) {
  while (auto* brackets = As<TSQLExpressionBrackets>(E)) {
    if (brackets->GetInner() == nullptr)
      break;
    E = brackets->GetInner();
  }
  return E;
}

// Whether a binary operator compares its operands (rather than computing a value).
bool IsComparisonOperator(const std::string& Operator) {
  static const char* const kComparisons[] = {"=",  "<>", "!=", "<",  ">",
                                             "<=", ">=", "^=", "!<", "!>"};
  return std::any_of(std::begin(kComparisons), std::end(kComparisons),
                     [&](const char* Known) { return Operator == Known; });
}

// Whether an expression is a condition: a predicate, NOT, AND/OR, or a comparison
// (plain or quantified), in any brackets.
bool IsCondition(const TSQLExpressionItem* E) {
  E = StripBrackets(const_cast<TSQLExpressionItem*>(E));
  if (E == nullptr)
    return false;
  if (E->IsLogical() || As<const TSQLExpressionCompWithSet>(E) != nullptr)
    return true;
  const auto* binary = As<const TSQLExpressionOperatorBinary>(E);
  return binary != nullptr && IsComparisonOperator(binary->GetOperatorText());
}

// "X=True" and "X=False" with a condition X are written as X and Not X.
std::unique_ptr<TSQLExpressionItem> FixBooleanComparison(std::unique_ptr<TSQLExpressionItem> E) {
  auto* binary = As<TSQLExpressionOperatorBinary>(E.get());
  if (binary == nullptr || binary->GetOperatorText() != "=" || !IsCondition(binary->GetInner()))
    return E;
  const auto* constant = As<const TSQLExpressionConstant>(binary->GetRight());
  if (constant == nullptr || !std::holds_alternative<bool>(constant->Value))
    return E;
  const bool value = std::get<bool>(constant->Value);
  std::unique_ptr<TSQLExpressionItem> inner = binary->ExtractInner();
  if (value)
    return inner;
  TastSyntaxProvider* provider = inner->GetSyntaxProvider();
  if (IsCollection(inner.get()))
    inner = InBrackets(std::move(inner));
  auto negation = NewNode<TSQLExpressionNot>(provider);
  negation->SetInner(std::move(inner));
  return negation;
}

// FixBooleanComparison on every comparison of a cell, through brackets, NOT, AND and OR
// (a cell may hold "=True" twice when a condition was given twice). An AND or OR that
// comes out under a NOT is bracketed.
std::unique_ptr<TSQLExpressionItem> FixBooleanCells(std::unique_ptr<TSQLExpressionItem> E) {
  if (!E)
    return E;
  if (auto* collection = As<TSQLExpressionLogicalCollection>(E.get())) {
    for (int i = 0; i < collection->Count(); ++i)
      collection->Insert(i, FixBooleanCells(collection->Extract(i)));
    return E;
  }
  if (As<TSQLExpressionBrackets>(E.get()) != nullptr || As<TSQLExpressionNot>(E.get()) != nullptr) {
    auto* holder = static_cast<TSQLExpressionExpressionItem*>(E.get());
    if (holder->GetInner() != nullptr) {
      std::unique_ptr<TSQLExpressionItem> inner = FixBooleanCells(holder->ExtractInner());
      if (As<TSQLExpressionNot>(E.get()) != nullptr && IsCollection(inner.get()))
        inner = InBrackets(std::move(inner));
      holder->SetInner(std::move(inner));
    }
    return E;
  }
  return FixBooleanComparison(std::move(E));
}

// Takes a node out of the brackets around it.
std::unique_ptr<TSQLExpressionItem> WithoutBrackets(std::unique_ptr<TSQLExpressionItem> E) {
  while (auto* brackets = As<TSQLExpressionBrackets>(E.get())) {
    if (brackets->GetInner() == nullptr)
      break;
    E = brackets->ExtractInner();
  }
  return E;
}

// The expression that a criteria cell made of Term is about: the left operand shared by
// every predicate in it (through brackets, NOT, AND and OR). Null when Term cannot be a
// cell (EXISTS, OVERLAPS, a value, predicates about different expressions): such a term
// stays a whole condition.
const TSQLExpressionItem* CellSubject(const TSQLExpressionItem* Term) {
  Term = StripBrackets(const_cast<TSQLExpressionItem*>(Term));
  if (Term == nullptr)
    return nullptr;
  if (const auto* quantified = As<const TSQLExpressionCompWithSet>(Term))
    return quantified->GetComparedOperand();
  if (const auto* binary = As<const TSQLExpressionOperatorBinary>(Term))
    return IsComparisonOperator(binary->GetOperatorText()) ? binary->GetInner() : nullptr;
  if (As<const TSQLExpressionLogicalOperation>(Term) != nullptr ||
      As<const TSQLExpressionBetween>(Term) != nullptr)
    return static_cast<const TSQLExpressionOperation*>(Term)->GetInner();
  if (const auto* negation = As<const TSQLExpressionNot>(Term))
    return CellSubject(negation->GetInner());
  if (const auto* collection = As<const TSQLExpressionLogicalCollection>(Term)) {
    const TSQLExpressionItem* subject = nullptr;
    for (int i = 0; i < collection->Count(); ++i) {
      const TSQLExpressionItem* own = CellSubject(collection->GetItems(i));
      if (own == nullptr || (subject != nullptr && !model::SameExpressionText(own, subject)))
        return nullptr;
      subject = own;
    }
    return subject;
  }
  return nullptr;
}

// Joins conditions by a new AND or OR; one condition stands alone, none gives null.
template <class Collection>
std::unique_ptr<TSQLExpressionItem> Join(std::vector<std::unique_ptr<TSQLExpressionItem>> Items,
                                         TastSyntaxProvider* Provider) {
  if (Items.empty())
    return nullptr;
  if (Items.size() == 1)
    return std::move(Items.front());
  auto collection = NewNode<Collection>(Provider);
  for (auto& item : Items)
    collection->Add(std::move(item));
  return collection;
}

// Splits a condition into the items of a logical collection of class Collection,
// descending through brackets and nested collections of the same class. Brackets around
// an item go, except around an AND or OR when StripAll is false.
template <class Collection>
void SplitLogical(std::unique_ptr<TSQLExpressionItem> E,
                  std::vector<std::unique_ptr<TSQLExpressionItem>>& Items, bool StripAll) {
  if (!E)
    return;
  TSQLExpressionItem* core = E.get();
  while (auto* brackets = As<TSQLExpressionBrackets>(core)) {
    if (brackets->GetInner() == nullptr)
      break;
    core = brackets->GetInner();
  }
  if (auto* collection = As<Collection>(core)) {
    // Taken out from the back (each removal is then cheap) and split in order.
    std::vector<std::unique_ptr<TSQLExpressionItem>> parts;
    parts.reserve(static_cast<std::size_t>(collection->Count()));
    while (collection->Count() > 0)
      parts.push_back(collection->Extract(collection->Count() - 1));
    for (auto it = parts.rbegin(); it != parts.rend(); ++it)
      SplitLogical<Collection>(std::move(*it), Items, StripAll);
    return;
  }
  const bool keep = !StripAll && As<TSQLExpressionLogicalCollection>(core) != nullptr;
  if (keep || core == E.get()) {
    Items.push_back(std::move(E));
    return;
  }
  // Takes the core out of its brackets.
  TSQLExpressionItem* parent = E.get();
  while (auto* brackets = As<TSQLExpressionBrackets>(parent)) {
    if (brackets->GetInner() == core) {
      Items.push_back(brackets->ExtractInner());
      return;
    }
    parent = brackets->GetInner();
  }
}

}  // namespace

namespace model {

std::unique_ptr<TSQLObjectColumn> MakeColumn(TqxDatasource* DS, const std::string& Field) {
  TSQLFromSource* source = DS->GetFromSource();
  TastSyntaxProvider* provider = source != nullptr ? source->GetSyntaxProvider() : nullptr;
  auto column = NewNode<TSQLObjectColumn>(provider);
  column->AddPrefix(Field);
  const std::string alias = DS->GetAlias();
  if (!alias.empty()) {
    column->AddPrefix(alias, source->GetAlias() != nullptr && source->GetAlias()->Quoted);
  } else if (auto* object = As<TSQLFromObject>(source)) {
    if (const TSQLDatabaseObject* name = object->GetDatabaseObject()) {
      for (int i = 0; i < name->Count(); ++i)
        column->AddPrefix(name->GetNames(i), name->IsQuoted(i));
    }
  }
  column->SetFromSource(source);
  return column;
}

std::unique_ptr<TSQLExpressionColumn> MakeColumnExpression(TqxDatasource* DS,
                                                           const std::string& Field) {
  std::unique_ptr<TSQLObjectColumn> column = MakeColumn(DS, Field);
  auto expression = NewNode<TSQLExpressionColumn>(column->GetSyntaxProvider());
  expression->SetColumn(std::move(column));
  return expression;
}

std::unique_ptr<TSQLSubQuerySelectExpression> MakeEmptySelect(TastSyntaxProvider* Provider) {
  auto select = NewNode<TSQLSubQuerySelectExpression>(Provider);
  select->SetSelectItems(NewNode<TSQLSelectItems>(Provider));
  select->SetFromClause(NewNode<TSQLFromClause>(Provider));
  select->SetGroupBy(NewNode<TSQLGroupByList>(Provider));
  return select;
}

}  // namespace model

// ---------------------------------------------------------------------------------------
// TqxSelectItem

TqxSelectItem::TqxSelectItem(TqxSelectList* List)
    : TqxQueryBuilderControlOwner(List->GetQueryBuilder(), List), List_(List) {}

TqxSelectItem::~TqxSelectItem() {
  BeginDestroy();
}

int TqxSelectItem::GetIndex() const {
  return List_->IndexOf(this);
}

TSQLExpressionItem* TqxSelectItem::GetExpressionItem() const {
  return As<TSQLExpressionItem>(Expression_.get());
}

std::string TqxSelectItem::GetExpressionText() const {
  return Expression_ ? Expression_->GetSimpleSQL() : std::string();
}

void TqxSelectItem::BindNames(TastExtender& Root) const {
  if (TqxUnionSubQuery* operand = List_->GetUnionSubQuery())
    operand->BindNames(Root);
}

namespace {
TqxBaseSyntaxProvider* RequireSyntaxProvider(const TqxQueryBuilderControlOwner& Owner) {
  TqxBaseSyntaxProvider* provider =
      Owner.GetQueryBuilder() != nullptr ? Owner.GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  if (provider == nullptr)
    throw EqxError("No syntax provider specified!");
  return provider;
}
}  // namespace

void TqxSelectItem::SetExpression(const std::string& Text) {
  const std::string text = model::Trim(Text);
  if (text.empty()) {
    if (!Expression_)
      return;
    TqxUpdateGuard guard(this);
    List_->RemoveFromSorted(this);
    SortType_ = stNone;
    Expression_.reset();
    Conditions_.clear();
    Alias_.clear();
    AliasQuoted_ = false;
    Select_ = false;
    GroupByType_ = gtExpression;
    NotifySQLUpdated();
    return;
  }
  if (Expression_ && text == GetExpressionText())
    return;
  TqxBaseSyntaxProvider* provider = RequireSyntaxProvider(*this);
  // A value expression; else a select item ("*", "t.*", "expr AS alias"); else a
  // condition (a row that only filters). The value expression's error is reported.
  std::unique_ptr<TastNode> node;
  std::string alias;
  bool aliasQuoted = false;
  const TastClass* aliasClass = nullptr;
  try {
    node = provider->ParseExpression(text);
  } catch (const EqxSQLError&) {
    try {
      std::unique_ptr<TSQLSelectItem> item = provider->ParseSelectItem(text);
      if (auto* expression = As<TSQLSelectItemExpression>(item.get())) {
        if (expression->GetAlias() != nullptr) {
          alias = expression->GetAlias()->Name;
          aliasQuoted = expression->GetAlias()->Quoted;
          aliasClass = &expression->GetAlias()->ClassType();
        }
        node = expression->ExtractExpression();
      } else {
        node = std::move(item);
      }
    } catch (const EqxSQLError&) {
    }
    if (!node) {
      try {
        node = provider->ParseLogicalExpression(text);
      } catch (const EqxSQLError&) {
      }
    }
    if (!node)
      throw;
  }
  BindNames(*node);
  TqxUpdateGuard guard(this);
  const bool wasEmpty = !Expression_;
  SetExpressionNode(std::move(node));
  if (!alias.empty()) {
    Alias_ = alias;
    AliasQuoted_ = aliasQuoted;
    AliasClass_ = aliasClass;
  }
  if (wasEmpty)
    Select_ = IsCanSelect();
  CheckItemProperties();
  NotifySQLUpdated();
  List_->EnsureEmptyRow();
}

void TqxSelectItem::SetFieldExpression(TqxDatasource* DS, const std::string& Field) {
  if (DS == nullptr || DS->GetFromSource() == nullptr)
    throw EqxError("A field needs a datasource");
  std::unique_ptr<TastNode> node;
  if (Field == "*") {
    auto item = NewNode<TSQLSelectItemAllTableColumns>(DS->GetFromSource()->GetSyntaxProvider());
    std::unique_ptr<TSQLObjectColumn> column = model::MakeColumn(DS, "*");
    auto qualifier = NewNode<TSQLDatabaseObject>(column->GetSyntaxProvider());
    for (int i = 1; i < column->Count(); ++i)
      qualifier->AddPrefix(column->GetNames(i), column->IsQuoted(i));
    qualifier->SetFromSource(DS->GetFromSource());
    item->SetQualifier(std::move(qualifier));
    node = std::move(item);
  } else {
    node = model::MakeColumnExpression(DS, Field);
  }
  TqxUpdateGuard guard(this);
  SetExpressionNode(std::move(node));
  Select_ = true;
  CheckItemProperties();
  NotifySQLUpdated();
  List_->EnsureEmptyRow();
}

void TqxSelectItem::LoadFromAST(std::unique_ptr<TastNode> Node) {
  if (!Node)
    return;
  if (auto* item = As<TSQLSelectItemExpression>(Node.get())) {
    if (const TSQLAlias* alias = item->GetAlias()) {
      Alias_ = alias->Name;
      AliasQuoted_ = alias->Quoted;
      AliasClass_ = &alias->ClassType();
    }
    SetExpressionNode(item->ExtractExpression());
    Select_ = true;
  } else if (As<TSQLSelectItem>(Node.get()) != nullptr) {
    SetExpressionNode(std::move(Node));
    Select_ = true;
  } else {
    SetExpressionNode(std::move(Node));
  }
  NotifySQLUpdated();
}

void TqxSelectItem::SetExpressionNode(std::unique_ptr<TastNode> Node) {
  Expression_ = std::move(Node);
  LoadSubQueries(Expression_.get());
  UpdateGroupByTypeForExpression();
}

void TqxSelectItem::UpdateGroupByTypeForExpression() {
  const TqxQueryBuilderGroupByType calculated = CalcGroupByType();
  if (IsAggregateType(calculated)) {
    if (GroupByType_ != gtWhere || !HasConditions())
      GroupByType_ = calculated;
  } else if (IsAggregateType(GroupByType_)) {
    GroupByType_ = HasConditions() ? gtWhere : gtExpression;
  }
}

void TqxSelectItem::SetSelect(bool Value) {
  if (Value == Select_)
    return;
  if (Value && !IsCanSelect())
    throw EqxError("Can't select this expression");
  Select_ = Value;
  NotifySQLUpdated();
}

void TqxSelectItem::SetAlias(const std::string& Value) {
  std::string name = Value;
  bool quoted = false;
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  if (provider != nullptr && provider->GetASTSyntaxProvider()->ReadQuotedName(Value, name))
    quoted = !name.empty();
  if (name == Alias_ && quoted == AliasQuoted_)
    return;
  if (!name.empty() && !IsSupportsAlias())
    throw EqxError("Can't assign an alias to this expression");
  Alias_ = std::move(name);
  AliasQuoted_ = quoted;
  NotifySQLUpdated();
}

// ---- sorting

void TqxSelectItem::SetSortType(TqxQueryBuilderItemSortType Value) {
  if (Value == SortType_)
    return;
  if (Value != stNone && !IsCanSort())
    throw EqxError("Can't sort by this expression");
  if (Value == stNone) {
    List_->RemoveFromSorted(this);
  } else if (GetSortOrder() == 0) {
    List_->Sorted_.push_back(this);
  }
  SortType_ = Value;
  NotifySQLUpdated();
}

std::string TqxSelectItem::GetSortTypeName() const {
  switch (SortType_) {
    case stAsc:
      return "Ascending";
    case stDesc:
      return "Descending";
    default:
      return {};
  }
}

void TqxSelectItem::GetSortTypeNames(std::vector<std::string>& List) {
  List = {"Ascending", "Descending"};
}

void TqxSelectItem::SetSortTypeName(const std::string& Name) {
  const std::string name = model::Trim(Name);
  if (name.empty())
    SetSortType(stNone);
  else if (model::SameText(name, "Ascending"))
    SetSortType(stAsc);
  else if (model::SameText(name, "Descending"))
    SetSortType(stDesc);
  else
    throw EqxError("Unknown sort type \"" + name + "\"");
}

int TqxSelectItem::GetSortOrder() const {
  const auto& sorted = List_->Sorted_;
  auto it = std::find(sorted.begin(), sorted.end(), this);
  return it == sorted.end() ? 0 : static_cast<int>(it - sorted.begin()) + 1;
}

void TqxSelectItem::SetSortOrder(int Value) {
  if (Value <= 0) {
    SetSortType(stNone);
    return;
  }
  if (!IsCanSort())
    throw EqxError("Can't sort by this expression");
  auto& sorted = List_->Sorted_;
  const int current = GetSortOrder();
  const int limit = static_cast<int>(sorted.size()) + (current == 0 ? 1 : 0);
  const int target = std::min(Value, limit);
  if (target == current)
    return;
  List_->RemoveFromSorted(this);
  sorted.insert(sorted.begin() + (target - 1), this);
  if (SortType_ == stNone)
    SortType_ = stAsc;
  NotifySQLUpdated();
}

std::string TqxSelectItem::GetSortOrderName() const {
  const int order = GetSortOrder();
  return order == 0 ? std::string() : std::to_string(order);
}

void TqxSelectItem::SetSortOrderName(const std::string& Name) {
  const std::string name = model::Trim(Name);
  if (name.empty()) {
    SetSortOrder(0);
    return;
  }
  if (name.size() > 9 ||
      !std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; }))
    throw EqxError("Invalid sort order \"" + name + "\"");
  SetSortOrder(std::stoi(name));
}

// ---- grouping

std::string TqxSelectItem::GroupByTypeName(TqxQueryBuilderGroupByType Type) {
  switch (Type) {
    case gtExpression:
      return "Expression";
    case gtGroupBy:
      return "Group By";
    case gtHaving:
      return "Having";
    case gtWhere:
      return "Where";
    case gtAggregateStar:
    case gtAggregate:
      return "Aggregate";
  }
  return {};
}

std::string TqxSelectItem::GetGroupByTypeName() const {
  return GroupByTypeName(GroupByType_);
}

void TqxSelectItem::GetGroupByNames(std::vector<std::string>& List) const {
  List.clear();
  if (GetExpressionItem() == nullptr)
    return;
  if (IsAggregateType(CalcGroupByType()))
    List = {"Aggregate", "Where"};
  else
    List = {"Expression", "Group By", "Having", "Where"};
}

void TqxSelectItem::SetGroupByType(TqxQueryBuilderGroupByType Value) {
  if (Value == GroupByType_)
    return;
  if (GetExpressionItem() == nullptr)
    throw EqxError("Can't group by this expression");
  GroupByType_ = Value;
  NotifySQLUpdated();
}

void TqxSelectItem::SetGroupByTypeName(const std::string& Name) {
  const std::string name = model::Trim(Name);
  std::vector<std::string> names;
  GetGroupByNames(names);
  for (const std::string& known : names) {
    if (!model::SameText(known, name))
      continue;
    if (known == "Aggregate")
      SetGroupByType(CalcGroupByType());
    else if (known == "Group By")
      SetGroupByType(gtGroupBy);
    else if (known == "Having")
      SetGroupByType(gtHaving);
    else if (known == "Where")
      SetGroupByType(gtWhere);
    else
      SetGroupByType(gtExpression);
    return;
  }
  throw EqxError("Unknown group by type \"" + name + "\"");
}

TqxQueryBuilderGroupByType TqxSelectItem::CalcGroupByType() const {
  const TqxBaseSyntaxProvider* provider =
      GetQueryBuilder() != nullptr ? GetQueryBuilder()->GetSyntaxProvider() : nullptr;
  const auto* aggregate = As<const TSQLExpressionAggregate>(Expression_.get());
  if (provider == nullptr || aggregate == nullptr)
    return gtExpression;
  if (As<const TSQLExpressionAggregate1ParamWPrefix>(aggregate) != nullptr) {
    if (provider->IsNameOfPrefixedAggregate(aggregate->Name))
      return gtAggregate;
  } else if (As<const TSQLExpressionAggregate1Param>(aggregate) != nullptr) {
    if (provider->IsNameOfAggregate(aggregate->Name))
      return gtAggregate;
  }
  if (provider->IsNameOfStarAggregate(aggregate->Name))
    return gtAggregateStar;
  return gtExpression;
}

// ---- criteria

std::string TqxSelectItem::GetCondition(int Index) const {
  const TSQLExpressionItem* condition = GetConditionNode(Index);
  return condition != nullptr ? condition->GetSimpleSQL() : std::string();
}

TSQLExpressionItem* TqxSelectItem::GetConditionNode(int Index) const {
  if (Index < 0 || Index >= GetConditionsCount())
    return nullptr;
  return Conditions_[static_cast<std::size_t>(Index)].get();
}

std::unique_ptr<TSQLExpressionItem> TqxSelectItem::GetFullCondition(int Index) const {
  const TSQLExpressionItem* condition = GetConditionNode(Index);
  if (condition == nullptr)
    return nullptr;
  std::unique_ptr<TSQLExpressionItem> copy = CloneNode(*condition);
  if (const TSQLExpressionItem* expression = GetExpressionItem())
    copy->RestoreLExpression(expression);
  return FixBooleanCells(std::move(copy));
}

void TqxSelectItem::SetConditionNode(int Index, std::unique_ptr<TSQLExpressionItem> Condition) {
  if (Index < 0)
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  if (Condition) {
    if (const TSQLExpressionItem* expression = GetExpressionItem())
      Condition->RemoveLExpression(expression);
    LoadSubQueries(Condition.get());
  }
  if (Index >= GetConditionsCount()) {
    if (!Condition)
      return;
    Conditions_.resize(static_cast<std::size_t>(Index) + 1);
  }
  Conditions_[static_cast<std::size_t>(Index)] = std::move(Condition);
  ShrinkConditionsList();
  NotifySQLUpdated();
}

// A criteria cell accepts:
// - a condition without its left operand ("> 5", "Between 1 And 2", "In (1, 2)",
//   "Is Null", "> 1 Or < 0"): the row's expression is put in front of every comparison;
// - a full condition ("a.x > b.y"), taken as it is;
// - "=TRUE" or "=FALSE" for a row whose expression is itself a condition: the expression
//   is written as it is, or negated;
// - a bare value ("5"), read as "= 5".
void TqxSelectItem::SetCondition(int Index, const std::string& Text) {
  if (Index < 0)
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  const std::string text = model::Trim(Text);
  if (text == GetCondition(Index) && (!text.empty() || GetConditionNode(Index) == nullptr))
    return;
  if (text.empty()) {
    SetConditionNode(Index, nullptr);
    return;
  }
  if (GetExpressionItem() == nullptr)
    throw EqxError("Can't set a condition on a row without an expression");
  TqxBaseSyntaxProvider* provider = RequireSyntaxProvider(*this);
  std::unique_ptr<TSQLExpressionItem> condition;
  bool value = false;
  if (IsBooleanCell(text, value)) {
    condition = MakeBooleanCell(provider->GetASTSyntaxProvider(), value);
  } else {
    try {
      condition = provider->ParseLogicalExpression(text);
    } catch (const EqxSQLError&) {
      try {
        condition = provider->ParseLogicalExpression("=" + text);
      } catch (const EqxSQLError&) {
      }
      if (!condition)
        throw;
    }
    BindNames(*condition);
  }
  // The cell with the row's expression must read back as a condition; one that would not
  // (an operator the expression cannot take) is refused and the cell keeps its value.
  {
    std::unique_ptr<TSQLExpressionItem> full = CloneNode(*condition);
    full->RemoveLExpression(GetExpressionItem());
    full->RestoreLExpression(GetExpressionItem());
    const std::string written = FixBooleanCells(std::move(full))->GetSimpleSQL();
    try {
      provider->ParseLogicalExpression(written);
    } catch (const EqxSQLError&) {
      throw EqxError("Criteria \"" + text + "\" make no valid condition: " + written);
    }
  }
  TqxUpdateGuard guard(this);
  SetConditionNode(Index, std::move(condition));
  // Criteria typed on a plain row filter the rows: the row joins WHERE.
  if (GroupByType_ == gtExpression)
    GroupByType_ = gtWhere;
  NotifySQLUpdated();
}

void TqxSelectItem::ShrinkConditionsList() {
  while (!Conditions_.empty() && !Conditions_.back())
    Conditions_.pop_back();
}

bool TqxSelectItem::HasConditions() const {
  return std::any_of(Conditions_.begin(), Conditions_.end(),
                     [](const auto& c) { return c != nullptr; });
}

bool TqxSelectItem::IsSupportsAlias() const {
  const TSQLExpressionItem* expression = GetExpressionItem();
  return expression != nullptr && !expression->IsLogical();
}

bool TqxSelectItem::IsCanSelect() const {
  if (!Expression_)
    return false;
  const TSQLExpressionItem* expression = GetExpressionItem();
  return expression == nullptr || !expression->IsLogical();
}

bool TqxSelectItem::IsCanSort() const {
  const TSQLExpressionItem* expression = GetExpressionItem();
  return expression != nullptr && !expression->IsLogical();
}

void TqxSelectItem::CheckItemProperties() {
  TqxUpdateGuard guard(this);
  if (!IsSupportsAlias() && !Alias_.empty()) {
    Alias_.clear();
    AliasQuoted_ = false;
    NotifySQLUpdated();
  }
  if (!IsCanSelect() && Select_) {
    Select_ = false;
    NotifySQLUpdated();
  }
  if (!IsCanSort() && (SortType_ != stNone || GetSortOrder() != 0)) {
    List_->RemoveFromSorted(this);
    SortType_ = stNone;
    NotifySQLUpdated();
  }
}

std::unique_ptr<TSQLSelectItem> TqxSelectItem::GetASTTree() const {
  if (!Expression_)
    return nullptr;
  if (const auto* item = As<const TSQLSelectItem>(Expression_.get()))
    return CloneNode(*item);
  const auto* expression = As<const TSQLExpressionItem>(Expression_.get());
  if (expression == nullptr)
    return nullptr;
  TastSyntaxProvider* provider = expression->GetSyntaxProvider();
  auto item = NewNode<TSQLSelectItemExpression>(provider);
  item->SetExpression(CloneNode(*expression));
  if (!Alias_.empty()) {
    std::unique_ptr<TSQLAlias> alias;
    if (AliasClass_ != nullptr && !AliasClass_->IsAbstract())
      alias = Downcast<TSQLAlias>(AliasClass_->Create(provider));
    else
      alias = NewNode<TSQLAliasObjectAsAlias>(provider);
    alias->Name = Alias_;
    alias->Quoted = AliasQuoted_;
    item->SetAlias(std::move(alias));
  }
  return item;
}

void TqxSelectItem::GetASTChildren(std::vector<TastNode*>& List) const {
  if (Expression_)
    List.push_back(Expression_.get());
  for (const auto& condition : Conditions_) {
    if (condition)
      List.push_back(condition.get());
  }
}

TqxQueryBuilderControlOwner* TqxSelectItem::GetControlParent() const {
  return List_;
}

void TqxSelectItem::FreeModelObject() {
  List_->RemoveItem(this);
}

void TqxSelectItem::InsertEmptyEvent() {
  List_->InsertEmptyRow(GetIndex());
}

void TqxSelectItem::GetPopupMenu(TqxPopupMenu& Menu) {
  // The list's trailing empty row, the grid's row for a new entry, has no menu.
  if (GetIndex() == List_->GetCount() - 1)
    return;
  TqxMenuItem remove;
  remove.Caption = "Remove Row";
  remove.OnClick = [this] { RemoveEvent(); };
  Menu.push_back(std::move(remove));
  TqxMenuItem insert;
  insert.Caption = "Insert Empty Row";
  insert.OnClick = [this] { InsertEmptyEvent(); };
  Menu.push_back(std::move(insert));
}

// ---------------------------------------------------------------------------------------
// TqxSelectList

TqxSelectList::TqxSelectList(TqxUnionSubQuery* UnionSubQuery)
    : TqxQueryBuilderControlOwner(UnionSubQuery->GetQueryBuilder(), UnionSubQuery),
      UnionSubQuery_(UnionSubQuery) {
  EnsureEmptyRow();
}

TqxSelectList::~TqxSelectList() {
  BeginDestroy();
  Sorted_.clear();
  while (!Items_.empty())
    Items_.pop_back();
}

TqxSelectItem* TqxSelectList::GetItems(int Index) const {
  if (Index < 0 || Index >= GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return Items_[static_cast<std::size_t>(Index)].get();
}

int TqxSelectList::IndexOf(const TqxSelectItem* Item) const {
  for (std::size_t i = 0; i < Items_.size(); ++i) {
    if (Items_[i].get() == Item)
      return static_cast<int>(i);
  }
  return -1;
}

int TqxSelectList::GetFilledCount() const {
  return static_cast<int>(std::count_if(Items_.begin(), Items_.end(),
                                        [](const auto& item) { return !item->IsEmpty(); }));
}

TqxSelectItem* TqxSelectList::GetSortedItems(int Index) const {
  if (Index < 0 || Index >= GetSortedCount())
    throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
  return Sorted_[static_cast<std::size_t>(Index)];
}

TqxSelectItem* TqxSelectList::InsertItem(int Index) {
  Index = std::clamp(Index, 0, GetCount());
  Items_.insert(Items_.begin() + Index, std::make_unique<TqxSelectItem>(this));
  TqxSelectItem* item = Items_[static_cast<std::size_t>(Index)].get();
  item->CreateControl();
  return item;
}

void TqxSelectList::EnsureEmptyRow() {
  if (Items_.empty() || !Items_.back()->IsEmpty())
    InsertItem(GetCount());
}

void TqxSelectList::RemoveFromSorted(TqxSelectItem* Item) {
  Sorted_.erase(std::remove(Sorted_.begin(), Sorted_.end(), Item), Sorted_.end());
}

namespace {

// Whether a row stands for one field of DS ("*": all its columns). An unqualified column
// counts as DS's when DS is the only datasource of the operand that has such a field.
bool RowIsField(const TqxSelectItem& Row, const TqxDatasource* DS, const std::string& Field,
                const TqxUnionSubQuery* Operand) {
  const TSQLFromSource* source = DS->GetFromSource();
  const TastNode* expression = Row.GetExpression();
  if (expression == nullptr || source == nullptr)
    return false;
  if (Field == "*") {
    if (As<const TSQLSelectItemAllColumns>(expression) != nullptr)
      return true;
    const auto* all = As<const TSQLSelectItemAllTableColumns>(expression);
    return all != nullptr && all->GetQualifier() != nullptr &&
           all->GetQualifier()->GetFromSource() == source;
  }
  const auto* column = As<const TSQLExpressionColumn>(expression);
  if (column == nullptr || column->GetColumn() == nullptr ||
      !model::SameText(column->GetColumn()->GetObjName(), Field))
    return false;
  if (column->GetColumn()->GetFromSource() == source)
    return true;
  if (column->GetColumn()->GetFromSource() != nullptr || column->GetColumn()->Count() != 1 ||
      Operand == nullptr)
    return false;
  auto hasField = [&](const TqxDatasource* Candidate) {
    const auto& fields = Candidate->GetFields();
    return std::any_of(fields.begin(), fields.end(),
                       [&](const std::string& name) { return model::SameText(name, Field); });
  };
  if (!hasField(DS))
    return false;
  for (const TqxDatasource* other : Operand->GetDatasources()) {
    if (other != DS && hasField(other))
      return false;
  }
  return true;
}

// Whether a row's expression depends on one of Sources only.
bool RowDependsOnlyOn(const TqxSelectItem& Row, const std::vector<const TSQLFromSource*>& Sources) {
  const TastNode* expression = Row.GetExpression();
  if (expression == nullptr)
    return false;
  for (const TSQLFromSource* source : Sources) {
    if (const auto* all = As<const TSQLSelectItemAllTableColumns>(expression)) {
      if (all->GetQualifier() != nullptr && all->GetQualifier()->GetFromSource() == source)
        return true;
    } else if (const auto* value = As<const TSQLExpressionItem>(expression)) {
      if (value->ContainsOnlyItemsWithFromSource(source))
        return true;
    }
  }
  return false;
}

}  // namespace

TqxSelectItem* TqxSelectList::AddField(TqxDatasource* DS, const std::string& Field) {
  if (DS == nullptr)
    throw EqxError("A field needs a datasource");
  for (const auto& item : Items_) {
    if (!item->GetSelect() && item->IsCanSelect() && RowIsField(*item, DS, Field, UnionSubQuery_)) {
      item->SetSelect(true);
      return item.get();
    }
  }
  TqxSelectItem* row = Items_.back()->IsEmpty() ? Items_.back().get() : InsertItem(GetCount());
  row->SetFieldExpression(DS, Field);
  EnsureEmptyRow();
  return row;
}

TqxSelectItem* TqxSelectList::InsertField(int Index, TqxDatasource* DS, const std::string& Field) {
  if (DS == nullptr)
    throw EqxError("A field needs a datasource");
  TqxSelectItem* row = InsertItem(Index);
  try {
    row->SetFieldExpression(DS, Field);
  } catch (...) {
    Items_.erase(Items_.begin() + IndexOf(row));
    throw;
  }
  EnsureEmptyRow();
  return row;
}

TqxSelectItem* TqxSelectList::FindField(const TqxDatasource* DS, const std::string& Field) const {
  if (DS == nullptr)
    return nullptr;
  for (const auto& item : Items_) {
    if (item->GetSelect() && RowIsField(*item, DS, Field, UnionSubQuery_))
      return item.get();
  }
  return nullptr;
}

void TqxSelectList::RemoveFields(const TqxDatasource* DS, const std::string& Field) {
  if (DS == nullptr)
    return;
  TqxUpdateGuard guard(this);
  std::vector<const TSQLFromSource*> sources{DS->GetFromSource()};
  for (std::size_t i = Items_.size(); i-- > 0;) {
    TqxSelectItem* item = Items_[i].get();
    if (!item->GetSelect())
      continue;
    const bool matches = Field.empty() ? RowDependsOnlyOn(*item, sources)
                                       : RowIsField(*item, DS, Field, UnionSubQuery_);
    if (!matches)
      continue;
    const bool keeps = item->HasConditions() || item->GetSortOrder() != 0 ||
                       item->GetGroupByType() == gtGroupBy || item->GetGroupByType() == gtHaving;
    if (keeps)
      item->SetSelect(false);
    else
      RemoveItem(item);
  }
}

TqxSelectItem* TqxSelectList::AddExpression(const std::string& Text) {
  TqxSelectItem* row = Items_.back()->IsEmpty() ? Items_.back().get() : InsertItem(GetCount());
  row->SetExpression(Text);
  EnsureEmptyRow();
  return row;
}

TqxSelectItem* TqxSelectList::InsertExpression(int Index, const std::string& Text) {
  TqxSelectItem* row = InsertItem(Index);
  try {
    row->SetExpression(Text);
  } catch (...) {
    Items_.erase(Items_.begin() + IndexOf(row));
    throw;
  }
  EnsureEmptyRow();
  return row;
}

TqxSelectItem* TqxSelectList::AddEmptyRow() {
  return InsertItem(GetCount());
}

TqxSelectItem* TqxSelectList::InsertEmptyRow(int Index) {
  return InsertItem(Index);
}

void TqxSelectList::RemoveLastRow() {
  for (std::size_t i = Items_.size(); i-- > 0;) {
    if (!Items_[i]->IsEmpty()) {
      RemoveItem(Items_[i].get());
      return;
    }
  }
}

void TqxSelectList::RemoveItem(TqxSelectItem* Item) {
  const int index = IndexOf(Item);
  if (index < 0)
    return;
  const bool filled = !Item->IsEmpty();
  RemoveFromSorted(Item);
  std::unique_ptr<TqxSelectItem> item = std::move(Items_[static_cast<std::size_t>(index)]);
  Items_.erase(Items_.begin() + index);
  item.reset();
  EnsureEmptyRow();
  if (filled)
    NotifySQLUpdated();
}

void TqxSelectList::Delete(int Index) {
  RemoveItem(GetItems(Index));
}

void TqxSelectList::Move(int From, int To) {
  if (From < 0 || From >= GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(From) + ")");
  if (To < 0 || To >= GetCount())
    throw EqxError("List index out of bounds (" + std::to_string(To) + ")");
  if (From == To)
    return;
  std::unique_ptr<TqxSelectItem> item = std::move(Items_[static_cast<std::size_t>(From)]);
  Items_.erase(Items_.begin() + From);
  Items_.insert(Items_.begin() + To, std::move(item));
  EnsureEmptyRow();
  NotifySQLUpdated();
}

void TqxSelectList::Clear() {
  const bool filled = GetFilledCount() > 0;
  Sorted_.clear();
  while (!Items_.empty())
    Items_.pop_back();
  EnsureEmptyRow();
  if (filled)
    NotifySQLUpdated();
}

// ---- writing

std::unique_ptr<TSQLSelectItems> TqxSelectList::GetASTTree() const {
  auto items = NewNode<TSQLSelectItems>(GetASTSyntaxProvider());
  for (const auto& item : Items_) {
    if (!item->GetSelect())
      continue;
    if (std::unique_ptr<TSQLSelectItem> node = item->GetASTTree())
      items->Add(std::move(node));
  }
  return items;
}

std::unique_ptr<TSQLExpressionItem> TqxSelectList::GetConditionTree(
    TqxQueryBuilderGroupByTypes Types) const {
  std::vector<const TqxSelectItem*> rows;
  int columns = 0;
  for (const auto& item : Items_) {
    if (!Types.Contains(item->GetGroupByType()) || item->IsEmpty())
      continue;
    rows.push_back(item.get());
    // Trailing empty cells do not count (the list's compaction).
    int count = item->GetConditionsCount();
    while (count > 0 && item->GetConditionNode(count - 1) == nullptr)
      --count;
    columns = std::max(columns, count);
  }
  TastSyntaxProvider* provider = GetASTSyntaxProvider();
  std::vector<std::unique_ptr<TSQLExpressionItem>> ored;
  for (int column = 0; column < columns; ++column) {
    std::vector<std::unique_ptr<TSQLExpressionItem>> anded;
    for (const TqxSelectItem* row : rows) {
      if (std::unique_ptr<TSQLExpressionItem> condition = row->GetFullCondition(column))
        anded.push_back(std::move(condition));
    }
    if (std::unique_ptr<TSQLExpressionItem> joined =
            Join<TSQLExpressionAnd>(std::move(anded), provider))
      ored.push_back(std::move(joined));
  }
  std::unique_ptr<TSQLExpressionItem> condition = Join<TSQLExpressionOr>(std::move(ored), provider);
  return condition ? SimplifyLogicalExpression(std::move(condition)) : nullptr;
}

std::unique_ptr<TSQLGroupByList> TqxSelectList::GetGroupByTree() const {
  auto list = NewNode<TSQLGroupByList>(GetASTSyntaxProvider());
  for (const auto& item : Items_) {
    if (item->GetGroupByType() != gtGroupBy)
      continue;
    if (const TSQLExpressionItem* expression = item->GetExpressionItem())
      list->Add(CloneNode(*expression));
  }
  if (list->GetCount() == 0)
    return nullptr;
  return list;
}

namespace {

bool IsOutputRow(const TqxSelectItem& Row) {
  return Row.GetSelect() && Row.GetExpression() != nullptr;
}

bool IsStar(const TqxSelectItem& Row) {
  return As<const TSQLSelectItem>(Row.GetExpression()) != nullptr;
}

// The name an output row's column has in the result: its alias, else a column's name.
std::string OutputName(const TqxSelectItem& Row) {
  if (!Row.GetAlias().empty())
    return Row.GetAlias();
  const auto* reference = As<const TSQLExpressionColumn>(Row.GetExpression());
  if (reference != nullptr && reference->GetColumn() != nullptr)
    return reference->GetColumn()->GetObjName();
  return {};
}

// A bare, unqualified name.
const TSQLObjectColumn* BareName(const TSQLExpressionItem* Expression) {
  const auto* reference = As<const TSQLExpressionColumn>(Expression);
  const TSQLObjectColumn* column = reference != nullptr ? reference->GetColumn() : nullptr;
  return column != nullptr && column->Count() == 1 ? column : nullptr;
}

// The value of an unsigned integer literal; 0 for anything else. ORDER BY reads such a
// literal as the number of an output column.
long long IntegerLiteral(const TSQLExpressionItem* Expression) {
  if (As<const TSQLExpressionConstant>(Expression) == nullptr)
    return 0;
  const std::string text = Expression->GetSimpleSQL();
  if (text.empty() || text.size() > 18 ||
      !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
    return 0;
  return std::stoll(text);
}

}  // namespace

int TqxSelectList::GetOutputPosition(const TqxSelectItem* Row) const {
  int position = 0;
  for (const auto& item : Items_) {
    if (!IsOutputRow(*item))
      continue;
    if (IsStar(*item))
      return 0;  // a star stands for columns that cannot be counted here
    ++position;
    if (item.get() == Row)
      return position;
  }
  return 0;
}

TqxSelectItem* TqxSelectList::GetOutputRow(long long Position) const {
  long long position = 0;
  for (const auto& item : Items_) {
    if (!IsOutputRow(*item))
      continue;
    if (IsStar(*item))
      return nullptr;
    if (++position == Position)
      return item.get();
  }
  return nullptr;
}

// A sorted output row is ordered by its alias when that names no other output column;
// an output row that has no such name is ordered by its number where its expression
// would not do (an integer literal, or any term after a union, where only result columns
// may be named); any other row by its expression.
std::unique_ptr<TSQLOrderByClause> TqxSelectList::GetOrderByClause() const {
  if (Sorted_.empty())
    return nullptr;
  TastSyntaxProvider* provider = GetASTSyntaxProvider();
  bool afterUnion = false;
  if (UnionSubQuery_ != nullptr && UnionSubQuery_->GetSubQuery() != nullptr &&
      UnionSubQuery_->GetSubQuery()->GetUnionGroup() != nullptr) {
    std::vector<TqxUnionSubQuery*> operands;
    UnionSubQuery_->GetSubQuery()->GetUnionGroup()->GetOperands(operands);
    afterUnion = operands.size() > 1;
  }
  auto clause = NewNode<TSQLOrderByClause>(provider);
  for (const TqxSelectItem* row : Sorted_) {
    const TSQLExpressionItem* expression = row->GetExpressionItem();
    if (expression == nullptr || row->GetSortType() == stNone)
      continue;
    auto item = NewNode<TSQLOrderByItem>(provider);
    std::string name;
    if (IsOutputRow(*row) && !row->GetAlias().empty()) {
      int named = 0;
      for (const auto& other : Items_) {
        if (IsOutputRow(*other) && model::SameText(OutputName(*other), row->GetAlias()))
          ++named;
      }
      if (named == 1)
        name = row->GetAlias();
    }
    const int position = IsOutputRow(*row) ? GetOutputPosition(row) : 0;
    if (!name.empty()) {
      auto column = NewNode<TSQLObjectColumn>(provider);
      column->AddName(name, row->IsAliasQuoted());
      auto reference = NewNode<TSQLExpressionColumn>(provider);
      reference->SetColumn(std::move(column));
      item->SetExpression(std::move(reference));
    } else if (position > 0 && (afterUnion || IntegerLiteral(expression) > 0)) {
      item->SetExpression(NewNode<TSQLExpressionConstant>(provider, std::to_string(position)));
    } else {
      item->SetExpression(CloneNode(*expression));
    }
    item->Descending = row->GetSortType() == stDesc;
    clause->Add(std::move(item));
  }
  if (clause->GetCount() == 0)
    return nullptr;
  return clause;
}

// ---- loading

void TqxSelectList::LoadSelectListFromAST(std::unique_ptr<TSQLSelectItems> Items) {
  if (!Items)
    return;
  // Taken out from the back (each removal is then cheap) and loaded in order.
  std::vector<std::unique_ptr<TastNode>> nodes;
  nodes.reserve(static_cast<std::size_t>(Items->GetCount()));
  while (Items->GetCount() > 0)
    nodes.push_back(Items->Extract(Items->GetCount() - 1));
  for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
    std::unique_ptr<TastNode> node = std::move(*it);
    if (!node)
      continue;
    TqxSelectItem* row = Items_.back()->IsEmpty() ? Items_.back().get() : InsertItem(GetCount());
    row->LoadFromAST(std::move(node));
    EnsureEmptyRow();
  }
}

struct TqxSelectList::RowIndex {
  // Opened on List for the lifetime of the scope when the grid qualifies.
  explicit RowIndex(TqxSelectList& List) : List_(List) {
    if (List.RowIndex_ != nullptr)
      return;
    for (std::size_t i = 0; i < List.Items_.size(); ++i) {
      TqxSelectItem* row = List.Items_[i].get();
      if (row->IsEmpty()) {
        if (i + 1 != List.Items_.size())
          return;  // an empty row inside the grid: rows are searched
        continue;
      }
      Add(row);
    }
    List.RowIndex_ = this;
    Open_ = true;
  }
  ~RowIndex() {
    if (Open_)
      List_.RowIndex_ = nullptr;
  }
  RowIndex(const RowIndex&) = delete;
  RowIndex& operator=(const RowIndex&) = delete;

  // Equal keys mean equal expressions as SameExpressionText sees them.
  static std::string Key(const TastNode* Node) {
    return model::ExpressionKey(Node->GetSimpleSQL());
  }
  void Add(TqxSelectItem* Row) {
    if (Row->GetExpression() != nullptr)
      Rows[Key(Row->GetExpression())].push_back(Row);
  }

  std::unordered_map<std::string, std::vector<TqxSelectItem*>> Rows;

 private:
  TqxSelectList& List_;
  bool Open_ = false;
};

TqxSelectItem* TqxSelectList::FindOrAddSelectItem(const TSQLExpressionItem* Expr,
                                                  TqxQueryBuilderGroupByTypes Types,
                                                  TqxQueryBuilderGroupByType NewType) {
  if (Expr == nullptr)
    return nullptr;
  if (RowIndex_ != nullptr) {
    auto bucket = RowIndex_->Rows.find(RowIndex::Key(Expr));
    if (bucket != RowIndex_->Rows.end()) {
      for (TqxSelectItem* item : bucket->second) {
        if (!Types.Contains(item->GetGroupByType()))
          continue;
        if (item->GetGroupByType() == gtExpression)
          item->GroupByType_ = NewType;
        return item;
      }
    }
  } else {
    for (const auto& item : Items_) {
      if (item->IsEmpty() || !Types.Contains(item->GetGroupByType()))
        continue;
      if (model::SameExpressionText(item->GetExpression(), Expr)) {
        if (item->GetGroupByType() == gtExpression)
          item->GroupByType_ = NewType;
        return item.get();
      }
    }
  }
  TqxSelectItem* row = nullptr;
  if (RowIndex_ != nullptr) {
    // The only empty row is the last one.
    if (!Items_.empty() && Items_.back()->IsEmpty())
      row = Items_.back().get();
  } else {
    for (const auto& item : Items_) {
      if (item->IsEmpty()) {
        row = item.get();
        break;
      }
    }
  }
  if (row == nullptr)
    row = InsertItem(GetCount());
  row->LoadFromAST(CloneNode(*Expr));
  if (RowIndex_ != nullptr)
    RowIndex_->Add(row);
  if (row->GroupByType_ == gtExpression)
    row->GroupByType_ = NewType;
  // An aggregate met in WHERE is a WHERE row.
  if (NewType == gtWhere && IsAggregateType(row->GroupByType_))
    row->GroupByType_ = gtWhere;
  EnsureEmptyRow();
  return row;
}

void TqxSelectList::LoadConditionFromAST(std::unique_ptr<TSQLExpressionItem> Condition,
                                         TqxQueryBuilderGroupByTypes Types,
                                         TqxQueryBuilderGroupByType NewType) {
  Condition = PrepareLogicalExpressionForLoading(std::move(Condition));
  if (!Condition)
    return;
  RowIndex index(*this);
  // An OR is split into criteria columns, an AND into terms. Brackets around a column
  // or around an AND term go (AND binds tighter than OR); an OR inside an AND keeps them.
  std::vector<std::unique_ptr<TSQLExpressionItem>> columns;
  SplitLogical<TSQLExpressionOr>(std::move(Condition), columns, true);
  for (std::size_t column = 0; column < columns.size(); ++column) {
    std::vector<std::unique_ptr<TSQLExpressionItem>> terms;
    SplitLogical<TSQLExpressionAnd>(std::move(columns[column]), terms, false);
    for (auto& term : terms) {
      if (!term)
        continue;
      std::unique_ptr<TSQLExpressionItem> expression;
      std::unique_ptr<TSQLExpressionItem> condition;
      if (const TSQLExpressionItem* subject = CellSubject(term.get())) {
        // A cell: the row of the shared left operand, the rest of the term in the cell.
        expression = CloneNode(*subject);
        condition = std::move(term);
      } else {
        // A whole condition: the row's expression is the predicate itself and the cell
        // says "=True", or "=False" for a negated predicate.
        std::unique_ptr<TSQLExpressionItem> predicate = WithoutBrackets(std::move(term));
        bool value = true;
        if (auto* negation = As<TSQLExpressionNot>(predicate.get());
            negation != nullptr && negation->GetInner() != nullptr) {
          predicate = WithoutBrackets(negation->ExtractInner());
          value = false;
        }
        condition = MakeBooleanCell(predicate->GetSyntaxProvider(), value);
        expression = std::move(predicate);
      }
      TqxSelectItem* row = FindOrAddSelectItem(expression.get(), Types, NewType);
      if (row == nullptr)
        continue;
      const int index = static_cast<int>(column);
      if (const TSQLExpressionItem* expressionItem = row->GetExpressionItem())
        condition->RemoveLExpression(expressionItem);
      if (TSQLExpressionItem* existing = row->GetConditionNode(index)) {
        // Two terms of one column on one row: the cell holds their AND.
        auto conjunction = NewNode<TSQLExpressionAnd>(existing->GetSyntaxProvider());
        conjunction->Add(std::move(row->Conditions_[static_cast<std::size_t>(index)]));
        conjunction->Add(std::move(condition));
        condition = std::move(conjunction);
      }
      row->SetConditionNode(index, std::move(condition));
    }
  }
}

void TqxSelectList::LoadGroupByListFromAST(std::unique_ptr<TSQLGroupByList> GroupBy) {
  if (!GroupBy)
    return;
  RowIndex index(*this);
  // Taken out from the back (each removal is then cheap) and found in order.
  std::vector<std::unique_ptr<TastNode>> nodes;
  nodes.reserve(static_cast<std::size_t>(GroupBy->GetCount()));
  while (GroupBy->GetCount() > 0)
    nodes.push_back(GroupBy->Extract(GroupBy->GetCount() - 1));
  for (auto it = nodes.rbegin(); it != nodes.rend(); ++it) {
    std::unique_ptr<TSQLExpressionItem> expression = Downcast<TSQLExpressionItem>(std::move(*it));
    if (expression)
      FindOrAddSelectItem(expression.get(), TqxQueryBuilderGroupByTypes{gtExpression, gtGroupBy},
                          gtGroupBy);
  }
}

// Each term sorts one row: a bare name that is an output row's alias sorts that row (an
// alias wins over the sources' columns); an integer within the output columns sorts that
// column; else the row of an equal expression, an output row first, or a new non-output
// row holding the term. A term repeating a sorted row gets a row of its own holding a
// copy, so that no term is lost; an integer beyond the output columns stays a term of
// its own and is written back as it was.
void TqxSelectList::LoadOrderByListFromAST(std::unique_ptr<TSQLOrderByClause> OrderBy) {
  if (!OrderBy)
    return;
  // The rows a term can find are indexed once: output rows by alias and by number, and
  // rows with an expression by its upper-case text, output rows and the others apart,
  // each in grid order. Rows added here are sorted at once, so they are never found.
  std::unordered_set<const TqxSelectItem*> sorted(Sorted_.begin(), Sorted_.end());
  std::unordered_map<std::string, TqxSelectItem*> byAlias;
  std::vector<TqxSelectItem*> outputs;  // numbered output rows, up to the first star
  bool starSeen = false;
  struct Candidates {
    std::vector<TqxSelectItem*> Rows[2];  // [0] output rows, [1] the others
    std::size_t Next[2] = {0, 0};         // rows before Next are sorted
  };
  std::unordered_map<std::string, Candidates> byText;
  for (const auto& item : Items_) {
    if (IsOutputRow(*item)) {
      byAlias.emplace(model::UpperCase(item->GetAlias()), item.get());
      starSeen = starSeen || IsStar(*item);
      if (!starSeen)
        outputs.push_back(item.get());
    }
    if (item->GetExpressionItem() != nullptr)
      byText[model::UpperCase(item->GetExpression()->GetSimpleSQL())]
          .Rows[item->GetSelect() ? 0 : 1]
          .push_back(item.get());
  }
  // The statement's ORDER BY stands outside every SELECT block; its names belong to this
  // operand's sources, gathered once.
  std::vector<TSQLFromSource*> sources;
  if (UnionSubQuery_ != nullptr)
    UnionSubQuery_->GetVisibleSources(sources);
  std::size_t block = sources.size();
  while (block > 0 && sources[block - 1] != nullptr)
    --block;
  const ast::TSQLFromSourceBlockIndex sourceIndex(sources, block);

  // Taken out from the back (each removal is then cheap) and loaded in order.
  std::vector<std::unique_ptr<TastNode>> entries;
  entries.reserve(static_cast<std::size_t>(OrderBy->GetCount()));
  while (OrderBy->GetCount() > 0)
    entries.push_back(OrderBy->Extract(OrderBy->GetCount() - 1));
  for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
    std::unique_ptr<TSQLOrderByItem> entry = Downcast<TSQLOrderByItem>(std::move(*it));
    if (!entry || entry->GetExpression() == nullptr)
      continue;
    std::unique_ptr<TSQLExpressionItem> expression = entry->ExtractExpression();
    TqxSelectItem* row = nullptr;
    if (const TSQLObjectColumn* column = BareName(expression.get())) {
      auto found = byAlias.find(model::UpperCase(column->GetObjName()));
      if (found != byAlias.end())
        row = found->second;
    } else if (const long long position = IntegerLiteral(expression.get())) {
      if (position <= static_cast<long long>(outputs.size()))
        row = outputs[static_cast<std::size_t>(position - 1)];
    }
    if (row == nullptr) {
      if (UnionSubQuery_ != nullptr)
        expression->FixupObjects(sources);
      auto found = byText.find(model::UpperCase(expression->GetSimpleSQL()));
      if (found != byText.end()) {
        Candidates& candidates = found->second;
        for (int pass = 0; pass < 2 && row == nullptr; ++pass) {
          const std::vector<TqxSelectItem*>& rows = candidates.Rows[pass];
          std::size_t& next = candidates.Next[pass];
          while (next < rows.size() && sorted.count(rows[next]) != 0)
            ++next;
          if (next < rows.size())
            row = rows[next];
        }
      }
    }
    if (row != nullptr && sorted.count(row) != 0) {
      if (row->GetExpressionItem() == nullptr)
        continue;
      expression = CloneNode(*row->GetExpressionItem());
      row = nullptr;
    }
    if (row == nullptr) {
      row = Items_.back()->IsEmpty() ? Items_.back().get() : InsertItem(GetCount());
      row->LoadFromAST(std::move(expression));
      EnsureEmptyRow();
    }
    row->SortType_ = entry->Descending ? stDesc : stAsc;
    Sorted_.push_back(row);
    sorted.insert(row);
    NotifySQLUpdated();
  }
}

void TqxSelectList::GetChildOwners(std::vector<TqxQueryBuilderControlOwner*>& List) const {
  TqxQueryBuilderControlOwner::GetChildOwners(List);
  for (const auto& item : Items_)
    List.push_back(item.get());
}

void TqxSelectList::NotifyDatasourceDestroyingInternal(TqxDatasourceBase* DS) {
  if (DS == nullptr)
    return;
  std::vector<TqxDatasource*> leaves;
  DS->GetAllDatasources(leaves);
  std::vector<const TSQLFromSource*> sources;
  for (const TqxDatasource* leaf : leaves) {
    if (leaf->GetFromSource() != nullptr)
      sources.push_back(leaf->GetFromSource());
  }
  TqxUpdateGuard guard(this);
  for (std::size_t i = Items_.size(); i-- > 0;) {
    if (RowDependsOnlyOn(*Items_[i], sources))
      RemoveItem(Items_[i].get());
  }
}

}  // namespace qorvex
