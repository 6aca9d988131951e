// The select-list grid: its layout, the rules of editing, edits through the in-place
// editor and the keyboard, the Output check boxes, row menus, row moves, field drops and
// the sub-query button.
#include <QHeaderView>
#include <QImage>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QToolButton>

#include "designer/select_list_control.h"
#include "gui/designer_fixture.h"

namespace qorvex::testing_gui {
namespace {

using GridControl = TqxQueryBuilderSelectListControl;
using Style = TqxGridEditStyle;

class SelectListGrid : public DesignerTest {
 protected:
  GridControl* Grid() const {
    auto* control = dynamic_cast<TqxWidgetControl*>(Operand()->GetSelectList()->GetControl());
    return control != nullptr ? qobject_cast<GridControl*>(control->GetWidget()) : nullptr;
  }

  // Types Text into a cell through the keyboard: F2, replace the text, Return.
  void Type(int Col, int Row, const QString& Text) {
    GridControl* grid = Grid();
    grid->setFocus();
    grid->SetCurrentCell(Col, Row);
    QTest::keyClick(grid, Qt::Key_F2);
    ASSERT_TRUE(grid->IsEditing()) << "cell " << Col << "," << Row;
    QLineEdit* edit = grid->InplaceEditor()->LineEdit();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, Text);
    QTest::keyClick(edit, Qt::Key_Return);
    Settle();
  }

  // Keys as a user types them: each goes to the widget that has the keyboard, the grid
  // or, once an edit has begun, its editor.
  void Keys(const QString& Text) {
    for (QChar c : Text) {
      GridControl* grid = Grid();
      QWidget* target = grid->IsEditing() ? static_cast<QWidget*>(grid->InplaceEditor()->LineEdit())
                                          : static_cast<QWidget*>(grid);
      QTest::keyClicks(target, QString(c));
    }
  }

  // A row's cells joined by "|".
  std::string RowText(int Row) const {
    QStringList cells;
    for (int col = 0; col < Grid()->ColCount(); ++col)
      cells << Grid()->Cells(col, Row);
    return cells.join('|').toStdString();
  }

  // Per column of a row, one past the last included: '.' read-only, else the editor it
  // takes: 's' a plain line, 'p' a pick list, 'e' the "..." button.
  std::string Rules(int Row) const {
    std::string rules;
    for (int col = 0; col <= Grid()->ColCount(); ++col) {
      if (!Grid()->CanEditCell(col, Row))
        rules += '.';
      else
        rules += "spe"[static_cast<int>(Grid()->GetEditStyle(col, Row))];
    }
    return rules;
  }
};

TEST_F(SelectListGrid, ShowsTheHeaderAndEveryPropertyOfTheRows) {
  Load("select c.Name from Customers c");
  Load("");
  GridControl* grid = Grid();
  ASSERT_NE(grid, nullptr);
  ASSERT_EQ(grid->ColCount(), 11);
  EXPECT_EQ(RowText(0),
            "|Output|Expression|Alias|Sort Type|Sort Order|Group By|Criteria|Or...|Or...|Or...");
  EXPECT_EQ(grid->RowCount(), 2);
  EXPECT_EQ(RowText(1), "|-1|||||||||") << "one empty row, which cannot be output";
  const int widths[] = {12, 40, 100, 70, 90, 64, 64, 64, 64, 64, 64};
  for (int col = 0; col < 11; ++col)
    EXPECT_EQ(grid->ColWidths(col), widths[col]) << col;
  EXPECT_EQ(grid->RowHeights(0), 18);
  EXPECT_GE(grid->RowHeights(1), 16);
  // The grid fills the bottom panel of the page.
  EXPECT_EQ(grid->parentWidget()->objectName(), "qorvexColumnsPane");
  EXPECT_EQ(grid->size(), grid->parentWidget()->size());

  Load(
      "select c.Name as N, count(o.Id) from Customers c inner join Orders o on c.Id = "
      "o.CustomerId where c.Country = 'FR' or c.Country = 'DE' group by c.Name order by c.Name "
      "desc");
  ASSERT_EQ(Grid()->RowCount(), 5) << "two output rows, the Country row and the empty row";
  EXPECT_EQ(RowText(1), "|1|c.Name|N|Descending|1|Group By||||");
  EXPECT_EQ(RowText(2), "|1|count(o.Id)||||Aggregate||||");
  EXPECT_EQ(RowText(3), "|0|c.Country||||Where|='FR'|='DE'||");
}

TEST_F(SelectListGrid, EditingRulesFollowTheRow) {
  Load("select c.Name, (select max(o.Id) from Orders o) from Customers c");
  Type(2, 3, "c.Name Is Null");
  GridControl* grid = Grid();
  ASSERT_EQ(grid->RowCount(), 5);
  EXPECT_EQ(grid->Cells(2, 3), "c.Name IS NULL");
  const int empty = 4;
  // A column: everything but Output; a sub-query: the "..." button; a condition: no alias,
  // no sorting, its criteria offer =TRUE / =FALSE; the empty row: only its expression.
  EXPECT_EQ(Rules(0), "............");
  EXPECT_EQ(Rules(1), "..pspppssss.");
  EXPECT_EQ(Rules(2), "..espppssss.");
  EXPECT_EQ(Rules(3), "..p...ppppp.");
  EXPECT_EQ(Rules(empty), "..p.........");
  EXPECT_EQ(Rules(empty + 1), "............");
  EXPECT_EQ(grid->Cells(1, 3), "-1");
  // A cell that cannot be edited opens no editor, whatever the key.
  grid->setFocus();
  grid->SetCurrentCell(6, empty);
  QTest::keyClick(grid, Qt::Key_F2);
  Keys("Group By");
  EXPECT_FALSE(grid->IsEditing());
  EXPECT_EQ(grid->Cells(6, empty), "");
  // Ticking a condition's Output is refused by the model, with its reason.
  const std::string before = Sql();
  QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier,
                    grid->CellRect(1, 3).center());
  EXPECT_EQ(Sql(), before);
  ASSERT_EQ(Errors.size(), 1u);
  EXPECT_EQ(Errors[0], "Can't select this expression");
}

