#include <gtest/gtest.h>

#include "model_support.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::modeltest {
namespace {

class QueryTest : public ModelTest {};

TEST_F(QueryTest, AssignedSQLIsLoadedWhenTheMessageIsDelivered) {
  Builder.SetSQL("SELECT a.x FROM a");
  EXPECT_TRUE(Builder.IsSQLLoading());
  EXPECT_EQ(Builder.GetPendingMessages(), 1);
  EXPECT_EQ(SQL(), "SELECT");
  EXPECT_EQ(Reports, 0);
  Builder.ProcessMessages();
  EXPECT_FALSE(Builder.IsSQLLoading());
  EXPECT_EQ(SQL(), "SELECT a.x FROM a");
  EXPECT_EQ(Reports, 1);
  EXPECT_EQ(Published(), "SELECT a.x FROM a");
  EXPECT_EQ(Output.GetSQL(), "SELECT a.x\r\nFROM a");
  EXPECT_EQ(Builder.GetSQL(), "SELECT a.x\r\nFROM a");

  // Two assignments before the messages arrive: the first message loads the latest text;
  // the second finds none and loads an empty query.
  std::vector<std::string> published;
  Output.OnSQLUpdated = [&](TqxBaseSQLBuilder*) { published.push_back(Published()); };
  Builder.SetSQL("SELECT a.x FROM a");
  Builder.SetSQL("SELECT b.y FROM b");
  Builder.ProcessMessages();
  EXPECT_EQ(published, (std::vector<std::string>{"SELECT b.y FROM b", "SELECT"}));
  EXPECT_EQ(Builder.GetQuery()->GetUnionGroup()->GetCount(), 1);
}

TEST_F(QueryTest, BlankTextGivesOneEmptyOperand) {
  Load("SELECT a.x FROM a UNION SELECT b.x FROM b");
  Load("  \r\n\t ");
  EXPECT_EQ(Builder.GetQuery()->GetUnionGroup()->GetCount(), 1);
  EXPECT_EQ(Datasources().size(), 0u);
  EXPECT_EQ(SQL(), "SELECT");
}

TEST_F(QueryTest, LoadingNeedsBothProviders) {
  TqxBaseQueryBuilder builder;
  builder.SetSyntaxProvider(&Syntax);
  builder.SetSQL("SELECT a.x FROM a");
  EXPECT_EQ(ErrorOf([&] { builder.ProcessMessages(); }), "No syntax provider!");
  EXPECT_EQ(builder.GetQuery()->GetSQL(), "SELECT");
}

TEST_F(QueryTest, SyntaxErrorsGoToOnSQLErrorOrPropagate) {
  Load("SELECT a.x FROM a");
  Reports = 0;
  std::vector<std::string> calls;
  Builder.OnSQLError = [&](TqxBaseQueryBuilder* Sender, const std::string& ASQL,
                           const std::string& AErrors) {
    EXPECT_EQ(Sender, &Builder);
    calls.push_back(ASQL + " | " + AErrors);
  };
  Load("SELECT FROM WHERE");
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0], "SELECT FROM WHERE | Bad SELECT statement");
  EXPECT_EQ(SQL(), "SELECT a.x FROM a");
  EXPECT_EQ(Reports, 0);
  EXPECT_FALSE(Builder.IsSQLLoading());

  Builder.OnSQLError = nullptr;
  Builder.SetSQL("SELECT a.x FROM a WHERE");
  EXPECT_THROW(Builder.ProcessMessages(), EqxSQLError);
  EXPECT_EQ(SQL(), "SELECT a.x FROM a");
}

