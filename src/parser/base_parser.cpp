#include "qorvex/parser/base_parser.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace qorvex {

QX_DEFINE_ABSTRACT_ROOT_CLASS(TqxBaseParser)

// ---- way points -------------------------------------------------------------------

std::int32_t TqxWayPoint::GetChildCount() const {
  std::int32_t n = 0;
  for (const TqxWayPoint* c = firstChild_; c != nullptr; c = c->nextSibling_)
    ++n;
  return n;
}

// Both walks are iterative: a way tree is as deep as the text is long.
std::int32_t TqxWayPoint::GetCount() const {
  std::int32_t n = 0;
  std::vector<const TqxWayPoint*> stack{this};
  while (!stack.empty()) {
    const TqxWayPoint* p = stack.back();
    stack.pop_back();
    for (const TqxWayPoint* c = p->firstChild_; c != nullptr; c = c->nextSibling_) {
      ++n;
      stack.push_back(c);
    }
  }
  return n;
}

std::int32_t TqxWayPoint::GetDepth() const {
  std::int32_t best = 0;
  std::vector<std::pair<const TqxWayPoint*, std::int32_t>> stack{{this, 1}};
  while (!stack.empty()) {
    auto [p, d] = stack.back();
    stack.pop_back();
    best = std::max(best, d);
    for (const TqxWayPoint* c = p->firstChild_; c != nullptr; c = c->nextSibling_)
      stack.emplace_back(c, d + 1);
  }
  return best;
}

void TqxWayPoint::RemoveFromParent() {
  if (parent == nullptr)
    return;
  if (prevSibling_ != nullptr)
    prevSibling_->nextSibling_ = nextSibling_;
  else if (parent->firstChild_ == this)
    parent->firstChild_ = nextSibling_;
  if (nextSibling_ != nullptr)
    nextSibling_->prevSibling_ = prevSibling_;
  else if (parent->lastChild_ == this)
    parent->lastChild_ = prevSibling_;
  prevSibling_ = nextSibling_ = nullptr;
  // `parent` stays: a reused stretch of way may still be read through this point.
}

// Blocks double in size from 1,024 way points (a typical statement fits the first), up
// to 65,536. Way points have trivial destructors: blocks are freed as raw memory.
namespace {
constexpr std::size_t kFirstBlock = 1024;
constexpr std::size_t kLargestBlock = 65536;

struct SpareBlock {
  TqxWayPoint* block = nullptr;
  ~SpareBlock() { ::operator delete(static_cast<void*>(block)); }
};
thread_local SpareBlock spareBlock;

// Per-thread buffers of the parser that a parse leaves empty for the next one.
thread_local std::vector<std::int32_t> spareKinds;
thread_local std::vector<const TqxWayPoint*> spareWay;
}  // namespace

TqxWayArena::~TqxWayArena() {
  for (std::size_t i = 0; i < blocks_.size(); ++i) {
    if (i == 0 && spareBlock.block == nullptr)
      spareBlock.block = blocks_[0];
    else
      ::operator delete(static_cast<void*>(blocks_[i]));
  }
}

void TqxWayArena::Grow() {
  capacity_ = capacity_ == 0 ? kFirstBlock : std::min(capacity_ * 2, kLargestBlock);
  if (capacity_ == kFirstBlock && spareBlock.block != nullptr) {
    current_ = spareBlock.block;
    spareBlock.block = nullptr;
  } else {
    current_ = static_cast<TqxWayPoint*>(::operator new(capacity_ * sizeof(TqxWayPoint)));
  }
  try {
    blocks_.push_back(current_);
  } catch (...) {
    ::operator delete(static_cast<void*>(current_));
    throw;
  }
  used_ = 0;
}

// ---- errors -----------------------------------------------------------------------

EqxSQLError MakeSQLError(const std::string& message, const TqxToken* token) {
  if (token == nullptr)
    return EqxSQLError(message);
  return EqxSQLError(message, token->pos, token->line, token->col, token->val);
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
  wayBuffer_.swap(spareWay);
  tokenCount_ = scanner != nullptr ? scanner->GetTokenCount() : 0;
  kinds_.resize(static_cast<std::size_t>(tokenCount_));
  for (std::int32_t i = 0; i < tokenCount_; ++i)
    kinds_[static_cast<std::size_t>(i)] = scanner->GetToken(i).kind;
}

// The buffers go back to the thread unless they have grown large.
TqxBaseParser::~TqxBaseParser() {
  constexpr std::size_t kKeep = 16384;
  if (kinds_.capacity() <= kKeep && spareKinds.capacity() == 0) {
    kinds_.clear();
    kinds_.swap(spareKinds);
  }
  if (wayBuffer_.capacity() <= kKeep && spareWay.capacity() == 0)
    wayBuffer_.swap(spareWay);
}

void TqxBaseParser::WayOverrun() {
  throw EqxError("The parser read past the end of its way");
}

// Walks from the leaf to the root and stores each point from the back of `way`, so the
// path ends up root first without a second pass. A point standing for a reused stretch
// is replaced by that stretch; the stretches still to finish wait on a stack, which
// keeps deep nesting off the call stack.
void TqxBaseParser::UnrollWay(const TqxWayPoint* leaf) {
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
  wayIndex = -1;
  tokenIndex = -1;
  t = nullptr;
  maxErrIndex = -1;
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

void TqxBaseParser::Expect(TqxWayList& ways, std::int32_t kind) {
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
    const std::string& text = scanner->GetToken(w->tokenIndex + 1).val;
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
