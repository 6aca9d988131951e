// The union bar of each query tab page (buttons, brackets, operators and the drops that
// reshape a union) and the tabs of sub-queries.
#include <QMenu>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStyle>

#include "designer/union_nav_bar.h"
#include "gui/window_fixture.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace qorvex::testing_gui {
namespace {

// SQL-92 offering every set operator in its operator menu.
class TastSetOpsProvider : public TastSQL92SyntaxProvider {
 public:
  void GetUnionOperatorsList(std::vector<std::string>& List) const override {
    List = {"Union", "Union All", "Except", "Except All", "Intersect", "Intersect All"};
  }
};
class TqxSetOpsSyntaxProvider : public TqxSQL92SyntaxProvider {
 protected:
  std::unique_ptr<TastSyntaxProvider> CreateASTSyntaxProvider() const override {
    return std::make_unique<TastSetOpsProvider>();
  }
};

class UnionBar : public WindowTest {
 public:
  TqxQueryBuiderPageControl* Pages() const {
    return TqxQueryBuilderPrivate::Of(Builder.get())->Pages;
  }
  TqxQueryTabSheet* Sheet(int Tab = 0) const {
    return qobject_cast<TqxQueryTabSheet*>(Pages()->widget(Tab));
  }
  TqxUnionNavBar* Bar(int Tab = 0) const { return Sheet(Tab)->GetNavBar(); }

  template <class W>
  std::vector<W*> Controls(int Tab = 0) const {
    std::vector<W*> found;
    for (QWidget* control : Bar(Tab)->BuildControlsList()) {
      if (auto* w = qobject_cast<W*>(control))
        found.push_back(w);
    }
    return found;
  }
  TqxUnionButton* Button(int Index) const { return Controls<TqxUnionButton>().at(Index); }
  TqxBracket* Bracket(bool Left, int Group = 0) const {
    std::vector<TqxBracket*> found;
    for (TqxBracket* bracket : Controls<TqxBracket>()) {
      if (bracket->IsLeft() == Left)
        found.push_back(bracket);
    }
    return found.at(Group);
  }

  // The SQL the model writes for Text: what an edit is expected to produce.
  std::string ModelSql(const std::string& Text) {
    TqxBaseQueryBuilder headless;
    headless.SetSyntaxProvider(Builder->GetSyntaxProvider());
    headless.SetMetadataProvider(&Metadata);
    headless.SetSQL(Text);
    headless.ProcessMessages();
    return headless.GetSQL();
  }

  // Drags Source onto Target with the mouse.
  static void DragOnto(QWidget* Source, QWidget* Target) {
    const QPoint start = Source->rect().center();
    QTest::mousePress(Source, Qt::LeftButton, Qt::NoModifier, start);
    MoveWithButton(Source, start + QPoint(6, 0));
    const QPoint end = Source->mapFromGlobal(Target->mapToGlobal(Target->rect().center()));
    MoveWithButton(Source, end);
    QTest::mouseRelease(Source, Qt::LeftButton, Qt::NoModifier, end);
  }

  // The buttons stand in operand order, left to right, each showing its operand's name.
  void ExpectBarMatchesModel(int Tab = 0) {
    std::vector<TqxUnionSubQuery*> operands;
    Sheet(Tab)->GetQuery()->GetUnionGroup()->GetOperands(operands);
    const std::vector<TqxUnionButton*> buttons = Controls<TqxUnionButton>(Tab);
    ASSERT_EQ(buttons.size(), operands.size());
    int x = -1;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
      EXPECT_EQ(buttons[i]->GetOperand(), operands[i]);
      EXPECT_EQ(buttons[i]->text().toStdString(), operands[i]->GetName());
      EXPECT_GT(buttons[i]->x(), x);
      x = buttons[i]->x();
    }
    EXPECT_EQ(Sheet(Tab)->GetOperandPages()->count(), static_cast<int>(operands.size()));
    EXPECT_EQ(Bar(Tab)->width(), Bar(Tab)->CalcWidth());
  }
};

