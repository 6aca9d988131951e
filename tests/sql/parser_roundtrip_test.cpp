// Round trips of the accepted corpus and the trees built for characteristic texts.
#include <gtest/gtest.h>

#include "parser_test_util.h"
#include "qorvex/ast/from.h"
#include "qorvex/parser/sql92_first_sets.h"

namespace qorvex::parsertest {
namespace {

class AcceptedCorpus : public ::testing::Test {
 protected:
  static const std::vector<std::string>& Statements() {
    static const std::vector<std::string> s = [] {
      std::vector<std::string> all = SplitStatements(ReadCorpus("accepted.sql"));
      for (std::string& q : SplitStatements(ReadCorpus("tpch.sql")))
        all.push_back(std::move(q));
      return all;
    }();
    return s;
  }
  TastSQL92SyntaxProvider provider_;
};

// Parse, write on one line, parse again, write again: the two texts are equal; a copy of
// the tree writes the same; and the multi-line text reads back to a tree with the same
// one-line text. The multi-line text
// is read with "\n" line breaks, as the tool writes it: the scanner's line-comment check
// re-reads characters after CR LF breaks before a "-" (a kept quirk of the scanner).
TEST_F(AcceptedCorpus, RoundTrips) {
  EXPECT_GE(Statements().size(), 300u);
  for (const std::string& sql : Statements()) {
    SCOPED_TRACE(sql);
    std::unique_ptr<TSQLSelectStatement> tree;
    ASSERT_NO_THROW(tree = provider_.ParseSelect(sql));
    const std::string oneLine = Write(*tree, false);
    EXPECT_EQ(oneLine.find('\n'), std::string::npos);
    std::unique_ptr<TSQLSelectStatement> again;
    ASSERT_NO_THROW(again = provider_.ParseSelect(oneLine)) << oneLine;
    EXPECT_EQ(Write(*again, false), oneLine);
    EXPECT_EQ(Write(*CloneNode(*tree), false), oneLine);
    const std::string multiLine = Write(*tree, true, "\n");
    std::unique_ptr<TSQLSelectStatement> fromMulti;
    ASSERT_NO_THROW(fromMulti = provider_.ParseSelect(multiLine)) << multiLine;
    EXPECT_EQ(Write(*fromMulti, false), oneLine);
  }
}

// The reuse of worked-out readings and the dropping of twin ways choose exactly the way
// that the plain way calculation chooses.
TEST_F(AcceptedCorpus, SameWayAsPlainCalculation) {
  for (const std::string& sql : Statements()) {
    SCOPED_TRACE(sql);
    const WayOutcome fast = CalculateWays(sql, Entry::kSelect, false);
    const WayOutcome plain = CalculateWays(sql, Entry::kSelect, true);
    ASSERT_TRUE(plain.complete);
    EXPECT_EQ(fast, plain);
  }
}

// Texts and the one-line text their tree writes: the node kinds chosen, the alias
// forms, quoting, operator spelling and the readings of ambiguous texts.
struct Written {
  Entry entry;
  const char* text;
  const char* oneLine;
};

const Written kWritten[] = {
    {Entry::kSelect, "select", "SELECT "},
    {Entry::kSelect, "select * from", "SELECT * FROM "},
    {Entry::kSelect, "select a = b + 1 from t", "SELECT a=b+1 FROM t"},
    {Entry::kSelect, "select a x, b as y, c 'z', d 'z w' from t",
     "SELECT a x, b AS y, c z, d \"z w\" FROM t"},
    {Entry::kSelect, "select distinct t.* from t", "SELECT DISTINCT t.* FROM t"},
    {Entry::kSelect, "select all a from t", "SELECT ALL a FROM t"},
    {Entry::kSelect, "select * from (select 1) x (c)", "SELECT * FROM (SELECT 1) x (c)"},
    {Entry::kSelect, "select * from (select 1 a, 2 b) as x (c, d)",
     "SELECT * FROM (SELECT 1 a, 2 b) AS x (c, d)"},
    {Entry::kSelect, "select * from a left outer join b on a.id = b.id",
     "SELECT * FROM a LEFT OUTER JOIN  b ON a.id=b.id"},
    {Entry::kSelect, "select * from a left join b on a.id = b.id",
     "SELECT * FROM a LEFT JOIN  b ON a.id=b.id"},
    {Entry::kSelect, "select * from a join b on 1 = 1", "SELECT * FROM a INNER JOIN  b ON 1=1"},
    {Entry::kSelect, "select * from a, b cross join c", "SELECT * FROM a,  b CROSS JOIN  c"},
    {Entry::kSelect, "select * from a join b join c on c.x = b.x on b.y = a.y",
     "SELECT * FROM a INNER JOIN  (b INNER JOIN  c ON c.x=b.x) ON b.y=a.y"},
    {Entry::kSelect, "select * from (a join b on 1 = 1)", "SELECT * FROM (a INNER JOIN  b ON 1=1)"},
    {Entry::kSelect, "select * from db..t", "SELECT * FROM db..t"},
    {Entry::kSelect, "select \"my col\" from [my table]", "SELECT \"my col\" FROM \"my table\""},
    {Entry::kSelect, "select \"a\"\"b\", \"plain\" from t", "SELECT \"a\"\"b\", plain FROM t"},
    {Entry::kSelect, "select * from [db][t]", "SELECT * FROM db.t"},
    {Entry::kSelect, "select name, type from table_name", "SELECT name, type FROM table_name"},
    {Entry::kSelect, "select a from t union all select b from u except select c from v",
     "SELECT a FROM t union ALL SELECT b FROM u except SELECT c FROM v"},
    {Entry::kSelect, "select a from t UNION (select b from u intersect select c from v)",
     "SELECT a FROM t union (SELECT b FROM u intersect SELECT c FROM v)"},
    {Entry::kSelect, "select a from t order by a desc, b asc",
     "SELECT a FROM t ORDER BY a DESC, b"},
    {Entry::kSelect, "select a, count(*) from t group by a having count(*) > 1",
     "SELECT a, count(*) FROM t GROUP BY a HAVING count(*)>1"},
    // A bracket in a value position is first a bracketed expression.
    {Entry::kSelect, "select ((select 1))", "SELECT ((SELECT 1))"},
    {Entry::kExpression, "1 + 2 * 3 - 4", "1+2*3-4"},
    {Entry::kExpression, "-a + ~b", "-a+ ~b"},
    {Entry::kExpression, "count(distinct a) + sum(all b) + count(*)",
     "count(DISTINCT a)+sum(b)+count(*)"},
    {Entry::kExpression, "case a when 1 then 'x' else 'y' end",
     "CASE a WHEN 1 THEN 'x' ELSE 'y' END"},
    {Entry::kExpression, "case when a > 1 then 2 end", "CASE WHEN a>1 THEN 2 END"},
    {Entry::kExpression, "cast(a as numeric(10, 2))", "Cast(a As numeric(10,2))"},
    {Entry::kExpression, "cast(a as character varying(20))", "Cast(a As character varying(20))"},
    {Entry::kExpression, "cast(a as timestamp(3) with time zone)",
     "Cast(a As timestamp(3)with time zone )"},
    {Entry::kExpression, "cast(a as double precision)", "Cast(a As double precision )"},
    {Entry::kExpression, "cast(a as s.mytype)", "Cast(a As s.mytype)"},
    {Entry::kExpression, "current_user", "current_user"},
    {Entry::kExpression, "{d '2020-01-31'}", "{d '2020-01-31'}"},
    {Entry::kExpression, "0x1F + 1.5e-3", "0x1F+1.5e-3"},
    {Entry::kExpression, "a.b.c.d.e", "a.b.c.d.e"},
    {Entry::kExpression, "f(a, g(b))", "f(a, g(b))"},
    {Entry::kLogical, "> 5", ">5"},
    {Entry::kLogical, "a not between 1 and 2", "a Not Between 1 And 2"},
    {Entry::kLogical, "a is not null", "a IS NOT NULL"},
    {Entry::kLogical, "a not like 'x%' escape '!'", "a Not like 'x%' Escape '!'"},
    {Entry::kLogical, "a not in (1, 2)", "a NOT IN (1, 2)"},
    {Entry::kLogical, "a in (select b from u)", "a IN (SELECT b FROM u)"},
    {Entry::kLogical, "a >= any (select b from u)", "a>=Any(SELECT b FROM u)"},
    {Entry::kLogical, "a !< 1 and b != 2 or c !> 3", "a!<1 And b!=2 Or c!>3"},
    {Entry::kLogical, "not not exists (select 1)", "Not Not Exists(SELECT 1)"},
    // A bracket in a logical position is first a bracketed condition; a NOT before LIKE
    // is read as a NOT over a LIKE without left operand.
    {Entry::kLogical, "(a = 1)", "(a=1)"},
    {Entry::kLogical, "(a) = 1", "(a)=1"},
    {Entry::kLogical, "not like 'x'", "Not like 'x'"},
    {Entry::kObject, "srv.db.s.t", "srv.db.s.t"},
    {Entry::kObject, "ada", "ada"},
    {Entry::kObject, "[]", "\"\""},
    {Entry::kObject, "[a][]", "a.\"\""},
    {Entry::kLogical, "[] !< \"\"", "\"\"!<\"\""},
    {Entry::kItem, "t.*", "t.*"},
    {Entry::kItem, "x = 1", "x=1"},
    {Entry::kItem, "a + 1 as total", "a+1 AS total"},
    // A qualified function keeps its parts as separate names.
    {Entry::kExpression, "dbo.f(a)", "dbo.f(a)"},
    {Entry::kExpression, "db..f(1)", "db..f(1)"},
    {Entry::kExpression, "\"my schema\".f(1)", "\"my schema\".f(1)"},
    {Entry::kSelect, "select * from s.tf(1) x", "SELECT * FROM s.tf(1) x"},
};

TEST(ParserTrees, WriteTheExpectedText) {
  TastSQL92SyntaxProvider provider;
  for (const Written& w : kWritten) {
    SCOPED_TRACE(w.text);
    std::unique_ptr<TastNode> node;
    ASSERT_NO_THROW(node = Parse(provider, w.entry, w.text));
    EXPECT_EQ(Write(*node, false), w.oneLine);
  }
}

TEST(ParserTrees, NodeClassesAndFields) {
  TastSQL92SyntaxProvider provider;
  auto stmt = provider.ParseSelect(
      "select a = 1, b x, c as y, t.* from db..t z left outer join (select 1) q (c1, c2) "
      "on q.c1 = z.a where a > all (select 1) order by a desc");
  auto* query = dynamic_cast<TSQLSubQuerySelectExpression*>(stmt->GetItems(0));
  ASSERT_NE(query, nullptr);
  TSQLSelectItems* items = query->GetSelectItems();
  ASSERT_EQ(items->GetCount(), 4);
  auto alias = [&](int i) {
    return static_cast<TSQLSelectItemExpression*>(items->GetItems(i))->GetAlias();
  };
  EXPECT_EQ(alias(0)->ClassType().ClassName(), "TSQLAliasAliasEqualsObject");
  EXPECT_EQ(alias(0)->Name, "a");
  EXPECT_EQ(alias(1)->ClassType().ClassName(), "TSQLAliasObjectAlias");
  EXPECT_EQ(alias(2)->ClassType().ClassName(), "TSQLAliasObjectAsAlias");
  EXPECT_EQ(items->GetItems(3)->ClassType().ClassName(), "TSQLSelectItemAllTableColumns");

  TSQLFromClause* from = query->GetFromClause();
  ASSERT_EQ(from->Count(), 2);
  auto* object = dynamic_cast<TSQLFromObject*>(from->GetItems(0));
  ASSERT_NE(object, nullptr);
  TSQLDatabaseObject* name = object->GetDatabaseObject();
  ASSERT_EQ(name->Count(), 3);
  EXPECT_EQ(name->GetObjName(), "t");
  EXPECT_EQ(name->GetNames(1), "");
  EXPECT_EQ(name->GetNames(2), "db");
  auto* derived = dynamic_cast<TSQLFromQuery*>(from->GetItems(1));
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(derived->ColumnAliases, (std::vector<std::string>{"c1", "c2"}));
  auto* left = dynamic_cast<TSQLJoinKindLeft*>(derived->GetJoinKind());
  ASSERT_NE(left, nullptr);
  EXPECT_TRUE(left->Outer);
  EXPECT_NE(derived->GetJoinCondition(), nullptr);

  auto* comp = dynamic_cast<TSQLExpressionCompWithSubQuery*>(query->GetWhere());
  ASSERT_NE(comp, nullptr);
  EXPECT_EQ(comp->Quantifier, TSQLExpressionCompWithSet::cqAll);
  ASSERT_NE(stmt->GetOrderBy(), nullptr);
}

TEST(ParserTrees, ConstantsKeepTheirText) {
  TastSQL92SyntaxProvider provider;
  for (const char* text : {"007", "1.50", ".5e+01", "'it''s'", "0xfF", "{ts '2020-01-01 10:00'}",
                           "NULL", "123456789012345678901234567890"}) {
    auto node = provider.ParseExpression(text);
    auto* constant = dynamic_cast<TSQLExpressionConstant*>(node.get());
    ASSERT_NE(constant, nullptr) << text;
    EXPECT_EQ(Write(*constant, false), text);
  }
}

TEST(ParserTrees, QuotedNamesStandForTheTextInside) {
  TastSQL92SyntaxProvider provider;
  auto a = provider.ParseObjectName("\"my \"\"quoted\"\" table\"");
  EXPECT_EQ(a->GetObjName(), "my \"quoted\" table");
  auto b = provider.ParseObjectName("[my table]");
  EXPECT_EQ(b->GetObjName(), "my table");
  auto c = provider.ParseObjectName("s.[a][b]");
  ASSERT_EQ(c->Count(), 3);
  EXPECT_EQ(c->GetQualifiedName(), "s.a.b");
}

TEST(ParserTrees, BaseProviderWritesNamesBare) {
  class Base : public TastSQL92SyntaxProvider {
   public:
    std::string GetQuoteBegin() const override { return TastSyntaxProvider::GetQuoteBegin(); }
    std::string GetQuoteEnd() const override { return TastSyntaxProvider::GetQuoteEnd(); }
  } base;
  auto tree = base.ParseSelect("select [my col] from \"my table\"");
  EXPECT_EQ(Write(*tree, false), "SELECT my col FROM my table");
}

// The same text gives the same tree every time, also when one parser object is not
// reused and when texts are parsed in another order.
TEST(ParserTrees, AmbiguousTextsAreReadTheSameWayEveryTime) {
  TastSQL92SyntaxProvider provider;
  const char* texts[] = {"select ((select 1)) from t where ((a)) = (1)",
                         "select * from a join b join c on 1 = 1 join d on 2 = 2 on 3 = 3",
                         "select * from t where not like 'x' and (a) in ((select 1))"};
  std::vector<std::string> first;
  for (const char* t : texts)
    first.push_back(provider.ParseSelect(t)->Dump());
  for (int round = 0; round < 3; ++round) {
    for (int i = 2; i >= 0; --i)
      EXPECT_EQ(provider.ParseSelect(texts[i])->Dump(), first[static_cast<std::size_t>(i)]);
  }
}

}  // namespace
}  // namespace qorvex::parsertest

