#include <gtest/gtest.h>

#include "model_support.h"

namespace qorvex::modeltest {
namespace {

class SelectListTest : public ModelTest {
 protected:
  SelectListTest() { Tables["t"] = {"a", "b", "c"}; }
};

TEST_F(SelectListTest, CriteriaColumnsAreAndedAcrossRowsAndOredAcrossColumns) {
  Load("SELECT t.r1, t.r2, t.r3 FROM t");
  EXPECT_EQ(ReportsOf([&] { Row(0)->SetCondition(0, "> 1"); }), 1);
  Row(1)->SetCondition(0, "< 9");
  Row(2)->SetCondition(1, "= 5");
  EXPECT_EQ(SQL(), "SELECT t.r1, t.r2, t.r3 FROM t WHERE t.r1>1 And t.r2<9 Or t.r3=5");
  EXPECT_EQ(Row(0)->GetGroupByType(), gtWhere);
  // A row that is not output still filters.
  Row(2)->SetSelect(false);
  EXPECT_EQ(SQL(), "SELECT t.r1, t.r2 FROM t WHERE t.r1>1 And t.r2<9 Or t.r3=5");
  // A column without conditions adds nothing.
  Row(0)->SetCondition(0, "");
  Row(1)->SetCondition(0, "");
  Row(0)->SetCondition(2, "<> 0");
  EXPECT_EQ(SQL(), "SELECT t.r1, t.r2 FROM t WHERE t.r3=5 Or t.r1<>0");
  // The same text again does not touch the model.
  EXPECT_EQ(ReportsOf([&] { Row(0)->SetCondition(2, "<>0"); }), 0);
}

TEST_F(SelectListTest, ConditionsLoadIntoRowsAndColumns) {
  Load("SELECT t.a FROM t WHERE (t.a > 1 AND t.b < 2) OR t.c = 3");
  EXPECT_EQ(Row(0)->GetCondition(0), ">1");
  EXPECT_EQ(Row(0)->GetGroupByType(), gtWhere);
  EXPECT_EQ(Row(1)->GetExpressionText(), "t.b");
  EXPECT_FALSE(Row(1)->GetSelect());
  EXPECT_EQ(Row(2)->GetCondition(0), "");
  EXPECT_EQ(Row(2)->GetCondition(1), "=3");
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE t.a>1 And t.b<2 Or t.c=3");

  Load("SELECT t.a FROM t WHERE t.a > 1 AND t.a < 5 AND (t.b = 1 OR t.c = 2)");
  EXPECT_EQ(Row(0)->GetCondition(0), ">1 And <5");
  // An OR about two columns cannot be split into criteria columns: it stays whole.
  EXPECT_EQ(Row(1)->GetExpressionText(), "t.b=1 Or t.c=2");
  EXPECT_EQ(Row(1)->GetCondition(0), "=True");
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE t.a>1 And t.a<5 And (t.b=1 Or t.c=2)");

  // A column both grouped and filtered gets a row for each part.
  Load(
      "SELECT t.a, Count(*) AS n FROM t WHERE t.a > 0 GROUP BY t.a HAVING Count(*) > 1 AND t.a < "
      "9");
  EXPECT_EQ(Row(0)->GetGroupByType(), gtGroupBy);
  EXPECT_EQ(Row(0)->GetCondition(0), "<9");
  EXPECT_EQ(Row(1)->GetGroupByType(), gtAggregateStar);
  EXPECT_EQ(Row(1)->GetCondition(0), ">1");
  EXPECT_EQ(Row(2)->GetGroupByType(), gtWhere);
  EXPECT_FALSE(Row(2)->GetSelect());
  EXPECT_EQ(
      SQL(),
      "SELECT t.a, Count(*) AS n FROM t WHERE t.a>0 GROUP BY t.a HAVING t.a<9 And Count(*)>1");
}

// The rows that filter, each as "expression: cell | cell", separated by "; ".
std::string FilteringRows(const TqxSelectList& List) {
  std::string text;
  for (int i = 0; i < List.GetCount(); ++i) {
    const TqxSelectItem& row = *List.GetItems(i);
    if (!row.HasConditions())
      continue;
    text += (text.empty() ? "" : "; ") + row.GetExpressionText() + ":";
    for (int c = 0; c < row.GetConditionsCount(); ++c)
      text += (c == 0 ? " " : " | ") + row.GetCondition(c);
  }
  return text;
}

// A term about one expression is a criteria cell of that expression's row; any other is a
// whole condition: a row whose expression is the predicate, with the cell "=True", or
// "=False" when it is negated. Either way the statement writes back meaning the same.
TEST_F(SelectListTest, ConditionTermsLoadAsCellsOrWholeConditions) {
  struct Case {
    const char* Clauses;
    const char* Rows;
    const char* Written = nullptr;  // when it differs from the loaded text
  };
  const Case cases[] = {
      {"WHERE t.a>1 And (Exists(SELECT 1 FROM u) Or Exists(SELECT 1 FROM v))",
       "t.a: >1; Exists(SELECT 1 FROM u) Or Exists(SELECT 1 FROM v): =True"},
      {"WHERE Not Exists(SELECT 1 FROM u) Or Not (t.b=1)",
       "Exists(SELECT 1 FROM u): =False; t.b:  | Not (=1)"},
      {"WHERE Exists(SELECT 1 FROM u) And Exists(SELECT 1 FROM u)",
       "Exists(SELECT 1 FROM u): =True And =True"},
      {"WHERE t.a>All(SELECT u.x FROM u) And Not t.b<Some(SELECT u.y FROM u)",
       "t.a: >All(SELECT u.x FROM u); t.b: Not <Some(SELECT u.y FROM u)"},
      {"WHERE (t.a=1 Or t.b=2) And (t.a=3 Or t.a IS NULL)",
       "t.a: (=3 Or IS NULL); t.a=1 Or t.b=2: =True",
       "WHERE (t.a=3 Or t.a IS NULL) And (t.a=1 Or t.b=2)"},
      {"WHERE t.a LIKE 'x!%' Escape '!' And t.b Not Between 1 And 2",
       "t.a: LIKE 'x!%' Escape '!'; t.b: Not Between 1 And 2"},
      {"WHERE 'x'=t.a And 'X'=t.b", "'x': =t.a; 'X': =t.b"},
      {"WHERE 1=0 Or t.a>t.b", "t.a:  | >t.b; 1: =0"},
      {"GROUP BY t.a HAVING Count(*)>1 And (Sum(t.b)>2 Or t.a IS NULL) Or Not Exists(SELECT 1 "
       "FROM u)",
       "Count(*): >1; Sum(t.b)>2 Or t.a IS NULL: =True; Exists(SELECT 1 FROM u):  | =False"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.Clauses);
    Load(std::string("SELECT t.a FROM t ") + c.Clauses);
    EXPECT_EQ(FilteringRows(*List()), c.Rows);
    const std::string written =
        std::string("SELECT t.a FROM t ") + (c.Written != nullptr ? c.Written : c.Clauses);
    EXPECT_EQ(SQL(), written);
    Load(written);
    EXPECT_EQ(SQL(), written) << "not stable";
  }
}

TEST_F(SelectListTest, CriteriaCellForms) {
  struct Case {
    const char* Cell;
    const char* Shown;
    const char* Where;
  };
  const Case cases[] = {
      {"> 5", ">5", "t.a>5"},
      {"t.a > 5", ">5", "t.a>5"},
      {"t.b > t.c", "t.b>t.c", "t.b>t.c"},
      {"5", "=5", "t.a=5"},
      {"'x'", "='x'", "t.a='x'"},
      {"between 1 and 3", "Between 1 And 3", "t.a Between 1 And 3"},
      {"t.a not in (1, 2)", "NOT IN (1, 2)", "t.a NOT IN (1, 2)"},
      {"not in (1, 2)", "Not IN (1, 2)", "Not t.a IN (1, 2)"},
      {"is null", "IS NULL", "t.a IS NULL"},
      {"> 1 or < 0", ">1 Or <0", "t.a>1 Or t.a<0"},
      {"like 'A%'", "like 'A%'", "t.a like 'A%'"},
      {"> all (select u.x from u)", ">All(SELECT u.x FROM u)", "t.a>All(SELECT u.x FROM u)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.Cell);
    Load("SELECT t.a FROM t");
    Row(0)->SetCondition(0, c.Cell);
    EXPECT_EQ(Row(0)->GetCondition(0), c.Shown);
    EXPECT_EQ(SQL(), std::string("SELECT t.a FROM t WHERE ") + c.Where);
  }
  Load("SELECT t.a FROM t");
  EXPECT_THROW(Row(0)->SetCondition(0, "> >"), EqxSQLError);
  EXPECT_EQ(Row(0)->GetConditionsCount(), 0);
  EXPECT_EQ(Row(0)->GetGroupByType(), gtExpression);
  // The empty row takes no criteria.
  EXPECT_THROW(Row(1)->SetCondition(0, "> 1"), EqxError);
}

TEST_F(SelectListTest, TrueAndFalseOnALogicalRow) {
  Load("SELECT t.a FROM t WHERE EXISTS (SELECT 1 FROM u)");
  TqxSelectItem* row = Row(1);
  EXPECT_EQ(row->GetExpressionText(), "Exists(SELECT 1 FROM u)");
  EXPECT_EQ(row->GetCondition(0), "=True");
  EXPECT_FALSE(row->IsCanSelect());
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE Exists(SELECT 1 FROM u)");
  row->SetCondition(0, "=FALSE");
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE Not Exists(SELECT 1 FROM u)");
  // A cell that would not make a condition with the row's expression is refused.
  EXPECT_EQ(ErrorOf([&] { row->SetCondition(0, "> 1"); }),
            "Criteria \"> 1\" make no valid condition: Exists(SELECT 1 FROM u)>1");
  EXPECT_EQ(row->GetCondition(0), "=False");
  EXPECT_EQ(ErrorOf([&] { row->SetSelect(true); }), "Can't select this expression");
  EXPECT_FALSE(row->GetSelect());
}

TEST_F(SelectListTest, GroupByTypeOfAggregates) {
  struct Case {
    const char* Expression;
    TqxQueryBuilderGroupByType Type;
  };
  const Case cases[] = {
      {"Count(*)", gtAggregateStar},        {"Sum(t.a)", gtAggregate},
      {"count(distinct t.a)", gtAggregate}, {"Max(t.a + 1)", gtAggregate},
      {"foo(t.a)", gtExpression},           {"t.a", gtExpression},
  };
  Load("SELECT t.a FROM t");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.Expression);
    TqxSelectItem* row = List()->AddExpression(c.Expression);
    EXPECT_EQ(row->CalcGroupByType(), c.Type);
    EXPECT_EQ(row->GetGroupByType(), c.Type);
  }
  EXPECT_EQ(
      SQL(),
      "SELECT t.a, Count(*), Sum(t.a), count(DISTINCT t.a), Max(t.a+1), foo(t.a), t.a FROM t");
  std::vector<std::string> names;
  Row(1)->GetGroupByNames(names);
  EXPECT_EQ(names, (std::vector<std::string>{"Aggregate", "Where"}));
  Row(0)->GetGroupByNames(names);
  EXPECT_EQ(names, (std::vector<std::string>{"Expression", "Group By", "Having", "Where"}));
}

TEST_F(SelectListTest, GroupingRowsWritesGroupByAndHaving) {
  Load("SELECT t.a, Count(*) FROM t");
  EXPECT_EQ(SQL(), "SELECT t.a, Count(*) FROM t");
  EXPECT_EQ(ReportsOf([&] { Row(0)->SetGroupByTypeName("group by"); }), 1);
  EXPECT_EQ(Row(0)->GetGroupByTypeName(), "Group By");
  Row(1)->SetCondition(0, "> 1");
  Row(0)->SetCondition(0, "<> 'x'");
  EXPECT_EQ(Row(0)->GetGroupByType(), gtGroupBy) << "grouped rows keep their type";
  EXPECT_EQ(SQL(), "SELECT t.a, Count(*) FROM t GROUP BY t.a HAVING t.a<>'x' And Count(*)>1");
  EXPECT_THROW(Row(0)->SetGroupByTypeName("Aggregate"), EqxError);
  EXPECT_THROW(Row(0)->SetGroupByTypeName("Sideways"), EqxError);
  Row(0)->SetGroupByTypeName("Expression");
  EXPECT_EQ(SQL(), "SELECT t.a, Count(*) FROM t HAVING Count(*)>1");
}

TEST_F(SelectListTest, SortingRowsWritesOrderBy) {
  Load("SELECT t.a, t.b AS bb, t.c FROM t");
  Row(2)->SetSortTypeName("Descending");
  Row(1)->SetSortType(stAsc);
  EXPECT_EQ(SQL(), "SELECT t.a, t.b AS bb, t.c FROM t ORDER BY t.c DESC, bb");
  EXPECT_EQ(Row(1)->GetSortOrder(), 2);
  EXPECT_EQ(ReportsOf([&] { Row(1)->SetSortOrderName("1"); }), 1);
  EXPECT_EQ(SQL(), "SELECT t.a, t.b AS bb, t.c FROM t ORDER BY bb, t.c DESC");
  // An unsorted row given an order becomes sorted ascending at that place.
  Row(0)->SetSortOrder(2);
  EXPECT_EQ(Row(0)->GetSortTypeName(), "Ascending");
  EXPECT_EQ(SQL(), "SELECT t.a, t.b AS bb, t.c FROM t ORDER BY bb, t.a, t.c DESC");
  Row(0)->SetSortTypeName("");
  EXPECT_EQ(Row(2)->GetSortOrderName(), "2");
  EXPECT_THROW(Row(0)->SetSortOrderName("two"), EqxError);
  EXPECT_THROW(Row(0)->SetSortTypeName("Upwards"), EqxError);
  // Moving rows changes the select list, not the sort order.
  List()->Move(2, 0);
  EXPECT_EQ(SQL(), "SELECT t.c, t.a, t.b AS bb FROM t ORDER BY bb, t.c DESC");

  // ORDER BY loads back onto the rows: by alias, by expression, or a new row.
  Load("SELECT Count(*) AS n, t.a FROM t GROUP BY t.a ORDER BY n DESC, t.a, t.b");
  EXPECT_EQ(Row(0)->GetSortType(), stDesc);
  EXPECT_EQ(Row(1)->GetSortOrder(), 2);
  EXPECT_EQ(Row(2)->GetExpressionText(), "t.b");
  EXPECT_FALSE(Row(2)->GetSelect());
  ASSERT_EQ(List()->GetSortedCount(), 3);
  EXPECT_EQ(List()->GetSortedItems(0), Row(0));
  EXPECT_EQ(List()->GetSortedItems(2), Row(2));
  EXPECT_EQ(SQL(), "SELECT Count(*) AS n, t.a FROM t GROUP BY t.a ORDER BY n DESC, t.a, t.b");
}

// The grid's rows in order, each as its expression, "-" when it is not output, and
// "#order" with " desc" when it sorts.
std::string SortedGrid(const TqxSelectList& List) {
  std::string text;
  for (int i = 0; i < List.GetCount(); ++i) {
    const TqxSelectItem& row = *List.GetItems(i);
    if (row.IsEmpty())
      continue;
    text += (text.empty() ? "" : "; ") + row.GetExpressionText() + (row.GetSelect() ? "" : " -");
    if (row.GetSortOrder() > 0)
      text +=
          " #" + std::to_string(row.GetSortOrder()) + (row.GetSortType() == stDesc ? " desc" : "");
  }
  return text;
}

// Terms that find the same rows several times: rows of an equal expression are taken in
// grid order, output rows first, each once; a term meeting only sorted rows gets a row
// of its own; an alias or a number may name a row an earlier term sorted.
TEST_F(SelectListTest, OrderByTermsTakeEqualRowsOnce) {
  struct Case {
    const char* SQL;
    const char* Grid;
  };
  const Case cases[] = {
      {"SELECT t.a, t.a AS k, t.b FROM t WHERE t.c > 1 "
       "ORDER BY T.A, t.a, t.a, t.c, t.c DESC, K, 3, 2",
       "t.a #1; t.a #2; t.b #7; t.c - #4; t.a - #3; t.c - #5 desc; t.a - #6; t.a - #8"},
      // Aliases are found ignoring case, the first in the grid.
      {"SELECT t.b AS x, t.a AS X, t.c FROM t ORDER BY x DESC, X, 2, 1, 3, 4",
       "t.b #1 desc; t.a #3; t.c #5; t.b - #2; t.b - #4; 4 - #6"},
      // A star stops the numbering of output columns.
      {"SELECT *, t.a FROM t ORDER BY 2, 1, t.a, t.A DESC",
       "*; t.a #3; 2 - #1; 1 - #2; t.A - #4 desc"},
      {"SELECT t.a FROM t WHERE t.b = 1 OR t.b = 2 ORDER BY t.b, t.a, t.b, 1",
       "t.a #2; t.b - #1; t.b - #3; t.a - #4"},
  };

  for (const Case& c : cases) {
    SCOPED_TRACE(c.SQL);
    Load(c.SQL);
    EXPECT_EQ(SortedGrid(*List()), c.Grid);
    const std::string written = SQL();
    Load(written);
    EXPECT_EQ(SQL(), written) << "not stable";
  }
  // A long list: every term sorts exactly one row.
  std::string terms;
  const int n = 200;
  for (int i = 1; i <= n; ++i)
    terms += std::string(i > 1 ? ", " : "") + (i % 4 == 0   ? "t.a + " + std::to_string(i)
                                               : i % 4 == 1 ? "t.b DESC"
                                               : i % 4 == 2 ? "k"
                                                            : std::to_string(i % 3 + 1));
  Load("SELECT t.a, t.b AS k, t.c FROM t ORDER BY " + terms);
  int sorted = 0;
  for (int i = 0; i < List()->GetCount(); ++i)
    sorted += Row(i)->GetSortOrder() > 0 ? 1 : 0;
  EXPECT_EQ(sorted, n);
  const std::string written = SQL();
  Load(written);
  EXPECT_EQ(SQL(), written);
}

TEST_F(SelectListTest, TickingAndUntickingFields) {
  Load("");
  TqxDatasource* t = Operand()->AddObject("t");
  EXPECT_EQ(ReportsOf([&] { List()->AddField(t, "a"); }), 1);
  List()->AddField(t, "*");
  EXPECT_EQ(SQL(), "SELECT t.a, t.* FROM t");
  EXPECT_NE(List()->FindField(t, "A"), nullptr);
  EXPECT_NE(List()->FindField(t, "*"), nullptr);
  EXPECT_EQ(List()->FindField(t, "b"), nullptr);
  List()->RemoveFields(t, "*");
  EXPECT_EQ(SQL(), "SELECT t.a FROM t");
  // A row with criteria only stops being output, and ticking it again reuses it.
  Row(0)->SetCondition(0, "> 1");
  EXPECT_EQ(ReportsOf([&] { List()->RemoveFields(t, "a"); }), 1);
  EXPECT_EQ(SQL(), "SELECT FROM t WHERE t.a>1");
  EXPECT_EQ(List()->FindField(t, "a"), nullptr);
  List()->AddField(t, "a");
  EXPECT_EQ(List()->GetFilledCount(), 1);
  EXPECT_EQ(SQL(), "SELECT t.a FROM t WHERE t.a>1");
  // A field dropped on a row is inserted there.
  List()->InsertField(0, t, "c");
  EXPECT_EQ(SQL(), "SELECT t.c, t.a FROM t WHERE t.a>1");

  // Unqualified columns of the only table that has such a field count as its fields.
  Load("SELECT a, * FROM t");
  EXPECT_NE(List()->FindField(DS(0), "a"), nullptr);
  EXPECT_NE(List()->FindField(DS(0), "*"), nullptr);
}

TEST_F(SelectListTest, EditingRowsAsText) {
  Load("SELECT t.a FROM t");
  TqxSelectItem* row = List()->AddExpression("t.b * 2 AS double_b");
  EXPECT_EQ(row->GetAlias(), "double_b");
  EXPECT_TRUE(row->GetSelect());
  EXPECT_EQ(SQL(), "SELECT t.a, t.b*2 AS double_b FROM t");
  // The grid always ends with one empty row.
  EXPECT_TRUE(List()->GetItems(List()->GetCount() - 1)->IsEmpty());
  EXPECT_EQ(List()->GetCount(), 3);
  EXPECT_THROW(row->SetExpression("t.b +"), EqxSQLError);
  EXPECT_EQ(row->GetExpressionText(), "t.b*2");
  EXPECT_EQ(ReportsOf([&] { row->SetExpression("t.b*2"); }), 0);
  row->SetExpression("t.c");
  EXPECT_EQ(SQL(), "SELECT t.a, t.c AS double_b FROM t");
  List()->InsertEmptyRow(0);
  EXPECT_EQ(ReportsOf([&] { Row(0)->SetExpression("t.*"); }), 1);
  EXPECT_FALSE(Row(0)->IsSupportsAlias());
  EXPECT_EQ(SQL(), "SELECT t.*, t.a, t.c AS double_b FROM t");
  EXPECT_THROW(Row(0)->SetAlias("x"), EqxError);
  List()->RemoveLastRow();
  EXPECT_EQ(SQL(), "SELECT t.*, t.a FROM t");
  List()->Clear();
  EXPECT_EQ(SQL(), "SELECT FROM t");
  EXPECT_EQ(List()->GetCount(), 1);
}

TEST(SelectListNoProvider, TextNeedsASyntaxProvider) {
  TqxBaseQueryBuilder builder;
  TqxSelectList* list = builder.GetQuery()->GetFirstOperand()->GetSelectList();
  EXPECT_EQ(ErrorOf([&] { list->AddExpression("a"); }), "No syntax provider specified!");
  EXPECT_EQ(list->GetFilledCount(), 0);
}

}  // namespace
}  // namespace qorvex::modeltest
