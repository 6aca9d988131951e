#include "qorvex/parser/base_parser.h"

#include "core/small_blocks.h"
#include "qorvex/ast/query.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace qorvex {

QX_DEFINE_ABSTRACT_ROOT_CLASS(TqxBaseParser)

// ---- way points -------------------------------------------------------------------

// Children are made after their parent and descendants after their ancestors, so the
// downward walks read the arena forward from the point; removed points are leaves.
std::int32_t TqxWayPoint::GetChildCount() const {
  std::int32_t n = 0;
  TqxWayArena::Of(this).ForEachAfter(this, [&](const TqxWayPoint* p) {
    n += p->parent == this && !p->IsRemoved();
    return true;
  });
  return n;
}

TqxWayPoint* TqxWayPoint::GetFirstChild() const {
  TqxWayPoint* found = nullptr;
  TqxWayArena::Of(this).ForEachAfter(this, [&](const TqxWayPoint* p) {
    if (p->parent != this || p->IsRemoved())
      return true;
    found = const_cast<TqxWayPoint*>(p);
    return false;
  });
  return found;
}

TqxWayPoint* TqxWayPoint::GetNextSibling() const {
  if (parent == nullptr)
    return nullptr;
  TqxWayPoint* found = nullptr;
  TqxWayArena::Of(this).ForEachAfter(this, [&](const TqxWayPoint* p) {
    if (p->parent != parent || p->IsRemoved())
      return true;
    found = const_cast<TqxWayPoint*>(p);
    return false;
  });
  return found;
}

std::int32_t TqxWayPoint::GetCount() const {
  std::int32_t n = 0;
  std::unordered_set<const TqxWayPoint*> below{this};
  TqxWayArena::Of(this).ForEachAfter(this, [&](const TqxWayPoint* p) {
    if (!p->IsRemoved() && below.count(p->parent) != 0) {
      below.insert(p);
      ++n;
    }
    return true;
  });
  return n;
}

std::int32_t TqxWayPoint::GetDepth() const {
  std::int32_t best = 1;
  std::unordered_map<const TqxWayPoint*, std::int32_t> depth{{this, 1}};
  TqxWayArena::Of(this).ForEachAfter(this, [&](const TqxWayPoint* p) {
    if (p->IsRemoved())
      return true;
    if (auto it = depth.find(p->parent); it != depth.end()) {
      const std::int32_t d = it->second + 1;
      depth.emplace(p, d);
      best = std::max(best, d);
    }
    return true;
  });
  return best;
}

void TqxWayPoint::RemoveFromParent() {
  if (parent != nullptr)
    tokenIndex = kRemoved;
}

// Blocks hold a header in their first slot and are aligned to their size, so a point's
// block, and from there its arena, follows from the point's address. Way points have
// trivial destructors: blocks are freed as raw memory.
namespace {
struct BlockHeader {
  const TqxWayArena* arena;
};
static_assert(sizeof(BlockHeader) <= sizeof(TqxWayPoint));
constexpr std::align_val_t kBlockAlign{TqxWayArena::kBlockBytes};

void* NewBlock() {
  return ::operator new(TqxWayArena::kBlockBytes, kBlockAlign);
}
void FreeBlock(void* block) {
  ::operator delete(block, kBlockAlign);
}
void* BlockOf(const void* point) {
  return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(point) &
                                 ~(std::uintptr_t{TqxWayArena::kBlockBytes} - 1));
}

// Blocks of finished arenas, kept for the thread's next arenas so that a parse reuses
// memory whose pages are already mapped instead of asking the heap (and, for blocks of
// this size and alignment, the kernel) again. A free block holds the next one in its
// first word. At most kSpareBlocks are kept; all are freed when the thread ends.
constexpr std::size_t kSpareBlocks = 64;  // 4 MiB
struct SpareBlocks {
  void* head = nullptr;
  std::size_t count = 0;
  void* Take() {
    void* block = head;
    if (block != nullptr) {
      head = *static_cast<void**>(block);
      --count;
    }
    return block;
  }
  // False when the cache is full and the caller frees the block.
  bool Give(void* block) {
    if (count == kSpareBlocks)
      return false;
    *static_cast<void**>(block) = head;
    head = block;
    ++count;
    return true;
  }
  ~SpareBlocks() {
    while (void* block = Take())
      FreeBlock(block);
  }
};
thread_local SpareBlocks spareBlocks;

