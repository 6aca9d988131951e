#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/builder.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/component.h"
#include "qorvex/core/errors.h"
#include "qorvex/scanner/sql92_scanner.h"
#include "qorvex/scanner/token.h"
#include "qorvex/syntax/components.h"
#include "qorvex/syntax/sql92_syntax_provider.h"
#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using namespace qorvex::test;

// The base answers, with the abstract questions answered by a minimal dialect.
class BaseDialect : public MinimalDialect {
 public:
  BaseDialect() {
    Star = {"COUNT", "Total"};
    OneParam = {"Median", "total"};
    Prefixed = {"Sum", "count"};
    Unions = DerivedTables = true;
  }
};

class BaseComponent : public TqxBaseSyntaxProvider {
 public:
  ~BaseComponent() override { BeginDestroy(); }

 protected:
  std::unique_ptr<TastSyntaxProvider> CreateASTSyntaxProvider() const override {
    return std::make_unique<BaseDialect>();
  }
};

TEST(SyntaxProvider, BaseAnswersUnionOperatorsAndIcons) {
  BaseDialect p;
  Strings list = {"left over"};
  p.GetComparisonOperators(list);
  EXPECT_EQ(list, (Strings{"=", ">", ">=", "<", "<=", "<>"}));
  list = {"left over"};
  p.GetUnionOperatorsList(list);
  EXPECT_EQ(list, (Strings{"Union", "Union All"}));
  EXPECT_EQ(p.GetQuoteBegin(), "");
  EXPECT_EQ(p.GetQuoteEnd(), "");
  EXPECT_FALSE(p.IsUniversalExpressions());
  const struct {
    const char* op;
    const char* normal;
    const char* icon;
  } cases[] = {
      {"union all", "Union All", "QXQB_UNIONALL"},
      {"Union", "Union", "QXQB_UNION"},
      {"INTERSECT", "intersect", "QXQB_INTERSECT"},
      {"EXCEPT", "except", "QXQB_EXCEPT"},
      {"Except  All", "except  all", "QXQB_EXCEPTALL"},
      {" intersect all ", " intersect all ", "QXQB_INTERSECTALL"},
      {"minus", "minus", ""},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.op);
    EXPECT_EQ(p.NormalizeUnionOperator(c.op), c.normal);
    EXPECT_EQ(p.GetUnionOperatorIcon(c.op), c.icon);
  }
}

TEST(SyntaxProvider, SQL92Answers) {
  TastSQL92SyntaxProvider p;
  EXPECT_EQ(p.GetQuoteBegin(), "\"");
  EXPECT_EQ(p.GetQuoteEnd(), "\"");
  Strings list = {"left over"};
  p.GetStarAggregateNames(list);
  EXPECT_EQ(list, (Strings{"Count"}));
  p.Get1ParamAggregateNames(list);
  EXPECT_TRUE(list.empty());
  p.GetPrefixed1ParamAggregateNames(list);
  EXPECT_EQ(list, (Strings{"Avg", "Count", "Max", "Min", "Sum"}));
  for (bool supported : {p.IsSupportViews(), p.IsSupportUnions(), p.IsSupportBracketsInUnions(),
                         p.IsSupportDerivedTables(), p.IsSupportSubQueryUnions(),
                         p.IsSupportSubQueryBracketsInUnions(), p.IsSupportSubQueryDerivedTables()})
    EXPECT_TRUE(supported);
  EXPECT_FALSE(p.IsUniversalExpressions());
  EXPECT_EQ(&p.GetScannerClass(), &SQL92Scanner::StaticClass());
}

TEST(SyntaxProviderComponent, DelegatesToItsDialectAndNormalizesAggregateNames) {
  TqxSQL92SyntaxProvider c;
  TastSyntaxProvider* ast = c.GetASTSyntaxProvider();
  ASSERT_NE(ast, nullptr);
  EXPECT_NE(dynamic_cast<TastSQL92SyntaxProvider*>(ast), nullptr);
  EXPECT_EQ(c.GetASTSyntaxProvider(), ast) << "created once";
  EXPECT_EQ(c.GetQuoteBegin(), "\"");
  EXPECT_TRUE(c.IsSupportSubQueryDerivedTables());
  EXPECT_EQ(c.NormalizeUnionOperator("UNION"), "Union");
  EXPECT_EQ(c.GetUnionOperatorIcon("union all"), "QXQB_UNIONALL");

  EXPECT_TRUE(c.IsNameOfStarAggregate("count"));
  EXPECT_FALSE(c.IsNameOfStarAggregate("sum"));
  EXPECT_TRUE(c.IsNameOfPrefixedAggregate("SUM"));
  EXPECT_FALSE(c.IsNameOfPrefixedAggregate("median"));
  EXPECT_FALSE(c.IsNameOfAggregate("sum")) << "SQL-92 has no plain one-parameter list";
  EXPECT_EQ(c.AggregateNormalize("COUNT"), "Count");
  EXPECT_EQ(c.AggregateNormalize("median"), "median");

  BaseComponent base;
  EXPECT_EQ(base.GetQuoteBegin(), "");
  EXPECT_FALSE(base.IsSupportViews());
  EXPECT_TRUE(base.IsSupportDerivedTables());
  // Star list first, then prefixed, then one-parameter.
  EXPECT_TRUE(base.IsNameOfAggregate("MEDIAN"));
  EXPECT_EQ(base.AggregateNormalize("count"), "COUNT");
  EXPECT_EQ(base.AggregateNormalize("TOTAL"), "Total");
  EXPECT_EQ(base.AggregateNormalize("sum"), "Sum");
  EXPECT_EQ(base.AggregateNormalize("median"), "Median");
}

