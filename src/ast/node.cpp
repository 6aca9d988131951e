#include "qorvex/ast/node.h"

#include <algorithm>
#include <string>

#include "ast/node_util.h"
#include "core/small_blocks.h"
#include "qorvex/ast/builder.h"
#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"

namespace qorvex {

QX_DEFINE_ROOT_CLASS(TastExtender)
QX_DEFINE_CLASS(TastNode, TastExtender)
QX_DEFINE_CLASS(TastNodeWithList, TastNode)

// ---------------------------------------------------------------------------------------
// TastExtender

void* TastExtender::operator new(std::size_t Size) {
  return AllocateSmallBlock(Size);
}

void TastExtender::operator delete(void* Block, std::size_t Size) noexcept {
  FreeSmallBlock(Block, Size);
}

void* AllocateTreeBlock(std::size_t Size) {
  return AllocateSmallBlock(Size);
}

void FreeTreeBlock(void* Block, std::size_t Size) noexcept {
  FreeSmallBlock(Block, Size);
}

void TastExtender::Assign(const TastExtender& Source) {
  SyntaxProvider_ = Source.SyntaxProvider_;
  ExtenderData_ = Source.ExtenderData_;
}

bool TastExtender::EditPropsForNode(TastNode& Node, TqxQueryBuilderControlOwner* Owner) {
  return Node.EditPropsInternal(Node, Owner);
}

void TastExtender::BuildSQLForNode(const TastNode& Node, TSQLBuilder& Builder,
                                   bool MultiLine) const {
  Node.BuildSQLDirect(Builder, MultiLine);
}

void TastExtender::MoveSubQueryInProxyInternal(TqxQueryBuilderControlOwner* /*Owner*/,
                                               const TSQLProxyClass& /*ProxyClass*/) {}

void TastExtender::GetMyChildren(std::vector<TastExtender*>& /*List*/) const {}

// The walks take a snapshot of the children first, as an override may restructure its
// own children while the walk goes on below it.
void TastExtender::FixupObjects(std::vector<TSQLFromSource*>& List) {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children)
    child->FixupObjects(List);
}

void TastExtender::SimplifyTree() {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children)
    child->SimplifyTree();
}

void TastExtender::MoveSubQueryInProxy(TqxQueryBuilderControlOwner* Owner,
                                       const TSQLProxyClass& ProxyClass) {
  MoveSubQueryInProxyInternal(Owner, ProxyClass);
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children)
    child->MoveSubQueryInProxy(Owner, ProxyClass);
}

void TastExtender::RemoveReferencesToFromSource(const TSQLFromSource* Source) {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children)
    child->RemoveReferencesToFromSource(Source);
}

void TastExtender::RefreshFieldsListRecursive(TqxBaseMetadataProvider* Provider) {
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (TastExtender* child : children)
    child->RefreshFieldsListRecursive(Provider);
}

std::string TastExtender::Dump() const {
  std::string out;
  DumpTo(out, 0);
  return out;
}

void TastExtender::DumpTo(std::string& Out, int Depth) const {
  Out.append(static_cast<std::size_t>(Depth) * 2, ' ');
  Out += ClassType().ClassName();
  std::string details = DumpDetails();
  if (!details.empty()) {
    Out += ' ';
    Out += details;
  }
  Out += '\n';
  std::vector<TastExtender*> children;
  GetMyChildren(children);
  for (const TastExtender* child : children)
    child->DumpTo(Out, Depth + 1);
}

// ---------------------------------------------------------------------------------------
// TastNode

// A new node has no extender, so with no provider or an empty registry there is
// nothing to attach and the registry lookup is skipped.
void TastNode::AfterConstruction() {
  if (SyntaxProvider_ != nullptr && !SyntaxProvider_->GetExtenders().empty())
    UpdateExtender();
}

void TastNode::UpdateExtender() {
  const TastClass* found =
      SyntaxProvider_ != nullptr ? SyntaxProvider_->FindExtenderClass(ClassType(), true) : nullptr;
  if (found == nullptr) {
    Extender_.reset();
    return;
  }
  if (!Extender_) {
    Extender_ = found->Create(SyntaxProvider_);
  } else if (&Extender_->ClassType() != found) {
    std::unique_ptr<TastExtender> replacement = found->Create(SyntaxProvider_);
    replacement->Assign(*Extender_);
    Extender_ = std::move(replacement);
  }
}

void TastNode::Assign(const TastExtender& Source) {
  TastExtender::Assign(Source);
  const auto* node = dynamic_cast<const TastNode*>(&Source);
  if (node != nullptr && node != this && node->Extender_ && Extender_)
    Extender_->Assign(*node->Extender_);
}

void TastNode::GetMyChildren(std::vector<TastExtender*>& List) const {
  if (Extender_)
    List.push_back(Extender_.get());
}

bool TastNode::EditPropsInternal(TastNode& /*Node*/, TqxQueryBuilderControlOwner* /*Owner*/) {
  return false;
}

void TastNode::BuildSQL(TSQLBuilder& Builder, bool MultiLine) const {
  if (Extender_)
    Extender_->BuildSQLForNode(*this, Builder, MultiLine);
  else
    BuildSQLDirect(Builder, MultiLine);
}

void TastNode::BuildSQLDirect(TSQLBuilder& /*Builder*/, bool /*MultiLine*/) const {}

std::unique_ptr<TastNode> TastNode::Clone() const {
  std::unique_ptr<TastExtender> created = ClassType().Create(SyntaxProvider_);
  auto* node = dynamic_cast<TastNode*>(created.get());
  if (node == nullptr) {
    throw EqxError("Class " + std::string(ClassType().ClassName()) + " is not a tree node");
  }
  created.release();
  std::unique_ptr<TastNode> copy(node);
  copy->Assign(*this);
  return copy;
}