// Per-thread buffers of the parser that a parse leaves empty for the next one.
thread_local std::vector<TqxWayPoint*> spareBlockList;
thread_local std::vector<std::int32_t> spareKinds;
thread_local std::vector<std::int32_t> spareRun;
thread_local std::vector<std::int32_t> sparePending;
thread_local std::vector<const TqxWayPoint*> spareWay;
}  // namespace

const TqxWayArena& TqxWayArena::Of(const TqxWayPoint* point) {
  return *static_cast<const BlockHeader*>(BlockOf(point))->arena;
}

TqxWayArena::~TqxWayArena() {
  for (TqxWayPoint* first : blocks_) {
    void* block = BlockOf(first);
    if (!spareBlocks.Give(block))
      FreeBlock(block);
  }
  if (spareBlockList.capacity() == 0 && blocks_.capacity() <= 64) {
    blocks_.clear();
    blocks_.swap(spareBlockList);
  }
}

void TqxWayArena::Grow() {
  if (blocks_.capacity() == 0)
    blocks_.swap(spareBlockList);
  blocks_.reserve(blocks_.size() + 1);
  void* block = spareBlocks.Take();
  if (block == nullptr)
    block = NewBlock();
  ::new (block) BlockHeader{this};
  current_ = static_cast<TqxWayPoint*>(block) + 1;
  blocks_.push_back(current_);
  used_ = 0;
}

// ---- errors -----------------------------------------------------------------------

EqxSQLError MakeSQLError(const std::string& message, const TqxToken* token) {
  if (token == nullptr)
    return EqxSQLError(message);
  return EqxSQLError(message, token->pos, token->line, token->col, std::string(token->val));
}

void TqxParserErrors::Error(std::int32_t line, std::int32_t col, const std::string& message) {
  // errMsgFormat holds two %d and one %s, in that order.
  int n = std::snprintf(nullptr, 0, errMsgFormat.c_str(), line, col, message.c_str());
  std::string text(n > 0 ? static_cast<std::size_t>(n) : 0, '\0');
  if (n > 0)
    std::snprintf(text.data(), text.size() + 1, errMsgFormat.c_str(), line, col, message.c_str());
  messages.push_back(std::move(text));
}

void TqxParserErrors::SynErr(std::int32_t line, std::int32_t col, std::int32_t) {
  Error(line, col, "SQL Syntax error");
}

void TqxParserErrors::SemErr(std::int32_t line, std::int32_t col, std::int32_t n) {
  Error(line, col, "error " + std::to_string(n));
}

void TqxParserErrors::Exception(const std::string& message) {
  messages.push_back(message);
  throw EqxAbort();
}

// ---- parser -----------------------------------------------------------------------

TqxBaseParser::TqxBaseParser(TqxBaseScanner* scanner, TastSyntaxProvider* provider)
    : scanner(scanner), provider(provider) {
  kinds_.swap(spareKinds);
  tokenCount_ = scanner != nullptr ? scanner->GetTokenCount() : 0;
  // The padding is zero, the end token's kind.
  kinds_.resize(static_cast<std::size_t>(tokenCount_) + kKindPadding);
  if (tokenCount_ > 0)
    scanner->CopyKinds(kinds_.data());
}

// The buffers go back to the thread unless they have grown large.
void* TqxBaseParser::operator new(std::size_t Size) {
  return AllocateSmallBlock(Size);
}

void TqxBaseParser::operator delete(void* Block, std::size_t Size) noexcept {
  FreeSmallBlock(Block, Size);
}