// A query builder stand-in: a component that counts capability re-reads and clears its
// provider reference when the provider goes away.
class FakeQueryBuilder : public TqxComponent, public TqxSyntaxProviderClient {
 public:
  ~FakeQueryBuilder() override { BeginDestroy(); }
  void ReadSyntaxProviderCaps() override {
    ++reads;
    if (onRead)
      onRead();
  }
  void Link(TqxBaseSyntaxProvider* p) {
    provider = p;
    p->FreeNotification(this);
    p->RegisterQueryBuilder(this);
  }
  int reads = 0;
  std::function<void()> onRead;
  TqxBaseSyntaxProvider* provider = nullptr;

 protected:
  void Notification(TqxComponent* c, TOperation op) override {
    if (op == TOperation::opRemove && c == provider)
      provider = nullptr;
  }
};

// A client that is not a component.
struct PlainClient : TqxSyntaxProviderClient {
  void ReadSyntaxProviderCaps() override { ++reads; }
  int reads = 0;
};

TEST(SyntaxProviderComponent, QueryBuilderRegistrationAndFreeNotification) {
  auto provider = std::make_unique<TqxSQL92SyntaxProvider>();
  auto a = std::make_unique<FakeQueryBuilder>();
  auto b = std::make_unique<FakeQueryBuilder>();
  PlainClient plain;
  a->Link(provider.get());
  b->Link(provider.get());
  provider->RegisterQueryBuilder(a.get());  // twice: one entry
  provider->RegisterQueryBuilder(&plain);
  provider->RegisterQueryBuilder(nullptr);
  EXPECT_EQ(provider->GetQueryBuilderCount(), 3);
  provider->SendCapsChangedNotifications();
  EXPECT_EQ(a->reads, 1);
  EXPECT_EQ(b->reads, 1);
  EXPECT_EQ(plain.reads, 1);

  // A destroyed query builder is dropped without unregistering.
  b.reset();
  EXPECT_EQ(provider->GetQueryBuilderCount(), 2);
  provider->SendCapsChangedNotifications();
  EXPECT_EQ(a->reads, 2);
  EXPECT_EQ(plain.reads, 2);

  provider->UnregisterQueryBuilder(&plain);
  EXPECT_FALSE(provider->IsQueryBuilderRegistered(&plain));
  provider->SendCapsChangedNotifications();
  EXPECT_EQ(plain.reads, 2);
  EXPECT_EQ(a->reads, 3);

  // A query builder that unregisters another while re-reading: the other is not told.
  auto c = std::make_unique<FakeQueryBuilder>();
  c->Link(provider.get());
  a->onRead = [&] { provider->UnregisterQueryBuilder(c.get()); };
  provider->SendCapsChangedNotifications();
  EXPECT_EQ(a->reads, 4);
  EXPECT_EQ(c->reads, 0);
  a->onRead = nullptr;

  // The provider going first clears the query builders' references.
  provider.reset();
  EXPECT_EQ(a->provider, nullptr);
  EXPECT_EQ(c->provider, nullptr);
}

template <class T = TSQLDatabaseObject>
std::unique_ptr<T> NameIn(TastSyntaxProvider* P, const Strings& Parts) {
  return test::Name<T>(Parts, P);
}

TEST(SyntaxProvider, ObjectNamesCompareFromTheInnermostPartCaseInsensitively) {
  TastSQL92SyntaxProvider p;
  const struct {
    Strings a, b;
    bool equal;
  } cases[] = {
      {{"dbo", "orders"}, {"orders"}, true},
      {{"dbo", "orders"}, {"sales", "orders"}, false},
      {{"db", "dbo", "t"}, {"DBO", "t"}, true},
      {{"db", "", "t"}, {"db", "dbo", "t"}, true},
      {{"orders"}, {"order"}, false},
      {{"order details"}, {"Order Details"}, true},
      {{}, {"t"}, false},
      {{""}, {""}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.a) + " vs " + ::testing::PrintToString(c.b));
    EXPECT_EQ(p.IsDBObjectNamesEqual(*NameIn(&p, c.a), *NameIn(&p, c.b)), c.equal);
    EXPECT_EQ(p.IsDBObjectNamesEqual(*NameIn(&p, c.b), *NameIn(&p, c.a)), c.equal);
  }
}