TEST_F(QueryTest, UnionOperatorsAreSpelledByTheProvider) {
  Load("select a.x from a union all select b.x from b except select c.x from c");
  TqxUnionGroup* group = Builder.GetQuery()->GetUnionGroup();
  ASSERT_EQ(group->GetCount(), 3);
  EXPECT_EQ(group->GetItems(1)->GetUnionOperator(), "Union All");
  EXPECT_EQ(group->GetItems(2)->GetUnionOperator(), "except");
  EXPECT_EQ(SQL(), "SELECT a.x FROM a Union All SELECT b.x FROM b except SELECT c.x FROM c");
  EXPECT_EQ(ReportsOf([&] { group->GetItems(2)->SetUnionOperatorEvent("UNION"); }), 1);
  EXPECT_EQ(group->GetItems(2)->GetUnionOperator(), "Union");
  EXPECT_EQ(ReportsOf([&] { group->GetItems(2)->SetUnionOperatorEvent("union"); }), 0);
}

TEST_F(QueryTest, EditingTheUnionStructure) {
  Load("SELECT a.x FROM a UNION SELECT b.x FROM b UNION SELECT c.x FROM c");
  TqxUnionGroup* top = Builder.GetQuery()->GetUnionGroup();
  auto* q2 = dynamic_cast<TqxUnionSubQuery*>(top->GetItems(1));
  auto* q3 = dynamic_cast<TqxUnionSubQuery*>(top->GetItems(2));
  EXPECT_EQ(q3->GetName(), "Q3");
  TqxUnionGroup* group = nullptr;
  EXPECT_EQ(ReportsOf([&] { group = top->EncloseWithBrackets(q2); }), 1);
  EXPECT_EQ(SQL(), "SELECT a.x FROM a Union (SELECT b.x FROM b) Union SELECT c.x FROM c");
  EXPECT_EQ(ReportsOf([&] { group->AddToEnd(q3); }), 1);
  EXPECT_EQ(SQL(), "SELECT a.x FROM a Union (SELECT b.x FROM b Union SELECT c.x FROM c)");
  std::vector<TqxQueryBase*> list;
  top->BuildList(list);
  EXPECT_EQ(list, (std::vector<TqxQueryBase*>{top->GetItems(0), group, q2, q3, group}));
  group->RemoveFromBegin();
  EXPECT_EQ(SQL(), "SELECT a.x FROM a Union SELECT b.x FROM b Union (SELECT c.x FROM c)");
  group->AddToBegin(top->GetItems(0));
  EXPECT_EQ(SQL(), "SELECT b.x FROM b Union (SELECT a.x FROM a Union SELECT c.x FROM c)");
  EXPECT_EQ(ReportsOf([&] { group->RemoveBrackets(); }), 1);
  EXPECT_EQ(SQL(), "SELECT b.x FROM b Union SELECT a.x FROM a Union SELECT c.x FROM c");
  TqxUnionGroup::InsertAfter(top->GetItems(0), top->GetItems(2));
  EXPECT_EQ(SQL(), "SELECT a.x FROM a Union SELECT c.x FROM c Union SELECT b.x FROM b");
  TqxUnionSubQuery* added = nullptr;
  EXPECT_EQ(ReportsOf([&] { added = top->Insert(1); }), 1);
  added->AddObject("d");
  EXPECT_EQ(
      SQL(),
      "SELECT a.x FROM a Union SELECT FROM d Union SELECT c.x FROM c Union SELECT b.x FROM b");
  EXPECT_EQ(ReportsOf([&] { top->Remove(added); }), 1);
  TqxUnionGroup* newGroup = top->AddGroup();
  EXPECT_EQ(newGroup->GetCount(), 1);
  EXPECT_EQ(SQL(),
            "SELECT a.x FROM a Union SELECT c.x FROM c Union SELECT b.x FROM b Union (SELECT)");
  // Removing the last operand of a group removes the group; a query keeps one operand.
  newGroup->GetFirstOperand()->RemoveEvent();
  EXPECT_EQ(top->GetCount(), 3);
  while (top->GetCount() > 1)
    top->Remove(top->GetItems(0));
  top->Remove(top->GetItems(0));
  EXPECT_EQ(top->GetCount(), 1);
  EXPECT_EQ(SQL(), "SELECT");
}

// A dialect whose query features can be switched off one by one.
struct Features {
  bool Unions = true, Brackets = true, SubUnions = true, SubBrackets = true;
};

