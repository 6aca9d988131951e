// The modal dialogs driven through their widgets: Add object, Datasource Properties, Link
// Properties and the query properties dialog.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <memory>

#include "gui/designer_fixture.h"
#include "qorvex/ast/names.h"
#include "qorvex/designer/dialogs.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::testing_gui {
namespace {

// The SQL-92 dialect without views.
class NoViewsAST : public TastSQL92SyntaxProvider {
 public:
  bool IsSupportViews() const override { return false; }
};
class NoViewsSyntax : public TqxBaseSyntaxProvider {
 protected:
  std::unique_ptr<TastSyntaxProvider> CreateASTSyntaxProvider() const override {
    return std::make_unique<NoViewsAST>();
  }
};

class Dialogs : public DesignerTest {
 protected:
  void SetUp() override {
    DesignerTest::SetUp();
    Tables["Order Details"] = {"OrderId", "ProductId"};
    Tables["order"] = {"Id"};
    Metadata.OnGetTableNames = [this](TqxEventMetadataProvider*, std::vector<std::string>& Names,
                                      bool) { Names = TableNames; };
    Metadata.OnGetViewNames = [](TqxEventMetadataProvider*, std::vector<std::string>& Names, bool) {
      Names = {"BigOrders"};
    };
    RelateOrdersToCustomers();
  }

  // Selects the rows of a list whose texts are given (a click, then ctrl-clicks).
  static void SelectRows(QListView* List, const QStringList& Texts) {
    bool first = true;
    for (const QString& text : Texts) {
      const QModelIndexList found =
          List->model()->match(List->model()->index(0, 0), Qt::DisplayRole, text, 1,
                               Qt::MatchFixedString | Qt::MatchCaseSensitive);
      ASSERT_EQ(found.size(), 1) << text.toStdString();
      List->scrollTo(found[0]);
      QTest::mouseClick(List->viewport(), Qt::LeftButton,
                        first ? Qt::NoModifier : Qt::ControlModifier,
                        List->visualRect(found[0]).center());
      first = false;
    }
  }

  // Opens the Add object dialog, runs Driver on it and closes it with Escape.
  void WithAddObject(const std::function<void(TqxAddObjectForm*)>& Driver) {
    bool ran = false;
    OnModal<TqxAddObjectForm>([&](TqxAddObjectForm* Form) {
      Driver(Form);
      ran = true;
      QTest::keyClick(Form, Qt::Key_Escape);
    });
    Builder->ShowAddObjectForm();
    EXPECT_TRUE(ran);
    Settle();
  }

  TqxLink* FirstLink() const {
    for (TqxDatasource* ds : Operand()->GetDatasources()) {
      if (ds->GetJoinsCount() > 0)
        return ds->GetJoins(0);
    }
    return nullptr;
  }

  std::vector<std::string> TableNames = {"Customers", "Orders", "Order Details", "order"};
};

TEST_F(Dialogs, AddObjectTakesOptionsFiltersAndAddsTheSelectedTablesQuotedAsNeeded) {
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);
  WithAddObject([&](TqxAddObjectForm* Form) {
    EXPECT_EQ(Form->windowTitle(), "Add new object");
    EXPECT_EQ(Form->pcObjects->currentWidget(), Form->tsTables);
    EXPECT_EQ(Form->lTables->model()->rowCount(), 4) << "tables in the provider's order";
    EXPECT_EQ(Form->lTables->model()->index(2, 0).data().toString(), "Order Details");
    // Options reach the open dialog; the size it is left with is kept.
    const double scale = DialogScale(Form);
    EXPECT_NEAR(Form->width(), 294 * scale, 1);
    EXPECT_EQ(Form->lTables->flow(), QListView::TopToBottom);
    TqxAddObjectFormOptions options = Builder->GetAddObjectFormOptions();
    options.ListViewStyle = vsIcon;
    options.Width = 400;
    Builder->SetAddObjectFormOptions(options);
    EXPECT_EQ(Form->lTables->viewMode(), QListView::IconMode);
    EXPECT_NEAR(Form->width(), 400 * scale, 1);
    Form->resize(Form->width(), static_cast<int>(500 * scale));
    QTest::mouseClick(Form->bAdd, Qt::LeftButton);  // nothing selected
    EXPECT_EQ(changed.count(), 0);
    // The filter ignores case and narrows both lists; the row added is the one shown.
    QTest::keyClicks(Form->eFilter, "ORD");
    EXPECT_EQ(Form->lTables->model()->rowCount(), 3);  // Orders, Order Details, order
    QTest::keyClicks(Form->eFilter, "er d");
    ASSERT_EQ(Form->lTables->model()->rowCount(), 1);
    EXPECT_EQ(Form->lViews->model()->rowCount(), 0);
    SelectRows(Form->lTables, {"Order Details"});
    QTest::mouseClick(Form->bAdd, Qt::LeftButton);
    Form->eFilter->clear();
    EXPECT_EQ(Form->lTables->model()->rowCount(), 4);
    // Several tables are one change; the dialog stays open for more.
    SelectRows(Form->lTables, {"Customers", "order"});
    QTest::mouseClick(Form->bAdd, Qt::LeftButton);
    EXPECT_TRUE(Form->isVisible());
  });
  EXPECT_EQ(changed.count(), 2);
  EXPECT_NEAR(Builder->GetAddObjectFormOptions().Height, 500, 1);
  EXPECT_EQ(Builder->GetAddObjectFormOptions().Width, 400);
  // A name with a blank and a reserved word are quoted.
  for (const char* name : {"\"Order Details\"", " Customers", "\"order\""})
    EXPECT_NE(Sql().find(name), std::string::npos) << name << "\n" << Sql();
  EXPECT_EQ(Operand()->GetDatasources().size(), 3u);
  ExpectBoxesMatchModel();
  EXPECT_TRUE(Errors.empty());
}