TEST_F(SelectListGrid, PickListsOfferWhatTheCellTakes) {
  Load("select c.Name from Customers c, Orders o order by c.Name");
  Type(2, 2, "c.Id Is Null");
  GridControl* grid = Grid();
  ASSERT_TRUE(Errors.empty()) << Errors[0];
  auto listOf = [&](int Col, int Row) {
    grid->setFocus();
    grid->SetCurrentCell(Col, Row);
    EXPECT_TRUE(grid->ShowEditor()) << Col << "," << Row;
    const QStringList items = grid->InplaceEditor()->DoGetPickListItems();
    grid->CancelEdit();
    return items;
  };
  EXPECT_EQ(listOf(2, 1), QStringList({"c.*", "c.Id", "c.Name", "c.Country", "o.*", "o.Id",
                                       "o.CustomerId", "o.OrderDate"}));
  EXPECT_EQ(listOf(4, 1), QStringList({"Ascending", "Descending"}));
  EXPECT_EQ(listOf(5, 1), QStringList({"1"})) << "the one sorted row";
  EXPECT_EQ(listOf(6, 1), QStringList({"Expression", "Group By", "Having", "Where"}));
  EXPECT_EQ(listOf(7, 2), QStringList({"=TRUE", "=FALSE"}));
  Type(2, 3, "c.Country");
  Type(4, 3, "");
  EXPECT_EQ(listOf(5, 3), QStringList({"1", "2"})) << "an unsorted row may take the next place";

  // Choosing from the drop-down list commits the value.
  grid->SetCurrentCell(4, 1);
  ASSERT_TRUE(grid->ShowEditor());
  grid->InplaceEditor()->Button()->click();
  QListWidget* list = grid->InplaceEditor()->PickList();
  ASSERT_TRUE(list->isVisible());
  list->setCurrentRow(1);
  QTest::keyClick(list, Qt::Key_Return);
  Settle();
  EXPECT_FALSE(list->isVisible());
  EXPECT_NE(Flat().find("ORDER BY c.Name DESC"), std::string::npos) << Flat();
}

