// Which source a name belongs to after loading, and which row each ORDER BY term sorts:
// the regenerated statement must name the same columns, and load again to itself.
#include <gtest/gtest.h>

#include "model_support.h"

namespace qorvex::modeltest {
namespace {

struct RoundTrip {
  const char* Input;
  const char* Expected;
};

class ScopingTest : public ModelTest {
 protected:
  void ExpectRoundTrips(const std::vector<RoundTrip>& Rows) {
    for (const RoundTrip& row : Rows) {
      SCOPED_TRACE(row.Input);
      Load(row.Input);
      EXPECT_EQ(SQL(), row.Expected);
      const std::string written = SQL();
      Load("select 1");
      Load(written);
      EXPECT_EQ(SQL(), written) << "not stable";
    }
  }
};

TEST_F(ScopingTest, QualifiedNamesWithoutMetadata) {
  ExpectRoundTrips({
      // An aliased source answers only to its alias: t1.b is the outer table's.
      {"select (select count(*) from t1 x where x.b < t1.b) from t1",
       "SELECT (SELECT count(*) FROM t1 x WHERE x.b<t1.b) FROM t1"},
      {"select t1.a from t1 where exists (select 1 from t1 x where x.b = t1.b)",
       "SELECT t1.a FROM t1 WHERE Exists(SELECT 1 FROM t1 x WHERE x.b=t1.b)"},
      {"select t1.a from t1 where t1.a in (select t1.a from t2 t1)",
       "SELECT t1.a FROM t1 WHERE t1.a IN (SELECT t1.a FROM t2 t1)"},
      {"select t1.a from t1 x, t1 where x.a = t1.b", "SELECT t1.a FROM t1 x,  t1 WHERE x.a=t1.b"},
      // Unqualified names stay as they were written.
      {"select a from t1 where exists (select 1 from t2 where b = a)",
       "SELECT a FROM t1 WHERE Exists(SELECT 1 FROM t2 WHERE b=a)"},
      // A derived table sees the enclosing queries but not the sources beside it.
      {"select (select q.b from (select t1.b from t2) q) from t1",
       "SELECT (SELECT q.b FROM (SELECT t1.b FROM t2) q) FROM t1"},
  });
}

TEST_F(ScopingTest, UnqualifiedNamesFindTheSourceWithTheColumn) {
  Tables["t1"] = {"a", "b"};
  Tables["t2"] = {"b", "c"};
  ExpectRoundTrips({
      {"select a from t1 where exists (select 1 from t2 where b = a and c > 0)",
       "SELECT t1.a FROM t1 WHERE Exists(SELECT 1 FROM t2 WHERE t2.b=t1.a And t2.c>0)"},
      {"select b, (select max(c) from t2 x where x.b < b) from t1",
       "SELECT t1.b, (SELECT max(x.c) FROM t2 x WHERE x.b<x.b) FROM t1"},
      // Two sources with the column, or one whose columns are unknown: left alone.
      {"select b, c from t1, t2", "SELECT b, t2.c FROM t1,  t2"},
      {"select a, z from t1, t3", "SELECT t1.a, z FROM t1,  t3"},
      {"select (select a from t3) from t1", "SELECT (SELECT a FROM t3) FROM t1"},
      // A derived table without sources does not see its sibling.
      {"select q.a from t1, (select a) q", "SELECT q.a FROM t1,  (SELECT a) q"},
      // An ORDER BY alias wins over a column of the same name.
      {"select c as b, b as c from t2 order by b, c desc",
       "SELECT t2.c AS b, t2.b AS c FROM t2 ORDER BY b, c DESC"},
  });
}

TEST_F(ScopingTest, OrderByTermsKeepTheirMeaning) {
  ExpectRoundTrips({
      // An alias naming two output columns is not written as a sort term.
      {"select q.c as c, r.d as c from y q, y r order by r.d, q.c",
       "SELECT q.c AS c, r.d AS c FROM y q,  y r ORDER BY r.d, q.c"},
      {"select q.c as c, r.d as c from y q, y r order by 2 desc, 1",
       "SELECT q.c AS c, r.d AS c FROM y q,  y r ORDER BY r.d DESC, q.c"},
      {"select y.a, y.c as a from y order by 2", "SELECT y.a, y.c AS a FROM y ORDER BY y.c"},
      {"select a, b as k, c from t order by 3, 2 desc, 1",
       "SELECT a, b AS k, c FROM t ORDER BY c, k DESC, a"},
      // Repeated terms each keep a sorted row.
      {"select a from t order by 1, 1", "SELECT a FROM t ORDER BY a, a"},
      {"select a as k from t order by k, a desc, 1", "SELECT a AS k FROM t ORDER BY k, a DESC, a"},
      // Numbers that name no output column stay as they were.
      {"select a from t order by 2, 0", "SELECT a FROM t ORDER BY 2, 0"},
      {"select *, a from t order by 2", "SELECT *, a FROM t ORDER BY 2"},
      // An output integer is sorted by its number, not by itself.
      {"select 5, a from t order by 1 desc", "SELECT 5, a FROM t ORDER BY 1 DESC"},
      // A term that is not output is kept in a row of its own.
      {"select a from t order by b desc, a", "SELECT a FROM t ORDER BY b DESC, a"},
      // After a union, output columns are sorted by name or number.
      {"select t.a as k, t.b from t union select u.a, u.b from u order by 2 desc, k",
       "SELECT t.a AS k, t.b FROM t Union SELECT u.a, u.b FROM u ORDER BY 2 DESC, k"},
  });
}

// FROM lists long enough to be indexed: an unqualified name binds where exactly one source
// of the innermost block that has it does; a block where no source has it but one's
// columns are unknown keeps it from the outer blocks.
TEST_F(ScopingTest, UnqualifiedNamesInLongFromLists) {
  std::string tables;
  std::string inner;
  for (int i = 1; i <= 20; ++i) {
    const std::string n = std::to_string(i);
    Tables["t" + n] = {"k" + n, "id"};
    Tables["u" + n] = {"v" + n};
    tables += (i > 1 ? ", t" : "t") + n;
    inner += (i > 1 ? ", u" : "u") + n;
  }
  Tables["t5"] = {"k5", "K5", "shared"};  // a name listed twice still counts one source
  Tables["t9"] = {"k9", "shared"};
  struct Case {
    const char* Select;
    const char* Written;
    const char* WithUnknown;  // when the table zz, of unknown columns, is in both lists
  };
  const Case cases[] = {
      {"select k7, K12, k5", "SELECT t7.k7, t12.K12, t5.k5", "SELECT t7.k7, t12.K12, t5.k5"},
      {"select shared, id, k7, nosuch", "SELECT shared, id, t7.k7, nosuch",
       "SELECT shared, id, t7.k7, nosuch"},
      {"select (select v3 + k7 from INNER)", "SELECT (SELECT u3.v3+t7.k7",
       "SELECT (SELECT u3.v3+k7"},
  };
  for (const Case& c : cases) {
    for (const bool unknown : {false, true}) {
      SCOPED_TRACE(std::string(c.Select) + (unknown ? " with an unknown table" : ""));
      const std::string zz = unknown ? ", zz" : "";
      std::string sql = std::string(c.Select) + " from " + tables + zz;
      if (const auto at = sql.find("INNER"); at != std::string::npos)
        sql.replace(at, 5, inner + zz);
      Load(sql);
      // The FROM lists are written with the writer's separators; compare up to them.
      std::string written = SQL();
      written = written.substr(0, written.find(" FROM t1"));
      written = written.substr(0, written.find(" FROM u1"));
      EXPECT_EQ(written, unknown ? c.WithUnknown : c.Written);
    }
  }
}

}  // namespace
}  // namespace qorvex::modeltest
