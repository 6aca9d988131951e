#include <gtest/gtest.h>

#include "model_support.h"

namespace qorvex::modeltest {
namespace {

class ControlOwnerTest : public ModelTest {};

// Reports bubble from rows and links to the builder; nested brackets, of an operand or of
// the builder, merge them into one report, sent when the outermost closes; a bracket
// without change, or an unbalanced end, reports nothing.
TEST_F(ControlOwnerTest, BracketsMergeChangesIntoOneReport) {
  Load("SELECT a.x FROM a INNER JOIN b ON a.id=b.id");
  EXPECT_EQ(ReportsOf([&] { Row(0)->SetAlias("z"); }), 1);
  EXPECT_EQ(
      ReportsOf([&] { Operand()->GetFromClause()->GetItems(1)->GetJoins(0)->NotifySQLUpdated(); }),
      1);
  TqxUnionSubQuery* operand = Operand();
  Reports = 0;
  operand->BeginUpdate();
  operand->BeginUpdate();
  EXPECT_TRUE(operand->GetIsUpdating());
  DS(0)->SetAlias("x");
  Row(0)->SetAlias("y");
  operand->SetDistinct(true);
  operand->EndUpdate();
  EXPECT_EQ(Reports, 0) << "reported before the outermost bracket closed";
  operand->EndUpdate();
  EXPECT_EQ(Reports, 1);
  EXPECT_FALSE(operand->GetIsUpdating());
  EXPECT_EQ(Published(), "SELECT DISTINCT x.x AS y FROM a x INNER JOIN  b ON x.id=b.id");

  Builder.BeginUpdate();
  Row(0)->SetAlias("w");
  DS(1)->SetAlias("bb");
  EXPECT_EQ(Reports, 1);
  Builder.EndUpdate();
  EXPECT_EQ(Reports, 2);

  operand->BeginUpdate();
  operand->EndUpdate();
  Builder.BeginUpdate();
  Builder.EndUpdate();
  operand->EndUpdate();
  EXPECT_EQ(Reports, 2);
}

TEST_F(ControlOwnerTest, NoControlsWithoutAFactory) {
  Load("SELECT a.x FROM a");
  EXPECT_FALSE(DS(0)->CanCreateControls());
  DS(0)->CreateControl();
  EXPECT_EQ(DS(0)->GetControl(), nullptr);
  EXPECT_FALSE(DS(0)->EditProps());
}

TEST_F(ControlOwnerTest, ControlsAreCreatedTopDownOnlyWhereTheParentHasOne) {
  LoadWithControls("SELECT a.x FROM a INNER JOIN b ON a.id=b.id");
  TqxDatasource* a = DS(0);
  ASSERT_NE(Builder.GetQuery()->GetControl(), nullptr);
  ASSERT_NE(Operand()->GetControl(), nullptr);
  ASSERT_NE(a->GetControl(), nullptr);
  ASSERT_NE(Operand()->GetFromClause()->GetItems(1)->GetJoins(0)->GetControl(), nullptr);
  ASSERT_NE(List()->GetControl(), nullptr);

  // A datasource whose work area is gone creates no control, and keeps what it saved.
  a->SetLeft(40);
  a->SetTop(50);
  Operand()->DestroyControl();
  a->DestroyControl();
  EXPECT_FALSE(a->CanCreateControls());
  a->CreateControl();
  EXPECT_EQ(a->GetControl(), nullptr);
  EXPECT_EQ(a->GetLeft(), 40);

  Operand()->CreateControl();
  a->CreateControl();
  ASSERT_NE(a->GetControl(), nullptr);
  EXPECT_EQ(a->GetControl()->GetBounds().Left, 40);
  EXPECT_EQ(a->GetControl()->GetBounds().Top, 50);
  // A second call while a control exists changes nothing.
  const int created = Factory.Created;
  a->CreateControl();
  EXPECT_EQ(Factory.Created, created);
  // Bounds the user gave the box are saved before its control is freed.
  a->GetControl()->SetBounds(TqxRect{120, 30, 90, 140});
  a->DestroyControl();
  EXPECT_EQ(a->GetHeight(), 140);
  a->CreateControl();
  EXPECT_EQ(a->GetControl()->GetBounds(), (TqxRect{120, 30, 90, 140}));
  Builder.SetControlFactory(nullptr);
  EXPECT_EQ(Factory.Alive, 0);
}

TEST_F(ControlOwnerTest, MenusEndWithTheCommonItemsAndRunTheirCommands) {
  LoadWithControls("SELECT a.x FROM a INNER JOIN b ON a.id=b.id");
  TqxLink* link = Operand()->GetFromClause()->GetItems(1)->GetJoins(0);
  TqxPopupMenu menu = link->BuildPopupMenu();
  ASSERT_EQ(menu.size(), 4u);
  EXPECT_EQ(menu[0].Caption, "Remove");
  EXPECT_EQ(menu[1].Caption, "Edit...");
  EXPECT_TRUE(menu[1].Default);
  EXPECT_EQ(menu[2].Caption, "-");
  EXPECT_EQ(menu[3].Caption, "About Qorvex...");
  menu[1].OnClick();
  ASSERT_EQ(Factory.Dialogs.size(), 1u);
  EXPECT_EQ(Factory.Dialogs[0], TqxDialogKind::dkLinkProps);
  menu[0].OnClick();
  EXPECT_EQ(SQL(), "SELECT a.x FROM a CROSS JOIN  b");

  // The trailing empty row of the grid offers no menu.
  EXPECT_TRUE(List()->GetItems(List()->GetCount() - 1)->BuildPopupMenu().empty());
  TqxPopupMenu rowMenu = Row(0)->BuildPopupMenu();
  ASSERT_GE(rowMenu.size(), 2u);
  EXPECT_EQ(rowMenu[0].Caption, "Remove Row");
  EXPECT_EQ(rowMenu[1].Caption, "Insert Empty Row");
}

TEST_F(ControlOwnerTest, SubQueriesAreFoundUnderTheirNodes) {
  Load("SELECT t.a FROM t WHERE t.a IN (SELECT u.a FROM u) AND t.b = (SELECT Max(v.b) FROM v)");
  ASSERT_EQ(Builder.GetSubQueriesCount(), 3);
  TqxSelectItem* inRow = Row(0);
  EXPECT_EQ(inRow->GetSubqueriesByRootNodeCount(inRow->GetConditionNode(0)), 1);
  EXPECT_EQ(inRow->GetSubqueriesByRootNodeCount(inRow->GetExpression()), 0);
  std::vector<TqxSubQuery*> all;
  for (int i = 0; i < List()->GetCount(); ++i)
    List()->GetItems(i)->GetSubqueries(all);
  EXPECT_EQ(all.size(), 2u);
  // One sub-query under a node becomes the active one.
  inRow->ShowSubQueriesPopup(inRow->GetConditionNode(0), TqxPoint{});
  EXPECT_EQ(Builder.GetActiveSubquery(), Builder.GetSubQueries(1));
  EXPECT_EQ(Builder.GetTabHeaderText(Builder.GetSubQueries(1)), "SubQuery 1");
  EXPECT_EQ(Builder.GetTabHeaderText(Builder.GetQuery()), "Main Query");
}

}  // namespace
}  // namespace qorvex::modeltest
