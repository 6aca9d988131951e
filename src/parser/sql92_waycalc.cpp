// The way calculation of the SQL-92 grammar: one operation per production, each
// advancing a list of ways over its right-hand side and recording one way point per
// decision. The building operations in sql92_build.cpp read the decisions back in the
// same order.
#include <algorithm>
#include <charconv>
#include <cstring>

#include "parser/sql92_grammar.h"
#include "qorvex/parser/sql92_first_sets.h"
#include "qorvex/parser/sql92_parser.h"

namespace qorvex {

using namespace sql92first;
using namespace sql92grammar;

QX_DEFINE_CLASS(SQL92Parser, TqxBaseParser)

namespace {

// One alternative of a choice: the tokens it can start with and the operation that
// advances ways over it.
template <class F>
struct AltPart {
  const TqxTokenSet& first;
  F calc;
};
template <class F>
AltPart<F> Alt(const TqxTokenSet& first, F&& calc) {
  return AltPart<F>{first, std::forward<F>(calc)};
}

}  // namespace

// ---- work lists ---------------------------------------------------------------------

class SQL92Parser::ListRef {
 public:
  ListRef(SQL92Parser& parser, std::unique_ptr<TqxWayList> list)
      : parser_(parser), list_(std::move(list)) {}
  ListRef(const ListRef&) = delete;
  ListRef& operator=(const ListRef&) = delete;
  ~ListRef() {
    list_->clear();
    parser_.pool_.push_back(std::move(list_));
  }
  TqxWayList& operator*() { return *list_; }
  TqxWayList* operator->() { return list_.get(); }

 private:
  SQL92Parser& parser_;
  std::unique_ptr<TqxWayList> list_;
};

SQL92Parser::ListRef SQL92Parser::TakeList() {
  if (pool_.empty())
    return ListRef(*this, std::make_unique<TqxWayList>());
  std::unique_ptr<TqxWayList> list = std::move(pool_.back());
  pool_.pop_back();
  return ListRef(*this, std::move(list));
}

// ---- nesting ------------------------------------------------------------------------

class SQL92Parser::Nest {
 public:
  Nest(SQL92Parser& parser, const TqxWayList& ways) : parser_(parser) {
    if (++parser_.depth_ > parser_.peakDepth_)
      parser_.peakDepth_ = parser_.depth_;
    if (parser_.depth_ > kMaxNesting)
      throw TqxNestingLimit{ways.empty() ? 0 : ways.front()->tokenIndex + 1};
  }
  Nest(const Nest&) = delete;
  Nest& operator=(const Nest&) = delete;
  ~Nest() { --parser_.depth_; }