TEST_F(SelectListGrid, EditingEachColumnRewritesTheSQL) {
  const QString base =
      "select c.Name, count(o.Id) from Customers c inner join Orders o on c.Id = o.CustomerId";
  struct Case {
    const char* What;
    std::vector<std::tuple<int, int, QString>> Edits;
    std::vector<std::string> Expected;  // fragments of the one-line SQL
  };
  const Case cases[] = {
      {"alias", {{3, 1, "Customer"}}, {"SELECT c.Name AS Customer,"}},
      {"sort order",
       {{4, 1, "Ascending"}, {4, 2, "Descending"}, {5, 2, "1"}},
       {"ORDER BY count(o.Id) DESC, c.Name"}},
      {"group by with an aggregate", {{6, 1, "Group By"}}, {"GROUP BY c.Name"}},
      {"criteria and or",
       {{7, 1, "> 'K'"}, {8, 1, "Is Null"}},
       {"WHERE c.Name>'K' Or c.Name IS NULL"}},
      {"criteria of an aggregate", {{7, 2, "> 2"}}, {"HAVING count(o.Id)>2"}},
      {"criteria in one column are anded, columns ored",
       {{7, 1, "> 'K'"}, {2, 3, "c.Id"}, {7, 3, "> 1"}, {2, 4, "c.Country"}, {8, 4, "= 'FR'"}},
       {"WHERE c.Name>'K' And c.Id>1 Or c.Country='FR'"}},
      {"a new expression", {{2, 3, "c.Country"}}, {"SELECT c.Name, count(o.Id), c.Country FROM"}},
  };
  for (const Case& c : cases) {
    Load(base);
    for (const auto& [col, row, text] : c.Edits)
      Type(col, row, text);
    const std::string sql = Flat();
    for (const std::string& fragment : c.Expected)
      EXPECT_NE(sql.find(fragment), std::string::npos) << c.What << ": " << sql;
    EXPECT_TRUE(Errors.empty()) << c.What << ": " << (Errors.empty() ? "" : Errors[0]);
    Errors.clear();
  }
  // The new expression added a row and kept one empty row at the end.
  EXPECT_EQ(Grid()->RowCount(), 5);
  EXPECT_EQ(Grid()->Cells(2, 4), "");
}

TEST_F(SelectListGrid, TheSameTextAgainTouchesNothing) {
  Load("select c.Name as N from Customers c where c.Id > 1 order by c.Name");
  GridControl* grid = Grid();
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);
  const std::string before = Sql();
  for (int col : {2, 3, 4, 5, 6, 7}) {
    for (int row = 1; row < grid->RowCount() - 1; ++row) {
      if (!grid->CanEditCell(col, row))
        continue;
      Type(col, row, grid->Cells(col, row));
      EXPECT_TRUE(grid->SetEditText(col, row, grid->Cells(col, row)));
    }
  }
  EXPECT_EQ(changed.count(), 0);
  EXPECT_EQ(Sql(), before);
  EXPECT_TRUE(Errors.empty());
}

TEST_F(SelectListGrid, TheTrailingRowHasNoMenu) {
  Load("select c.Id, c.Name from Customers c");
  GridControl* grid = Grid();
  ChooseInMenus("");
  grid->ShowRowMenu(3, grid->mapToGlobal(QPoint(5, 5)));
  EXPECT_EQ(MenusShown, 0);

  grid->ShowRowMenu(1, grid->mapToGlobal(QPoint(5, 5)));
  ASSERT_EQ(MenusShown, 1);
  EXPECT_EQ(MenuCaptions, QStringList({"Remove Row", "Insert Empty Row", "-", "About Qorvex..."}));

  ChooseInMenus("Insert Empty Row");
  grid->ShowRowMenu(2, grid->mapToGlobal(QPoint(5, 5)));
  EXPECT_EQ(grid->RowCount(), 5);
  EXPECT_EQ(grid->Cells(2, 2), "");
  EXPECT_EQ(grid->Cells(2, 3), "c.Name");

  // Removing a row unticks its field in the box.
  ChooseInMenus("Remove Row");
  grid->ShowRowMenu(3, grid->mapToGlobal(QPoint(5, 5)));
  EXPECT_EQ(Flat().find("c.Name"), std::string::npos) << Flat();
  EXPECT_EQ(BoxOf("Customers c")->GetFieldsList()->item(2)->checkState(), Qt::Unchecked);
}

TEST_F(SelectListGrid, OutputIsToggledByMouseAndSpaceAndDrawnAsACheckBox) {
  Load("select c.Id, c.Name from Customers c");
  GridControl* grid = Grid();
  Box* box = BoxOf("Customers c");
  // The Output cell as drawn, with the current cell elsewhere.
  auto checkPixel = [&](int Row) {
    grid->SetCurrentCell(2, 1);
    return grid->viewport()->grab(grid->CellRect(1, Row)).toImage();
  };
  const QImage ticked = checkPixel(1);
  EXPECT_EQ(checkPixel(2), ticked);

  QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier,
                    grid->CellRect(1, 2).center());
  EXPECT_EQ(grid->Cells(1, 2), "0");
  EXPECT_EQ(Flat().find("c.Name"), std::string::npos) << Flat();
  EXPECT_EQ(box->GetFieldsList()->item(2)->checkState(), Qt::Unchecked);
  EXPECT_NE(checkPixel(2), ticked) << "the tick is gone";

  grid->setFocus();
  grid->SetCurrentCell(1, 2);
  QTest::keyClick(grid, Qt::Key_Space);
  EXPECT_EQ(grid->Cells(1, 2), "1");
  EXPECT_NE(Flat().find("SELECT c.Id, c.Name FROM"), std::string::npos) << Flat();
  EXPECT_EQ(box->GetFieldsList()->item(2)->checkState(), Qt::Checked);
  EXPECT_EQ(checkPixel(2), ticked);

  // Ticking a field in the box adds its row; the flat and 3-D boxes differ.
  ClickCheck(box, 3);
  EXPECT_EQ(grid->Cells(2, 3), "c.Country");
  const QImage flat = grid->viewport()->grab().toImage();
  grid->SetFlatChecks(false);
  const QImage raised = grid->viewport()->grab().toImage();
  EXPECT_NE(flat, raised);
  EXPECT_FALSE(grid->GetFlatChecks());
}

