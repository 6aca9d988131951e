// Taking statements apart piece by piece: whatever is removed, the model stays
// consistent, writes SQL that reads back as itself, and frees what it held.
#include <gtest/gtest.h>

#include "model_support.h"

namespace qorvex::modeltest {
namespace {

const char* const kStatements[] = {
    "SELECT a.x, b.y FROM a JOIN b ON a.id = b.aid AND a.k > 1 "
    "JOIN c ON c.bid = b.id AND c.aid = a.id WHERE a.x > 1 OR b.y < 2 ORDER BY b.y",
    "SELECT a.x FROM a LEFT JOIN (b JOIN c ON c.bid = b.id) ON b.aid = a.id, d WHERE d.z = a.x",
    "SELECT t.a, count(*) AS n FROM t JOIN u ON u.tid = t.id GROUP BY t.a HAVING count(*) > 1 "
    "ORDER BY n DESC",
    "SELECT t.a FROM t WHERE t.a IN (SELECT u.a FROM u JOIN v ON v.uid = u.id WHERE v.k = t.k) "
    "AND EXISTS (SELECT 1 FROM w WHERE w.t = t.id)",
    "SELECT q.n FROM (SELECT a.x AS n FROM a JOIN b ON b.aid = a.id) q JOIN c ON c.n = q.n",
    "SELECT a.x FROM a UNION (SELECT b.x FROM b JOIN c ON c.bid = b.id EXCEPT SELECT d.x FROM d) "
    "ORDER BY 1",
    "SELECT a.*, b.y FROM a, b WHERE a.id = b.id AND NOT (a.y = 1 OR b.z = 2)",
    "SELECT e.name, m.name AS boss FROM emp e LEFT JOIN emp m ON m.id = e.manager_id "
    "WHERE e.x BETWEEN 1 AND 5",
};

class RobustnessTest : public ModelTest {
 protected:
  // The SQL of the model reads back as itself.
  void ExpectStable() {
    const std::string text = SQL();
    TqxBaseQueryBuilder again;
    again.SetSyntaxProvider(&Syntax);
    again.SetMetadataProvider(&Metadata);
    again.SetSQL(text);
    again.ProcessMessages();
    EXPECT_EQ(again.GetQuery()->GetSelectStatement()->GetSimpleSQL(), text);
  }
};

TEST_F(RobustnessTest, RemovingDatasourcesOneByOne) {
  for (const char* sql : kStatements) {
    for (int first = 0;; ++first) {
      SCOPED_TRACE(std::string(sql) + " from datasource " + std::to_string(first));
      Load(sql);
      std::vector<TqxDatasource*> all = Datasources();
      if (first >= static_cast<int>(all.size()))
        break;
      // Remove them all, starting at a different one each time.
      for (std::size_t k = 0; k < all.size(); ++k) {
        std::vector<TqxDatasource*> now = Datasources();
        TqxDatasource* victim = now[static_cast<std::size_t>(first) % now.size()];
        EXPECT_EQ(ReportsOf([&] { Operand()->RemoveDatasource(victim); }), 1);
        ExpectStable();
      }
      EXPECT_TRUE(Datasources().empty());
    }
  }
}

TEST_F(RobustnessTest, RemovingLinksAndRows) {
  for (const char* sql : kStatements) {
    SCOPED_TRACE(sql);
    Load(sql);
    for (TqxDatasource* ds : Datasources()) {
      for (TqxDatasourceBase* owner = ds; owner != nullptr; owner = owner->GetGroup()) {
        while (owner->GetJoinsCount() > 0) {
          EXPECT_EQ(ReportsOf([&] { Operand()->RemoveLink(owner->GetJoins(0)); }), 1);
          ExpectStable();
        }
      }
    }
    while (List()->GetFilledCount() > 0) {
      List()->RemoveLastRow();
      ExpectStable();
    }
  }
}

TEST_F(RobustnessTest, ScreenSideRemovalOfEveryKindOfControl) {
  for (const char* sql : kStatements) {
    SCOPED_TRACE(sql);
    LoadWithControls(sql);
    // Rows, links and boxes closed on the screen, the last one first.
    while (List()->GetFilledCount() > 0) {
      TqxControl* control = List()->GetItems(0)->GetControl();
      ASSERT_NE(control, nullptr);
      delete control;
      ExpectStable();
    }
    while (!Datasources().empty()) {
      TqxDatasource* ds = Datasources().back();
      TqxControl* control =
          ds->GetJoinsCount() > 0 ? ds->GetJoins(0)->GetControl() : ds->GetControl();
      ASSERT_NE(control, nullptr);
      delete control;
      ExpectStable();
    }
  }
  Builder.SetControlFactory(nullptr);
  EXPECT_EQ(Factory.Alive, 0);
}

}  // namespace
}  // namespace qorvex::modeltest