TqxBaseParser::~TqxBaseParser() {
  constexpr std::size_t kKeep = 16384;
  if (kinds_.capacity() <= kKeep && spareKinds.capacity() == 0) {
    kinds_.clear();
    kinds_.swap(spareKinds);
  }
  // A text built directly used none of the way buffers: the thread's spares stay as
  // they are.
  const auto giveBack = [](auto& buffer, auto& spare) {
    if (buffer.capacity() != 0 && buffer.capacity() <= kKeep && spare.capacity() == 0)
      buffer.swap(spare);
  };
  giveBack(wayBuffer_, spareWay);
  giveBack(runDecisions_, spareRun);
  giveBack(runPending_, sparePending);
}

void TqxBaseParser::TakeSpareBuffers() {
  if (wayBuffer_.capacity() == 0)
    wayBuffer_.swap(spareWay);
  if (runDecisions_.capacity() == 0)
    runDecisions_.swap(spareRun);
  if (runPending_.capacity() == 0)
    runPending_.swap(sparePending);
}

std::unique_ptr<TSQLSelectStatement> TqxBaseParser::ParseSelectDirect() {
  return nullptr;
}

void TqxBaseParser::WayOverrun() {
  throw EqxError("The parser read past the end of its way");
}

// Walks from the leaf to the root and stores each point from the back of `way`, so the
// path ends up root first without a second pass. A point standing for a reused stretch
// is replaced by that stretch; the stretches still to finish wait on a stack, which
// keeps deep nesting off the call stack.
void TqxBaseParser::UnrollWay(const TqxWayPoint* leaf) {
  tokenIndex = -1;
  t = nullptr;
  maxErrIndex = -1;
  if (leaf != nullptr && leaf == runLeaf_) {
    replayRun_ = runDecisions_.data();
    wayLength_ = static_cast<std::uint32_t>(runDecisions_.size());
    wayFirst_ = nullptr;
    firstDecision_ = nextDecision_ = replayRun_;
    endDecision_ = replayRun_ + wayLength_;
    return;
  }
  replayRun_ = nullptr;
  struct Run {
    const TqxWayPoint* at;
    const TqxWayPoint* stop;
  };
  static thread_local std::vector<Run> runs;
  runs.clear();
  if (wayBuffer_.size() < wayBuffer_.capacity() || wayBuffer_.size() < 256)
    wayBuffer_.resize(std::max<std::size_t>(wayBuffer_.capacity(), 256));
  std::size_t end = wayBuffer_.size();
  std::size_t pos = end;
  const TqxWayPoint** slots = wayBuffer_.data();
  const TqxWayPoint* p = leaf;
  const TqxWayPoint* stop = nullptr;
  for (;;) {
    while (p != stop) {
      if (p->link != nullptr) [[unlikely]] {
        runs.push_back({p->parent, stop});
        stop = p->linkBase;
        p = p->link;
        continue;
      }
      if (pos == 0) [[unlikely]] {
        // Doubles the storage, moving what is written to the back half.
        wayBuffer_.insert(wayBuffer_.begin(), end, nullptr);
        pos = end;
        end = wayBuffer_.size();
        slots = wayBuffer_.data();
      }
      slots[--pos] = p;
      p = p->parent;
    }
    if (runs.empty())
      break;
    p = runs.back().at;
    stop = runs.back().stop;
    runs.pop_back();
  }
  wayFirst_ = wayBuffer_.data() + pos;
  wayLength_ = static_cast<std::uint32_t>(end - pos);
  wayDecisions_.resize(wayLength_);
  for (std::uint32_t i = 0; i < wayLength_; ++i)
    wayDecisions_[i] = wayFirst_[i]->decision;
  firstDecision_ = nextDecision_ = wayDecisions_.data();
  endDecision_ = firstDecision_ + wayLength_;
}

TqxWayPoint* TqxBaseParser::EndRun(TqxWayPoint* start, std::int32_t tokenIndex) {
  TqxWayPoint* leaf = start;
  if (start->parent == nullptr) {
    leaf = arena_.New(start);
    runDecisions_.swap(runPending_);
    runRoot_ = start;
    runLeaf_ = leaf;
    runMade_.clear();
  } else {
    for (std::size_t i = 1; i < runPending_.size(); ++i)
      leaf = arena_.New(leaf, runPending_[i]);
  }
  leaf->tokenIndex = tokenIndex;
  return leaf;
}