TEST_F(SelectListGrid, KeyboardWorksAsInASpreadsheet) {
  Load("select c.Id, c.Name from Customers c");
  GridControl* grid = Grid();
  grid->setFocus();
  grid->SetCurrentCell(2, 1);
  QTest::keyClick(grid, Qt::Key_Right);
  EXPECT_EQ(grid->Col(), 3);
  QTest::keyClick(grid, Qt::Key_Down);
  EXPECT_EQ(grid->Row(), 2);
  QTest::keyClick(grid, Qt::Key_Tab);
  EXPECT_EQ(grid->Col(), 4);
  QTest::keyClick(grid, Qt::Key_Backtab);
  EXPECT_EQ(grid->Col(), 3);

  // Typing starts an edit; Escape puts the old text back and changes nothing.
  const std::string before = Sql();
  Keys("Nm");
  ASSERT_TRUE(grid->IsEditing());
  EXPECT_EQ(grid->InplaceEditor()->Text(), "Nm");
  QTest::keyClick(grid->InplaceEditor()->LineEdit(), Qt::Key_Escape);
  EXPECT_FALSE(grid->IsEditing());
  EXPECT_EQ(grid->InplaceEditor()->Text(), "");
  EXPECT_EQ(Sql(), before);

  // Tab commits and moves on; the edit reaches the SQL once.
  QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);
  Keys("Nm");
  QTest::keyClick(grid->InplaceEditor()->LineEdit(), Qt::Key_Tab);
  EXPECT_FALSE(grid->IsEditing());
  EXPECT_EQ(grid->Col(), 4);
  EXPECT_EQ(changed.count(), 1);
  EXPECT_NE(Flat().find("c.Name AS Nm"), std::string::npos) << Flat();

  // Delete on a cell clears it; on a row marker it removes the row.
  grid->SetCurrentCell(3, 2);
  QTest::keyClick(grid, Qt::Key_Delete);
  EXPECT_EQ(Flat().find("AS Nm"), std::string::npos) << Flat();
  QHeaderView* markers = grid->verticalHeader();
  QTest::mouseClick(markers->viewport(), Qt::LeftButton, Qt::NoModifier,
                    QPoint(markers->width() / 2, markers->sectionViewportPosition(0) + 4));
  EXPECT_EQ(grid->GetMarkedRow(), 1);
  QTest::keyClick(grid, Qt::Key_Delete);
  EXPECT_NE(Flat().find("SELECT c.Name FROM"), std::string::npos) << Flat();
  EXPECT_EQ(grid->RowCount(), 3);
  // The empty row cannot be removed.
  grid->MarkRow(2);
  QTest::keyClick(grid, Qt::Key_Delete);
  EXPECT_EQ(grid->RowCount(), 3);

  // Text the model refuses stays in the editor; Escape gives up.
  Type(4, 1, "Sideways");
  ASSERT_EQ(Errors.size(), 1u);
  EXPECT_TRUE(grid->IsEditing());
  EXPECT_EQ(grid->InplaceEditor()->Text(), "Sideways");
  QTest::keyClick(grid->InplaceEditor()->LineEdit(), Qt::Key_Escape);
  EXPECT_FALSE(grid->IsEditing());
  EXPECT_EQ(grid->Cells(4, 1), "");
}

TEST_F(SelectListGrid, AChangeElsewhereKeepsTheEditInProgress) {
  Load("select c.Id, c.Name from Customers c");
  GridControl* grid = Grid();
  grid->setFocus();
  grid->SetCurrentCell(3, 2);
  Keys("Who");
  ASSERT_TRUE(grid->IsEditing());
  // The Id row goes through the model; the Name row moves up under the editor.
  Operand()->GetSelectList()->Delete(0);
  Settle();
  EXPECT_TRUE(grid->IsEditing());
  EXPECT_EQ(grid->InplaceEditor()->Text(), "Who");
  EXPECT_EQ(grid->InplaceEditor()->Row(), 1);
  QTest::keyClick(grid->InplaceEditor()->LineEdit(), Qt::Key_Return);
  EXPECT_NE(Flat().find("SELECT c.Name AS Who FROM"), std::string::npos) << Flat();
}

