#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qorvex/core/metaclass.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TastExtender;
class TastNode;
class TastSyntaxProvider;
class TSQLBuilder;
class TSQLFromSource;
class TSQLSubSelectStatement;
class TSQLSubSelectStatementProxy;
class TqxBaseMetadataProvider;
class TqxQueryBuilderControlOwner;  // model object; opaque to the syntax tree

// Memory for the containers inside nodes (child lists, name parts), taken from the same
// per-thread recycled blocks as the nodes themselves: a tree is built and freed a node
// at a time, and most of these containers hold a handful of entries.
QORVEX_SQL_EXPORT void* AllocateTreeBlock(std::size_t Size);
QORVEX_SQL_EXPORT void FreeTreeBlock(void* Block, std::size_t Size) noexcept;

template <class T>
class TastAllocator {
 public:
  using value_type = T;
  TastAllocator() noexcept = default;
  template <class U>
  TastAllocator(const TastAllocator<U>& /*Other*/) noexcept {}
  T* allocate(std::size_t Count) { return static_cast<T*>(AllocateTreeBlock(Count * sizeof(T))); }
  void deallocate(T* Block, std::size_t Count) noexcept { FreeTreeBlock(Block, Count * sizeof(T)); }
  template <class U>
  bool operator==(const TastAllocator<U>& /*Other*/) const noexcept {
    return true;
  }
};

// A vector whose storage comes from the tree's blocks.
template <class T>
using TastVector = std::vector<T, TastAllocator<T>>;

// Class reference of the tree family: node and extender classes are created by class
// with the syntax provider as the only argument.
using TastClass = TqxClassOf<TastExtender, TastSyntaxProvider*>;

// Class reference of statement proxies: the query model's proxy class, created with the
// provider, the owning model object and the statement it takes over.
using TSQLProxyClass =
    TqxClassOf<TSQLSubSelectStatementProxy, TastSyntaxProvider*, TqxQueryBuilderControlOwner*,
               std::unique_ptr<TSQLSubSelectStatement>>;

// Common root of tree nodes and of extenders: the syntax provider that created the
// object, a word of extender data, and the recursive tree walks. A walk reaches every
// child that GetMyChildren lists; a node lists its extender first, so walks reach
// extenders too.
class QORVEX_SQL_EXPORT TastExtender {
  QX_ROOT_CLASS(TastClass)

 public:
  explicit TastExtender(TastSyntaxProvider* SyntaxProvider) : SyntaxProvider_(SyntaxProvider) {}
  TastExtender(const TastExtender&) = delete;
  TastExtender& operator=(const TastExtender&) = delete;
  virtual ~TastExtender() = default;

  // Trees are made and freed a node at a time in large numbers: nodes and extenders
  // take their memory from per-thread lists of recycled blocks.
  static void* operator new(std::size_t Size);
  static void operator delete(void* Block, std::size_t Size) noexcept;

  TastSyntaxProvider* GetSyntaxProvider() const { return SyntaxProvider_; }
  std::uint32_t GetExtenderData() const { return ExtenderData_; }
  void SetExtenderData(std::uint32_t Value) { ExtenderData_ = Value; }

  // Copies the provider and the extender-data word. Descendants copy their own fields
  // when Source is of their class.
  virtual void Assign(const TastExtender& Source);

  // An extender takes over editing and writing of its node; the base defers to the node.
  virtual bool EditPropsForNode(TastNode& Node, TqxQueryBuilderControlOwner* Owner);
  virtual void BuildSQLForNode(const TastNode& Node, TSQLBuilder& Builder, bool MultiLine) const;

  virtual void MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* Owner,
                                           const TSQLProxyClass& ProxyClass);
  // Appends the direct children (not owned by the list).
  virtual void GetMyChildren(std::vector<TastExtender*>& List) const;

  // Recursive walks over GetMyChildren. FixupObjects binds names against the stack of
  // visible FROM sources in `List`.
  virtual void FixupObjects(std::vector<TSQLFromSource*>& List);
  virtual void SimplifyTree();
  // Pre-order: own MoveSubQueryInProxyInternal first, then the children.
  virtual void MoveSubQueryInProxy(TqxQueryBuilderControlOwner* Owner,
                                   const TSQLProxyClass& ProxyClass);
  virtual void RemoveReferencesToFromSource(const TSQLFromSource* Source);
  virtual void RefreshFieldsListRecursive(TqxBaseMetadataProvider* Provider);

  // One line describing this object for tree dumps: the class name and, from
  // DumpDetails, what sets it apart (a name, an operator, a flag).
  virtual std::string DumpDetails() const { return {}; }
  // The subtree, one object per line, indented by two spaces per level.
  std::string Dump() const;

 protected:
  TastSyntaxProvider* SyntaxProvider_;

 private:
  std::uint32_t ExtenderData_ = 0;
  void DumpTo(std::string& Out, int Depth) const;
};