void TqxBaseParser::MakeRunPoints() const {
  if (runMade_.empty()) {
    runMade_.reserve(runDecisions_.size());
    runMade_.push_back(runRoot_);
    TqxWayPoint* p = const_cast<TqxWayPoint*>(runRoot_);
    for (std::size_t i = 1; i < runDecisions_.size(); ++i) {
      p = runArena_.New(p, runDecisions_[i]);
      p->tokenIndex = runLeaf_->tokenIndex;
      runMade_.push_back(p);
    }
  }
  wayBuffer_.assign(runMade_.begin(), runMade_.end());
}

const TqxWayPoint* TqxBaseParser::RunWayNode(std::size_t index) {
  if (index == 0)
    return runRoot_;
  MakeRunPoints();
  wayFirst_ = wayBuffer_.data();
  return wayFirst_[index];
}

std::span<const TqxWayPoint* const> TqxBaseParser::GetWay() const {
  if (wayFirst_ != nullptr || replayRun_ == nullptr)
    return {wayFirst_, wayLength_};
  MakeRunPoints();
  return {wayBuffer_.data(), wayLength_};
}

void TqxBaseParser::AddWayNode(TqxWayList& ways, std::int32_t decision) {
  for (TqxWayPoint*& w : ways)
    w = arena_.New(w, decision);
}

void TqxBaseParser::ListAddWithWayNode(TqxWayList& dest, const TqxWayList& src,
                                       std::int32_t decision) {
  for (TqxWayPoint* w : src)
    dest.push_back(arena_.New(w, decision));
}

void TqxBaseParser::ExpectEach(TqxWayList& ways, std::int32_t kind) {
  std::size_t keep = 0;
  for (std::size_t i = 0; i < ways.size(); ++i) {
    TqxWayPoint* w = ways[i];
    ++w->tokenIndex;
    if (KindAt(w->tokenIndex) == kind) {
      ways[keep++] = w;
    } else {
      RaiseMaxErr(w->tokenIndex);
      w->RemoveFromParent();
    }
  }
  ways.resize(keep);
}

namespace {
template <class Keep>
bool FilterWays(TqxWayList& ways, Keep keep) {
  if (ways.empty())
    return false;
  ways.erase(std::remove_if(ways.begin(), ways.end(), [&](TqxWayPoint* w) { return !keep(w); }),
             ways.end());
  return !ways.empty();
}
}  // namespace

bool TqxBaseParser::CheckLAToken(TqxWayList& ways, std::int32_t kind) {
  return FilterWays(ways, [&](TqxWayPoint* w) { return NextKind(w->tokenIndex) == kind; });
}

bool TqxBaseParser::CheckLAToken(TqxWayList& ways, const std::int32_t* kinds, std::int32_t high) {
  return FilterWays(
      ways, [&](TqxWayPoint* w) { return IsIntInArray(NextKind(w->tokenIndex), kinds, high); });
}

bool TqxBaseParser::CheckLANotToken(TqxWayList& ways, std::int32_t kind) {
  return FilterWays(ways, [&](TqxWayPoint* w) { return NextKind(w->tokenIndex) != kind; });
}

bool TqxBaseParser::CheckLANotToken(TqxWayList& ways, const std::int32_t* kinds,
                                    std::int32_t high) {
  return FilterWays(
      ways, [&](TqxWayPoint* w) { return !IsIntInArray(NextKind(w->tokenIndex), kinds, high); });
}

bool TqxBaseParser::CheckLANotIn(TqxWayList& ways, const std::vector<std::string>& words) {
  return FilterWays(ways, [&](TqxWayPoint* w) {
    const std::string_view text = scanner->GetToken(w->tokenIndex + 1).val;
    return std::find(words.begin(), words.end(), text) == words.end();
  });
}

bool TqxBaseParser::IsIntInArray(std::int32_t value, const std::int32_t* array, std::int32_t high) {
  for (std::int32_t i = 0; i <= high; ++i) {
    if (array[i] == value)
      return true;
  }
  return false;
}

}  // namespace qorvex