TEST(SyntaxProvider, ColumnQualifierNamesTheObject) {
  TastSQL92SyntaxProvider p;
  const struct {
    Strings column, object;
    bool belongs;
  } cases[] = {
      {{"o", "id"}, {"o"}, true},
      {{"O", "id"}, {"dbo", "o"}, true},
      {{"dbo", "orders", "id"}, {"orders"}, true},
      {{"x", "orders", "id"}, {"dbo", "orders"}, false},
      {{"id"}, {"orders"}, false},
      {{"orders", "id"}, {"id"}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.column));
    EXPECT_EQ(p.IsColumnOfDBObject(*NameIn<TSQLObjectColumn>(&p, c.column), *NameIn(&p, c.object)),
              c.belongs);
  }
}

// The reserved words are exactly the keywords the grammar does not take as names.
TEST(SyntaxProvider, ReservedWordsFollowTheKeywordTable) {
  TastSQL92SyntaxProvider sql92;
  int reserved = 0;
  for (const TqxKeyword& k : SQL92Scanner::Keywords()) {
    const bool nonReserved =
        k.kind >= kFirstNonReservedKeyword && k.kind <= kLastNonReservedKeyword;
    EXPECT_EQ(sql92.IsReservedWord(k.word), !nonReserved) << k.word;
    reserved += nonReserved ? 0 : 1;
  }
  EXPECT_EQ(reserved, 98);
  for (const char* word : {"SeLeCt", "COUNT", "Date"})
    EXPECT_TRUE(sql92.IsReservedWord(word)) << word;
  for (const char* word : {"", "t", "selec", "selects", "select x", "_select", "orders"})
    EXPECT_FALSE(sql92.IsReservedWord(word)) << word;
  EXPECT_FALSE(BaseDialect().IsReservedWord("select"));
  EXPECT_TRUE(TqxSQL92SyntaxProvider().IsReservedWord("from"));
}

// A name typed between the dialect's quotes, read back as the name inside.
TEST(SyntaxProvider, ReadQuotedName) {
  TastSQL92SyntaxProvider sql92;
  const struct {
    const char* text;
    bool quoted;
    const char* name;
  } cases[] = {
      {"\"One\"", true, "One"}, {"\"a \"\"b\"\"\"", true, "a \"b\""},
      {"\"\"", true, ""},       {"\"\"\"\"", true, "\""},
      {"One", false, ""},       {"\"One", false, ""},
      {"\"a\"b\"", false, ""},  {"\"", false, ""},
      {"[One]", false, ""},     {" \"One\"", false, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    std::string name = "unchanged";
    EXPECT_EQ(sql92.ReadQuotedName(c.text, name), c.quoted);
    EXPECT_EQ(name, c.quoted ? c.name : "unchanged");
  }
  std::string name;
  EXPECT_FALSE(BaseDialect().ReadQuotedName("\"One\"", name));  // no quotes in this dialect
}

TEST(SyntaxProvider, CreateSQLFromObject) {
  TastSQL92SyntaxProvider sql92;
  std::unique_ptr<TSQLFromObject> from = sql92.CreateSQLFromObject("Order Details", "od");
  ASSERT_NE(from->GetDatabaseObject(), nullptr);
  EXPECT_EQ(from->GetDatabaseObject()->GetNameParts(), (Strings{"Order Details"}));
  EXPECT_EQ(&from->GetAlias()->ClassType(), &TSQLAliasObjectAlias::StaticClass());
  EXPECT_EQ(from->GetJoinKind(), nullptr);
  EXPECT_EQ(from->GetSyntaxProvider(), &sql92);
  EXPECT_EQ(from->GetSimpleSQL(), "\"Order Details\" od");
  EXPECT_EQ(sql92.CreateSQLFromObject("orders", "")->GetSimpleSQL(), "orders");
  EXPECT_EQ(sql92.CreateSQLFromObject("orders", "")->GetAlias(), nullptr);
  EXPECT_THROW(sql92.CreateSQLFromObject("", "x"), EqxError);
  // Names given bare are quoted when they need it; given in quotes they stay quoted.
  EXPECT_EQ(sql92.CreateSQLFromObject("order", "by")->GetSimpleSQL(), "\"order\" \"by\"");
  EXPECT_EQ(sql92.CreateSQLFromObject("\"Orders\"", "\"O\"")->GetSimpleSQL(), "\"Orders\" \"O\"");
  EXPECT_EQ(sql92.CreateSQLFromObject("\"Orders\"", "")->GetDatabaseObject()->GetObjName(),
            "Orders");

  BaseDialect base;
  EXPECT_EQ(base.CreateSQLFromObject("Order Details", "od")->GetSimpleSQL(), "Order Details od");

  TqxSQL92SyntaxProvider component;
  auto viaComponent = component.CreateSQLFromObject("t", "");
  EXPECT_EQ(viaComponent->GetSyntaxProvider(), component.GetASTSyntaxProvider());
  EXPECT_TRUE(component.IsDBObjectNamesEqual(
      *viaComponent->GetDatabaseObject(), *NameIn(component.GetASTSyntaxProvider(), {"s", "T"})));
}

}  // namespace
}  // namespace qorvex
