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

class EventMetadataProvider : public ::testing::Test {
 protected:
  EventMetadataProvider() : table_(NewNode<TSQLDatabaseObject>(&syntax_)) {
    table_->AddName("dbo");
    table_->AddName("orders");
    stale_.push_back(std::make_unique<TSQLMetadataRelation>());
  }
  TqxEventMetadataProvider provider_;
  TastSQL92SyntaxProvider syntax_;
  std::unique_ptr<TSQLDatabaseObject> table_;
  TSQLMetadataRelations stale_;  // one relation left over
};

// Without handlers every list comes back empty. Each handler gets the provider as sender,
// its arguments and a cleared list to fill; an exception from a handler reaches the caller.
TEST_F(EventMetadataProvider, HandlersGetSenderArgumentsAndAClearedList) {
  Names tables{"stale"}, views{"stale"}, fields{"stale"};
  provider_.GetTableNames(tables, true);
  provider_.GetViewNames(views, false);
  provider_.GetFields("select * from t", fields);
  provider_.GetTableRelations(*table_, stale_);
  EXPECT_TRUE(tables.empty() && views.empty() && fields.empty() && stale_.empty());

  Names calls;
  auto names = [&](const char* what) {
    return [&, what](TqxEventMetadataProvider* sender, Names& list, bool system) {
      EXPECT_EQ(sender, &provider_);
      EXPECT_TRUE(list.empty()) << what;
      calls.push_back(std::string(what) + (system ? " system" : " user"));
      list.push_back(what);
    };
  };
  provider_.OnGetTableNames = names("table");
  provider_.OnGetViewNames = names("view");
  provider_.OnGetSQLFieldNames = [&](TqxEventMetadataProvider* sender, const std::string& sql,
                                     Names& list) {
    EXPECT_EQ(sender, &provider_);
    EXPECT_TRUE(list.empty());
    calls.push_back("fields " + sql);
    list = {"a", "b"};
  };
  provider_.OnGetTableRelations = [&](TqxEventMetadataProvider* sender,
                                      const TSQLDatabaseObject& name,
                                      TSQLMetadataRelations& relations) {
    EXPECT_EQ(sender, &provider_);
    EXPECT_EQ(&name, table_.get());
    EXPECT_TRUE(relations.empty());
    relations.push_back(std::make_unique<TSQLMetadataRelation>());
    relations.back()->FKColumns = {name.GetObjName()};
  };

  Names list{"old1", "old2"};
  provider_.GetTableNames(list, true);
  EXPECT_EQ(list, Names{"table"});
  provider_.GetViewNames(list, false);
  EXPECT_EQ(list, Names{"view"});
  provider_.GetFields("select * from x", list);
  EXPECT_EQ(list, (Names{"a", "b"}));
  EXPECT_EQ(calls, (Names{"table system", "view user", "fields select * from x"}));
  stale_.push_back(std::make_unique<TSQLMetadataRelation>());
  provider_.GetTableRelations(*table_, stale_);
  ASSERT_EQ(stale_.size(), 1u);
  EXPECT_EQ(stale_[0]->FKColumns, Names{"orders"});

  provider_.OnGetTableNames = [](TqxEventMetadataProvider*, Names&, bool) {
    throw EqxError("catalogue unavailable");
  };
  EXPECT_THROW(provider_.GetTableNames(list, false), EqxError);
  EXPECT_TRUE(list.empty());
}

}  // namespace
}  // namespace qorvex