TEST_F(Dialogs, ViewsPageFollowsTheDialect) {
  WithAddObject([&](TqxAddObjectForm* Form) {
    ASSERT_EQ(Form->pcObjects->count(), 2);
    Form->pcObjects->setCurrentWidget(Form->tsViews);
    QApplication::processEvents();  // lays the page out
    // A double click adds the view; foreign keys are not followed for views.
    const QModelIndex view = Form->lViews->model()->index(0, 0);
    ASSERT_EQ(view.data().toString(), "BigOrders");
    const QPoint at = Form->lViews->visualRect(view).center();
    // The press before the second click of a double click (the view checks it).
    QTest::mousePress(Form->lViews->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseDClick(Form->lViews->viewport(), Qt::LeftButton, Qt::NoModifier, at);
  });
  EXPECT_NE(Sql().find("FROM BigOrders"), std::string::npos) << Sql();

  NoViewsSyntax noViews;
  Builder->SetSyntaxProvider(&noViews);
  Settle();
  WithAddObject([&](TqxAddObjectForm* Form) {
    EXPECT_EQ(Form->pcObjects->count(), 1);
    EXPECT_EQ(Form->pcObjects->widget(0), Form->tsTables);
  });
  Builder->SetSyntaxProvider(&Syntax);
}

TEST_F(Dialogs, AddingWithForeignKeysCreatesLinksAndCardinalities) {
  for (const bool keys : {true, false}) {
    Load("select * from Customers");
    WithAddObject([&](TqxAddObjectForm* Form) {
      EXPECT_TRUE(Form->cbAddFK->isChecked()) << "ticked by default";
      Form->cbAddFK->setChecked(keys);
      SelectRows(Form->lTables, {"Orders"});
      QTest::mouseClick(Form->bAdd, Qt::LeftButton);
    });
    TqxLink* link = FirstLink();
    if (!keys) {
      EXPECT_EQ(link, nullptr) << Sql();
      continue;
    }
    ASSERT_NE(link, nullptr) << Sql();
    EXPECT_NE(Sql().find("Customers.Id=Orders.CustomerId"), std::string::npos) << Sql();
    EXPECT_EQ(link->GetLeftCardinality(), qblcOne);
    EXPECT_EQ(link->GetRightCardinality(), qblcMany);
  }
}

TEST_F(Dialogs, DatasourceAliasIsSavedOnlyWhenChangedAndValid) {
  Load("select * from Customers c");
  TqxDatasource* ds = Operand()->GetDatasources()[0];
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);

  OnModal<TqxDatasourcePropsForm>([](TqxDatasourcePropsForm* Form) {
    EXPECT_EQ(Form->eObj->text(), "Customers");
    EXPECT_TRUE(Form->eObj->isReadOnly());
    EXPECT_EQ(Form->eAlias->text(), "c");
    QTest::keyClick(Form->eAlias, Qt::Key_Return);  // OK without a change
  });
  EXPECT_TRUE(ds->EditProps());
  EXPECT_EQ(changed.count(), 0) << "an unchanged alias writes no SQL";

  // A bad alias shows a message and keeps the dialog open; Cancel then changes nothing.
  QString message;
  OnModal<TqxDatasourcePropsForm>([&](TqxDatasourcePropsForm* Form) {
    Form->eAlias->setText("my alias");
    OnModal<QMessageBox>([&](QMessageBox* Box) {
      message = Box->text();
      Box->accept();
    });
    QTest::keyClick(Form->eAlias, Qt::Key_Return);
    EXPECT_TRUE(Form->isVisible());
    Form->reject();
  });
  EXPECT_FALSE(ds->EditProps());
  EXPECT_TRUE(message.contains("my alias")) << message.toStdString();
  EXPECT_EQ(changed.count(), 0);

  OnModal<TqxDatasourcePropsForm>([](TqxDatasourcePropsForm* Form) {
    Form->eAlias->setText("cust");
    QTest::keyClick(Form->eAlias, Qt::Key_Return);
  });
  EXPECT_TRUE(ds->EditProps());
  EXPECT_EQ(changed.count(), 1);
  EXPECT_NE(Sql().find("FROM Customers cust"), std::string::npos) << Sql();
}

