#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sql/nodes_support.h"

namespace qorvex {
namespace {

using TestProvider = test::MinimalDialect;

// Records the order in which walks reach objects.
std::vector<std::string>* gTrace = nullptr;
void Trace(const std::string& What) {
  if (gTrace != nullptr)
    gTrace->push_back(What);
}

// A leaf writing one identifier. EditPropsInternal renames the copy to "edited" and
// accepts when `accept` is set.
class TLeaf : public TastNode {
  QX_CLASS(TastClass)
 public:
  using TastNode::TastNode;
  std::string Name;
  static inline bool accept = false;

  void Assign(const TastExtender& Source) override {
    TastNode::Assign(Source);
    if (const auto* leaf = dynamic_cast<const TLeaf*>(&Source))
      Name = leaf->Name;
  }
  void BuildSQLDirect(TSQLBuilder& Builder, bool) const override {
    Builder.WriteIdentifier(Name, GetSyntaxProvider());
  }
  bool EditPropsInternal(TastNode& Node, TqxQueryBuilderControlOwner*) override {
    static_cast<TLeaf&>(Node).Name = "edited";
    return accept;
  }
  std::string DumpDetails() const override { return Name; }
  void SimplifyTree() override {
    Trace("leaf " + Name);
    TastNode::SimplifyTree();
  }
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner*, const TSQLProxyClass&) override {
    Trace("move " + Name);
  }
};
class TLeafSub : public TLeaf {
  QX_CLASS(TastClass)
 public:
  using TLeaf::TLeaf;
};
class TLeafSubSub : public TLeafSub {
  QX_CLASS(TastClass)
 public:
  using TLeafSub::TLeafSub;
};

class TList : public TastNodeWithList {
  QX_CLASS(TastClass)
 public:
  using TastNodeWithList::TastNodeWithList;
  void SimplifyTree() override {
    Trace("list");
    TastNodeWithList::SimplifyTree();
  }
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner*, const TSQLProxyClass&) override {
    Trace("move list");
  }
  // Accepts every edit, adding an item to the edited copy.
  bool EditPropsInternal(TastNode& Node, TqxQueryBuilderControlOwner*) override;
};

// Writes its node between square brackets; TAngleExt between angle brackets, and refuses
// every edit.
class TBracketExt : public TastExtender {
  QX_CLASS(TastClass)
 public:
  using TastExtender::TastExtender;
  virtual std::string Marks() const { return "[]"; }
  void BuildSQLForNode(const TastNode& Node, TSQLBuilder& Builder, bool MultiLine) const override {
    Builder.WriteSymbol(Marks().substr(0, 1));
    Node.BuildSQLDirect(Builder, MultiLine);
    Builder.WriteSymbol(Marks().substr(1));
  }
  void SimplifyTree() override { Trace("ext bracket"); }
  void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner*, const TSQLProxyClass&) override {
    Trace("move ext");
  }
};
class TAngleExt : public TBracketExt {
  QX_CLASS(TastClass)
 public:
  using TBracketExt::TBracketExt;
  std::string Marks() const override { return "<>"; }
  bool EditPropsForNode(TastNode&, TqxQueryBuilderControlOwner*) override { return false; }
};
// Writes its node followed by the one-line text of a sibling leaf, asking for that text
// while the shared one-line builder is busy with the node itself.
class TNestedTextExt : public TastExtender {
  QX_CLASS(TastClass)
 public:
  using TastExtender::TastExtender;
  static inline const TastNode* other = nullptr;
  void BuildSQLForNode(const TastNode& Node, TSQLBuilder& Builder, bool MultiLine) const override {
    Node.BuildSQLDirect(Builder, MultiLine);
    Builder.Space();
    Builder.WriteSymbol("/* " + other->GetSimpleSQL() + " */");
  }
};

QX_DEFINE_CLASS(TLeaf, TastNode)
QX_DEFINE_CLASS(TLeafSub, TLeaf)
QX_DEFINE_CLASS(TLeafSubSub, TLeafSub)
QX_DEFINE_CLASS(TList, TastNodeWithList)
QX_DEFINE_CLASS(TBracketExt, TastExtender)
QX_DEFINE_CLASS(TAngleExt, TBracketExt)
QX_DEFINE_CLASS(TNestedTextExt, TastExtender)

template <class T = TLeaf>
std::unique_ptr<T> Leaf(TastSyntaxProvider* P, const std::string& Name) {
  auto leaf = NewNode<T>(P);
  leaf->Name = Name;
  return leaf;
}