namespace qorvex::parsertest {
namespace {

// The first-token sets against the parser: a text starting with a token of a kind in
// the set parses, and every kind in the set has such a text. A kind missing from a set
// would make valid texts fail; a kind too many would show up here without a sample.
std::string ValueSample(std::int32_t kind) {
  switch (kind) {
    case tkInteger:
      return "1";
    case tkDecimal:
      return "1.5";
    case tkEscape:
      return "{d '2020-01-01'}";
    case tkIdentifier:
      return "a";
    case tkQuotedIdentifier:
      return "\"a b\"";
    case tkHex:
      return "0x1F";
    case tkString:
      return "'s'";
    case tkLParen:
      return "(1)";
    case tkKwNull:
      return "null";
    case tkPlus:
      return "+1";
    case tkMinus:
      return "-1";
    case tkTilde:
      return "~1";
    case tkDot:
      return ".a";
    case tkKwCase:
      return "case when 1 = 1 then 1 end";
    case tkKwCast:
      return "cast(1 as int)";
    case tkKwCount:
      return "count(*)";
    case tkKwAvg:
    case tkKwMax:
    case tkKwMin:
    case tkKwSum:
      return "sum(1)";
    default:
      break;
  }
  if (kind >= tkKwCurrentTimestamp && kind <= tkKwSystemUser)
    return "current_user";
  if (kind >= kFirstNonReservedKeyword && kind <= kLastNonReservedKeyword)
    return "ada";
  return "";
}

TEST(FirstSets, MatchWhatTheParserAccepts) {
  namespace f = qorvex::sql92first;
  TastSQL92SyntaxProvider provider;
  auto parses = [&](Entry entry, const std::string& text) {
    try {
      Parse(provider, entry, text);
      return true;
    } catch (const EqxSQLError&) {
      return false;
    }
  };
  for (std::int32_t kind = 0; kind < TqxTokenSet::kSize; ++kind) {
    SCOPED_TRACE(kind);
    const std::string value = ValueSample(kind);
    EXPECT_EQ(f::kExpression.Has(kind), !value.empty());
    if (!value.empty())
      EXPECT_TRUE(parses(Entry::kExpression, value)) << value;

    std::string logical = value.empty() ? "" : value + " = 1";
    if (f::kComparisonOperator.Has(kind))
      logical = "= 1";
    else if (kind == tkKwIs)
      logical = "is null";
    else if (kind == tkKwNot)
      logical = "not like 'x'";
    else if (kind == tkKwLike || kind == tkKwBetween || kind == tkKwIn)
      logical = kind == tkKwLike ? "like 'x'" : kind == tkKwIn ? "in (1)" : "between 1 and 2";
    else if (kind == tkKwExists)
      logical = "exists (select 1)";
    EXPECT_EQ(f::kExpressionLogical.Has(kind), !logical.empty());
    if (!logical.empty())
      EXPECT_TRUE(parses(Entry::kLogical, logical)) << logical;

    std::string item = value;
    if (kind == tkStar)
      item = "*";
    EXPECT_EQ(f::kSelectItem.Has(kind), !item.empty());
    if (!item.empty())
      EXPECT_TRUE(parses(Entry::kItem, item)) << item;

    std::string source;
    if (kind == tkLParen)
      source = "(t)";
    else if (f::kNamePart.Has(kind) || kind == tkDot)
      source = kind == tkDot ? ".t" : kind == tkQuotedIdentifier ? "[t]" : "ada";
    if (kind == tkIdentifier)
      source = "t";
    EXPECT_EQ(f::kTableSource.Has(kind), !source.empty());
    if (!source.empty())
      EXPECT_TRUE(parses(Entry::kSelect, "select * from " + source)) << source;

    const bool typeWord = f::kSQLTypeBuiltIn.Has(kind);
    if (typeWord) {
      std::string word(SQL92Scanner::Keywords()[0].word);
      for (const TqxKeyword& k : SQL92Scanner::Keywords()) {
        if (k.kind == kind)
          word = std::string(k.word);
      }
      if (kind == tkKwDouble)
        word += " precision";
      EXPECT_TRUE(parses(Entry::kExpression, "cast(1 as " + word + ")")) << word;
    }
  }
}

}  // namespace
}  // namespace qorvex::parsertest
