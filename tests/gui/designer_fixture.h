#pragma once

// A shown query builder on a small in-memory catalogue, and helpers that find its boxes
// and drive them with QTest events.
#include <gtest/gtest.h>
#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

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
    Builder.reset();
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

  // A mouse move with the left button held (QTest::mouseMove sends no buttons).
  static void MoveWithButton(QWidget* Target, const QPoint& Pos) {
    QMouseEvent move(QEvent::MouseMove, QPointF(Pos), QPointF(Target->mapToGlobal(Pos)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Target, &move);
  }

  std::map<std::string, std::vector<std::string>> Tables;
  std::vector<std::string> Errors;
  TqxSQL92SyntaxProvider Syntax;
  TqxEventMetadataProvider Metadata;
  std::unique_ptr<TqxQueryBuilder> Builder;
};

}  // namespace qorvex::testing_gui