TEST_F(UnionBar, AQueryWithoutUnionsShowsOneOperatorAndOneButtonInTheChosenCorner) {
  Load("select * from Customers");
  const QList<QWidget*> controls = Bar()->BuildControlsList();
  ASSERT_EQ(controls.size(), 2);
  auto* op = qobject_cast<TqxUnionOperator*>(controls[0]);
  auto* button = qobject_cast<TqxUnionButton*>(controls[1]);
  ASSERT_TRUE(op != nullptr && button != nullptr);
  EXPECT_EQ(Bar()->CalcWidth(), 4 + op->width() + button->width());
  EXPECT_EQ(Bar()->width(), Bar()->CalcWidth());
  EXPECT_EQ(Bar()->height(), 24);
  EXPECT_EQ(op->geometry(), QRect(0, 4, 16, 16));
  EXPECT_EQ(button->geometry().topLeft(), QPoint(16, 0));
  EXPECT_EQ(button->text(), "Q1");
  EXPECT_TRUE(button->isChecked());
  EXPECT_EQ(op->GetCaption(), "u");
  EXPECT_EQ(op->GetHint(), "union");
  EXPECT_TRUE(Bar()->CustomAlignInsertBefore(op, button));

  // The corner of the work area's client rectangle, less a scroll bar's room where none
  // shows, for each position.
  TqxQueryBuilderWorkArea* area = WorkArea();
  const int bar = Bar()->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, area);
  const struct {
    TqxUnionNavBarPosition Pos;
    bool Right, Bottom;
  } cases[] = {{unbTopRight, true, false},
               {unbTopLeft, false, false},
               {unbBottomRight, true, true},
               {unbBottomLeft, false, true}};
  for (const auto& c : cases) {
    Builder->SetUnionNavBarPos(c.Pos);
    QRect client(area->viewport()->mapTo(Sheet(), QPoint(0, 0)), area->viewport()->size());
    if (!area->verticalScrollBar()->isVisible())
      client.setRight(client.right() - bar);
    if (!area->horizontalScrollBar()->isVisible())
      client.setBottom(client.bottom() - bar);
    const QRect g = Bar()->geometry();
    EXPECT_EQ(c.Right ? g.right() : g.left(), c.Right ? client.right() : client.left()) << c.Pos;
    EXPECT_EQ(c.Bottom ? g.bottom() : g.top(), c.Bottom ? client.bottom() : client.top()) << c.Pos;
  }
}

// Each row: a union (C, O and I select everything from Customers, Orders and Items, u is union),
// a drag on its bar from one control onto another (bN the N-th button, oN the N-th operator,
// "[" and "]" the brackets) and the union the model must then write.
TEST_F(UnionBar, DragsReshapeTheUnion) {
  auto expand = [](const std::string& Shape) {
    const std::map<char, std::string> words = {{'C', "select * from Customers"},
                                               {'O', "select * from Orders"},
                                               {'I', "select * from Items"},
                                               {'u', "union"}};
    std::string sql;
    for (char c : Shape)
      sql += words.count(c) ? words.at(c) : std::string(1, c);
    return sql;
  };
  auto control = [this](const std::string& Code) -> QWidget* {
    if (Code == "[" || Code == "]")
      return Bracket(Code == "[");
    const int n = Code[1] - '0';
    return Code[0] == 'b' ? static_cast<QWidget*>(Button(n)) : Controls<TqxUnionOperator>().at(n);
  };
  const struct {
    const char* Name;
    const char* Union;
    const char* From;
    const char* To;
    const char* Expected;  // null: the drop is refused and nothing changes
  } cases[] = {
      {"first onto last", "C u O u I", "b0", "b2", "O u I u C"},
      {"last onto first", "C u O u I", "b2", "b0", "I u C u O"},
      {"left bracket onto the operand before its group", "C u (O u I)", "[", "b0", "(C u O u I)"},
      {"left bracket onto the group's first member", "C u (O u I)", "[", "b1", "C u O u (I)"},
      {"right bracket onto the operand after its group", "(C u O) u I", "]", "b2", "(C u O u I)"},
      {"right bracket onto the group's last member", "(C u O) u I", "]", "b1", "(C) u O u I"},
      {"left bracket onto an operand after its group", "(C u O) u I", "[", "b2", nullptr},
      {"right bracket onto an operand before its group", "C u (O u I)", "]", "b0", nullptr},
      {"a button onto itself", "C u O u I", "b1", "b1", nullptr},
      {"a button after the group onto its left bracket", "(C u O) u I", "b2", "[", "I u (C u O)"},
      {"a button before the group onto its left bracket", "C u (O u I)", "b0", "[", "(C u O u I)"},
      {"a button after the group onto its right bracket", "(C u O) u I", "b2", "]", "(C u O u I)"},
      {"a member onto its group's right bracket", "(C u O) u I", "b0", "]", "(O) u C u I"},
      {"a member onto a button before its group", "C u (O u I)", "b2", "b0", "I u C u (O)"},
      {"a button onto an operator passes to that operand", "C u O u I", "b0", "o2", "O u I u C"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.Name);
    Load(QString::fromStdString(expand(c.Union)));
    const std::string before = Sql();
    const int aligned = Bar()->GetAlignCount();
    QSignalSpy changed(Builder.get(), &TqxQueryBuilder::sqlChanged);
    QWidget* source = control(c.From);
    QWidget* target = control(c.To);
    EXPECT_EQ(Bar()->CanDrop(source, target), c.Expected != nullptr);
    DragOnto(source, target);
    Settle();
    if (c.Expected == nullptr) {
      EXPECT_EQ(Sql(), before);
      EXPECT_EQ(changed.count(), 0);
    } else {
      EXPECT_EQ(Sql(), ModelSql(expand(c.Expected)));
      EXPECT_EQ(changed.count(), 1) << "one change per drop";
      EXPECT_EQ(Bar()->GetAlignCount(), aligned + 1) << "the bar is aligned once per drop";
      EXPECT_EQ(ModelSql(Sql()), Sql()) << "the new SQL reads back to itself";
    }
    ExpectBarMatchesModel();
    EXPECT_TRUE(Errors.empty());
  }
}