// A tree node: writes itself as SQL through a builder, copies itself, and can be edited.
// Nodes are created through their class reference or NewNode, so that the extender
// registered for the node's class is attached once the dynamic class is final.
class QORVEX_SQL_EXPORT TastNode : public TastExtender {
  QX_CLASS(TastClass)

 public:
  // Inline, as every node's constructor and destructor runs through them.
  explicit TastNode(TastSyntaxProvider* SyntaxProvider) : TastExtender(SyntaxProvider) {}
  ~TastNode() override = default;

  // Attaches the extender of the node's class (runs UpdateExtender).
  void AfterConstruction();

  TastExtender* GetExtender() const { return Extender_.get(); }
  // Attaches, replaces or removes the extender as the provider's registry now says.
  void UpdateExtender();

  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;

  virtual bool EditPropsInternal(TastNode& Node, TqxQueryBuilderControlOwner* Owner);
  // Writes through the extender when there is one, else BuildSQLDirect. Parents always
  // write children through BuildSQL.
  virtual void BuildSQL(TSQLBuilder& Builder, bool MultiLine) const;
  virtual void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const;
  // A deep copy of the node's own dynamic class.
  virtual std::unique_ptr<TastNode> Clone() const;

  // The node's text on one line, through the shared one-line plain-text builder.
  std::string GetSimpleSQL() const;
  // Edits a copy (through the extender, else EditPropsInternal) and applies it on
  // acceptance; a refusal leaves the node unchanged.
  void EditProps(TqxQueryBuilderControlOwner* Owner);

 private:
  std::unique_ptr<TastExtender> Extender_;
};

// A node owning an ordered list of child nodes, written comma-separated.
class QORVEX_SQL_EXPORT TastNodeWithList : public TastNode {
  QX_CLASS(TastClass)

 public:
  explicit TastNodeWithList(TastSyntaxProvider* SyntaxProvider);
  ~TastNodeWithList() override;

  // Appends clones of Source's items (the target is expected to be fresh, as in Clone).
  void Assign(const TastExtender& Source) override;
  void GetMyChildren(std::vector<TastExtender*>& List) const override;
  void BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const override;

  void Add(std::unique_ptr<TastNode> Node);
  void Insert(int Index, std::unique_ptr<TastNode> Node);
  void Clear();
  void Delete(int Index);
  void Remove(const TastNode* Node);
  std::unique_ptr<TastNode> Extract(const TastNode* Node);
  std::unique_ptr<TastNode> Extract(int Index);
  int IndexOf(const TastNode* Node) const;
  int GetCount() const { return static_cast<int>(Items_.size()); }
  // Shrinking frees the items cut off; growing adds empty slots.
  void SetCount(int Count);
  TastNode* GetItems(int Index) const;
  void SetItems(int Index, std::unique_ptr<TastNode> Node);

 protected:
  TastVector<std::unique_ptr<TastNode>> Items_;
};

// Creates a node of class T and attaches its extender.
template <class T, class... A>
std::unique_ptr<T> NewNode(TastSyntaxProvider* SyntaxProvider, A&&... Args) {
  auto node = std::make_unique<T>(SyntaxProvider, std::forward<A>(Args)...);
  node->AfterConstruction();
  return node;
}

// Clone with the static type kept.
template <class T>
std::unique_ptr<T> CloneNode(const T& Node) {
  return std::unique_ptr<T>(static_cast<T*>(Node.Clone().release()));
}
template <class T>
std::unique_ptr<T> CloneNode(const std::unique_ptr<T>& Node) {
  return Node ? CloneNode(*Node) : nullptr;
}

}  // namespace qorvex