std::string TastNode::GetSimpleSQL() const {
  // One shared builder serves all one-line texts. A node whose writing asks for another
  // one-line text (an extender, say) gets a builder of its own for that inner call.
  static thread_local std::string stream;
  static thread_local TSQLBuilderPlainText builder(&stream);
  static thread_local bool busy = false;
  if (busy) {
    std::string text;
    TSQLBuilderPlainText inner(&text);
    BuildSQL(inner, false);
    return text;
  }
  struct BusyScope {
    explicit BusyScope(bool& flag) : flag(flag) { flag = true; }
    ~BusyScope() { flag = false; }
    bool& flag;
  } scope(busy);
  builder.ResetBuilder();
  BuildSQL(builder, false);
  return stream;
}

void TastNode::EditProps(TqxQueryBuilderControlOwner* Owner) {
  std::unique_ptr<TastNode> copy = Clone();
  const bool accepted =
      Extender_ ? Extender_->EditPropsForNode(*copy, Owner) : EditPropsInternal(*copy, Owner);
  if (!accepted)
    return;
  // Assign appends list items, so a list node drops its own items first: the edited copy
  // replaces the node rather than being added to it.
  if (auto* list = dynamic_cast<TastNodeWithList*>(this))
    list->Clear();
  Assign(*copy);
}

// ---------------------------------------------------------------------------------------
// TastNodeWithList

namespace {
[[noreturn]] void IndexError(int Index) {
  throw EqxError("List index out of bounds (" + std::to_string(Index) + ")");
}
}  // namespace

TastNodeWithList::TastNodeWithList(TastSyntaxProvider* SyntaxProvider) : TastNode(SyntaxProvider) {}

TastNodeWithList::~TastNodeWithList() = default;

void TastNodeWithList::Assign(const TastExtender& Source) {
  TastNode::Assign(Source);
  const auto* list = dynamic_cast<const TastNodeWithList*>(&Source);
  if (list == nullptr)
    return;
  // Counted up front so that assigning a list to itself doubles it instead of looping.
  const std::size_t count = list->Items_.size();
  Items_.reserve(Items_.size() + count);
  for (std::size_t i = 0; i < count; ++i) {
    const TastNode* item = list->Items_[i].get();
    Items_.push_back(item != nullptr ? item->Clone() : nullptr);
  }
}

void TastNodeWithList::GetMyChildren(std::vector<TastExtender*>& List) const {
  TastNode::GetMyChildren(List);
  for (const auto& item : Items_) {
    if (item)
      List.push_back(item.get());
  }
}

void TastNodeWithList::BuildSQLDirect(TSQLBuilder& Builder, bool MultiLine) const {
  detail::WriteCommaList(Items_, Builder, MultiLine);
}

void TastNodeWithList::Add(std::unique_ptr<TastNode> Node) {
  // Lists seldom stay at one item: room for four saves the first regrowths.
  if (Items_.capacity() == 0)
    Items_.reserve(4);
  Items_.push_back(std::move(Node));
}

void TastNodeWithList::Insert(int Index, std::unique_ptr<TastNode> Node) {
  if (Index < 0 || Index > GetCount())
    IndexError(Index);
  Items_.insert(Items_.begin() + Index, std::move(Node));
}

void TastNodeWithList::Clear() {
  // Moved out first so that the list is already empty while the items are freed.
  decltype(Items_) old;
  old.swap(Items_);
}

void TastNodeWithList::Delete(int Index) {
  std::unique_ptr<TastNode> item = Extract(Index);
}

void TastNodeWithList::Remove(const TastNode* Node) {
  const int index = IndexOf(Node);
  if (index >= 0)
    Delete(index);
}

std::unique_ptr<TastNode> TastNodeWithList::Extract(const TastNode* Node) {
  const int index = IndexOf(Node);
  if (index < 0)
    return nullptr;
  return Extract(index);
}

std::unique_ptr<TastNode> TastNodeWithList::Extract(int Index) {
  if (Index < 0 || Index >= GetCount())
    IndexError(Index);
  std::unique_ptr<TastNode> item = std::move(Items_[static_cast<std::size_t>(Index)]);
  Items_.erase(Items_.begin() + Index);
  return item;
}

int TastNodeWithList::IndexOf(const TastNode* Node) const {
  for (std::size_t i = 0; i < Items_.size(); ++i) {
    if (Items_[i].get() == Node)
      return static_cast<int>(i);
  }
  return -1;
}

void TastNodeWithList::SetCount(int Count) {
  if (Count < 0)
    throw EqxError("List count out of bounds (" + std::to_string(Count) + ")");
  if (static_cast<std::size_t>(Count) < Items_.size()) {
    std::vector<std::unique_ptr<TastNode>> cut(std::make_move_iterator(Items_.begin() + Count),
                                               std::make_move_iterator(Items_.end()));
    Items_.resize(static_cast<std::size_t>(Count));
  } else {
    Items_.resize(static_cast<std::size_t>(Count));
  }
}

TastNode* TastNodeWithList::GetItems(int Index) const {
  if (Index < 0 || Index >= GetCount())
    IndexError(Index);
  return Items_[static_cast<std::size_t>(Index)].get();
}

void TastNodeWithList::SetItems(int Index, std::unique_ptr<TastNode> Node) {
  if (Index < 0 || Index >= GetCount())
    IndexError(Index);
  std::unique_ptr<TastNode> old = std::move(Items_[static_cast<std::size_t>(Index)]);
  Items_[static_cast<std::size_t>(Index)] = std::move(Node);
}

}  // namespace qorvex