TEST_F(UnionBar, TheOperatorMenuListsTheProvidersOperatorsAndSetsOne) {
  TqxSetOpsSyntaxProvider setOps;
  Builder->SetSyntaxProvider(&setOps);
  Load("select * from Customers union select * from Orders");
  TqxUnionOperator* op = Controls<TqxUnionOperator>().at(1);
  EXPECT_FALSE(op->Icon().isNull());
  const QImage unionIcon = op->Icon().toImage();

  ChooseInMenus("Except All");
  QTest::mouseClick(op, Qt::LeftButton, Qt::NoModifier, op->rect().center());
  EXPECT_EQ(MenuCaptions, QStringList({"Union", "Union All", "Except", "Except All", "Intersect",
                                       "Intersect All", "-", "About Qorvex..."}));
  EXPECT_EQ(Checked, QStringList{"Union"});
  EXPECT_NE(QString::fromStdString(Sql()).toUpper().indexOf("EXCEPT ALL"), -1) << Sql();
  EXPECT_EQ(ModelSql(Sql()), Sql());
  EXPECT_EQ(op->GetCaption(), "ea");
  EXPECT_EQ(op->GetHint(), "except all");
  EXPECT_NE(op->Icon().toImage(), unionIcon) << "the icon follows the operator";

  // A click with a modifier opens nothing; the menu now checks the new operator.
  MenuCaptions.clear();
  QTest::mouseClick(op, Qt::LeftButton, Qt::ControlModifier, op->rect().center());
  EXPECT_TRUE(MenuCaptions.empty());
  ChooseInMenus("");
  QTest::mouseClick(op, Qt::LeftButton, Qt::NoModifier, op->rect().center());
  EXPECT_EQ(Checked, QStringList{"Except All"});

  // Without a syntax provider: plain rectangles, and only the closing items.
  Builder->SetSyntaxProvider(nullptr);
  Settle();
  op = Controls<TqxUnionOperator>().at(0);
  EXPECT_TRUE(op->Icon().isNull());
  const QImage image = op->grab().toImage();
  EXPECT_EQ(image.pixelColor(0, 0), op->palette().color(QPalette::WindowText));
  EXPECT_EQ(image.pixelColor(8, 8), op->palette().color(QPalette::Base));
  ChooseInMenus("");
  QTest::mouseClick(op, Qt::LeftButton, Qt::NoModifier, op->rect().center());
  EXPECT_EQ(MenuCaptions, QStringList({"-", "About Qorvex..."}));
}

TEST_F(UnionBar, TheUnionMenuAddsEnclosesAndRemovesOperandsWithTheirButtonsAndPages) {
  Load("select * from Customers");
  ChooseInMenus("New Union SubQuery");
  WorkArea()->ShowPopupMenu(QPoint(0, 0));
  Settle();
  ASSERT_EQ(Controls<TqxUnionButton>().size(), 2u);
  ExpectBarMatchesModel();
  // The new operand is empty until it gets a table.
  TqxUnionSubQuery* added = Button(1)->GetOperand();
  added->GetSelectList()->AddField(added->AddObject("Orders"), "Id");
  EXPECT_EQ(ModelSql(Sql()), Sql());
  EXPECT_NE(Sql().find("Orders"), std::string::npos) << Sql();
  // A click on its button shows its page, and only that button is down.
  QTest::mouseClick(Button(1), Qt::LeftButton, Qt::NoModifier, Button(1)->rect().center());
  EXPECT_EQ(Operand(), added);
  EXPECT_TRUE(Button(1)->isChecked());
  EXPECT_FALSE(Button(0)->isChecked());
  EXPECT_EQ(Sheet()->GetOperandPages()->currentWidget(),
            dynamic_cast<TqxWidgetControl*>(added->GetControl())->GetWidget());

  // Brackets around the new operand, from its button's menu, then off again.
  ChooseInMenus("Enclose With Brackets");
  Button(1)->ShowPopupMenu(QPoint(0, 0));
  Settle();
  ASSERT_EQ(Controls<TqxBracket>().size(), 2u);
  EXPECT_LT(Bracket(true)->x(), Button(1)->x());
  EXPECT_GT(Bracket(false)->x(), Button(1)->x());
  EXPECT_NE(Sql().find("("), std::string::npos) << Sql();
  ExpectBarMatchesModel();
  ChooseInMenus("Remove Brackets");
  Bracket(true)->ShowPopupMenu(QPoint(0, 0));
  Settle();
  EXPECT_TRUE(Controls<TqxBracket>().empty());
  EXPECT_EQ(Sql().find("("), std::string::npos) << Sql();

  ChooseInMenus("Remove");
  Button(1)->ShowPopupMenu(QPoint(0, 0));
  Settle();
  ExpectBarMatchesModel();
  EXPECT_EQ(Controls<TqxUnionButton>().size(), 1u);
  EXPECT_EQ(Sql(), ModelSql("select * from Customers"));
  EXPECT_TRUE(Errors.empty());
}

