// Trees made by the parser take their nodes from per-thread recycled blocks: the nodes
// must still get their registered extenders, and blocks must survive being freed on
// another thread, after their thread has ended, and in bursts beyond the kept budget.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "parser_test_util.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/syntax_provider.h"
#include "sql/nodes_support.h"

namespace qorvex {
namespace {

// Writes its node between angle brackets, so that the SQL text shows where it is attached.
class TAngleWriter : public TastExtender {
  QX_CLASS(TastClass)
 public:
  using TastExtender::TastExtender;
  void BuildSQLForNode(const TastNode& Node, TSQLBuilder& Builder, bool MultiLine) const override {
    Builder.WriteSymbol("<");
    Node.BuildSQLDirect(Builder, MultiLine);
    Builder.WriteSymbol(">");
  }
};
QX_DEFINE_CLASS(TAngleWriter, TastExtender)

TEST(TreeMemory, ParsedNodesGetTheExtendersRegisteredForTheirClasses) {
  TastSQL92SyntaxProvider provider;
  provider.RegisterExtender(TSQLExpressionColumn::StaticClass(), TAngleWriter::StaticClass());
  provider.RegisterExtender(TSQLDatabaseObject::StaticClass(), TAngleWriter::StaticClass());
  auto tree = provider.ParseSelect("select a.x + 1, count(*) from t1 x join t2 on x.k = t2.k");

  std::vector<TastExtender*> all;
  test::CollectNodes(*tree, all);
  int columns = 0;
  int objects = 0;
  for (TastExtender* object : all) {
    auto* node = dynamic_cast<TastNode*>(object);
    if (node == nullptr)
      continue;
    // Columns and the names derived from TSQLDatabaseObject get one; no other node does.
    const bool registered = dynamic_cast<TSQLExpressionColumn*>(node) != nullptr ||
                            dynamic_cast<TSQLDatabaseObject*>(node) != nullptr;
    columns += dynamic_cast<TSQLExpressionColumn*>(node) != nullptr;
    objects += dynamic_cast<TSQLFromObject*>(node) != nullptr;
    TastExtender* extender = node->GetExtender();
    if (registered) {
      ASSERT_NE(extender, nullptr) << node->ClassType().ClassName();
      EXPECT_EQ(&extender->ClassType(), &TAngleWriter::StaticClass());
    } else {
      EXPECT_EQ(extender, nullptr) << node->ClassType().ClassName();
    }
  }
  EXPECT_EQ(columns, 3);
  EXPECT_EQ(objects, 2);
  // Each column is written through two extenders (its expression and its name).
  EXPECT_NE(tree->GetSimpleSQL().find("<<a.x>>"), std::string::npos) << tree->GetSimpleSQL();
}

std::vector<std::string> Dumps(const std::vector<std::unique_ptr<TSQLSelectStatement>>& Trees) {
  std::vector<std::string> out;
  for (const auto& tree : Trees)
    out.push_back(tree->Dump() + tree->GetSimpleSQL());
  return out;
}

TEST(TreeMemory, TreesMadeOnOneThreadAreFreedOnAnotherAndBlocksAreReused) {
  const std::vector<std::string> statements =
      parsertest::SplitStatements(parsertest::ReadCorpus("tpch.sql"));
  ASSERT_GT(statements.size(), 10u);
  TastSQL92SyntaxProvider provider;

  // Many copies at once go past what a thread keeps, so some blocks go back to the heap.
  constexpr int kCopies = 40;
  std::vector<std::unique_ptr<TSQLSelectStatement>> made;
  std::thread worker([&] {
    for (int copy = 0; copy < kCopies; ++copy) {
      for (const std::string& sql : statements)
        made.push_back(provider.ParseSelect(sql));
    }
  });
  worker.join();  // the worker's own kept blocks are released as it ends

  std::vector<std::unique_ptr<TSQLSelectStatement>> kept;
  for (std::size_t i = 0; i < statements.size(); ++i)
    kept.push_back(std::move(made[i]));
  const std::vector<std::string> expected = Dumps(kept);
  made.clear();  // frees the worker's trees here, filling this thread's lists

  // Trees built from the recycled blocks read the same as the ones built fresh.
  for (int round = 0; round < 3; ++round) {
    std::vector<std::unique_ptr<TSQLSelectStatement>> again;
    for (const std::string& sql : statements)
      again.push_back(provider.ParseSelect(sql));
    EXPECT_EQ(Dumps(again), expected);
  }
}

}  // namespace
}  // namespace qorvex
