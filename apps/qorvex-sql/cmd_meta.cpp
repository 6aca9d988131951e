// meta: asks a metadata provider one question and prints the answer, one item per line.
#include <iostream>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "command.h"
#include "qorvex/ast/metadata_provider.h"
#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/syntax/sql92_syntax_provider.h"
#if QORVEX_SQLITE_AVAILABLE
#include "qorvex/metadata/sqlite_provider.h"
#endif
#if QORVEX_ODBC_AVAILABLE
#include "qorvex/metadata/odbc_provider.h"
#endif

namespace qorvex::tool {
namespace {

constexpr const char* kUsage =
    "(--sqlite FILE | --odbc CONNECTION) [--system] tables|views|fields SQL|relations TABLE\n"
    "      fields reads the statement from standard input when SQL is \"-\"; a relation\n"
    "      prints as FKTABLE(columns) -> PKTABLE(columns)";

std::string JoinColumns(const std::vector<std::string>& columns) {
  std::string text;
  for (size_t i = 0; i < columns.size(); ++i) {
    if (i > 0)
      text += ',';
    text += columns[i];
  }
  return text;
}

// The connection and provider chosen on the command line; the provider refers to the
// connection, so both live here.
struct Database {
#if QORVEX_SQLITE_AVAILABLE
  std::unique_ptr<TqxSQLiteConnection> SQLiteConnection;
#endif
#if QORVEX_ODBC_AVAILABLE
  std::unique_ptr<TqxODBCConnection> ODBCConnection;
#endif
  std::unique_ptr<TqxBaseMetadataProvider> Provider;
};

Database OpenDatabase(const std::string& kind, const std::string& target) {
  Database db;
  if (kind == "--sqlite") {
#if QORVEX_SQLITE_AVAILABLE
    db.SQLiteConnection = std::make_unique<TqxSQLiteConnection>(target);
    db.Provider = std::make_unique<TqxSQLiteMetadataProvider>(db.SQLiteConnection.get());
#else
    throw UsageError{"this build has no SQLite support"};
#endif
  } else {
#if QORVEX_ODBC_AVAILABLE
    db.ODBCConnection = std::make_unique<TqxODBCConnection>(target);
    db.Provider = std::make_unique<TqxODBCMetadataProvider>(db.ODBCConnection.get());
#else
    throw UsageError{"this build has no ODBC support"};
#endif
  }
  return db;
}

int RunMeta(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  std::string kind, target;
  bool system = false;
  std::vector<std::string> words;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--sqlite" || a == "--odbc") {
      if (!kind.empty())
        throw UsageError{"give one database: --sqlite FILE or --odbc CONNECTION"};
      if (i + 1 >= args.size())
        throw UsageError{a + " needs an argument"};
      kind = a;
      target = args[++i];
    } else if (a == "--system") {
      system = true;
    } else if (a.size() > 2 && a.rfind("--", 0) == 0) {
      throw UsageError{"unknown option " + a};
    } else {
      words.push_back(a);
    }
  }
  if (kind.empty())
    throw UsageError{"no database: give --sqlite FILE or --odbc CONNECTION"};
  if (words.empty())
    throw UsageError{"no question: tables, views, fields SQL or relations TABLE"};
  const std::string& question = words[0];
  const size_t expected = (question == "fields" || question == "relations") ? 2 : 1;
  if (question != "tables" && question != "views" && question != "fields" &&
      question != "relations")
    throw UsageError{"unknown question \"" + question + "\""};
  if (words.size() != expected)
    throw UsageError{question + (expected == 2 ? " takes one argument" : " takes no argument")};
  if (system && question != "tables")
    throw UsageError{"--system applies to tables only"};

  Database db = OpenDatabase(kind, target);
  std::vector<std::string> items;
  if (question == "tables") {
    db.Provider->GetTableNames(items, system);
  } else if (question == "views") {
    db.Provider->GetViewNames(items, false);
  } else if (question == "fields") {
    std::string sql = words[1];
    if (sql == "-")
      sql = ReadInput("-").text;
    db.Provider->GetFields(sql, items);
  } else {
    TastSQL92SyntaxProvider syntax;
    auto table = NewNode<TSQLDatabaseObject>(&syntax);
    table->AddName(words[1]);
    TSQLMetadataRelations relations;
    db.Provider->GetTableRelations(*table, relations);
    for (const auto& r : relations)
      items.push_back(r->FKTable->GetObjName() + "(" + JoinColumns(r->FKColumns) + ") -> " +
                      r->PKTable->GetObjName() + "(" + JoinColumns(r->PKColumns) + ")");
  }
  for (const std::string& item : items)
    out << item << '\n';
  return kExitOk;
}

const CommandRegistration registration("meta", kUsage, RunMeta);

}  // namespace
}  // namespace qorvex::tool
