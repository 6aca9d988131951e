#pragma once

// A headless query builder with the SQL-92 dialect, an event metadata provider that
// answers from tables declared by the test, a plain-text SQL builder that counts the
// change reports, and a control factory that tests may switch on.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "error_of.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/expressions.h"
#include "qorvex/ast/from.h"
#include "qorvex/ast/query.h"
#include "qorvex/core/errors.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/model.h"
#include "qorvex/syntax/components.h"

namespace qorvex::modeltest {

struct ForeignKey {
  std::string FKTable;
  std::vector<std::string> FKColumns;
  std::string PKTable;
  std::vector<std::string> PKColumns;
};

// A control that counts the living ones; the factory counts what it makes and records
// the dialogs it is asked for.
class FakeControl : public TqxControl {
 public:
  FakeControl(TqxQueryBuilderControlOwner* Owner, int* Alive) : TqxControl(Owner), Alive_(Alive) {
    ++*Alive_;
  }
  ~FakeControl() override {
    BeginDestroy();
    --*Alive_;
  }

 private:
  int* Alive_;
};

class FakeFactory : public TqxControlFactory {
 public:
  std::vector<std::unique_ptr<TqxControl>> CreateControls(TqxQueryBuilderControlOwner& Owner,
                                                          TqxControl*) override {
    std::vector<std::unique_ptr<TqxControl>> controls;
    controls.push_back(std::make_unique<FakeControl>(&Owner, &Alive));
    ++Created;
    return controls;
  }
  void PopupMenu(TqxQueryBuilderControlOwner&, const TqxPopupMenu&, TqxPoint) override {}
  bool ExecuteDialog(TqxQueryBuilderControlOwner&, TqxDialogKind Kind) override {
    Dialogs.push_back(Kind);
    return true;
  }
  int Alive = 0;
  int Created = 0;
  std::vector<TqxDialogKind> Dialogs;
};

class ModelTest : public ::testing::Test {
 protected:
  ModelTest() {
    Metadata.OnGetSQLFieldNames = [this](TqxEventMetadataProvider*, const std::string& SQL,
                                         std::vector<std::string>& Fields) {
      ++FieldQuestions;
      // "select * from NAME [alias]": the fields of NAME.
      const std::string prefix = "select * from ";
      if (SQL.rfind(prefix, 0) != 0)
        return;
      std::string name = SQL.substr(prefix.size());
      name = name.substr(0, name.find(' '));
      auto it = Tables.find(name);
      if (it != Tables.end())
        Fields = it->second;
    };
    Metadata.OnGetTableRelations = [this](TqxEventMetadataProvider*,
                                          const TSQLDatabaseObject& Table,
                                          TSQLMetadataRelations& Relations) {
      ++RelationQuestions;
      for (const ForeignKey& key : Keys) {
        if (key.FKTable != Table.GetObjName() && key.PKTable != Table.GetObjName())
          continue;
        auto relation = std::make_unique<TSQLMetadataRelation>();
        relation->PKTable = NewNode<TSQLDatabaseObject>(Table.GetSyntaxProvider());
        relation->PKTable->AddName(key.PKTable);
        relation->PKColumns = key.PKColumns;
        relation->FKTable = NewNode<TSQLDatabaseObject>(Table.GetSyntaxProvider());
        relation->FKTable->AddName(key.FKTable);
        relation->FKColumns = key.FKColumns;
        Relations.push_back(std::move(relation));
      }
    };
    Builder.SetSyntaxProvider(&Syntax);
    Builder.SetMetadataProvider(&Metadata);
    Output.OnSQLUpdated = [this](TqxBaseSQLBuilder*) { ++Reports; };
    Output.SetQueryBuilder(&Builder);
    Reports = 0;
  }
  ~ModelTest() override { Builder.SetControlFactory(nullptr); }

  // Loads SQL with controls made by Factory.
  void LoadWithControls(const std::string& SQL) {
    Load(SQL);
    Builder.SetControlFactory(&Factory);
  }

  // Assigns SQL and delivers the load message.
  void Load(const std::string& SQL) {
    Builder.SetSQL(SQL);
    Builder.ProcessMessages();
  }

  // The model's statement on one line.
  std::string SQL() const {
    std::unique_ptr<TSQLSelectStatement> statement = Builder.GetStatementCopy();
    return statement ? statement->GetSimpleSQL() : std::string();
  }

  // The text the SQL builder component holds, its line breaks made spaces.
  std::string Published() const {
    std::string text = Output.GetSQL();
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }

  TqxUnionSubQuery* Operand() const { return Builder.GetQuery()->GetFirstOperand(); }
  TqxSelectList* List() const { return Operand()->GetSelectList(); }
  std::vector<TqxDatasource*> Datasources() const { return Operand()->GetDatasources(); }
  TqxDatasource* DS(int Index) const { return Datasources().at(static_cast<std::size_t>(Index)); }
  TqxSelectItem* Row(int Index) const { return List()->GetItems(Index); }

  // Counts the reports one operation sends.
  template <class F>
  int ReportsOf(F&& Operation) {
    const int before = Reports;
    Operation();
    return Reports - before;
  }

  std::map<std::string, std::vector<std::string>> Tables;
  std::vector<ForeignKey> Keys;
  int FieldQuestions = 0;
  int RelationQuestions = 0;
  int Reports = 0;

  TqxSQL92SyntaxProvider Syntax;
  TqxEventMetadataProvider Metadata;
  TqxBaseQueryBuilder Builder;
  TqxSQLBuilderPlainText Output;
  FakeFactory Factory;
};

using test::ErrorOf;

}  // namespace qorvex::modeltest