class LimitedDialect : public TastSQL92SyntaxProvider {
 public:
  explicit LimitedDialect(const Features& F) : F_(F) {}
  bool IsSupportUnions() const override { return F_.Unions; }
  bool IsSupportBracketsInUnions() const override { return F_.Brackets; }
  bool IsSupportSubQueryUnions() const override { return F_.SubUnions; }
  bool IsSupportSubQueryBracketsInUnions() const override { return F_.SubBrackets; }

 private:
  Features F_;
};

class LimitedProvider : public TqxBaseSyntaxProvider {
 public:
  explicit LimitedProvider(const Features& F) : F_(F) {}
  ~LimitedProvider() override { BeginDestroy(); }

 protected:
  std::unique_ptr<TastSyntaxProvider> CreateASTSyntaxProvider() const override {
    return std::make_unique<LimitedDialect>(F_);
  }

 private:
  Features F_;
};

TEST_F(QueryTest, DialectsWithoutUnionsRefuseThem) {
  LimitedProvider none(Features{false, false, false, false});
  Builder.SetSyntaxProvider(&none);
  Load("SELECT t.a FROM t WHERE t.a IN (SELECT u.a FROM u)");
  TqxUnionGroup* top = Builder.GetQuery()->GetUnionGroup();
  TqxUnionGroup* sub = Builder.GetSubQueries(1)->GetUnionGroup();
  Reports = 0;
  EXPECT_EQ(ErrorOf([&] { top->Add(); }), "This server don't support unions!");
  EXPECT_EQ(ErrorOf([&] { top->Insert(0); }), "This server don't support unions!");
  EXPECT_EQ(ErrorOf([&] { top->AddGroup(); }), "This server don't support brackets in unions!");
  EXPECT_EQ(ErrorOf([&] { top->InsertGroup(1); }), "This server don't support brackets in unions!");
  EXPECT_EQ(ErrorOf([&] { sub->Add(); }), "This server don't support unions in subqueries!");
  EXPECT_EQ(ErrorOf([&] { sub->InsertGroup(0); }),
            "This server don't support brackets in unions in subqueries!");
  EXPECT_EQ(ErrorOf([&] { top->EncloseWithBrackets(top->GetItems(0)); }),
            "This server don't support brackets in unions!");
  EXPECT_EQ(Reports, 0);
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE t.a IN (SELECT u.a FROM u)");

  // Unions at the top only.
  LimitedProvider top_only(Features{true, true, false, false});
  Builder.SetSyntaxProvider(&top_only);
  Load("SELECT t.a FROM t WHERE t.a IN (SELECT u.a FROM u)");
  EXPECT_EQ(ErrorOf([&] { Builder.GetQuery()->GetUnionGroup()->Add(); }), "no error");
  EXPECT_EQ(ErrorOf([&] { Builder.GetSubQueries(1)->GetUnionGroup()->Add(); }),
            "This server don't support unions in subqueries!");
  Builder.SetSyntaxProvider(&Syntax);
}

TEST_F(QueryTest, ChangingOrLosingTheSyntaxProviderResetsTheModel) {
  Load("SELECT a.x FROM a UNION SELECT b.x FROM b");
  TqxSQL92SyntaxProvider other;
  Builder.SetSyntaxProvider(&other);
  EXPECT_EQ(SQL(), "SELECT");
  Load("SELECT a.x FROM a");
  {
    TqxSQL92SyntaxProvider temporary;
    Builder.SetSyntaxProvider(&temporary);
    Load("SELECT a.x FROM a");
    EXPECT_TRUE(temporary.IsQueryBuilderRegistered(&Builder));
  }
  EXPECT_EQ(Builder.GetSyntaxProvider(), nullptr);
  EXPECT_EQ(SQL(), "SELECT");
  Builder.SetSyntaxProvider(&Syntax);
  Load("SELECT a.x FROM a");
  Syntax.SendCapsChangedNotifications();
  EXPECT_EQ(SQL(), "SELECT");
}