TEST_F(SelectListGrid, MovingARowReordersTheSelectList) {
  Load("select c.Id, c.Name, c.Country from Customers c");
  GridControl* grid = Grid();
  grid->RowMoved(1, 3);
  EXPECT_NE(Flat().find("SELECT c.Name, c.Country, c.Id FROM"), std::string::npos) << Flat();
  EXPECT_EQ(grid->Cells(2, 3), "c.Id");
  EXPECT_EQ(grid->Row(), 3);

  // Dragging a row marker moves the row too.
  QHeaderView* markers = grid->verticalHeader();
  QWidget* view = markers->viewport();
  const QPoint from(markers->width() / 2, markers->sectionViewportPosition(2) + 4);
  const QPoint to(from.x(), markers->sectionViewportPosition(0) + 2);
  QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, from);
  for (int y = from.y(); y >= to.y(); y -= 4)
    MoveWithButton(view, QPoint(from.x(), y));
  QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, to);
  Settle();
  EXPECT_NE(Flat().find("SELECT c.Id, c.Name, c.Country FROM"), std::string::npos) << Flat();
  EXPECT_EQ(markers->visualIndex(0), 0) << "the rows stay in model order";
}

TEST_F(SelectListGrid, AFieldDroppedOnTheGridBecomesARow) {
  Load("select c.Id, c.Name from Customers c");
  GridControl* grid = Grid();
  Box* box = BoxOf("Customers c");
  // On a row: inserted there.
  DragField(box, 3, grid->viewport()->mapToGlobal(grid->CellRect(2, 2).center()));
  EXPECT_NE(Flat().find("SELECT c.Id, c.Country, c.Name FROM"), std::string::npos) << Flat();
  EXPECT_EQ(grid->Cells(2, 2), "c.Country");
  // Below the rows: appended.
  const QPoint below(grid->viewport()->width() / 2, grid->viewport()->height() - 3);
  DragField(box, 1, grid->viewport()->mapToGlobal(below));
  EXPECT_NE(Flat().find("SELECT c.Id, c.Country, c.Name, c.Id FROM"), std::string::npos) << Flat();
  EXPECT_EQ(grid->RowCount(), 6);
}

TEST_F(SelectListGrid, TheEllipsisShowsTheSubQueries) {
  Load(
      "select c.Name, (select max(o.Id) from Orders o) as One, (select min(i.Id) from Items i) "
      "+ (select max(p.Id) from Products p) as Two from Customers c");
  GridControl* grid = Grid();
  TqxSubQuery* main = Builder->GetActiveSubquery();
  ASSERT_EQ(grid->GetEditStyle(2, 2), Style::esEllipsis);
  ChooseInMenus("");

  // One sub-query: its tab is shown at once.
  grid->setFocus();
  grid->SetCurrentCell(2, 2);
  ASSERT_TRUE(grid->ShowEditor());
  QTest::mouseClick(grid->InplaceEditor()->Button(), Qt::LeftButton);
  Settle();
  EXPECT_EQ(MenusShown, 0);
  TqxSubQuery* shown = Builder->GetActiveSubquery();
  ASSERT_NE(shown, main);

  std::vector<TqxSubQuery*> under;
  grid->ItemAt(2)->GetSubqueriesByRootNode(grid->ItemAt(2)->GetExpression(), under);
  ASSERT_EQ(under.size(), 1u);
  EXPECT_EQ(shown, under[0]);

  // Two: a menu of them; the chosen one is shown.
  Builder->SetActiveSubquery(main);
  Settle();
  under.clear();
  grid->ItemAt(3)->GetSubqueriesByRootNode(grid->ItemAt(3)->GetExpression(), under);
  ASSERT_EQ(under.size(), 2u);
  ChooseInMenus(QString::fromStdString(Builder->GetTabHeaderText(under[1])));
  grid->setFocus();
  grid->SetCurrentCell(2, 3);
  ASSERT_TRUE(grid->ShowEditor());
  QTest::mouseClick(grid->InplaceEditor()->Button(), Qt::LeftButton);
  Settle();
  EXPECT_EQ(MenusShown, 1);
  EXPECT_EQ(MenuCaptions.size(), 2);
  EXPECT_EQ(Builder->GetActiveSubquery(), under[1]);
}

}  // namespace
}  // namespace qorvex::testing_gui
