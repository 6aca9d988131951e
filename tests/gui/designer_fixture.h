#pragma once

// A shown query builder on a small in-memory catalogue, and helpers that find its boxes
// and drive them with QTest events.
#include <gtest/gtest.h>
#include <QApplication>
#include <QElapsedTimer>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "designer/designer_p.h"
#include "qorvex/designer/query_builder.h"
#include "qorvex/metadata/event_provider.h"
#include "qorvex/model/datasources.h"
#include "qorvex/model/query.h"
#include "qorvex/model/select_list.h"
#include "qorvex/syntax/components.h"

namespace qorvex::testing_gui {

class DesignerTest : public ::testing::Test {
 protected:
  using Box = TqxQueryBuilderDataSourceControl;

  void SetUp() override {
    Tables = {{"Customers", {"Id", "Name", "Country"}},
              {"Orders", {"Id", "CustomerId", "OrderDate"}},
              {"Items", {"Id", "OrderId", "Price", "Quantity"}},
              {"Products", {"Id", "Name", "Price"}}};
    // Field lists are asked for with "select * from NAME"; an unknown name has none.
    Metadata.OnGetSQLFieldNames = [this](TqxEventMetadataProvider*, const std::string& Sql,
                                         std::vector<std::string>& Fields) {
      const std::string rest = Sql.substr(std::string("select * from ").size());
      const std::string name = rest.substr(0, rest.find(' '));
      auto it = Tables.find(name);
      if (it != Tables.end())
        Fields = it->second;
    };
    Builder = std::make_unique<TqxQueryBuilder>();
    Builder->SetSyntaxProvider(&Syntax);
    Builder->SetMetadataProvider(&Metadata);
    // A failed edit is recorded instead of shown in a message box.
    QObject::connect(Builder.get(), &TqxQueryBuilder::errorOccurred,
                     [this](const QString& Message) { Errors.push_back(Message.toStdString()); });
    Builder->resize(900, 640);
    Builder->show();
    QApplication::processEvents();
  }

  void TearDown() override {
    Builder.reset();  // also stops the polls of OnModal
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  // Assigns SQL and lets the load message arrive.
  void Load(const QString& Sql) {
    Builder->setSql(Sql);
    Settle();
  }

  // Delivers posted events (the load message, layouts, deferred deletes).
  void Settle() {
    for (int i = 0; i < 4; ++i) {
      QApplication::processEvents();
      QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
  }

  std::string Sql() const { return Builder->GetSQL(); }

  // The SQL on one line with single spaces, for fragment checks.
  std::string Flat() const {
    std::string out;
    for (char c : Sql()) {
      const bool blank = c == ' ' || c == '\r' || c == '\n' || c == '\t';
      if (blank && (out.empty() || out.back() == ' '))
        continue;
      out += blank ? ' ' : c;
    }
    return out;
  }

  TqxUnionSubQuery* Operand() const { return Builder->GetActiveUnionSubquery(); }

  TqxQueryBuilderWorkArea* WorkArea() const {
    auto* control = dynamic_cast<TqxWidgetControl*>(Operand()->GetControl());
    auto* page = control != nullptr ? qobject_cast<TqxUnionSubQueryTabSheet*>(control->GetWidget())
                                    : nullptr;
    return page != nullptr ? page->GetWorkArea() : nullptr;
  }

  // The live boxes (those still showing a datasource).
  std::vector<Box*> Boxes() const {
    std::vector<Box*> boxes;
    for (Box* box : Builder->findChildren<Box*>()) {
      if (box->GetDatasource() != nullptr)
        boxes.push_back(box);
    }
    return boxes;
  }

  Box* BoxOf(const QString& Caption) const {
    for (Box* box : Boxes()) {
      if (box->GetCaption() == Caption)
        return box;
    }
    return nullptr;
  }

  // Every datasource has exactly one box and every box a datasource of the model.
  void ExpectBoxesMatchModel() const {
    std::vector<TqxDatasource*> all;
    for (int i = 0; i < Builder->GetSubQueriesCount(); ++i) {
      std::vector<TqxUnionSubQuery*> operands;
      Builder->GetSubQueries(i)->GetUnionGroup()->GetOperands(operands);
      for (TqxUnionSubQuery* operand : operands) {
        for (TqxDatasource* ds : operand->GetDatasources())
          all.push_back(ds);
      }
    }
    const std::vector<Box*> boxes = Boxes();
    ASSERT_EQ(boxes.size(), all.size());
    for (TqxDatasource* ds : all) {
      auto* control = dynamic_cast<TqxWidgetControl*>(ds->GetDSControl());
      ASSERT_NE(control, nullptr) << ds->GetCaption();
      EXPECT_EQ(qobject_cast<Box*>(control->GetWidget())->GetDatasource(), ds);
    }
  }

  // Clicks the check box of a row of a box's list.
  static void ClickCheck(Box* B, int Row) {
    auto* list = B->GetFieldsList();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->CheckRect(Row).center());
  }

  static QPoint RowCenter(Box* B, int Row) {
    auto* list = B->GetFieldsList();
    return list->visualItemRect(list->item(Row)).center();
  }

  // Drags a field row of one box onto a point of the work area's canvas, with the
  // events a mouse would send to the pressed list.
  static void DragField(Box* From, int Row, const QPoint& GlobalTarget) {
    QWidget* viewport = From->GetFieldsList()->viewport();
    const QPoint start = RowCenter(From, Row);
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, start);
    MoveWithButton(viewport, start + QPoint(6, 0));
    const QPoint end = viewport->mapFromGlobal(GlobalTarget);
    MoveWithButton(viewport, end);
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, end);
  }