bool TList::EditPropsInternal(TastNode& Node, TqxQueryBuilderControlOwner*) {
  static_cast<TList&>(Node).Add(Leaf(GetSyntaxProvider(), "new"));
  return true;
}

std::unique_ptr<TList> ListOf(TastSyntaxProvider* P, const std::vector<std::string>& Names) {
  auto list = NewNode<TList>(P);
  for (const auto& name : Names)
    list->Add(Leaf(P, name));
  return list;
}

std::vector<std::string> Names(const TList& List) {
  std::vector<std::string> names;
  for (int i = 0; i < List.GetCount(); ++i)
    names.push_back(static_cast<TLeaf*>(List.GetItems(i))->Name);
  return names;
}

std::string ExtName(const TastNode& Node) {
  return Node.GetExtender() == nullptr ? "none"
                                       : std::string(Node.GetExtender()->ClassType().ClassName());
}

TEST(ExtenderRegistry, NearestRegisteredAncestorWinsAndExactMatchWinsAtOnce) {
  TestProvider p;
  p.RegisterExtender(TLeaf::StaticClass(), TBracketExt::StaticClass());
  p.RegisterExtender(TLeafSub::StaticClass(), TAngleExt::StaticClass());
  EXPECT_EQ(ExtName(*Leaf<TLeafSubSub>(&p, "x")), "TAngleExt");
  EXPECT_EQ(ExtName(*Leaf<TLeafSub>(&p, "x")), "TAngleExt");
  EXPECT_EQ(ExtName(*Leaf<TLeaf>(&p, "x")), "TBracketExt");
  EXPECT_EQ(ExtName(*NewNode<TList>(&p)), "none");

  EXPECT_EQ(p.FindExtenderClass(TLeafSubSub::StaticClass(), false), nullptr);
  EXPECT_EQ(p.FindExtenderClass(TLeafSubSub::StaticClass(), true), &TAngleExt::StaticClass());

  // An exact entry registered after an ancestor's still wins.
  TestProvider q;
  q.RegisterExtender(TLeafSub::StaticClass(), TBracketExt::StaticClass());
  q.RegisterExtender(TLeafSubSub::StaticClass(), TAngleExt::StaticClass());
  EXPECT_EQ(q.FindExtenderClass(TLeafSubSub::StaticClass(), true), &TAngleExt::StaticClass());
  // A registered base does not reach upwards.
  EXPECT_EQ(q.FindExtenderClass(TLeaf::StaticClass(), true), nullptr);
}

TEST(ExtenderRegistry, DuplicateIsRefusedAndRegistryIsUnchanged) {
  TestProvider p;
  p.RegisterExtender(TLeafSub::StaticClass(), TBracketExt::StaticClass());
  try {
    p.RegisterExtender(TLeafSub::StaticClass(), TAngleExt::StaticClass());
    FAIL() << "duplicate accepted";
  } catch (const EqxError& e) {
    EXPECT_STREQ(e.what(), "Extender for \"TLeafSub\" already registered!");
  }
  ASSERT_EQ(p.GetExtenders().size(), 1u);
  EXPECT_EQ(p.FindExtenderClass(TLeafSub::StaticClass(), false), &TBracketExt::StaticClass());

  // The list form checks every class first: nothing of a refused list is registered.
  EXPECT_THROW(p.RegisterExtender({&TLeaf::StaticClass(), &TLeafSub::StaticClass()},
                                  TAngleExt::StaticClass()),
               EqxError);
  EXPECT_THROW(
      p.RegisterExtender({&TLeaf::StaticClass(), &TLeaf::StaticClass()}, TAngleExt::StaticClass()),
      EqxError);
  EXPECT_EQ(p.GetExtenders().size(), 1u);

  p.RegisterExtender({&TLeaf::StaticClass(), &TList::StaticClass()}, TAngleExt::StaticClass());
  ASSERT_EQ(p.GetExtenders().size(), 3u);
  EXPECT_EQ(p.GetExtenders()[1].NodeClass, &TLeaf::StaticClass());
  EXPECT_EQ(p.GetExtenders()[2].NodeClass, &TList::StaticClass());
}