// The join kind follows the two "all rows" boxes; the operator is saved too.
TEST_F(Dialogs, LinkPropertiesSetJoinKindOperatorAndExpression) {
  const struct {
    bool Left, Right;
    const char* Operator;
    const char* Join;
  } cases[] = {{true, true, "=", "FULL OUTER JOIN Orders o ON c.Id=o.CustomerId"},
               {false, false, ">=", "INNER JOIN Orders o ON c.Id>=o.CustomerId"},
               {true, false, "=", "LEFT OUTER JOIN"},
               {false, true, "<>", "RIGHT OUTER JOIN Orders o ON c.Id<>o.CustomerId"}};
  for (const auto& c : cases) {
    Load("select * from Customers c left outer join Orders o on c.Id = o.CustomerId");
    TqxLink* link = FirstLink();
    ASSERT_NE(link, nullptr);
    OnModal<TqxLinkPropsForm>([&](TqxLinkPropsForm* Form) {
      EXPECT_TRUE(Form->IsSimple());
      EXPECT_TRUE(Form->cbAllFromLeft->isChecked());
      EXPECT_FALSE(Form->cbAllFromRight->isChecked());
      EXPECT_EQ(Form->eLeftCol->text(), "Id");
      EXPECT_EQ(Form->eRightCol->text(), "CustomerId");
      EXPECT_EQ(Form->cbOperator->currentText(), "=");
      // The operator pane stays in the middle of the dialog.
      Form->resize(Form->width() + 101, Form->height());
      EXPECT_LE(std::abs(Form->pOperator->geometry().center().x() - Form->width() / 2), 1);
      EXPECT_EQ(Form->pLeftObj->width(), Form->width() / 2);
      Form->cbAllFromLeft->setChecked(c.Left);
      Form->cbAllFromRight->setChecked(c.Right);
      Form->cbOperator->setCurrentText(c.Operator);
      Form->accept();
    });
    EXPECT_TRUE(link->EditProps());
    EXPECT_NE(Flat().find(c.Join), std::string::npos) << c.Join << "\n" << Sql();
  }

  // Not a plain column comparison: the expression pane; a bad text keeps the dialog open
  // with the parser's message.
  Load("select * from Customers c inner join Orders o on c.Id = o.CustomerId + 0");
  TqxLink* link = FirstLink();
  const std::string before = Sql();
  QString message;
  OnModal<TqxLinkPropsForm>([&](TqxLinkPropsForm* Form) {
    EXPECT_FALSE(Form->IsSimple());
    EXPECT_TRUE(Form->eExpression->isVisibleTo(Form));
    Form->eExpression->setText("c.Id = = o.CustomerId");
    OnModal<QMessageBox>([&](QMessageBox* Box) {
      message = Box->text();
      Box->accept();
    });
    Form->accept();
    EXPECT_TRUE(Form->isVisible());
    EXPECT_EQ(Form->GetLastError(), message);
    Form->eExpression->setText("o.CustomerId = c.Id");
    Form->accept();
  });
  EXPECT_TRUE(link->EditProps());
  EXPECT_FALSE(message.isEmpty());
  EXPECT_NE(before, Sql());
  EXPECT_NE(Sql().find("ON o.CustomerId=c.Id"), std::string::npos) << Sql();
  // The condition is a column pair again: the link follows its columns.
  EXPECT_EQ(link->GetLeftField(), "Id");
  EXPECT_EQ(link->GetRightField(), "CustomerId");
}

TEST_F(Dialogs, QueryPropertiesSetDistinctAndTheSetOperator) {
  Load("select Id from Customers union select Id from Orders");
  std::vector<TqxUnionSubQuery*> operands;
  Builder->GetQuery()->GetUnionGroup()->GetOperands(operands);
  ASSERT_EQ(operands.size(), 2u);
  OnModal<TqxSQL92QueryPropsForm>([](TqxSQL92QueryPropsForm* Form) {
    EXPECT_FALSE(Form->cbUnionOperator->isVisible()) << "the first operand has no operator";
    Form->cbDistinct->setChecked(true);
    Form->accept();
  });
  EXPECT_TRUE(operands[0]->EditProps());
  OnModal<TqxSQL92QueryPropsForm>([](TqxSQL92QueryPropsForm* Form) {
    ASSERT_TRUE(Form->cbUnionOperator->isVisible());
    Form->cbUnionOperator->setCurrentText("Union All");
    Form->accept();
  });
  EXPECT_TRUE(operands[1]->EditProps());
  EXPECT_NE(Sql().find("SELECT DISTINCT Customers.Id"), std::string::npos) << Sql();
  EXPECT_EQ(Sql().find("SELECT DISTINCT Orders.Id"), std::string::npos) << Sql();
  EXPECT_NE(Sql().find("Union All"), std::string::npos) << Sql();
}

}  // namespace
}  // namespace qorvex::testing_gui