  // Presses at From, moves with the button held half way and all the way to To, releases.
  static void Drag(QWidget* Target, const QPoint& From, const QPoint& To) {
    QTest::mousePress(Target, Qt::LeftButton, Qt::NoModifier, From);
    MoveWithButton(Target, (From + To) / 2);
    MoveWithButton(Target, To);
    QTest::mouseRelease(Target, Qt::LeftButton, Qt::NoModifier, To);
  }

  // A mouse move with the left button held (QTest::mouseMove sends no buttons).
  static void MoveWithButton(QWidget* Target, const QPoint& Pos) {
    QMouseEvent move(QEvent::MouseMove, QPointF(Pos), QPointF(Target->mapToGlobal(Pos)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Target, &move);
  }

  // Orders.CustomerId refers to Customers.Id.
  void RelateOrdersToCustomers() {
    Metadata.OnGetTableRelations = [](TqxEventMetadataProvider*, const TSQLDatabaseObject& Table,
                                      TSQLMetadataRelations& Relations) {
      if (Table.GetObjName() != "Customers" && Table.GetObjName() != "Orders")
        return;
      auto relation = std::make_unique<TSQLMetadataRelation>();
      relation->PKTable = std::make_unique<TSQLDatabaseObject>(nullptr);
      relation->PKTable->AddName("Customers");
      relation->PKColumns = {"Id"};
      relation->FKTable = std::make_unique<TSQLDatabaseObject>(nullptr);
      relation->FKTable->AddName("Orders");
      relation->FKColumns = {"CustomerId"};
      Relations.push_back(std::move(relation));
    };
  }

  // Answers the builder's menus instead of showing them: records what each offers (sub-menus
  // walked, "-" for a separator) and picks the item captioned Choose, or none.
  void ChooseInMenus(const QString& Choose) {
    TqxQueryBuilderPrivate::Of(Builder.get())->MenuExecutor = [this, Choose](QMenu& Menu,
                                                                             const QPoint&) {
      MenuCaptions.clear();
      Checked.clear();
      Disabled.clear();
      Bold.clear();
      ++MenusShown;
      QAction* chosen = nullptr;
      std::function<void(QMenu&)> walk = [&](QMenu& M) {
        for (QAction* action : M.actions()) {
          const QString text = action->isSeparator() ? QStringLiteral("-") : action->text();
          MenuCaptions << text;
          if (action->isChecked())
            Checked << text;
          if (!action->isEnabled())
            Disabled << text;
          if (action->font().bold() && M.defaultAction() == action)
            Bold << text;
          if (text == Choose)
            chosen = action;
          if (action->menu() != nullptr)
            walk(*action->menu());
        }
      };
      walk(Menu);
      return chosen;
    };
  }

  // Runs Driver on the modal dialog of class T once it shows (the caller then opens it, and
  // its event loop delivers the timer). The poll dies with the builder.
  template <class T>
  void OnModal(std::function<void(T*)> Driver, int Tries = 0) {
    QTimer::singleShot(Tries == 0 ? 0 : 10, Builder.get(), [this, Driver, Tries] {
      auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
      if (dialog != nullptr && dialog->isVisible())
        Driver(dialog);
      else if (Tries < 300)
        OnModal<T>(Driver, Tries + 1);
    });
  }

  std::map<std::string, std::vector<std::string>> Tables;
  std::vector<std::string> Errors;
  TqxSQL92SyntaxProvider Syntax;
  TqxEventMetadataProvider Metadata;
  std::unique_ptr<TqxQueryBuilder> Builder;
  QStringList MenuCaptions, Checked, Disabled, Bold;
  int MenusShown = 0;
};

}  // namespace qorvex::testing_gui