TEST(ExtenderRegistry, UpdateExtenderFollowsRegistryChanges) {
  TestProvider p;
  auto leaf = Leaf<TLeafSubSub>(&p, "a");
  EXPECT_EQ(ExtName(*leaf), "none");

  p.RegisterExtender(TLeaf::StaticClass(), TBracketExt::StaticClass());
  EXPECT_EQ(ExtName(*leaf), "none") << "existing nodes keep their extender until updated";
  leaf->UpdateExtender();
  EXPECT_EQ(ExtName(*leaf), "TBracketExt");
  EXPECT_EQ(leaf->GetSimpleSQL(), "[a]");
  leaf->GetExtender()->SetExtenderData(42);
  const TastExtender* first = leaf->GetExtender();
  leaf->UpdateExtender();
  EXPECT_EQ(leaf->GetExtender(), first) << "same class: extender kept";

  // A nearer registration replaces the extender, which takes over the old one's data.
  p.RegisterExtender(TLeafSub::StaticClass(), TAngleExt::StaticClass());
  leaf->UpdateExtender();
  EXPECT_EQ(ExtName(*leaf), "TAngleExt");
  EXPECT_EQ(leaf->GetExtender()->GetExtenderData(), 42u);
  EXPECT_EQ(leaf->GetSimpleSQL(), "<a>");

  EXPECT_TRUE(p.UnregisterExtender(TLeafSub::StaticClass()));
  EXPECT_TRUE(p.UnregisterExtender(TLeaf::StaticClass()));
  EXPECT_FALSE(p.UnregisterExtender(TLeaf::StaticClass()));
  leaf->UpdateExtender();
  EXPECT_EQ(ExtName(*leaf), "none");
  EXPECT_EQ(leaf->GetSimpleSQL(), "a");

  // A node without provider never gets an extender.
  auto orphan = Leaf(nullptr, "b");
  orphan->UpdateExtender();
  EXPECT_EQ(orphan->GetExtender(), nullptr);
}

TEST(TreeNodeWithList, WritesItemsCommaSeparatedClonesDeepAndAssignAppends) {
  TestProvider p;
  p.RegisterExtender(TLeafSub::StaticClass(), TBracketExt::StaticClass());
  auto list = ListOf(&p, {"a", "b"});
  list->Add(Leaf<TLeafSub>(&p, "c"));
  list->SetExtenderData(7);
  std::unique_ptr<TList> copy = CloneNode(*list);
  EXPECT_EQ(ListOf(&p, {})->GetSimpleSQL(), "");
  ASSERT_EQ(copy->GetCount(), 3);
  EXPECT_EQ(&copy->ClassType(), &TList::StaticClass());
  EXPECT_EQ(copy->GetExtenderData(), 7u);
  EXPECT_EQ(Names(*copy), (std::vector<std::string>{"a", "b", "c"}));
  for (int i = 0; i < 3; ++i)
    EXPECT_NE(copy->GetItems(i), list->GetItems(i));
  EXPECT_EQ(&copy->GetItems(2)->ClassType(), &TLeafSub::StaticClass());
  EXPECT_EQ(ExtName(*copy->GetItems(2)), "TBracketExt");
  EXPECT_EQ(copy->GetSimpleSQL(), "a, b, [c]");
  // Assigning onto a list that has items appends, also from itself.
  auto target = ListOf(&p, {"x"});
  target->Assign(*ListOf(&p, {"a"}));
  target->Assign(*target);
  EXPECT_EQ(Names(*target), (std::vector<std::string>{"x", "a", "x", "a"}));
}

TEST(TreeNodeWithList, ListOperationsAndIndexErrors) {
  TestProvider p;
  auto list = ListOf(&p, {"a", "b", "c"});
  const std::pair<std::function<void()>, const char*> errors[] = {
      {[&] { list->GetItems(3); }, "List index out of bounds (3)"},
      {[&] { list->GetItems(-1); }, "List index out of bounds (-1)"},
      {[&] { list->Delete(5); }, "List index out of bounds (5)"},
      {[&] { list->Extract(3); }, "List index out of bounds (3)"},
      {[&] { list->SetItems(3, Leaf(&p, "q")); }, "List index out of bounds (3)"},
      {[&] { list->Insert(4, Leaf(&p, "q")); }, "List index out of bounds (4)"},
      {[&] { list->SetCount(-2); }, "List count out of bounds (-2)"}};
  for (auto& [call, message] : errors) {
    try {
      call();
      ADD_FAILURE() << "no error for " << message;
    } catch (const EqxError& e) {
      EXPECT_STREQ(e.what(), message);
    }
  }
  EXPECT_EQ(Names(*list), (std::vector<std::string>{"a", "b", "c"}));

  list->Insert(3, Leaf(&p, "d"));
  list->Insert(0, Leaf(&p, "s"));
  EXPECT_EQ(Names(*list), (std::vector<std::string>{"s", "a", "b", "c", "d"}));
  TastNode* b = list->GetItems(2);
  EXPECT_EQ(list->IndexOf(b), 2);
  std::unique_ptr<TastNode> taken = list->Extract(b);
  EXPECT_EQ(taken.get(), b);
  EXPECT_EQ(list->IndexOf(b), -1);
  EXPECT_EQ(list->Extract(b), nullptr);
  list->Remove(list->GetItems(0));
  list->Remove(b);  // not in the list: nothing happens
  EXPECT_EQ(Names(*list), (std::vector<std::string>{"a", "c", "d"}));
  list->SetItems(1, std::move(taken));
  EXPECT_EQ(list->GetSimpleSQL(), "a, b, d");

  list->SetCount(1);
  EXPECT_EQ(Names(*list), (std::vector<std::string>{"a"}));
  list->SetCount(3);  // empty slots write nothing and are skipped by walks
  EXPECT_EQ(list->GetItems(2), nullptr);
  EXPECT_EQ(list->GetSimpleSQL(), "a");
  EXPECT_EQ(CloneNode(*list)->GetCount(), 3);
  list->Clear();
  EXPECT_EQ(list->GetCount(), 0);
}