TEST_F(QueryTest, SQLBuildersFollowTheQueryBuilder) {
  Load("SELECT a.x FROM a");
  std::vector<int> order;
  auto second = std::make_unique<TqxSQLBuilderPlainText>();
  Output.OnSQLUpdated = [&](TqxBaseSQLBuilder*) { order.push_back(1); };
  second->OnSQLUpdated = [&](TqxBaseSQLBuilder*) { order.push_back(2); };
  second->SetQueryBuilder(&Builder);
  EXPECT_EQ(second->GetSQL(), "SELECT a.x\r\nFROM a");
  order.clear();
  Row(0)->SetAlias("y");
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
  EXPECT_EQ(Builder.GetSQLBuildersCount(), 2);
  second.reset();
  EXPECT_EQ(Builder.GetSQLBuildersCount(), 1);
  {
    TqxBaseQueryBuilder temporary;
    Output.SetQueryBuilder(&temporary);
    EXPECT_EQ(Builder.GetSQLBuildersCount(), 0);
  }
  EXPECT_EQ(Output.GetQueryBuilder(), nullptr);
  EXPECT_EQ(Output.GetSQL(), "");
}

TEST_F(QueryTest, SubQueriesAreModelsOfTheirOwn) {
  Tables["u"] = {"a", "b"};
  Load("SELECT t.a FROM t WHERE t.a IN (SELECT u.a FROM u WHERE u.b = t.b)");
  ASSERT_EQ(Builder.GetSubQueriesCount(), 2);
  TqxSubQuery* sub = Builder.GetSubQueries(1);
  EXPECT_EQ(sub->GetParentUnionSubQuery(), Operand());
  TqxUnionSubQuery* inner = sub->GetFirstOperand();
  // An edit inside the sub-query is one change of the statement.
  EXPECT_EQ(ReportsOf([&] { inner->GetSelectList()->AddField(inner->GetDatasources()[0], "b"); }),
            1);
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE t.a IN (SELECT u.a, u.b FROM u WHERE u.b=t.b)");
  // A correlated name typed in the sub-query binds to the outer table.
  inner->GetSelectList()->GetItems(0)->SetCondition(0, "<> t.a");
  EXPECT_EQ(SQL(),
            "SELECT t.a FROM t WHERE t.a IN (SELECT u.a, u.b FROM u WHERE u.a<>t.a And u.b=t.b)");
  DS(0)->SetAlias("o");
  EXPECT_EQ(SQL(),
            "SELECT o.a FROM t o WHERE o.a IN (SELECT u.a, u.b FROM u WHERE u.a<>o.a And u.b=o.b)");
  // Derived tables.
  TqxDataSourceQuery* derived = Operand()->AddQuery();
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(derived->GetAlias(), "q1");
  // An edit inside the derived table has its field list read again.
  const int asked = FieldQuestions;
  derived->GetSubQuery()->GetFirstOperand()->AddObject("u");
  EXPECT_GT(FieldQuestions, asked + 1);
  EXPECT_EQ(Builder.GetSubQueriesCount(), 3);
  EXPECT_EQ(SQL(),
            "SELECT o.a FROM t o,  (SELECT FROM u) q1 WHERE o.a IN (SELECT u.a, u.b FROM u WHERE "
            "u.a<>o.a And u.b=o.b)");
  Operand()->RemoveDatasource(derived);
  EXPECT_EQ(Builder.GetSubQueriesCount(), 2);
}

TEST_F(QueryTest, GridSizeCheckAndTabHeaderEvent) {
  TqxBaseQueryBuilder builder;
  EXPECT_THROW(builder.SetGridSize(-1), EqxError);
  builder.OnGetTabHeaderText = [](TqxBaseQueryBuilder*, TqxSubQuery*, std::string& ACaption) {
    ACaption = "Top";
  };
  EXPECT_EQ(builder.GetTabHeaderText(builder.GetQuery()), "Top");
}

}  // namespace
}  // namespace qorvex::modeltest
