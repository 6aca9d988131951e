// A headless query builder on a SQLite database: load SQL, edit the model as the
// designer would, and read the SQL it writes back.
#include <iostream>

#include "qorvex/metadata/sqlite_provider.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/query_builder.h"
#include "qorvex/model/select_list.h"
#include "qorvex/model/sql_builder.h"
#include "qorvex/syntax/components.h"

int main(int argc, char** argv) {
  using namespace qorvex;
  if (argc < 2) {
    std::cerr << "usage: qorvex-embed-example DATABASE.sqlite\n";
    return 2;
  }
  TqxSQL92SyntaxProvider dialect;
  TqxSQLiteConnection connection(argv[1]);
  TqxSQLiteMetadataProvider metadata(&connection);

  TqxBaseQueryBuilder builder;
  builder.SetSyntaxProvider(&dialect);
  builder.SetMetadataProvider(&metadata);

  TqxSQLBuilderPlainText sql;
  sql.SetQueryBuilder(&builder);
  sql.OnSQLUpdated = [&](TqxBaseSQLBuilder*) {
    std::cout << "-- changed:\n" << sql.GetSQL() << "\n";
  };

  builder.SetSQL("select * from Customers c");
  builder.ProcessMessages();  // the deferred load; a widget gets it from its event loop

  // What a person does in the designer: add a table (its foreign keys become links),
  // then type a criterion under a column.
  TqxUnionSubQuery* operand = builder.GetActiveUnionSubquery();
  TqxDataSourceObject* orders = operand->AddObjectWithFK("Orders");
  TqxSelectItem* row = operand->GetSelectList()->AddField(orders, "Total");
  row->SetCondition(0, "> 100");

  std::cout << "-- final:\n" << builder.GetSQL() << "\n";
  return 0;
}