TEST(TreeWalks, ReachExtendersAndMoveSubQueryInProxyIsPreOrder) {
  TestProvider p;
  p.RegisterExtender(TLeafSub::StaticClass(), TBracketExt::StaticClass());
  auto list = ListOf(&p, {"a"});
  list->Add(Leaf<TLeafSub>(&p, "b"));
  std::vector<std::string> trace;
  gTrace = &trace;
  list->SimplifyTree();
  EXPECT_EQ(trace, (std::vector<std::string>{"list", "leaf a", "leaf b", "ext bracket"}));

  trace.clear();
  const TSQLProxyClass proxy("TestProxy", nullptr, nullptr);
  list->MoveSubQueryInProxy(nullptr, proxy);
  EXPECT_EQ(trace, (std::vector<std::string>{"move list", "move a", "move b", "move ext"}));
  gTrace = nullptr;

  std::vector<TastExtender*> children;
  list->GetMyChildren(children);
  ASSERT_EQ(children.size(), 2u);
  children.clear();
  list->GetItems(1)->GetMyChildren(children);
  ASSERT_EQ(children.size(), 1u);
  EXPECT_EQ(children[0], static_cast<TastNode*>(list->GetItems(1))->GetExtender());
}

TEST(TreeNode, EditPropsAppliesTheCopyOnlyOnAcceptance) {
  TestProvider p;
  auto leaf = Leaf(&p, "a");
  TLeaf::accept = false;
  leaf->EditProps(nullptr);
  EXPECT_EQ(leaf->Name, "a");
  TLeaf::accept = true;
  leaf->EditProps(nullptr);
  EXPECT_EQ(leaf->Name, "edited");

  // The base extender defers to EditPropsInternal.
  p.RegisterExtender(TLeafSub::StaticClass(), TBracketExt::StaticClass());
  auto sub = Leaf<TLeafSub>(&p, "b");
  sub->EditProps(nullptr);
  EXPECT_EQ(sub->Name, "edited");

  // A refusing extender wins even though EditPropsInternal would accept.
  p.RegisterExtender(TLeafSubSub::StaticClass(), TAngleExt::StaticClass());
  auto refused = Leaf<TLeafSubSub>(&p, "c");
  refused->EditProps(nullptr);
  EXPECT_EQ(refused->Name, "c");
  TLeaf::accept = false;

  // A list's accepted copy replaces its items.
  auto list = NewNode<TList>(&p);
  list->Add(Leaf(&p, "a"));
  list->EditProps(nullptr);
  EXPECT_EQ(list->GetSimpleSQL(), "a, new");
}

TEST(TreeNode, GetSimpleSQLIsSafeWhenCalledWhileWriting) {
  TestProvider p;
  p.RegisterExtender(TLeafSub::StaticClass(), TNestedTextExt::StaticClass());
  auto other = Leaf(&p, "other name");
  TNestedTextExt::other = other.get();
  auto list = ListOf(&p, {"a"});
  list->Add(Leaf<TLeafSub>(&p, "b"));
  list->Add(Leaf(&p, "c"));
  EXPECT_EQ(list->GetSimpleSQL(), "a, b /* other name */, c");
  EXPECT_EQ(list->GetSimpleSQL(), "a, b /* other name */, c");
  TNestedTextExt::other = nullptr;
}

}  // namespace
}  // namespace qorvex
