// Statements loaded into the query model and written back must mean what they meant:
// on a SQLite database filled from corpus/model_roundtrip_db.sql, the original and the regenerated
// statement return the same rows (in the same order when the statement is sorted), and the
// regenerated text loads and regenerates to itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "db_fixture.h"
#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"

namespace qorvex::dbtest {
namespace {

std::string Lower(std::string Text) {
  for (char& c : Text)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return Text;
}

// Whether the statement ends with an ORDER BY outside all brackets.
bool IsSorted(const std::string& SQL) {
  const std::string lower = Lower(SQL);
  int depth = 0;
  bool sorted = false;
  for (std::size_t i = 0; i < lower.size(); ++i) {
    if (lower[i] == '(')
      ++depth;
    else if (lower[i] == ')')
      --depth;
    else if (depth == 0 && lower.compare(i, 5, "order") == 0)
      sorted = true;
  }
  return sorted;
}

// SQLite has no bracketed operands in a compound SELECT; a bracketed group runs as a
// derived table of its own, which means the same.
std::string ForSQLite(const std::string& SQL) {
  std::string out;
  std::string lastWord;
  for (std::size_t i = 0; i < SQL.size(); ++i) {
    const char c = SQL[i];
    if (c == '(') {
      std::size_t j = i + 1;
      while (j < SQL.size() && std::isspace(static_cast<unsigned char>(SQL[j])))
        ++j;
      const bool select = Lower(SQL.substr(j, 6)) == "select" || SQL[j] == '(';
      const std::string word = Lower(lastWord);
      if (select && (word.empty() || word == "union" || word == "all" || word == "except" ||
                     word == "intersect" || word == "(")) {
        out += "SELECT * FROM (";
        lastWord = "(";
        continue;
      }
    }
    out += c;
    if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') {
      if (i == 0 || !(std::isalnum(static_cast<unsigned char>(SQL[i - 1])) || SQL[i - 1] == '_'))
        lastWord.clear();
      lastWord += c;
    } else if (!std::isspace(static_cast<unsigned char>(c))) {
      lastWord = std::string(1, c);
    }
  }
  return out;
}

std::vector<std::string> Statements() {
  std::vector<std::string> list;
  std::istringstream in(ReadCorpus("model_roundtrip.sql"));
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && line.rfind("--", 0) != 0)
      list.push_back(line);
  return list;
}

class ModelRoundTripTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    SQLiteExec(File(), ReadCorpus("model_roundtrip_db.sql"));
  }
  static void TearDownTestSuite() {
    delete dir_;
    dir_ = nullptr;
  }
  static std::filesystem::path File() { return dir_->Path() / "model.db"; }
  void SetUp() override {
    connection_.SetFileName(File().string());
    metadata_.SetConnection(&connection_);
  }

  // Loads SQL into a fresh builder on the database.
  std::unique_ptr<TqxBaseQueryBuilder> Load(const std::string& SQL) {
    auto builder = std::make_unique<TqxBaseQueryBuilder>();
    builder->SetSyntaxProvider(&syntax_);
    builder->SetMetadataProvider(&metadata_);
    builder->SetSQL(SQL);
    builder->ProcessMessages();
    return builder;
  }

  static TempDir* dir_;
  TqxSQLiteConnection connection_;
  TqxSQLiteMetadataProvider metadata_;
  TqxSQL92SyntaxProvider syntax_;
};

TempDir* ModelRoundTripTest::dir_ = nullptr;

TEST_F(ModelRoundTripTest, RegeneratedStatementsMeanTheSameAndAreStable) {
  const std::vector<std::string> statements = Statements();
  ASSERT_GE(statements.size(), 150u);
  int nonEmpty = 0;
  for (const std::string& sql : statements) {
    SCOPED_TRACE(sql);
    std::string regenerated;
    Rows original, again;
    try {
      regenerated = Load(sql)->GetSQL();
      original = SQLiteRows(File(), ForSQLite(sql));
      again = SQLiteRows(File(), ForSQLite(regenerated));
    } catch (const std::exception& e) {
      ADD_FAILURE() << e.what() << "\nregenerated:\n" << regenerated;
      continue;
    }
    if (!original.empty())
      ++nonEmpty;
    if (!IsSorted(sql)) {
      std::sort(original.begin(), original.end());
      std::sort(again.begin(), again.end());
    }
    EXPECT_EQ(original, again) << "regenerated:\n" << regenerated;
    EXPECT_EQ(Load(regenerated)->GetSQL(), regenerated) << "not stable";
  }
  // The data make the statements return rows, so that the comparison means something.
  EXPECT_GE(nonEmpty, static_cast<int>(statements.size()) * 9 / 10);
}

}  // namespace
}  // namespace qorvex::dbtest
