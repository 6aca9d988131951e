// Names that need quotes, or were quoted, on their way through the model: loaded from
// text, made from metadata, and typed into its editing operations.
#include "model_support.h"
#include "qorvex/ast/syntax_provider.h"

namespace qorvex::modeltest {
namespace {

class QuotingTest : public ModelTest {
 protected:
  // The model's text, checked to read back to a statement that writes the same.
  std::string Stable() {
    const std::string text = SQL();
    std::unique_ptr<TSQLSelectStatement> again;
    EXPECT_NO_THROW(again = Syntax.GetASTSyntaxProvider()->ParseSelect(text)) << text;
    if (again) {
      EXPECT_EQ(again->GetSimpleSQL(), text);
    }
    return text;
  }
};

TEST_F(QuotingTest, LoadedNamesKeepTheirQuotesAndReservedWordsAreQuoted) {
  Tables["\"order\""] = {"id", "date", "Unit Price"};
  const struct {
    const char* sql;
    const char* written;
  } cases[] = {
      {"select '3' as \"One\", o.[date], o.\"Unit Price\" from \"order\" o",
       "SELECT '3' AS \"One\", o.\"date\", o.\"Unit Price\" FROM \"order\" o"},
      {"select [case] \"When\", 'x' 'Y' from [order] [Group]",
       "SELECT \"case\" \"When\", 'x' \"Y\" FROM \"order\" \"Group\""},
      {"select a \"One\", b from t order by \"One\" desc",
       "SELECT a \"One\", b FROM t ORDER BY \"One\" DESC"},
      {"select * from db..\"select\" join \"from\" on \"select\".\"in\" = \"from\".\"in\"",
       "SELECT * FROM db..\"select\" INNER JOIN  \"from\" ON "
       "db..\"select\".\"in\"=\"from\".\"in\""},
      {"select x.\"c\" from (select 1 \"c\") as x (\"c\")",
       "SELECT x.\"c\" FROM (SELECT 1 \"c\") AS x (\"c\")"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sql);
    Load(c.sql);
    EXPECT_EQ(Stable(), c.written);
    // Loading the written text gives the same model and text again.
    Load(c.written);
    EXPECT_EQ(SQL(), c.written);
  }
}

// A text that differs from the model's statement only in the letter case of keywords
// and bare names keeps the model; one whose quoted names or literals differ in letter
// case is another statement.
TEST_F(QuotingTest, LetterCaseOfQuotedNamesMakesAnotherStatement) {
  Load("select t.a \"One\", 'X' from t");
  Row(0)->SetSortType(stAsc);  // a change that the same statement keeps
  const std::string sorted = SQL();
  TqxDatasource* t = DS(0);
  EXPECT_EQ(ReportsOf([&] { Load("SELECT T.A \"One\", 'X' FROM T ORDER BY \"One\""); }), 0);
  EXPECT_EQ(SQL(), sorted);
  EXPECT_EQ(DS(0), t);
  Load("select t.a \"one\", 'X' from t order by \"one\"");
  EXPECT_EQ(SQL(), "SELECT t.a \"one\", 'X' FROM t ORDER BY \"one\"");
  Load("select t.a \"one\", 'x' from t order by \"one\"");
  EXPECT_EQ(SQL(), "SELECT t.a \"one\", 'x' FROM t ORDER BY \"one\"");
  Load("select t.a \"one\", 'x' from \"T\" t order by \"one\"");
  EXPECT_EQ(SQL(), "SELECT t.a \"one\", 'x' FROM \"T\" t ORDER BY \"one\"");
}

TEST_F(QuotingTest, FieldsFromMetadataAreQuotedWhenTheyNeedIt) {
  Tables["t"] = {"id", "date", "Unit Price", "select", "name", "1st"};
  Load("select t.id from t");
  for (const char* field : {"date", "Unit Price", "select", "name", "1st"})
    List()->AddField(DS(0), field);
  EXPECT_EQ(Stable(),
            "SELECT t.id, t.\"date\", t.\"Unit Price\", t.\"select\", t.name, t.\"1st\" FROM t");
  // A table whose name is a reserved word or holds a blank, and its columns.
  Tables["\"group\""] = {"by"};
  Tables["\"Order Details\""] = {"Qty"};
  TqxDatasource* group = Operand()->AddObject("group");
  TqxDatasource* details = Operand()->AddObject("Order Details");
  ASSERT_NE(group, nullptr);
  ASSERT_NE(details, nullptr);
  List()->AddField(group, "by");
  List()->AddField(details, "Qty");
  EXPECT_EQ(Stable(),
            "SELECT t.id, t.\"date\", t.\"Unit Price\", t.\"select\", t.name, t.\"1st\", "
            "\"group\".\"by\", \"Order Details\".Qty FROM t,  \"group\",  \"Order Details\"");
}

TEST_F(QuotingTest, TypedAliases) {
  Load("select t.a from t");
  // A bare name is quoted only when it needs to be; one typed in the dialect's quotes
  // is that quoted name; a closing quote inside is typed doubled.
  const struct {
    const char* typed;
    const char* alias;
    bool quoted;
    const char* written;
  } rows[] = {
      {"plain", "plain", false, "SELECT t.a AS plain FROM t"},
      {"One", "One", false, "SELECT t.a AS One FROM t"},
      {"\"One\"", "One", true, "SELECT t.a AS \"One\" FROM t"},
      {"from", "from", false, "SELECT t.a AS \"from\" FROM t"},
      {"My Alias", "My Alias", false, "SELECT t.a AS \"My Alias\" FROM t"},
      {"\"say \"\"hi\"\"\"", "say \"hi\"", true, "SELECT t.a AS \"say \"\"hi\"\"\" FROM t"},
      {"\"half\"quoted\"", "\"half\"quoted\"", false,
       "SELECT t.a AS \"\"\"half\"\"quoted\"\"\" FROM t"},
      {"\"\"", "", false, "SELECT t.a FROM t"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.typed);
    Row(0)->SetAlias(r.typed);
    EXPECT_EQ(Row(0)->GetAlias(), r.alias);
    EXPECT_EQ(Row(0)->IsAliasQuoted(), r.quoted);
    EXPECT_EQ(Stable(), r.written);
  }
  // Typing the same name bare after it was quoted is a change.
  Row(0)->SetAlias("\"One\"");
  EXPECT_EQ(ReportsOf([&] { Row(0)->SetAlias("One"); }), 1);
  EXPECT_EQ(SQL(), "SELECT t.a AS One FROM t");

  // A datasource alias: the columns that name the datasource follow it.
  DS(0)->SetAlias("\"T\"");
  EXPECT_EQ(Stable(), "SELECT \"T\".a AS One FROM t \"T\"");
  DS(0)->SetAlias("select");
  EXPECT_EQ(Stable(), "SELECT \"select\".a AS One FROM t \"select\"");
  DS(0)->SetAlias("x");
  EXPECT_EQ(Stable(), "SELECT x.a AS One FROM t x");
}

}  // namespace
}  // namespace qorvex::modeltest
