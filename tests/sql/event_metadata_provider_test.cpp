#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "qorvex/ast/names.h"
#include "qorvex/ast/node.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex {
namespace {

using Names = std::vector<std::string>;

TEST(EventMetadataProvider, WithoutHandlersEveryListComesBackEmpty) {
  TqxEventMetadataProvider provider;
  Names tables{"stale"}, views{"stale"}, fields{"stale"};
  provider.GetTableNames(tables, true);
  provider.GetViewNames(views, false);
  provider.GetFields("select * from t", fields);
  EXPECT_TRUE(tables.empty());
  EXPECT_TRUE(views.empty());
  EXPECT_TRUE(fields.empty());

  TSQLMetadataRelations relations;
  relations.push_back(std::make_unique<TSQLMetadataRelation>());
  TastSQL92SyntaxProvider syntax;
  auto table = NewNode<TSQLDatabaseObject>(&syntax);
  table->AddName("t");
  provider.GetTableRelations(*table, relations);
  EXPECT_TRUE(relations.empty());
}

TEST(EventMetadataProvider, HandlersGetSenderArgumentsAndAClearedList) {
  TqxEventMetadataProvider provider;
  std::vector<std::string> calls;
  auto names = [&](const char* what) {
    return [&, what](TqxEventMetadataProvider* sender, Names& list, bool system) {
      EXPECT_EQ(sender, &provider);
      EXPECT_TRUE(list.empty()) << what;
      calls.push_back(std::string(what) + (system ? " system" : " user"));
      list.push_back(what);
    };
  };
  provider.OnGetTableNames = names("table");
  provider.OnGetViewNames = names("view");
  provider.OnGetSQLFieldNames = [&](TqxEventMetadataProvider* sender, const std::string& sql,
                                    Names& list) {
    EXPECT_EQ(sender, &provider);
    EXPECT_TRUE(list.empty());
    calls.push_back("fields " + sql);
    list = {"a", "b"};
  };

  Names list{"old1", "old2"};
  provider.GetTableNames(list, true);
  EXPECT_EQ(list, Names{"table"});
  provider.GetViewNames(list, false);
  EXPECT_EQ(list, Names{"view"});
  provider.GetFields("select * from x", list);
  EXPECT_EQ(list, (Names{"a", "b"}));
  EXPECT_EQ(calls, (Names{"table system", "view user", "fields select * from x"}));
}

TEST(EventMetadataProvider, RelationsAreClearedThenFilledByTheHandler) {
  TqxEventMetadataProvider provider;
  TastSQL92SyntaxProvider syntax;
  auto table = NewNode<TSQLDatabaseObject>(&syntax);
  table->AddName("dbo");
  table->AddName("orders");
  const TSQLDatabaseObject* seen = nullptr;
  provider.OnGetTableRelations = [&](TqxEventMetadataProvider* sender,
                                     const TSQLDatabaseObject& name,
                                     TSQLMetadataRelations& relations) {
    EXPECT_EQ(sender, &provider);
    EXPECT_TRUE(relations.empty());
    seen = &name;
    auto r = std::make_unique<TSQLMetadataRelation>();
    r->PKTable = NewNode<TSQLDatabaseObject>(name.GetSyntaxProvider());
    r->PKTable->AddName("customers");
    r->PKColumns = {"id"};
    r->FKTable = NewNode<TSQLDatabaseObject>(name.GetSyntaxProvider());
    r->FKTable->AddName(name.GetObjName());
    r->FKColumns = {"customer_id"};
    relations.push_back(std::move(r));
  };

  TSQLMetadataRelations relations;
  relations.push_back(std::make_unique<TSQLMetadataRelation>());
  provider.GetTableRelations(*table, relations);
  EXPECT_EQ(seen, table.get());
  ASSERT_EQ(relations.size(), 1u);
  EXPECT_EQ(relations[0]->PKTable->GetObjName(), "customers");
  EXPECT_EQ(relations[0]->FKTable->GetObjName(), "orders");
  EXPECT_EQ(relations[0]->FKColumns, Names{"customer_id"});
}

TEST(EventMetadataProvider, HandlerExceptionsReachTheCaller) {
  TqxEventMetadataProvider provider;
  provider.OnGetTableNames = [](TqxEventMetadataProvider*, Names&, bool) {
    throw EqxError("catalogue unavailable");
  };
  Names list{"old"};
  EXPECT_THROW(provider.GetTableNames(list, false), EqxError);
  EXPECT_TRUE(list.empty());
}

}  // namespace
}  // namespace qorvex
