#include <gtest/gtest.h>

#include "model_support.h"

namespace qorvex::modeltest {
namespace {

class DatasourcesTest : public ModelTest {
 protected:
  TqxDatasourceBase* Item(int Index) const { return Operand()->GetFromClause()->GetItems(Index); }
  static std::string Describe(const TqxLink& Link) {
    auto name = [](const TqxDatasourceBase* DS) {
      const auto* leaf = dynamic_cast<const TqxDatasource*>(DS);
      return leaf != nullptr ? leaf->GetQualifier() : std::string("?");
    };
    std::string text = name(Link.GetLeftDatasource());
    if (!Link.GetLeftField().empty())
      text += "." + Link.GetLeftField();
    text += "-" + name(Link.GetRightDatasource());
    if (!Link.GetRightField().empty())
      text += "." + Link.GetRightField();
    return text + " [" + Link.GetLinkExpression()->GetSimpleSQL() + "]";
  }
  std::vector<std::string> Links(int Index) const {
    std::vector<std::string> links;
    for (int i = 0; i < Item(Index)->GetJoinsCount(); ++i)
      links.push_back(Describe(*Item(Index)->GetJoins(i)));
    return links;
  }
};

using Strings = std::vector<std::string>;

struct JoinCase {
  const char* SQL;
  Strings Links;  // of the FROM item Item, the last when -1
  const char* Written;
  int Item = -1;
};

const JoinCase kJoinCases[] = {
    {"SELECT * FROM a INNER JOIN b ON a.x = b.y AND a.z > 5",
     {"a.x-b.y [a.x=b.y]", "a-b [a.z>5]"},
     "SELECT * FROM a INNER JOIN  b ON a.x=b.y And a.z>5"},
    // The ends follow FROM order whatever the order of the operands.
    {"SELECT * FROM a INNER JOIN b ON b.y = a.x",
     {"a.x-b.y [b.y=a.x]"},
     "SELECT * FROM a INNER JOIN  b ON b.y=a.x"},
    {"SELECT * FROM a INNER JOIN b ON a.x < b.y",
     {"a.x-b.y [a.x<b.y]"},
     "SELECT * FROM a INNER JOIN  b ON a.x<b.y"},
    // An earlier datasource of the group binds too, not only the previous one.
    {"SELECT * FROM a JOIN b ON a.id = b.id JOIN c ON a.id = c.aid AND b.id = c.bid",
     {"a.id-c.aid [a.id=c.aid]", "b.id-c.bid [b.id=c.bid]"},
     "SELECT * FROM a INNER JOIN  b ON a.id=b.id INNER JOIN  c ON a.id=c.aid And b.id=c.bid"},
    // Both columns in earlier sources: a link without fields from the previous one.
    {"SELECT * FROM a JOIN b ON a.id = b.id JOIN c ON a.x = b.x",
     {"b-c [a.x=b.x]"},
     "SELECT * FROM a INNER JOIN  b ON a.id=b.id INNER JOIN  c ON a.x=b.x"},
    // Brackets and nested ANDs; what does not bind stays one link.
    {"SELECT * FROM a JOIN b ON (a.x = b.x AND (a.y = b.y AND a.k > 1))",
     {"a.x-b.x [a.x=b.x]", "a.y-b.y [a.y=b.y]", "a-b [a.k>1]"},
     "SELECT * FROM a INNER JOIN  b ON a.x=b.x And a.y=b.y And a.k>1"},
    {"SELECT * FROM a JOIN b ON a.x = b.x OR a.y = b.y",
     {"a-b [a.x=b.x Or a.y=b.y]"},
     "SELECT * FROM a INNER JOIN  b ON a.x=b.x Or a.y=b.y"},
    // Both columns of the joined table: no link between two ends.
    {"SELECT * FROM a JOIN b ON a.id = b.id AND b.x = b.y",
     {"a.id-b.id [a.id=b.id]", "a-b [b.x=b.y]"},
     "SELECT * FROM a INNER JOIN  b ON a.id=b.id And b.x=b.y"},
    // Unqualified columns name no datasource.
    {"SELECT * FROM a JOIN b ON x = y", {"a-b [x=y]"}, "SELECT * FROM a INNER JOIN  b ON x=y"},
    {"SELECT * FROM a LEFT JOIN b ON a.x = b.x AND b.flag = 1",
     {"a.x-b.x [a.x=b.x]", "a-b [b.flag=1]"},
     "SELECT * FROM a LEFT JOIN  b ON a.x=b.x And b.flag=1"},
    // A pair naming a later table stays a link without fields.
    {"SELECT * FROM a JOIN b ON b.id = a.id AND b.k = c.k JOIN c ON c.id = a.id",
     {"a.id-b.id [b.id=a.id]", "a-b [b.k=c.k]"},
     "SELECT * FROM a INNER JOIN  b ON b.id=a.id And b.k=c.k INNER JOIN  c ON c.id=a.id",
     1},
};

TEST_F(DatasourcesTest, JoinConditionsBindToLinks) {
  for (const JoinCase& c : kJoinCases) {
    SCOPED_TRACE(c.SQL);
    Load(c.SQL);
    EXPECT_EQ(Links(c.Item >= 0 ? c.Item : Operand()->GetFromClause()->GetCount() - 1), c.Links);
    EXPECT_EQ(SQL(), c.Written);
  }
}

TEST_F(DatasourcesTest, NestedJoinGroupsBindInsideAndAcross) {
  Load("SELECT * FROM a JOIN (b JOIN c ON b.id = c.bid) ON a.id = c.aid");
  auto* group = dynamic_cast<TqxDatasourceGroup*>(Item(1));
  ASSERT_NE(group, nullptr);
  ASSERT_EQ(group->GetCount(), 2);
  EXPECT_EQ(group->GetItems(1)->GetJoinsCount(), 1);
  ASSERT_EQ(group->GetJoinsCount(), 1);
  EXPECT_EQ(Describe(*group->GetJoins(0)), "a.id-c.aid [a.id=c.aid]");
  EXPECT_EQ(SQL(), "SELECT * FROM a INNER JOIN  (b INNER JOIN  c ON b.id=c.bid) ON a.id=c.aid");
  EXPECT_TRUE(Operand()->GetFromClause()->ContainsDatasourceBefore(DS(0), group));
  EXPECT_FALSE(Operand()->GetFromClause()->ContainsDatasourceBefore(DS(2), DS(0)));
}

TEST_F(DatasourcesTest, AConditionOnAFirstSourceCannotBeBound) {
  Load("SELECT * FROM a");
  TastSyntaxProvider* ast = Builder.GetASTSyntaxProvider();
  auto select = NewNode<TSQLSubQuerySelectExpression>(ast);
  auto from = NewNode<TSQLFromClause>(ast);
  auto source = NewNode<TSQLFromObject>(ast);
  source->SetDatabaseObject(NewNode<TSQLDatabaseObject>(ast));
  source->GetDatabaseObject()->AddName("t");
  auto condition = NewNode<TSQLExpressionOperatorBinary>(ast);
  condition->SetInner(NewNode<TSQLExpressionConstant>(ast, std::string("1")));
  condition->SetOperator(NewNode<TSQLOperator>(ast, std::string("=")));
  condition->SetRight(NewNode<TSQLExpressionConstant>(ast, std::string("1")));
  source->SetJoinCondition(std::move(condition));
  from->Add(std::move(source));
  select->SetFromClause(std::move(from));
  TqxUnionGroup* group = Builder.GetQuery()->GetUnionGroup();
  EXPECT_EQ(ErrorOf([&] { group->AddAST(std::move(select)); }),
            "Can't bind join expression (prev=nil)");
  EXPECT_EQ(group->GetCount(), 1);
  EXPECT_EQ(SQL(), "SELECT * FROM a");
}

TEST_F(DatasourcesTest, FindLinkIgnoresCaseButNotDirection) {
  Load("SELECT * FROM a JOIN b ON a.ID = b.Ref");
  TqxDatasourceBase* b = Item(1);
  EXPECT_NE(b->FindLink(DS(0), "id", DS(1), "REF"), nullptr);
  EXPECT_EQ(b->FindLink(DS(1), "ref", DS(0), "id"), nullptr);
  EXPECT_EQ(b->FindLink(DS(0), "id", DS(1), "other"), nullptr);
  // The operand searches both directions.
  EXPECT_NE(Operand()->FindLink(DS(1), "ref", DS(0), "id"), nullptr);
}

TEST_F(DatasourcesTest, RemovingTheLastLinkLeavesACrossJoin) {
  Load("SELECT * FROM a LEFT JOIN b ON a.x = b.x AND a.y = b.y");
  EXPECT_EQ(ReportsOf([&] { Operand()->RemoveLink(Item(1)->GetJoins(0)); }), 1);
  EXPECT_EQ(SQL(), "SELECT * FROM a LEFT JOIN  b ON a.y=b.y");
  EXPECT_EQ(ReportsOf([&] { Operand()->RemoveLink(Item(1)->GetJoins(0)); }), 1);
  EXPECT_EQ(SQL(), "SELECT * FROM a CROSS JOIN  b");
}

TEST_F(DatasourcesTest, RemovingADatasourceRemovesWhatDependsOnIt) {
  Load(
      "SELECT a.x, b.y, c.z, a.x + b.y AS s FROM a JOIN b ON a.id = b.aid "
      "JOIN c ON b.id = c.bid AND a.id = c.aid WHERE b.y > 1");
  EXPECT_EQ(ReportsOf([&] { Operand()->RemoveDatasource(DS(1)); }), 1);
  // c keeps its link to a; rows of b go; a mixed row stays, its b column unbound.
  EXPECT_EQ(SQL(), "SELECT a.x, c.z, a.x+b.y AS s FROM a INNER JOIN  c ON a.id=c.aid");
  EXPECT_EQ(ReportsOf([&] { DS(0)->SendDestroyNotification(); }), 1);
  // c lost every link and is first now: no join kind.
  EXPECT_EQ(SQL(), "SELECT c.z, a.x+b.y AS s FROM c");
  EXPECT_EQ(Item(0)->GetJoinKind(), nullptr);

  Load("SELECT * FROM a LEFT JOIN b ON a.id = b.aid, c CROSS JOIN d");
  Operand()->RemoveDatasource(DS(0));
  EXPECT_EQ(SQL(), "SELECT * FROM b,  c CROSS JOIN  d");
}

TEST_F(DatasourcesTest, CardinalityComesFromOneColumnForeignKeys) {
  Keys = {{"orders", {"customer_id"}, "customers", {"id"}},
          {"emp", {"dept_id"}, "dept", {"id"}},
          {"emp", {"home_dept"}, "dept", {"id"}},
          {"lines", {"order_id", "line"}, "stock", {"order_id", "line"}}};
  struct Case {
    const char* SQL;
    int Item;
    TqxQueryBuilderLinkCardinality Left, Right;
  };
  const Case cases[] = {
      {"SELECT * FROM customers c JOIN orders o ON c.id = o.customer_id", 1, qblcOne, qblcMany},
      {"SELECT * FROM orders o JOIN customers c ON o.CUSTOMER_ID = c.Id", 1, qblcMany, qblcOne},
      {"SELECT * FROM customers c JOIN orders o ON c.name = o.note", 1, qblcUnknown, qblcUnknown},
      {"SELECT * FROM emp e JOIN dept d1 ON d1.id = e.dept_id JOIN dept d2 ON d2.id = e.home_dept",
       1, qblcMany, qblcOne},
      {"SELECT * FROM emp e JOIN dept d1 ON d1.id = e.dept_id JOIN dept d2 ON d2.id = e.home_dept",
       2, qblcMany, qblcOne},
      {"SELECT * FROM lines l JOIN stock s ON l.order_id = s.order_id", 1, qblcUnknown,
       qblcUnknown},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.SQL);
    Load(c.SQL);
    const TqxLink* link = Item(c.Item)->GetJoins(Item(c.Item)->GetJoinsCount() - 1);
    EXPECT_EQ(link->GetLeftCardinality(), c.Left);
    EXPECT_EQ(link->GetRightCardinality(), c.Right);
  }
  // A derived table never asks the provider.
  RelationQuestions = 0;
  Load("SELECT * FROM (SELECT 1 AS id) q JOIN orders o ON q.id = o.customer_id");
  EXPECT_EQ(Item(1)->GetJoins(0)->GetLeftCardinality(), qblcUnknown);
  EXPECT_EQ(RelationQuestions, 0);
}

TEST_F(DatasourcesTest, AliasesFollowEveryColumnThatNamesTheSource) {
  Load("SELECT a.x FROM a JOIN b ON a.id = b.id WHERE a.y = 2");
  EXPECT_EQ(ReportsOf([&] { DS(0)->SetAlias("t"); }), 1);
  EXPECT_EQ(SQL(), "SELECT t.x FROM a t INNER JOIN  b ON t.id=b.id WHERE t.y=2");
  EXPECT_EQ(DS(0)->GetCaption(), "a t");
  EXPECT_EQ(ReportsOf([&] { DS(0)->SetAlias("t"); }), 0);
  DS(0)->SetAlias("");
  EXPECT_EQ(SQL(), "SELECT a.x FROM a INNER JOIN  b ON a.id=b.id WHERE a.y=2");

  TqxDataSourceObject unloaded(Operand(), Operand()->GetFromClause());
  EXPECT_EQ(ErrorOf([&] { unloaded.SetAlias("z"); }), "Can't assign alias if astFromSource=nil!");
}

TEST_F(DatasourcesTest, AddingObjectsGivesFieldsDefaultAliasesAndOneReport) {
  Tables["customers"] = {"id", "name"};
  Tables["orders"] = {"id", "customer_id", "total"};
  Keys = {{"orders", {"customer_id"}, "customers", {"id"}}};
  Load("");
  EXPECT_EQ(ReportsOf([&] { Operand()->AddObject("customers"); }), 1);
  EXPECT_EQ(DS(0)->GetFields(), (Strings{"id", "name"}));
  EXPECT_EQ(DS(0)->GetFieldsWithStar(), (Strings{"*", "id", "name"}));
  EXPECT_EQ(ReportsOf([&] { Operand()->AddObject("customers"); }), 1);
  EXPECT_EQ(DS(1)->GetAlias(), "customers1");
  TqxDataSourceObject* orders = nullptr;
  EXPECT_EQ(ReportsOf([&] { orders = Operand()->AddObjectWithFK("orders"); }), 1);
  ASSERT_NE(orders, nullptr);
  EXPECT_EQ(orders->GetAlias(), "");
  EXPECT_EQ(SQL(),
            "SELECT FROM customers CROSS JOIN  customers customers1 INNER JOIN  orders ON "
            "customers.id=orders.customer_id And customers1.id=orders.customer_id");
  EXPECT_EQ(orders->GetJoins(0)->GetLeftCardinality(), qblcOne);
  // Links already there are not made twice.
  EXPECT_EQ(ReportsOf([&] { Operand()->AddFKLinksForObject(orders); }), 0);
  EXPECT_EQ(orders->GetJoinsCount(), 2);

  TqxDataSourceObject* placed = Operand()->AddObjectAt("orders", TqxPoint{30, 40});
  EXPECT_EQ(placed->GetAlias(), "") << "AddObjectAt keeps the alias it is given";
  EXPECT_EQ(placed->GetLeft(), 30);
  EXPECT_EQ(placed->GetTop(), 40);
}

TEST_F(DatasourcesTest, AddLinkPicksTheLaterDatasourceAndMakesAnInnerJoin) {
  Load("SELECT * FROM a, b, c");
  TqxLink* link = nullptr;
  EXPECT_EQ(ReportsOf([&] { link = Operand()->AddLink(DS(2), "id", DS(0), "cid"); }), 1);
  EXPECT_EQ(link->GetOwnerDatasource(), DS(2));
  EXPECT_EQ(link->GetLeftDatasource(), DS(0));
  EXPECT_EQ(link->GetLeftField(), "cid");
  EXPECT_EQ(SQL(), "SELECT * FROM a CROSS JOIN  b INNER JOIN  c ON a.cid=c.id");
  // The same link again changes nothing.
  EXPECT_EQ(ReportsOf([&] { EXPECT_EQ(Operand()->AddLink(DS(0), "CID", DS(2), "ID"), link); }), 0);
  EXPECT_THROW(Operand()->AddLink(DS(0), "x", DS(0), "y"), EqxError);

  // Inside a join group the group joins an outer datasource.
  Load("SELECT * FROM a CROSS JOIN (b CROSS JOIN c)");
  link = Operand()->AddLink(DS(0), "id", DS(2), "aid");
  EXPECT_EQ(link->GetOwnerDatasource(), Item(1));
  EXPECT_EQ(SQL(), "SELECT * FROM a INNER JOIN  (b CROSS JOIN  c) ON a.id=c.aid");
  link = Operand()->AddLink(DS(1), "id", DS(2), "bid");
  EXPECT_EQ(SQL(), "SELECT * FROM a INNER JOIN  (b INNER JOIN  c ON b.id=c.bid) ON a.id=c.aid");
}

TEST_F(DatasourcesTest, JoinKindsAndSides) {
  Load("SELECT * FROM a JOIN b ON a.id = b.id");
  TqxLink* link = Item(1)->GetJoins(0);
  EXPECT_EQ(link->GetLeftType(), ctInner);
  const struct {
    bool Left, Right;
    const char* Kind;
  } sides[] = {
      {true, false, "LEFT"}, {true, true, "FULL"}, {false, true, "RIGHT"}, {false, false, "INNER"}};
  for (const auto& side : sides) {
    SCOPED_TRACE(side.Kind);
    EXPECT_EQ(ReportsOf([&] { link->SetJoinSides(side.Left, side.Right); }), 1);
    EXPECT_EQ(SQL(), std::string("SELECT * FROM a ") + side.Kind + " JOIN  b ON a.id=b.id");
    EXPECT_EQ(link->GetLeftType(), side.Left ? ctOuter : ctInner);
    EXPECT_EQ(link->GetRightType(), side.Right ? ctOuter : ctInner);
  }
  // A new condition with the same text is dropped; another replaces the old one.
  TastSyntaxProvider* ast = Builder.GetASTSyntaxProvider();
  EXPECT_EQ(ReportsOf([&] { link->SetLinkExpression(ast->ParseLogicalExpression("a.id=b.id")); }),
            0);
  EXPECT_EQ(ReportsOf([&] {
              auto condition = ast->ParseLogicalExpression("a.id >= b.id");
              Operand()->BindNames(*condition);
              link->SetLinkExpression(std::move(condition));
            }),
            1);
  EXPECT_EQ(SQL(), "SELECT * FROM a INNER JOIN  b ON a.id>=b.id");
}

// A provider that fails (an unknown object, a lost connection) never costs a datasource:
// loading and editing go on, the datasource has no fields, and each failure reaches
// OnMetadataError with the datasource it concerns.
TEST_F(DatasourcesTest, MetadataFailuresAreReportedAndLoseNothing) {
  Tables["b"] = {"id", "aid"};
  Keys = {{"b", {"aid"}, "a", {"id"}}};
  Metadata.OnGetSQLFieldNames = [this](TqxEventMetadataProvider*, const std::string& SQL,
                                       std::vector<std::string>& Fields) {
    for (const auto& [name, fields] : Tables) {
      if (SQL == "select * from " + name || SQL.rfind("select * from " + name + " ", 0) == 0) {
        Fields = fields;
        return;
      }
    }
    throw EqxError("unknown: " + SQL);
  };
  std::vector<std::string> errors;
  Builder.OnMetadataError = [&](TqxBaseQueryBuilder* Sender, TqxDatasource* ADatasource,
                                const std::string& AMessage) {
    EXPECT_EQ(Sender, &Builder);
    errors.push_back((ADatasource != nullptr ? ADatasource->GetQualifier() : "?") + ": " +
                     AMessage);
  };
  const std::string sql = "SELECT x.*, b.id FROM b INNER JOIN  a x ON x.id=b.aid";
  Load(sql);
  EXPECT_EQ(SQL(), sql);
  EXPECT_EQ(errors, (std::vector<std::string>{"x: unknown: select * from a x"}));
  ASSERT_EQ(Datasources().size(), 2u);
  EXPECT_EQ(DS(0)->GetFields(), Tables["b"]);
  EXPECT_TRUE(DS(1)->GetFields().empty());
  EXPECT_EQ(DS(1)->GetFieldsWithStar(), (std::vector<std::string>{"*"}));

  // An object the metadata does not know is added all the same.
  errors.clear();
  TqxDataSourceObject* c = Operand()->AddObjectWithFK("c");
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(errors, (std::vector<std::string>{"c: unknown: select * from c"}));
  EXPECT_EQ(SQL(), sql + ",  c");

  // Refreshing fails later: the fields go, the datasource stays.
  errors.clear();
  Tables.erase("b");
  DS(0)->RefreshMetadata();
  EXPECT_TRUE(DS(0)->GetFields().empty());
  EXPECT_EQ(errors, (std::vector<std::string>{"b: unknown: select * from b"}));
  EXPECT_EQ(Datasources().size(), 3u);

  // Relations that cannot be read leave links without cardinality and add none.
  errors.clear();
  Metadata.OnGetTableRelations = [](TqxEventMetadataProvider*, const TSQLDatabaseObject& Table,
                                    TSQLMetadataRelations&) {
    throw EqxError("no keys of " + Table.GetObjName());
  };
  Tables["b"] = {"id", "aid"};
  TqxDataSourceObject* b2 = Operand()->AddObjectWithFK("b", "b2");
  ASSERT_NE(b2, nullptr);
  EXPECT_EQ(b2->GetJoinsCount(), 0);
  TqxLink* link = Operand()->AddLink(DS(1), "id", b2, "aid");
  ASSERT_NE(link, nullptr);
  EXPECT_EQ(link->GetLeftCardinality(), qblcUnknown);
  EXPECT_EQ(errors, (std::vector<std::string>{"b2: no keys of b", "x: no keys of a"}));
  EXPECT_EQ(SQL(), sql + " CROSS JOIN  c INNER JOIN  b b2 ON x.id=b2.aid");

  // Without a handler the failures are dropped quietly.
  Builder.OnMetadataError = nullptr;
  Load("SELECT * FROM d");
  EXPECT_EQ(SQL(), "SELECT * FROM d");
}

}  // namespace
}  // namespace qorvex::modeltest