 private:
  SQL92Parser& parser_;
};

// ---- reuse of worked-out readings ----------------------------------------------------

// The readings of one production from one token: the leaves of the ways that the first
// calculation produced (below `base`) and the token each had reached, in list order;
// and how many nesting levels the calculation went down.
struct SQL92Parser::Worked {
  const TqxWayPoint* base;
  std::int32_t first;
  std::int32_t count;
  std::int32_t depth;
};

namespace {
// Work lists outlive a parse only as empty buffers kept per thread, so that a parse of a
// short statement does not allocate its lists anew.
thread_local std::vector<std::unique_ptr<TqxWayList>> spareLists;
thread_local std::vector<std::int32_t> spareWorkedIndex;
constexpr std::size_t kSpareWorkedIndex = 1 << 16;
constexpr std::size_t kSpareLists = 64;
constexpr std::size_t kSpareCapacity = 1024;
}  // namespace

SQL92Parser::SQL92Parser(TqxBaseScanner* scanner, TastSyntaxProvider* provider)
    : TqxBaseParser(scanner, provider) {}

// The thread's spare buffers are taken when ways are first calculated.
void SQL92Parser::TakeSpares() {
  if (sparesTaken_)
    return;
  sparesTaken_ = true;
  TakeSpareBuffers();
  if (pool_.empty())
    pool_.swap(spareLists);
  if (workedIndex_.capacity() == 0) {
    workedIndex_.swap(spareWorkedIndex);
    workedIndex_.clear();
  }
}

SQL92Parser::~SQL92Parser() {
  if (!sparesTaken_)
    return;
  if (workedIndex_.capacity() <= kSpareWorkedIndex && spareWorkedIndex.capacity() == 0)
    workedIndex_.swap(spareWorkedIndex);
  if (!spareLists.empty())
    return;
  if (pool_.size() > kSpareLists)
    pool_.resize(kSpareLists);
  for (std::unique_ptr<TqxWayList>& list : pool_) {
    if (list->capacity() > kSpareCapacity)
      list = std::make_unique<TqxWayList>();
  }
  spareLists.swap(pool_);
}

template <class F>
void SQL92Parser::Reuse(int production, TqxWayList& ways, F&& calc) {
  if (ways.empty())
    return;
  // Readings multiply where a bracket can open several constructs (a condition, an
  // expression, a sub-query, a join group): only there is the same part worked out at
  // the same token more than once, so only there are readings kept for reuse.
  if (plain_ || ways.size() != 1 ||
      (production != kWorkedTableSourceInner && NextKind(ways.front()->tokenIndex) != tkLParen)) {
    calc(ways);
    return;
  }
  TqxWayPoint* start = ways.front();
  const auto row = static_cast<std::size_t>(TokenCount()) + 1;
  if (workedIndex_.empty())
    workedIndex_.resize(row * kWorkedProductions);  // all zero: nothing worked out yet
  const auto column = static_cast<std::size_t>(start->tokenIndex + 1);
  if (column >= row) {
    calc(ways);
    return;
  }
  std::int32_t* slot = &workedIndex_[static_cast<std::size_t>(production) * row + column];
  if (std::int32_t entry = *slot; entry != 0) {
    const Worked& w = worked_[static_cast<std::size_t>(entry - 1)];
    // Reused only when the nesting bound is not reached on the way: otherwise the
    // calculation runs again and stops where the bound is.
    if (depth_ + w.depth <= kMaxNesting) {
      peakDepth_ = std::max(peakDepth_, depth_ + w.depth);
      ways.clear();
      for (std::int32_t i = 0; i < w.count; ++i) {
        TqxWayPoint* p = NewWayPoint(start);
        p->link = workedLeaves_[static_cast<std::size_t>(w.first + i)];
        p->linkBase = w.base;
        p->tokenIndex = workedEnds_[static_cast<std::size_t>(w.first + i)];
        ways.push_back(p);
      }
      return;
    }
    calc(ways);
    return;
  }
  const std::int32_t savedPeak = peakDepth_;
  const std::int32_t startDepth = depth_;
  peakDepth_ = depth_;
  calc(ways);
  Worked w{start, static_cast<std::int32_t>(workedLeaves_.size()),
           static_cast<std::int32_t>(ways.size()), peakDepth_ - startDepth};
  for (const TqxWayPoint* p : ways) {
    workedLeaves_.push_back(p);
    workedEnds_.push_back(p->tokenIndex);
  }
  worked_.push_back(w);
  slot = &workedIndex_[static_cast<std::size_t>(production) * row + column];
  *slot = static_cast<std::int32_t>(worked_.size());
  peakDepth_ = std::max(savedPeak, peakDepth_);
}

template <class Dead>
void SQL92Parser::DropDead(TqxWayList& ways, Dead dead) {
  if (plain_)
    return;
  std::size_t keep = 0;
  for (TqxWayPoint* w : ways) {
    if ((!exactErrors_ || maxErrIndex > w->tokenIndex) && dead(NextKind(w->tokenIndex)))
      continue;
    ways[keep++] = w;
  }
  ways.resize(keep);
}

// ---- list union -----------------------------------------------------------------------

void SQL92Parser::Unite(TqxWayList& dest, const TqxWayList& src) {
  if (src.empty())
    return;
  if (plain_ || dest.empty()) {
    dest.insert(dest.end(), src.begin(), src.end());
    return;
  }
  if (dest.size() + src.size() <= 8) {
    for (TqxWayPoint* w : src) {
      bool twin = false;
      for (const TqxWayPoint* d : dest) {
        if (d->tokenIndex == w->tokenIndex) {
          twin = true;
          break;
        }
      }
      if (!twin)
        dest.push_back(w);
    }
    return;
  }
  const std::uint32_t epoch = NewEpoch();
  for (const TqxWayPoint* d : dest)
    Stamp(d->tokenIndex) = epoch;
  for (TqxWayPoint* w : src) {
    std::uint32_t& s = Stamp(w->tokenIndex);
    if (s != epoch) {
      s = epoch;
      dest.push_back(w);
    }
  }
}

void SQL92Parser::DropTwins(TqxWayList& ways) {
  if (plain_ || ways.size() < 2)
    return;
  ListRef copy = TakeList();
  copy->swap(ways);
  ways.push_back(copy->front());
  copy->erase(copy->begin());
  Unite(ways, *copy);
}

// ---- the four shapes -----------------------------------------------------------------

// Appends a child with `decision` of every parent to `dest`, except for a parent standing
// where a way of `dest` already stands (it would have the same future as that way, and
// come after it).
void SQL92Parser::AppendChildren(TqxWayList& dest, const TqxWayList& parents,
                                 std::int32_t decision) {
  if (plain_ || dest.empty()) {
    for (TqxWayPoint* p : parents)
      dest.push_back(NewWayPoint(p, decision));
    return;
  }
  if (parents.size() == 1 && dest.size() <= 8) {
    TqxWayPoint* p = parents.front();
    for (const TqxWayPoint* d : dest) {
      if (d->tokenIndex == p->tokenIndex)
        return;
    }
    dest.push_back(NewWayPoint(p, decision));
    return;
  }
  std::int32_t lowParent = parents.front()->tokenIndex, highParent = lowParent;
  for (const TqxWayPoint* p : parents) {
    lowParent = std::min(lowParent, p->tokenIndex);
    highParent = std::max(highParent, p->tokenIndex);
  }
  std::int32_t lowDest = dest.front()->tokenIndex, highDest = lowDest;
  for (const TqxWayPoint* d : dest) {
    lowDest = std::min(lowDest, d->tokenIndex);
    highDest = std::max(highDest, d->tokenIndex);
  }
  if (highParent < lowDest || lowParent > highDest) {
    for (TqxWayPoint* p : parents)
      dest.push_back(NewWayPoint(p, decision));
    return;
  }
  const std::uint32_t epoch = NewEpoch();
  for (const TqxWayPoint* d : dest)
    Stamp(d->tokenIndex) = epoch;
  for (TqxWayPoint* p : parents) {
    std::uint32_t& s = Stamp(p->tokenIndex);
    if (s != epoch) {
      s = epoch;
      dest.push_back(NewWayPoint(p, decision));
    }
  }
}

std::uint32_t SQL92Parser::NewEpoch() {
  if (stamp_.empty())
    stamp_.assign(static_cast<std::size_t>(TokenCount()) + 2, 0);
  if (++epoch_ == 0) {
    std::fill(stamp_.begin(), stamp_.end(), 0);
    epoch_ = 1;
  }
  return epoch_;
}

std::uint32_t& SQL92Parser::Stamp(std::int32_t tokenIndex) {
  const auto i = static_cast<std::size_t>(tokenIndex + 1);
  return stamp_[std::min(i, stamp_.size() - 1)];
}

template <class F>
void SQL92Parser::Opt(TqxWayList& ways, const TqxTokenSet& first, F&& part) {
  OptFollowed(ways, first, nullptr, std::forward<F>(part));
}

// With `follow`, a way that skips the part is kept only when its next token can start what
// follows the option: the first operation after the option would drop it by its
// look-ahead test anyway, so dropping it here changes no reading and no error position,
// and it keeps a list that took the part down to one way.
template <class F>
void SQL92Parser::OptFollowed(TqxWayList& ways, const TqxTokenSet& first, const TqxTokenSet* follow,
                              F&& part) {
  if (ways.empty())
    return;
  if (plain_)
    follow = nullptr;
  if (ways.size() == 1) {
    TqxWayPoint* w = ways.front();
    const std::int32_t kind = NextKind(w->tokenIndex);
    if (!first.Has(kind)) {
      if (follow != nullptr && !follow->Has(kind))
        ways.clear();
      else
        ways.front() = NewWayPoint(w, 0);
      return;
    }
    ways.front() = NewWayPoint(w, 1);
    part(ways);
    if (follow != nullptr && !follow->Has(kind))
      return;
    if (!plain_) {
      for (const TqxWayPoint* d : ways) {
        if (d->tokenIndex == w->tokenIndex)
          return;
      }
    }
    ways.push_back(NewWayPoint(w, 0));
    return;
  }
  ListRef skip = TakeList();
  std::size_t k = 0;
  for (TqxWayPoint* w : ways) {
    const std::int32_t kind = NextKind(w->tokenIndex);
    if (follow == nullptr || follow->Has(kind))
      skip->push_back(w);
    if (first.Has(kind))
      ways[k++] = NewWayPoint(w, 1);
  }
  ways.resize(k);
  if (k != 0)
    part(ways);
  // The ways that skip the part come after those that took it.
  AppendChildren(ways, *skip, 0);
}

template <class... A>
void SQL92Parser::Choice(TqxWayList& ways, A&&... alternatives) {
  if (ways.empty())
    return;
  if (ways.size() == 1) {
    // One way and one alternative that can start at its token: no work lists needed.
    const std::int32_t kind = NextKind(ways.front()->tokenIndex);
    std::int32_t matches = 0, which = -1, i = 0;
    ((alternatives.first.Has(kind) ? (++matches, which = i) : 0, ++i), ...);
    if (matches == 0) {
      ways.clear();
      return;
    }
    if (matches == 1) {
      ways.front() = NewWayPoint(ways.front(), which);
      i = 0;
      ((i++ == which ? (alternatives.calc(ways), 0) : 0), ...);
      return;
    }
  }
  ListRef start = TakeList();
  start->swap(ways);
  ListRef work = TakeList();
  std::int32_t decision = 0;
  auto one = [&](auto& alt) {
    work->clear();
    for (TqxWayPoint* w : *start) {
      if (alt.first.Has(NextKind(w->tokenIndex)))
        work->push_back(NewWayPoint(w, decision));
    }
    ++decision;
    if (!work->empty()) {
      alt.calc(*work);
      Unite(ways, *work);
    }
  };
  (one(alternatives), ...);
}

template <class F>
void SQL92Parser::Iter(TqxWayList& ways, const TqxTokenSet& first, F&& part) {
  if (ways.empty())
    return;
  if (ways.size() == 1 && !first.Has(NextKind(ways.front()->tokenIndex))) {
    ways.front() = NewWayPoint(ways.front(), 0);
    return;
  }
  if (!exactErrors_) {
    IterGreedy(ways, first, part);
    return;
  }
  ListRef result = TakeList();
  // The farthest token of the stopping ways: a way that went past it after one more
  // iteration cannot have a twin among them, which keeps long repetitions linear.
  std::int32_t farthest = -2;
  for (TqxWayPoint* w : ways) {
    result->push_back(NewWayPoint(w, 0));
    farthest = std::max(farthest, w->tokenIndex);
  }
  for (;;) {
    std::size_t k = 0;
    for (TqxWayPoint* w : ways) {
      if (first.Has(NextKind(w->tokenIndex)))
        ways[k++] = NewWayPoint(w, 1);
    }
    ways.resize(k);
    if (k == 0)
      break;
    part(ways);
    if (ways.empty())
      break;
    // Each way that did one more iteration may stop after it.
    bool beyond = true;
    for (const TqxWayPoint* w : ways)
      beyond = beyond && w->tokenIndex > farthest;
    if (plain_ || beyond) {
      for (TqxWayPoint* w : ways) {
        result->push_back(NewWayPoint(w, 0));
        farthest = std::max(farthest, w->tokenIndex);
      }
    } else {
      AppendChildren(*result, ways, 0);
      for (const TqxWayPoint* w : ways)
        farthest = std::max(farthest, w->tokenIndex);
    }
  }
  ways.swap(*result);
}

// No repetition of this grammar can be followed by a token that starts a further
// iteration (a list is never followed by its separator, a chain of operators never by
// its operator). So a way standing before such a token does not stop there: stopping
// would leave it with no future. While looking for the first reading only, the ways
// stop only where they cannot go on.
template <class F>
void SQL92Parser::IterGreedy(TqxWayList& ways, const TqxTokenSet& first, F&& part) {
  while (ways.size() == 1) {
    TqxWayPoint* w = ways.front();
    if (!first.Has(NextKind(w->tokenIndex))) {
      ways.front() = NewWayPoint(w, 0);
      return;
    }
    ways.front() = NewWayPoint(w, 1);
    part(ways);
  }
  if (ways.empty())
    return;
  ListRef result = TakeList();
  ListRef stopping = TakeList();
  for (;;) {
    stopping->clear();
    std::size_t k = 0;
    for (TqxWayPoint* w : ways) {
      if (first.Has(NextKind(w->tokenIndex)))
        ways[k++] = NewWayPoint(w, 1);
      else
        stopping->push_back(w);
    }
    ways.resize(k);
    AppendChildren(*result, *stopping, 0);
    if (k == 0)
      break;
    part(ways);
  }
  ways.swap(*result);
}

void SQL92Parser::TokenChoice(TqxWayList& ways, const std::int32_t* kinds, std::int32_t count) {
  if (ways.empty())
    return;
  auto alternative = [&](const TqxWayPoint* w) {
    const std::int32_t kind = NextKind(w->tokenIndex);
    for (std::int32_t i = 0; i < count; ++i) {
      if (kinds[i] == kind)
        return i;
    }
    return std::int32_t{-1};
  };
  if (ways.size() == 1) {
    const std::int32_t i = alternative(ways.front());
    if (i < 0) {
      ways.clear();
      return;
    }
    TqxWayPoint* w = NewWayPoint(ways.front(), i);
    ++w->tokenIndex;
    ways.front() = w;
    return;
  }
  // Ways taking an earlier alternative come first; within one alternative the list
  // order stays.
  ListRef start = TakeList();
  start->swap(ways);
  for (std::int32_t i = 0; i < count; ++i) {
    for (TqxWayPoint* w : *start) {
      if (NextKind(w->tokenIndex) == kinds[i]) {
        TqxWayPoint* c = NewWayPoint(w, i);
        ++c->tokenIndex;
        ways.push_back(c);
      }
    }
  }
  DropTwins(ways);
}

void SQL92Parser::TokenRangeChoice(TqxWayList& ways, std::int32_t firstKind,
                                   std::int32_t lastKind) {
  if (ways.empty())
    return;
  ListRef start = TakeList();
  start->swap(ways);
  // Stable order by alternative: a way's alternative is its token's distance from the
  // first kind of the range.
  for (TqxWayPoint* w : *start) {
    const std::int32_t kind = NextKind(w->tokenIndex);
    if (kind >= firstKind && kind <= lastKind) {
      TqxWayPoint* c = NewWayPoint(w, kind - firstKind);
      ++c->tokenIndex;
      ways.push_back(c);
    }
  }
  std::stable_sort(ways.begin(), ways.end(), [](const TqxWayPoint* a, const TqxWayPoint* b) {
    return a->decision < b->decision;
  });
  DropTwins(ways);
}

void SQL92Parser::OptToken(TqxWayList& ways, std::int32_t kind) {
  Opt(ways, TqxTokenSet{kind}, [&](TqxWayList& w) { Expect(w, kind); });
}

// [ "as" ] before alias1, whose choice drops a way standing before anything but an alias.
void SQL92Parser::OptAs(TqxWayList& ways) {
  OptFollowed(ways, TqxTokenSet{tkKwAs}, &kAlias, [&](TqxWayList& w) { Expect(w, tkKwAs); });
}

void SQL92Parser::ExpectSize(TqxWayList& ways) {
  std::size_t keep = 0;
  for (TqxWayPoint* w : ways) {
    ++w->tokenIndex;
    bool ok = KindAt(w->tokenIndex) == tkInteger;
    if (ok) {
      const std::string_view text = scanner->GetToken(w->tokenIndex).val;
      std::int32_t value = 0;
      auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
      ok = ec == std::errc() && end == text.data() + text.size();
    }
    if (ok) {
      ways[keep++] = w;
    } else {
      RaiseMaxErr(w->tokenIndex);
      w->RemoveFromParent();
    }
  }
  ways.resize(keep);
}

// ---- entries ------------------------------------------------------------------------

// The first pass drops every way that can no longer be completed, which may lower the
// error index below the farthest point a dying way reaches. When no way completes, the
// text is worked out again keeping each dying way long enough to raise the error index
// where it fails, so the error is reported at the farthest token.
template <class F>
void SQL92Parser::Entry(TqxWayList& ways, DirectEntry entry, F&& calc) {
  TakeSpares();
  if (plain_ || ways.empty()) {
    calc(ways);
    return;
  }
  if (ways.size() == 1 && !directMissed_ && ReadDirect(ways, entry))
    return;
  ListRef start = TakeList();
  *start = ways;
  const std::int32_t startErr = maxErrIndex;
  exactErrors_ = false;
  calc(ways);
  exactErrors_ = true;
  for (const TqxWayPoint* w : ways) {
    if (NextKind(w->tokenIndex) == tkEof)
      return;
  }
  ways = *start;
  maxErrIndex = startErr;
  ForgetWorked();
  calc(ways);
}

void SQL92Parser::ForgetWorked() {
  if (!workedIndex_.empty())
    std::memset(workedIndex_.data(), 0, workedIndex_.size() * sizeof(std::int32_t));
  worked_.clear();
  workedLeaves_.clear();
  workedEnds_.clear();
}

void SQL92Parser::ParseSelectWayCalc(TqxWayList& ways) {
  Entry(ways, DirectEntry::kSelect, [&](TqxWayList& w) { selectStatementWayCalc(w); });
}
void SQL92Parser::ParseObjectNameWayCalc(TqxWayList& ways) {
  Entry(ways, DirectEntry::kObject, [&](TqxWayList& w) { dbObjectWayCalc(w); });
}
void SQL92Parser::ParseExpressionWayCalc(TqxWayList& ways) {
  Entry(ways, DirectEntry::kExpression, [&](TqxWayList& w) { expressionWayCalc(w); });
}
void SQL92Parser::ParseSelectItemWayCalc(TqxWayList& ways) {
  Entry(ways, DirectEntry::kItem, [&](TqxWayList& w) { selectItemWayCalc(w); });
}
void SQL92Parser::ParseLogicalExpressionWayCalc(TqxWayList& ways) {
  Entry(ways, DirectEntry::kLogical, [&](TqxWayList& w) { expressionLogicalWayCalc(w); });
}

void SQL92Parser::SQL92WayCalc(TqxWayList& ways) {
  selectStatementWayCalc(ways);
  OptToken(ways, tkSemicolon);
}

// ---- statement level -------------------------------------------------------------------

// selectStatement: queryExpression [ orderByClause ]
void SQL92Parser::selectStatementWayCalc(TqxWayList& ways) {
  queryExpressionWayCalc(ways);
  Opt(ways, kOrderByClause, [&](TqxWayList& w) { orderByClauseWayCalc(w); });
}

// subSelectStatement: queryExpression [ orderByClause ]
void SQL92Parser::subSelectStatementWayCalc(TqxWayList& ways) {
  queryExpressionWayCalc(ways);
  Opt(ways, kOrderByClause, [&](TqxWayList& w) { orderByClauseWayCalc(w); });
}

// queryExpression: subQueryExpression
//                  { ( "union" | "except" | "intersect" ) [ "all" ] subQueryExpression }
void SQL92Parser::queryExpressionWayCalc(TqxWayList& ways) {
  Reuse(kWorkedQueryExpression, ways, [&](TqxWayList& ways) {
    Nest nest(*this, ways);
    subQueryExpressionWayCalc(ways);
    Iter(ways, kSetOperator, [&](TqxWayList& w) {
      TokenChoice(w, kSetOperatorKinds, 3);
      OptToken(w, tkKwAll);
      subQueryExpressionWayCalc(w);
    });
  });
}

// subQueryExpression: selectBlock | "(" queryExpression ")"
void SQL92Parser::subQueryExpressionWayCalc(TqxWayList& ways) {
  Choice(ways, Alt(kSelectBlock, [&](TqxWayList& w) { selectBlockWayCalc(w); }),
         Alt(TqxTokenSet{tkLParen}, [&](TqxWayList& w) {
           Expect(w, tkLParen);
           queryExpressionWayCalc(w);
           Expect(w, tkRParen);
         }));
}

// selectBlock: selectClause [ fromClause ] [ "where" expressionLogical ]
//                     [ groupByList ] [ "having" expressionLogical ]
void SQL92Parser::selectBlockWayCalc(TqxWayList& ways) {
  // After each clause, the ways standing where the block cannot go on are dropped, so a
  // list that read the clause stays one way.
  selectClauseWayCalc(ways);
  Opt(ways, kFromClause, [&](TqxWayList& w) { fromClauseWayCalc(w); });
  DropDead(ways, [](std::int32_t kind) { return !kFollowFromClause.Has(kind); });
  Opt(ways, TqxTokenSet{tkKwWhere}, [&](TqxWayList& w) {
    Expect(w, tkKwWhere);
    expressionLogicalWayCalc(w);
  });
  DropDead(ways, [](std::int32_t kind) { return !kFollowWhere.Has(kind); });
  Opt(ways, kGroupByList, [&](TqxWayList& w) { groupByListWayCalc(w); });
  DropDead(ways, [](std::int32_t kind) { return !kFollowGroupBy.Has(kind); });
  Opt(ways, TqxTokenSet{tkKwHaving}, [&](TqxWayList& w) {
    Expect(w, tkKwHaving);
    expressionLogicalWayCalc(w);
  });
  DropDead(ways, [](std::int32_t kind) { return !kFollowSelectBlock.Has(kind); });
}

// selectClause: "select" [ "all" | "distinct" ] selectList
void SQL92Parser::selectClauseWayCalc(TqxWayList& ways) {
  Expect(ways, tkKwSelect);
  Opt(ways, kSelectMode, [&](TqxWayList& w) { TokenChoice(w, kSelectModeKinds, 2); });
  selectListWayCalc(ways);
}

// selectList: [ selectItem { "," selectItem } ]
void SQL92Parser::selectListWayCalc(TqxWayList& ways) {
  Opt(ways, kSelectItem, [&](TqxWayList& w) {
    selectItemWayCalc(w);
    Iter(w, TqxTokenSet{tkComma}, [&](TqxWayList& x) {
      Expect(x, tkComma);
      selectItemWayCalc(x);
    });
  });
  // The way that read no item, and those that stopped before a further item, stand where
  // no select list ends.
  DropDead(ways, [](std::int32_t kind) { return !kFollowSelectList.Has(kind); });
}

// selectItem: "*" | alias2 "=" expression | dbObject ".*" | expression [ [ "as" ] alias1 ]
void SQL92Parser::selectItemWayCalc(TqxWayList& ways) {
  auto expressionItem = [&](TqxWayList& w) {
    expressionWayCalc(w);
    Opt(w, kAsAlias, [&](TqxWayList& x) {
      OptAs(x);
      alias1WayCalc(x);
    });
  };
  // While looking for the first reading, an item that is neither "*", nor followed by "="
  // after its first token, nor a name chain ending in ".*" can only be an expression.
  if (!exactErrors_ && ways.size() == 1) {
    const std::int32_t t = ways.front()->tokenIndex;
    const std::int32_t kind = NextKind(t);
    if (kSelectItemExpression.Has(kind) && NextKind(t + 1) != tkEqual &&
        NextKind(NameRunEnd(t)) != tkDotStar) {
      ways.front() = NewWayPoint(ways.front(), 3);
      expressionItem(ways);
      DropDead(ways, [](std::int32_t k) { return !kFollowSelectItem.Has(k); });
      return;
    }
  }
  Choice(ways, Alt(kSelectItemStar, [&](TqxWayList& w) { Expect(w, tkStar); }),
         Alt(kSelectItemAliasEquals,
             [&](TqxWayList& w) {
               // The alias is one token: a way without "=" after it dies at that point.
               if (!plain_) {
                 std::size_t keep = 0;
                 for (TqxWayPoint* x : w) {
                   if (NextKind(x->tokenIndex + 1) == tkEqual)
                     w[keep++] = x;
                   else
                     RaiseMaxErr(x->tokenIndex + 2);
                 }
                 w.resize(keep);
               }
               alias2WayCalc(w);
               Expect(w, tkEqual);
               expressionWayCalc(w);
             }),
         Alt(kSelectItemAllColumns,
             [&](TqxWayList& w) {
               dbObjectBeforeWayCalc(w, tkDotStar);
               Expect(w, tkDotStar);
             }),
         Alt(kSelectItemExpression, expressionItem));
  DropDead(ways, [](std::int32_t kind) { return !kFollowSelectItem.Has(kind); });
}

// alias1, alias2: identifier | string literal | keywordAsIdentifier
void SQL92Parser::alias1WayCalc(TqxWayList& ways) {
  Choice(ways, Alt(kIdentifier, [&](TqxWayList& w) { identifierWayCalc(w); }),
         Alt(kStringLiteral, [&](TqxWayList& w) { stringLiteralWayCalc(w); }),
         Alt(kKeywordAsIdentifier, [&](TqxWayList& w) { keywordAsIdentifierWayCalc(w); }));
}

void SQL92Parser::alias2WayCalc(TqxWayList& ways) {
  alias1WayCalc(ways);
}

// orderByClause: "order" "by" orderByItem { "," orderByItem }
void SQL92Parser::orderByClauseWayCalc(TqxWayList& ways) {
  Expect(ways, tkKwOrder);
  Expect(ways, tkKwBy);
  orderByItemWayCalc(ways);
  Iter(ways, TqxTokenSet{tkComma}, [&](TqxWayList& w) {
    Expect(w, tkComma);
    orderByItemWayCalc(w);
  });
}

// orderByItem: expression [ "asc" | "desc" ]
void SQL92Parser::orderByItemWayCalc(TqxWayList& ways) {
  expressionWayCalc(ways);
  Opt(ways, kOrderDirection, [&](TqxWayList& w) { TokenChoice(w, kOrderDirectionKinds, 2); });
}

// groupByList: "group" "by" expression { "," expression }
void SQL92Parser::groupByListWayCalc(TqxWayList& ways) {
  Expect(ways, tkKwGroup);
  Expect(ways, tkKwBy);
  expressionWayCalc(ways);
  Iter(ways, TqxTokenSet{tkComma}, [&](TqxWayList& w) {
    Expect(w, tkComma);
    expressionWayCalc(w);
  });
}

// fromClause: "from" [ tableSource ]
void SQL92Parser::fromClauseWayCalc(TqxWayList& ways) {
  Expect(ways, tkKwFrom);
  Opt(ways, kTableSource, [&](TqxWayList& w) { tableSourceWayCalc(w); });
}

// tableSource: subTableSource { joinedTable }
void SQL92Parser::tableSourceWayCalc(TqxWayList& ways) {
  Reuse(kWorkedTableSource, ways, [&](TqxWayList& ways) {
    Nest nest(*this, ways);
    subTableSourceWayCalc(ways);
    Iter(ways, kJoinedTable, [&](TqxWayList& w) { joinedTableWayCalc(w); });
  });
}

// subTableSource: "(" ( tableSource ")"
//                     | subSelectStatement ")" [ "as" ] alias1
//                       [ "(" alias1 { "," alias1 } ")" ] )
//               | SQLfunction [ [ "as" ] alias1 ]
//               | dbObject [ [ "as" ] alias1 ]
void SQL92Parser::subTableSourceWayCalc(TqxWayList& ways) {
  auto optAlias = [&](TqxWayList& w) {
    Opt(w, kAsAlias, [&](TqxWayList& x) {
      OptAs(x);
      alias1WayCalc(x);
    });
  };
  // While looking for the first reading, a name chain not followed by "(" can only be a
  // database object (a function needs the bracket).
  if (!exactErrors_ && ways.size() == 1) {
    const std::int32_t t = ways.front()->tokenIndex;
    if (kDbObject.Has(NextKind(t)) && NextKind(NameRunEnd(t)) != tkLParen) {
      ways.front() = NewWayPoint(ways.front(), 2);
      dbObjectWayCalc(ways);
      optAlias(ways);
      DropDead(ways, [](std::int32_t kind) { return !kFollowSubTableSource.Has(kind); });
      return;
    }
  }
  Choice(ways,
         Alt(kSubTableSourceBrackets,
             [&](TqxWayList& w) {
               Expect(w, tkLParen);
               Choice(w,
                      Alt(kTableSource,
                          [&](TqxWayList& x) {
                            tableSourceWayCalc(x);
                            Expect(x, tkRParen);
                          }),
                      Alt(kSubSelectStatement, [&](TqxWayList& x) {
                        subSelectStatementWayCalc(x);
                        Expect(x, tkRParen);
                        OptAs(x);
                        alias1WayCalc(x);
                        Opt(x, TqxTokenSet{tkLParen}, [&](TqxWayList& y) {
                          Expect(y, tkLParen);
                          alias1WayCalc(y);
                          Iter(y, TqxTokenSet{tkComma}, [&](TqxWayList& z) {
                            Expect(z, tkComma);
                            alias1WayCalc(z);
                          });
                          Expect(y, tkRParen);
                        });
                      }));
             }),
         Alt(kSQLfunction,
             [&](TqxWayList& w) {
               SQLfunctionWayCalc(w);
               optAlias(w);
             }),
         Alt(kDbObject, [&](TqxWayList& w) {
           dbObjectWayCalc(w);
           optAlias(w);
         }));
  // The ways that skipped an alias stand before it, where no table source ends.
  DropDead(ways, [](std::int32_t kind) { return !kFollowSubTableSource.Has(kind); });
}

// joinedTable: "," subTableSource
//            | "cross" "join" subTableSource
//            | [ "inner" | ( "left" | "right" | "full" ) [ "outer" ] ] "join"
//              ( subTableSource | tableSourceInner ) "on" expressionLogical
void SQL92Parser::joinedTableWayCalc(TqxWayList& ways) {
  Choice(ways,
         Alt(TqxTokenSet{tkComma},
             [&](TqxWayList& w) {
               Expect(w, tkComma);
               subTableSourceWayCalc(w);
             }),
         Alt(TqxTokenSet{tkKwCross},
             [&](TqxWayList& w) {
               Expect(w, tkKwCross);
               Expect(w, tkKwJoin);
               subTableSourceWayCalc(w);
             }),
         Alt(kQualifiedJoin, [&](TqxWayList& w) {
           Opt(w, kJoinKindWord, [&](TqxWayList& x) {
             Choice(x, Alt(TqxTokenSet{tkKwInner}, [&](TqxWayList& y) { Expect(y, tkKwInner); }),
                    Alt(kOuterJoinWord, [&](TqxWayList& y) {
                      TokenChoice(y, kOuterJoinKinds, 3);
                      OptToken(y, tkKwOuter);
                    }));
           });
           Expect(w, tkKwJoin);
           Choice(w, Alt(kSubTableSource, [&](TqxWayList& x) { subTableSourceWayCalc(x); }),
                  Alt(kTableSourceInner, [&](TqxWayList& x) { tableSourceInnerWayCalc(x); }));
           Expect(w, tkKwOn);
           expressionLogicalWayCalc(w);
         }));
}

// tableSourceInner: subTableSource joinedTable { joinedTable }
void SQL92Parser::tableSourceInnerWayCalc(TqxWayList& ways) {
  Reuse(kWorkedTableSourceInner, ways, [&](TqxWayList& ways) {
    Nest nest(*this, ways);
    subTableSourceWayCalc(ways);
    joinedTableWayCalc(ways);
    Iter(ways, kJoinedTable, [&](TqxWayList& w) { joinedTableWayCalc(w); });
  });
}

// SQLfunction: dbObject "(" [ expression { "," expression } ] ")"
void SQL92Parser::SQLfunctionWayCalc(TqxWayList& ways) {
  dbObjectBeforeWayCalc(ways, tkLParen);
  Expect(ways, tkLParen);
  Opt(ways, kExpression, [&](TqxWayList& w) { expressionsListWayCalc(w); });
  Expect(ways, tkRParen);
}

// Qualifying parts: [ ... [ [ part ] "." ] [ part ] "." ], `levels` options deep.
void SQL92Parser::QualifiersWayCalc(TqxWayList& ways, int levels) {
  if (levels == 0)
    return;
  Opt(ways, kQualifier, [&](TqxWayList& w) {
    QualifiersWayCalc(w, levels - 1);
    Opt(w, kNamePart, [&](TqxWayList& x) { namePartWayCalc(x); });
    Expect(w, tkDot);
  });
}

// part, name: identifier | keywordAsIdentifier
void SQL92Parser::namePartWayCalc(TqxWayList& ways) {
  Choice(ways, Alt(kIdentifier, [&](TqxWayList& w) { identifierWayCalc(w); }),
         Alt(kKeywordAsIdentifier, [&](TqxWayList& w) { keywordAsIdentifierWayCalc(w); }));
}

// dbObject: [ [ [ part "." ] part "." ] part "." ] name
// A dbObject that must be followed by `next`: the readings not followed by it would die
// at the caller's Expect of it, so they raise the error index there and get no way
// points.
void SQL92Parser::dbObjectBeforeWayCalc(TqxWayList& ways, std::int32_t next) {
  if (plain_)
    dbObjectWayCalc(ways);
  else
    NameWayCalc(ways, kObjectQualifiers, next);
}

void SQL92Parser::dbObjectWayCalc(TqxWayList& ways) {
  NameWayCalc(ways, kObjectQualifiers, -1, &kCannotFollowName);
}

namespace {

// Order keys of name readings. A part or name is keyed by its namePart alternative and
// the alternative within it; an empty part comes after every written one, and a level
// that skips its option after every level that takes it.
constexpr std::int32_t kEmptyPartKey = 200;
constexpr std::int32_t kSkipKey = 300;

std::int32_t PartKey(std::int32_t kind) {
  if (kind == tkIdentifier)
    return 0;
  if (kind == tkQuotedIdentifier)
    return 1;
  return 64 + (kind - kFirstNonReservedKeyword);
}

struct NameReading {
  TqxWayPoint* start;
  std::int32_t groups;
  std::int32_t groupStart[kColumnQualifiers + 1];  // token index before each group
  std::int32_t end;
  std::int32_t key[kColumnQualifiers + 2];
  std::int32_t keyLength;
};

}  // namespace

// Q(l) = [ Q(l-1) [ part ] "." ] (an option), the name follows Q(levels). From a way at
// token p, Q(l) leads to the tokens after j = 0..l groups as far as the text has such
// groups ("part ." or "."). A reading with j groups takes the options of the outer j
// levels and skips the next one; it survives when a name follows. Expected points that
// are missing raise the error index exactly where the options would: at a part not
// followed by a point, and at any other token where a group could start.
void SQL92Parser::NameWayCalc(TqxWayList& ways, int levels, std::int32_t next,
                              const TqxTokenSet* dead) {
  if (exactErrors_)
    dead = nullptr;
  if (dead != nullptr && dead->Has(tkDot) && next < 0 && ways.size() == 1 &&
      NameChainWayCalc(ways, levels, *dead))
    return;
  if (ways.empty())
    return;
  if (plain_) {
    ListRef starts = TakeList();
    *starts = ways;
    QualifiersWayCalc(ways, levels);
    namePartWayCalc(ways);
    DropLongNames(ways, *starts, levels + 1);
    return;
  }
  // One way gives at most levels + 1 readings; more ways go to the heap.
  NameReading readings[kColumnQualifiers + 1];
  std::size_t readingCount = 0;
  std::vector<NameReading> many;
  const bool oneWay = ways.size() == 1;
  auto slot = [&]() -> NameReading& {
    if (oneWay)
      return readings[readingCount++];
    return many.emplace_back();
  };
  for (TqxWayPoint* w : ways) {
    const std::int32_t p = w->tokenIndex;
    std::int32_t positions[kColumnQualifiers + 1];
    std::int32_t groupKeys[kColumnQualifiers];
    std::int32_t matched = 0;
    positions[0] = p;
    const bool qualifies = kQualifier.Has(NextKind(p));
    if (qualifies) {
      for (std::int32_t j = 0; j < levels; ++j) {
        const std::int32_t s = positions[j];
        const std::int32_t k1 = NextKind(s);
        // The missing points of Q(levels - 1): the group after s, tried as written part
        // and as empty part.
        if (kNamePart.Has(k1))
          RaiseMaxErr(NextKind(s + 1) != tkDot ? s + 2 : s + 1);
        else if (k1 != tkDot)
          RaiseMaxErr(s + 1);
        if (kNamePart.Has(k1) && NextKind(s + 1) == tkDot) {
          groupKeys[j] = PartKey(k1);
          positions[j + 1] = s + 2;
        } else if (k1 == tkDot) {
          groupKeys[j] = kEmptyPartKey;
          positions[j + 1] = s + 1;
        } else {
          break;
        }
        ++matched;
      }
    }
    for (std::int32_t j = 0; j <= matched; ++j) {
      const std::int32_t s = positions[j];
      const std::int32_t nameKind = NextKind(s);
      if (!kNamePart.Has(nameKind))
        continue;
      if (NameParts(p, s + 1) > levels + 1) {
        RaiseMaxErr(s + 1);
        continue;
      }
      if (next >= 0 && NextKind(s + 1) != next) {
        RaiseMaxErr(s + 2);
        continue;
      }
      if (dead != nullptr && dead->Has(NextKind(s + 1)))
        continue;
      NameReading& r = slot();
      r.start = w;
      r.groups = j;
      for (std::int32_t g = 0; g <= j; ++g)
        r.groupStart[g] = positions[g];
      r.end = s + 1;
      std::int32_t n = 0;
      r.key[n++] = PartKey(nameKind);
      for (std::int32_t g = j - 1; g >= 0; --g)
        r.key[n++] = groupKeys[g];
      if (j < levels)
        r.key[n++] = kSkipKey;
      r.keyLength = n;
    }
  }
  auto before = [](const NameReading& a, const NameReading& b) {
    return std::lexicographical_compare(a.key, a.key + a.keyLength, b.key, b.key + b.keyLength);
  };
  NameReading* begin = readings;
  NameReading* end = readings + readingCount;
  if (!many.empty()) {
    std::stable_sort(many.begin(), many.end(), before);
    begin = many.data();
    end = many.data() + many.size();
  } else {
    // At most levels + 1 readings: a stable insertion sort.
    for (NameReading* i = begin + 1; i < end; ++i) {
      for (NameReading* j = i; j > begin && before(*j, *(j - 1)); --j)
        std::swap(*j, *(j - 1));
    }
  }
  ways.clear();
  for (NameReading* r = begin; r != end; ++r) {
    // Without twins: a reading ending where an earlier one ends has its future.
    bool twin = false;
    for (const TqxWayPoint* w : ways) {
      if (w->tokenIndex == r->end) {
        twin = true;
        break;
      }
    }
    if (twin)
      continue;
    TqxWayPoint* w = r->start;
    for (std::int32_t l = 0; l < r->groups; ++l)
      w = NewWayPoint(w, 1);
    if (r->groups < levels)
      w = NewWayPoint(w, 0);
    for (std::int32_t g = 0; g < r->groups; ++g) {
      const std::int32_t s = r->groupStart[g];
      const std::int32_t kind = NextKind(s);
      if (kind == tkDot) {
        w = NewWayPoint(w, 0);
      } else {
        w = NewWayPoint(w, 1);
        const bool keyword = !kIdentifier.Has(kind);
        w = NewWayPoint(w, keyword ? 1 : 0);
        w = NewWayPoint(
            w, keyword ? kind - kFirstNonReservedKeyword : (kind == tkQuotedIdentifier ? 1 : 0));
        ++w->tokenIndex;
      }
      ++w->tokenIndex;  // "."
    }
    const std::int32_t kind = NextKind(w->tokenIndex);
    const bool keyword = !kIdentifier.Has(kind);
    w = NewWayPoint(w, keyword ? 1 : 0);
    w = NewWayPoint(
        w, keyword ? kind - kFirstNonReservedKeyword : (kind == tkQuotedIdentifier ? 1 : 0));
    ++w->tokenIndex;
    ways.push_back(w);
  }
}

// The index of the last token of the run of name parts and points after `tokenIndex`.
std::int32_t SQL92Parser::NameRunEnd(std::int32_t tokenIndex) const {
  while (kQualifier.Has(NextKind(tokenIndex)))
    ++tokenIndex;
  return tokenIndex;
}

// A plain chain part.part...part (each token one part) read by one way while looking for the
// first reading: every shorter reading stands before a "." and is dead, so the one reading
// left is the whole chain, recorded with the same decisions as above. False for anything
// else (empty parts, bracketed multi-part tokens), which the general reading handles.
bool SQL92Parser::NameChainWayCalc(TqxWayList& ways, int levels, const TqxTokenSet& dead) {
  TqxWayPoint* w = ways.front();
  const std::int32_t first = w->tokenIndex + 1;
  std::int32_t last = first;
  for (;;) {
    if (!kNamePart.Has(KindAt(last)) ||
        (KindAt(last) == tkQuotedIdentifier && NameParts(last - 1, last) != 1))
      return false;
    if (KindAt(last + 1) != tkDot)
      break;
    last += 2;
  }
  const std::int32_t groups = (last - first) / 2;
  if (groups > levels || dead.Has(KindAt(last + 1))) {
    ways.clear();
    return true;
  }
  for (std::int32_t l = 0; l < groups; ++l)
    w = NewWayPoint(w, 1);
  if (groups < levels)
    w = NewWayPoint(w, 0);
  for (std::int32_t at = first; at <= last; at += 2) {
    const std::int32_t kind = KindAt(at);
    if (at != last)
      w = NewWayPoint(w, 1);  // a written qualifying part
    const bool keyword = !kIdentifier.Has(kind);
    w = NewWayPoint(w, keyword ? 1 : 0);
    w = NewWayPoint(
        w, keyword ? kind - kFirstNonReservedKeyword : (kind == tkQuotedIdentifier ? 1 : 0));
    w->tokenIndex = at == last ? at : at + 1;  // the part, and its "."
  }
  ways.front() = w;
  return true;
}

// identifier: identifier token | quoted identifier token
void SQL92Parser::identifierWayCalc(TqxWayList& ways) {
  TokenChoice(ways, kIdentifierKinds, 2);
}

// ---- logical expressions -------------------------------------------------------------

// expressionLogical: expressionAnd { "or" expressionAnd }
void SQL92Parser::expressionLogicalWayCalc(TqxWayList& ways) {
  Reuse(kWorkedExpressionLogical, ways, [&](TqxWayList& ways) {
    Nest nest(*this, ways);
    expressionAndWayCalc(ways);
    Iter(ways, TqxTokenSet{tkKwOr}, [&](TqxWayList& w) {
      Expect(w, tkKwOr);
      expressionAndWayCalc(w);
    });
  });
}

// expressionAnd: expressionNot { "and" expressionNot }
void SQL92Parser::expressionAndWayCalc(TqxWayList& ways) {
  expressionNotWayCalc(ways);
  Iter(ways, TqxTokenSet{tkKwAnd}, [&](TqxWayList& w) {
    Expect(w, tkKwAnd);
    expressionNotWayCalc(w);
  });
  // The ways that stopped before a further "and" (no condition is followed by one).
  DropDead(ways, [](std::int32_t kind) { return kCannotFollowCondition.Has(kind); });
}

// expressionNot: "not" expressionNot | expressionLogicalTerm
void SQL92Parser::expressionNotWayCalc(TqxWayList& ways) {
  Choice(ways,
         Alt(TqxTokenSet{tkKwNot},
             [&](TqxWayList& w) {
               Nest nest(*this, w);
               Expect(w, tkKwNot);
               expressionNotWayCalc(w);
             }),
         Alt(kExpressionLogicalTerm, [&](TqxWayList& w) { expressionLogicalTermWayCalc(w); }));
}

// expressionLogicalTerm: "(" expressionLogical ")" | [ expression ] predicate
//                      | "exists" "(" subSelectStatement ")"
void SQL92Parser::expressionLogicalTermWayCalc(TqxWayList& ways) {
  Choice(ways,
         Alt(kLogicalBrackets,
             [&](TqxWayList& w) {
               Expect(w, tkLParen);
               expressionLogicalWayCalc(w);
               Expect(w, tkRParen);
             }),
         Alt(kLogicalPredicate,
             [&](TqxWayList& w) {
               OptFollowed(w, kExpression, &kPredicate,
                           [&](TqxWayList& x) { expressionWayCalc(x); });
               predicateWayCalc(w);
             }),
         Alt(kLogicalExists, [&](TqxWayList& w) {
           Expect(w, tkKwExists);
           Expect(w, tkLParen);
           subSelectStatementWayCalc(w);
           Expect(w, tkRParen);
         }));
}

// predicate: comparisonOperator ( expression | expressionCompWithSet )
//          | "is" [ "not" ] "null"
//          | [ "not" ] "like" expression [ "escape" expression ]
//          | [ "not" ] "between" expression "and" expression
//          | [ "not" ] "in" "(" ( subSelectStatement | expressionsList ) ")"
void SQL92Parser::predicateWayCalc(TqxWayList& ways) {
  Choice(ways,
         Alt(kPredicateComparison,
             [&](TqxWayList& w) {
               comparisonOperatorWayCalc(w);
               Choice(w, Alt(kExpression, [&](TqxWayList& x) { expressionWayCalc(x); }),
                      Alt(kExpressionCompWithSet,
                          [&](TqxWayList& x) { expressionCompWithSetWayCalc(x); }));
             }),
         Alt(kPredicateIs,
             [&](TqxWayList& w) {
               Expect(w, tkKwIs);
               OptToken(w, tkKwNot);
               Expect(w, tkKwNull);
             }),
         Alt(kPredicateLike,
             [&](TqxWayList& w) {
               OptToken(w, tkKwNot);
               Expect(w, tkKwLike);
               expressionWayCalc(w);
               Opt(w, TqxTokenSet{tkKwEscape}, [&](TqxWayList& x) {
                 Expect(x, tkKwEscape);
                 expressionWayCalc(x);
               });
             }),
         Alt(kPredicateBetween,
             [&](TqxWayList& w) {
               OptToken(w, tkKwNot);
               Expect(w, tkKwBetween);
               expressionWayCalc(w);
               Expect(w, tkKwAnd);
               expressionWayCalc(w);
             }),
         Alt(kPredicateIn, [&](TqxWayList& w) {
           OptToken(w, tkKwNot);
           Expect(w, tkKwIn);
           Expect(w, tkLParen);
           Choice(w, Alt(kSubSelectStatement, [&](TqxWayList& x) { subSelectStatementWayCalc(x); }),
                  Alt(kExpressionsList, [&](TqxWayList& x) { expressionsListWayCalc(x); }));
           Expect(w, tkRParen);
         }));
}

// comparisonOperator: "=" | "<>" | "!=" | "<=" | "!>" | "<" | ">=" | "!<" | ">"
void SQL92Parser::comparisonOperatorWayCalc(TqxWayList& ways) {
  TokenChoice(ways, kComparisonKinds, 9);
}

// expressionCompWithSet: ( "all" | "some" | "any" ) "(" subSelectStatement ")"
void SQL92Parser::expressionCompWithSetWayCalc(TqxWayList& ways) {
  TokenChoice(ways, kSetQuantifierKinds, 3);
  Expect(ways, tkLParen);
  subSelectStatementWayCalc(ways);
  Expect(ways, tkRParen);
}

// expressionsList: expression { "," expression }
void SQL92Parser::expressionsListWayCalc(TqxWayList& ways) {
  expressionWayCalc(ways);
  Iter(ways, TqxTokenSet{tkComma}, [&](TqxWayList& w) {
    Expect(w, tkComma);
    expressionWayCalc(w);
  });
}

// ---- value expressions ---------------------------------------------------------------

// expression: expressionAdd
void SQL92Parser::expressionWayCalc(TqxWayList& ways) {
  Reuse(kWorkedExpression, ways, [&](TqxWayList& ways) {
    Nest nest(*this, ways);
    // While looking for the first reading, a constant or column name read directly is
    // followed here by the rest of the factor and of the sum, as expressionAdd would.
    if (!exactErrors_ && ways.size() == 1 && SimpleOperandWayCalc(ways)) {
      if (ways.empty())
        return;
      const std::int32_t next = NextKind(ways.front()->tokenIndex);
      if (!kFactorOperator.Has(next) && !kAddOperator.Has(next)) {
        if (kCannotFollowExpression.Has(next))
          ways.clear();
        else
          ways.front() = NewWayPoint(NewWayPoint(ways.front(), 0), 0);  // no "*", no "+"
        return;
      }
      FactorRestWayCalc(ways);
      AddRestWayCalc(ways);
    } else {
      expressionAddWayCalc(ways);
    }
    DropDead(ways, [](std::int32_t kind) { return kCannotFollowExpression.Has(kind); });
  });
}

// expressionAdd: expressionFactor { ( "+" | "-" ) expressionFactor }
// Every further operand nests the tree one level deeper (the operators associate to
// the left), so it counts as a nesting level.
void SQL92Parser::expressionAddWayCalc(TqxWayList& ways) {
  expressionFactorWayCalc(ways);
  AddRestWayCalc(ways);
}

void SQL92Parser::AddRestWayCalc(TqxWayList& ways) {
  const std::int32_t depth = depth_;
  Iter(ways, kAddOperator, [&](TqxWayList& w) {
    Nest deeper(*this, w);
    ++depth_;
    TokenChoice(w, kAddKinds, 2);
    expressionFactorWayCalc(w);
  });
  depth_ = depth;
}

// expressionFactor: expressionUnary { ( "*" | "/" | "%" ) expressionUnary }
void SQL92Parser::expressionFactorWayCalc(TqxWayList& ways) {
  expressionUnaryWayCalc(ways);
  FactorRestWayCalc(ways);
}

void SQL92Parser::FactorRestWayCalc(TqxWayList& ways) {
  const std::int32_t depth = depth_;
  Iter(ways, kFactorOperator, [&](TqxWayList& w) {
    Nest deeper(*this, w);
    ++depth_;
    TokenChoice(w, kFactorKinds, 3);
    expressionUnaryWayCalc(w);
  });
  depth_ = depth;
  // The ways that stopped before a further factor operator.
  DropDead(ways, [](std::int32_t kind) { return kCannotFollowFactor.Has(kind); });
}

// expressionUnary: ( "-" | "+" | "~" ) expressionUnary | expressionTerm
void SQL92Parser::expressionUnaryWayCalc(TqxWayList& ways) {
  if (!plain_ && ways.size() == 1 && SimpleOperandWayCalc(ways))
    return;
  Choice(ways,
         Alt(kUnaryOperator,
             [&](TqxWayList& w) {
               Nest nest(*this, w);
               TokenChoice(w, kUnaryKinds, 3);
               expressionUnaryWayCalc(w);
             }),
         Alt(kExpressionTerm, [&](TqxWayList& w) { expressionTermWayCalc(w); }));
}

// The most common operands, a constant or a one-part column name, read directly: the
// same way points as the choices of expressionUnary, expressionTerm and dbColumn would
// record, and the same error index as the readings that die on the way (the name read
// with qualifiers or as a function, which expect a point or a bracket after it).
bool SQL92Parser::SimpleOperandWayCalc(TqxWayList& ways) {
  TqxWayPoint* w = ways.front();
  const std::int32_t p = w->tokenIndex;
  const std::int32_t kind = NextKind(p);
  if (kConstant.Has(kind)) {
    std::int32_t decision = 0;
    while (kConstantKinds[decision] != kind)
      ++decision;
    w = NewWayPoint(NewWayPoint(w, 1), 1);  // expressionUnary: term; expressionTerm: constant
    w = NewWayPoint(w, decision);
    ++w->tokenIndex;
    ways.front() = w;
    return true;
  }
  const std::int32_t after = NextKind(p + 1);
  if (after == tkDot && !exactErrors_ && kNamePart.Has(kind))
    return QualifiedOperandWayCalc(ways);
  // Only a bracketed name token ([a][b]) can stand for several parts.
  if (!kNamePart.Has(kind) || after == tkDot || after == tkLParen ||
      (kind == tkQuotedIdentifier && NameParts(p, p + 1) != 1))
    return false;
  RaiseMaxErr(p + 2);  // a qualifier without its point, a function without its bracket
  w = NewWayPoint(NewWayPoint(w, 1), 2);  // expressionUnary: term; expressionTerm: dbColumn
  w = NewWayPoint(w, 0);                  // no qualifying parts
  const bool keyword = !kIdentifier.Has(kind);
  w = NewWayPoint(w, keyword ? 1 : 0);
  w = NewWayPoint(w,
                  keyword ? kind - kFirstNonReservedKeyword : (kind == tkQuotedIdentifier ? 1 : 0));
  ++w->tokenIndex;
  ways.front() = w;
  return true;
}

// A qualified column a.b, a.b.c, ... not followed by a bracket: of the alternatives of
// expressionTerm only dbColumn can read it (a function or an aggregate needs the bracket),
// so its readings are the way's, with the same decisions. Only while looking for the first
// reading, since the other alternatives would raise the error index on their way out.
bool SQL92Parser::QualifiedOperandWayCalc(TqxWayList& ways) {
  std::int32_t at = ways.front()->tokenIndex + 1;  // a name part followed by "."
  while (NextKind(at) == tkDot && kNamePart.Has(NextKind(at + 1)))
    at += 2;
  if (NextKind(at) == tkDot || NextKind(at) == tkLParen)
    return false;
  TqxWayPoint* w = NewWayPoint(NewWayPoint(ways.front(), 1), 2);  // term; dbColumn
  ways.front() = w;
  dbColumnWayCalc(ways);
  return true;
}

// expressionTerm: "(" expression ")" | constant | dbColumn | SQLAggregateFunction
//               | SQLfunction | "(" subSelectStatement ")" | caseFunction
//               | castFunction | parameterlessFunction
void SQL92Parser::expressionTermWayCalc(TqxWayList& ways) {
  Choice(ways,
         Alt(kTermBrackets,
             [&](TqxWayList& w) {
               Expect(w, tkLParen);
               expressionWayCalc(w);
               Expect(w, tkRParen);
             }),
         Alt(kConstant, [&](TqxWayList& w) { constantWayCalc(w); }),
         Alt(kDbColumn, [&](TqxWayList& w) { dbColumnWayCalc(w); }),
         Alt(kAggregate, [&](TqxWayList& w) { SQLAggregateFunctionWayCalc(w); }),
         Alt(kSQLfunction, [&](TqxWayList& w) { SQLfunctionWayCalc(w); }),
         Alt(kTermSubQuery,
             [&](TqxWayList& w) {
               Expect(w, tkLParen);
               subSelectStatementWayCalc(w);
               Expect(w, tkRParen);
             }),
         Alt(kCaseFunction, [&](TqxWayList& w) { caseFunctionWayCalc(w); }),
         Alt(kCastFunction, [&](TqxWayList& w) { castFunctionWayCalc(w); }),
         Alt(kParameterlessFunction, [&](TqxWayList& w) { parameterlessFunctionWayCalc(w); }));
}

// constant: integer | decimal | "null" | string | hexadecimal | escape literal
void SQL92Parser::constantWayCalc(TqxWayList& ways) {
  TokenChoice(ways, kConstantKinds, 6);
}

// dbColumn: [ [ [ [ part "." ] part "." ] part "." ] part "." ] name
void SQL92Parser::dbColumnWayCalc(TqxWayList& ways) {
  NameWayCalc(ways, kColumnQualifiers, -1, &kCannotFollowColumn);
  // A column read as a qualifier of a longer name, or as a function's name, ends here.
  DropDead(ways, [](std::int32_t kind) { return kCannotFollowColumn.Has(kind); });
}

// SQLAggregateFunction:
//     ( "avg" | "max" | "min" | "sum" ) "(" [ "all" | "distinct" ] expression ")"
//   | "count" "(" ( "*" | [ "all" | "distinct" ] expression ) ")"
void SQL92Parser::SQLAggregateFunctionWayCalc(TqxWayList& ways) {
  auto mode = [&](TqxWayList& w) {
    Opt(w, kSelectMode, [&](TqxWayList& x) { TokenChoice(x, kSelectModeKinds, 2); });
  };
  Choice(ways,
         Alt(kOneParamAggregate,
             [&](TqxWayList& w) {
               TokenChoice(w, kOneParamAggregateKinds, 4);
               Expect(w, tkLParen);
               mode(w);
               expressionWayCalc(w);
               Expect(w, tkRParen);
             }),
         Alt(TqxTokenSet{tkKwCount}, [&](TqxWayList& w) {
           Expect(w, tkKwCount);
           Expect(w, tkLParen);
           Choice(w, Alt(TqxTokenSet{tkStar}, [&](TqxWayList& x) { Expect(x, tkStar); }),
                  Alt(kSelectMode | kExpression, [&](TqxWayList& x) {
                    mode(x);
                    expressionWayCalc(x);
                  }));
           Expect(w, tkRParen);
         }));
}

// caseFunction: "case" ( expression "when" expression "then" expression
//                        { "when" expression "then" expression }
//                      | "when" expressionLogical "then" expression
//                        { "when" expressionLogical "then" expression } )
//               [ "else" expression ] "end"
void SQL92Parser::caseFunctionWayCalc(TqxWayList& ways) {
  Expect(ways, tkKwCase);
  auto simpleItem = [&](TqxWayList& w) {
    Expect(w, tkKwWhen);
    expressionWayCalc(w);
    Expect(w, tkKwThen);
    expressionWayCalc(w);
  };
  auto searchedItem = [&](TqxWayList& w) {
    Expect(w, tkKwWhen);
    expressionLogicalWayCalc(w);
    Expect(w, tkKwThen);
    expressionWayCalc(w);
  };
  Choice(ways,
         Alt(kExpression,
             [&](TqxWayList& w) {
               expressionWayCalc(w);
               simpleItem(w);
               Iter(w, TqxTokenSet{tkKwWhen}, simpleItem);
             }),
         Alt(TqxTokenSet{tkKwWhen}, [&](TqxWayList& w) {
           searchedItem(w);
           Iter(w, TqxTokenSet{tkKwWhen}, searchedItem);
         }));
  Opt(ways, TqxTokenSet{tkKwElse}, [&](TqxWayList& w) {
    Expect(w, tkKwElse);
    expressionWayCalc(w);
  });
  Expect(ways, tkKwEnd);
}

// castFunction: "cast" "(" expression "as" SQLType ")"
void SQL92Parser::castFunctionWayCalc(TqxWayList& ways) {
  Expect(ways, tkKwCast);
  Expect(ways, tkLParen);
  expressionWayCalc(ways);
  Expect(ways, tkKwAs);
  SQLTypeWayCalc(ways);
  Expect(ways, tkRParen);
}

// parameterlessFunction: "current_timestamp" | "current_user" | "session_user"
//                      | "system_user"
void SQL92Parser::parameterlessFunctionWayCalc(TqxWayList& ways) {
  TokenRangeChoice(ways, tkKwCurrentTimestamp, tkKwSystemUser);
}

// SQLType: SQLTypeUser | built-in type
void SQL92Parser::SQLTypeWayCalc(TqxWayList& ways) {
  Choice(ways, Alt(kSQLTypeUser, [&](TqxWayList& w) { SQLTypeUserWayCalc(w); }),
         Alt(kSQLTypeBuiltIn, [&](TqxWayList& w) { SQLTypeBuiltInWayCalc(w); }));
}

// SQLTypeUser: [ identifier "." ] identifier
void SQL92Parser::SQLTypeUserWayCalc(TqxWayList& ways) {
  ListRef starts = TakeList();
  *starts = ways;
  Opt(ways, kIdentifier, [&](TqxWayList& w) {
    identifierWayCalc(w);
    Expect(w, tkDot);
  });
  identifierWayCalc(ways);
  DropLongNames(ways, *starts, 2);
}

// A bracketed name token such as [a][b] stands for several name parts. A reading of a
// name that stands for more parts than the name may have dies at its last token, as if
// that token had not been expected there.
std::int32_t SQL92Parser::NameParts(std::int32_t start, std::int32_t end) const {
  std::int32_t parts = 1;
  for (std::int32_t i = start + 1; i <= end; ++i) {
    const std::int32_t kind = KindAt(i);
    if (kind == tkDot) {
      ++parts;
    } else if (kind == tkQuotedIdentifier) {
      const std::string_view v = scanner->GetToken(i).val;
      for (std::size_t at = 0; at < v.size() && v[at] == '[';) {
        const std::size_t close = v.find(']', at + 1);
        if (at != 0)
          ++parts;
        if (close == std::string::npos)
          break;
        at = close + 1;
      }
    }
  }
  return parts;
}

void SQL92Parser::DropLongNames(TqxWayList& ways, const TqxWayList& starts, std::int32_t maxParts) {
  std::size_t keep = 0;
  for (TqxWayPoint* w : ways) {
    const TqxWayPoint* start = w;
    while (start != nullptr && std::find(starts.begin(), starts.end(), start) == starts.end())
      start = start->parent;
    if (start != nullptr && NameParts(start->tokenIndex, w->tokenIndex) > maxParts) {
      RaiseMaxErr(w->tokenIndex);
      w->RemoveFromParent();
      continue;
    }
    ways[keep++] = w;
  }
  ways.resize(keep);
}

// The built-in types: a one-word type (decision 0) or one of the forms with arguments
// (decisions 1 to 16, in the order of kTypeForms).
void SQL92Parser::SQLTypeBuiltInWayCalc(TqxWayList& ways) {
  if (ways.empty())
    return;
  ListRef start = TakeList();
  start->swap(ways);
  ListRef work = TakeList();
  auto alternative = [&](std::int32_t decision, std::int32_t firstKind, auto&& calc) {
    work->clear();
    for (TqxWayPoint* w : *start) {
      const std::int32_t kind = NextKind(w->tokenIndex);
      if (decision == 0 ? kSQLType1word.Has(kind) : kind == firstKind)
        work->push_back(NewWayPoint(w, decision));
    }
    if (!work->empty()) {
      calc(*work);
      Unite(ways, *work);
    }
  };
  alternative(0, 0, [&](TqxWayList& w) { SQLType1wordWayCalc(w); });
  for (std::int32_t i = 0; i < kTypeFormCount; ++i) {
    const TypeForm& form = kTypeForms[i];
    alternative(i + 1, form.words[0], [&](TqxWayList& w) {
      Expect(w, form.words[0]);
      if (form.words[1] != 0)
        Expect(w, form.words[1]);
      Expect(w, tkLParen);
      ExpectSize(w);
      if (form.scale) {
        Expect(w, tkComma);
        ExpectSize(w);
      }
      Expect(w, tkRParen);
      if (form.zone != 0) {
        Expect(w, form.zone);
        Expect(w, tkKwTime);
        Expect(w, tkKwZone);
      }
    });
  }
}

// SQLType1word: one of kinds 66 to 84 | "double" "precision" | one of kinds 87 to 109
void SQL92Parser::SQLType1wordWayCalc(TqxWayList& ways) {
  TokenChoice(ways, kType1WordKinds, kType1WordCount);
  // "double" is followed by "precision".
  std::size_t keep = 0;
  for (TqxWayPoint* w : ways) {
    if (w->decision == kDoublePrecisionDecision) {
      ++w->tokenIndex;
      if (KindAt(w->tokenIndex) != tkKwPrecision) {
        RaiseMaxErr(w->tokenIndex);
        w->RemoveFromParent();
        continue;
      }
    }
    ways[keep++] = w;
  }
  ways.resize(keep);
}

// keywordAsIdentifier: any keyword of kinds 120 to 169
void SQL92Parser::keywordAsIdentifierWayCalc(TqxWayList& ways) {
  TokenRangeChoice(ways, kFirstNonReservedKeyword, kLastNonReservedKeyword);
}

// stringLiteral: string literal
void SQL92Parser::stringLiteralWayCalc(TqxWayList& ways) {
  Expect(ways, tkString);
}

}  // namespace qorvex