TEST_F(UnionBar, SubQueriesHaveTabsThatFollowTheActiveSubQuery) {
  Builder->OnGetTabHeaderText = [](TqxBaseQueryBuilder*, TqxSubQuery* For, std::string& Caption) {
    if (For->GetParentSubQuery() != nullptr)
      Caption += "*";
  };
  Load(
      "select * from (select * from Orders) o where exists "
      "(select * from Items union select * from Products)");
  ASSERT_EQ(Pages()->count(), 3);
  EXPECT_EQ(Pages()->tabText(0), "Main Query");
  for (int i = 1; i < 3; ++i) {
    EXPECT_EQ(Pages()->tabText(i).toStdString(), Builder->GetTabHeaderText(Sheet(i)->GetQuery()));
    EXPECT_TRUE(Pages()->tabText(i).endsWith("*"));
  }
  ExpectBarMatchesModel(2);
  EXPECT_EQ(Controls<TqxUnionButton>(2).size(), 2u) << "the WHERE sub-query's own union";

  Builder->SetActiveSubquery(Sheet(2)->GetQuery());
  EXPECT_EQ(Pages()->currentIndex(), 2);
  Pages()->setCurrentIndex(1);
  EXPECT_EQ(Builder->GetActiveSubquery(), Sheet(1)->GetQuery());
  Pages()->setCurrentIndex(0);
  EXPECT_EQ(Builder->GetActiveSubquery(), Builder->GetQuery());

  // The derived table goes, and its tab with it.
  TqxDatasourceBase* derived = nullptr;
  for (TqxDatasource* ds : Operand()->GetDatasources()) {
    if (ds->GetCaption().find("o") == 0 || ds->GetCaption().find("Sub") != std::string::npos)
      derived = ds;
  }
  ASSERT_NE(derived, nullptr);
  Operand()->RemoveDatasource(derived);
  Settle();
  EXPECT_EQ(Pages()->count(), 2);
  EXPECT_EQ(Sql().find("Orders"), std::string::npos) << Sql();

  Builder->SetTabStyle(tsFlatButtons);
  Builder->SetTabHotTrack(true);
  EXPECT_TRUE(Pages()->tabBar()->testAttribute(Qt::WA_Hover));
  EXPECT_FALSE(Pages()->tabBar()->styleSheet().isEmpty());
}

TEST_F(UnionBar, TheProgramShowsAUnionOnTheBarAndItsTextFollowsADrag) {
  OpenWindow();
  Apply(
      "select Name from Customers union (select Name from Products except select Name from "
      "Customers)");
  auto* sheet = qobject_cast<TqxQueryTabSheet*>(
      TqxQueryBuilderPrivate::Of(Window->Builder())->Pages->currentWidget());
  ASSERT_NE(sheet, nullptr);
  QList<TqxUnionButton*> buttons;
  int brackets = 0;
  for (QWidget* control : sheet->GetNavBar()->BuildControlsList()) {
    if (auto* button = qobject_cast<TqxUnionButton*>(control))
      buttons.push_back(button);
    brackets += qobject_cast<TqxBracket*>(control) != nullptr ? 1 : 0;
  }
  ASSERT_EQ(buttons.size(), 3);
  EXPECT_EQ(brackets, 2);
  EXPECT_TRUE(sheet->GetNavBar()->isVisible());
  EXPECT_TRUE(sheet->rect().contains(sheet->GetNavBar()->geometry()));

  DragOnto(buttons[2], buttons[0]);
  Settle();
  const std::string sql = Window->Builder()->GetSQL();
  EXPECT_NE(sql.find("Union\r\n(SELECT Products.Name\r\nFROM Products)"), std::string::npos) << sql;
  EXPECT_EQ(Window->Editor()->toPlainText(), QString::fromStdString(sql).remove('\r'))
      << "the pane shows the rewritten text";
}

}  // namespace
}  // namespace qorvex::testing_gui
