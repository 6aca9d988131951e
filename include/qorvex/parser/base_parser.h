#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "qorvex/ast/syntax_provider.h"
#include "qorvex/core/errors.h"
#include "qorvex/core/metaclass.h"
#include "qorvex/scanner/base_scanner.h"
#include "qorvex/scanner/token.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TSQLSelectStatement;
class TSQLExpressionItem;
class TSQLDatabaseObject;
class TSQLSelectItem;

// One choice recorded by the way calculation: the alternative taken (`decision`) and how
// far into the token list the way has come (`tokenIndex`, the last token consumed). Way
// points form a tree from the root that a parse entry creates; a way is the path from
// the root to a leaf. Way points live in the arena of the parser that made them and are
// all released with it.
//
// A way point may stand for a whole stretch of another way (`link` up to, not including,
// `linkBase`): the way calculation uses this to reuse the reading of a part that it has
// already worked out at the same token. Such a point carries no decision of its own.
//
// A point knows only its parent: the way calculation makes hundreds of points per
// statement and only ever walks up. The tree's downward view (children, counts, depth) is
// worked out from the arena when asked for.
class QORVEX_SQL_EXPORT TqxWayPoint {
 public:
  TqxWayPoint* parent = nullptr;
  std::int32_t tokenIndex = -1;
  std::int32_t decision = 0;
  const TqxWayPoint* link = nullptr;
  const TqxWayPoint* linkBase = nullptr;

  // Number of way points below this one (children, their children, ...).
  std::int32_t GetCount() const;
  // 1 for a leaf, else 1 + the largest depth of the children.
  std::int32_t GetDepth() const;

  std::int32_t GetChildCount() const;
  // The children in the order they were made.
  TqxWayPoint* GetFirstChild() const;
  TqxWayPoint* GetNextSibling() const;
  // Takes this point out of its parent's children (only a leaf is ever removed: a way
  // that failed). Its parent and decision stay, as a reused stretch of way may still be
  // read through it.
  void RemoveFromParent();
  bool IsRemoved() const { return tokenIndex == kRemoved; }

 private:
  friend class TqxWayArena;
  static constexpr std::int32_t kRemoved = INT32_MIN;
  TqxWayPoint(TqxWayPoint* parent, std::int32_t tokenIndex, std::int32_t decision)
      : parent(parent), tokenIndex(tokenIndex), decision(decision) {}
};

// Allocates way points in blocks of equal size, aligned to their size so that a point
// finds its arena through the block it lies in, and frees them all at once. The first
// block of a thread's arenas is kept for the thread's next arena, so a short parse
// allocates none.
class QORVEX_SQL_EXPORT TqxWayArena {
 public:
  TqxWayArena() = default;
  TqxWayArena(const TqxWayArena&) = delete;
  TqxWayArena& operator=(const TqxWayArena&) = delete;
  ~TqxWayArena();

  // A new way point; with a parent it becomes the parent's last child and starts at the
  // parent's token index, without one it starts at -1.
  TqxWayPoint* New(TqxWayPoint* parent, std::int32_t decision = 0) {
    if (used_ == kBlockPoints) [[unlikely]]
      Grow();
    return new (current_ + used_++)
        TqxWayPoint(parent, parent != nullptr ? parent->tokenIndex : -1, decision);
  }
  // Number of way points made so far.
  std::size_t Size() const {
    return blocks_.empty() ? 0 : (blocks_.size() - 1) * kBlockPoints + used_;
  }

  // The arena that made `point`.
  static const TqxWayArena& Of(const TqxWayPoint* point);
  // Calls `visit` on every point made after `point`, in the order they were made, until
  // it returns false.
  template <class Visit>
  void ForEachAfter(const TqxWayPoint* point, Visit visit) const;

  static constexpr std::size_t kBlockBytes = 64 * 1024;
  // Slot 0 of a block holds its header.
  static constexpr std::size_t kBlockPoints = kBlockBytes / sizeof(TqxWayPoint) - 1;

 private:
  void Grow();
  std::vector<TqxWayPoint*> blocks_;  // the first point of each block
  TqxWayPoint* current_ = nullptr;
  std::size_t used_ = kBlockPoints;
};

template <class Visit>
void TqxWayArena::ForEachAfter(const TqxWayPoint* point, Visit visit) const {
  bool after = false;
  for (std::size_t b = 0; b < blocks_.size(); ++b) {
    const TqxWayPoint* first = blocks_[b];
    const std::size_t count = b + 1 == blocks_.size() ? used_ : kBlockPoints;
    std::size_t i = 0;
    if (!after) {
      if (point < first || point >= first + count)
        continue;
      i = static_cast<std::size_t>(point - first) + 1;
      after = true;
    }
    for (; i < count; ++i) {
      if (!visit(first + i))
        return;
    }
  }
}

// A list of ways, each given by its leaf. The list does not own its way points.
using TqxWayList = std::vector<TqxWayPoint*>;

// Makes the syntax error of a parse entry: the message, and the position, line, column
// and text of `token` (0 and empty without a token).
QORVEX_SQL_EXPORT EqxSQLError MakeSQLError(const std::string& message, const TqxToken* token);

// The silent abort raised by TqxParserErrors::Exception: it ends an operation without
// an error report of its own.
class QORVEX_SQL_EXPORT EqxAbort : public std::exception {
 public:
  const char* what() const noexcept override { return "Operation aborted"; }
};

// Collects error messages for a dialect's parser that reports errors as it goes. The
// SQL-92 parser does not use it: its errors come only from the parse entries.
class QORVEX_SQL_EXPORT TqxParserErrors {
 public:
  std::string errMsgFormat = "line %d col %d: %s";
  std::vector<std::string> messages;

  // Adds errMsgFormat filled with the line, the column and the message.
  void Error(std::int32_t line, std::int32_t col, const std::string& message);
  void SynErr(std::int32_t line, std::int32_t col, std::int32_t n);
  void SemErr(std::int32_t line, std::int32_t col, std::int32_t n);
  // Adds the message as it is and raises EqxAbort.
  [[noreturn]] void Exception(const std::string& message);
};

// The dialect-independent parser: the way-calculation operations over the scanner's
// token list, the replay of one chosen way (Get, GetWayNode) and the five pairs of
// parse operations that a dialect implements. Parsing runs in two passes: the way
// calculation follows every alternative at once and records the choices as way points;
// the building pass replays the first complete way and creates the tree.
class QORVEX_SQL_EXPORT TqxBaseParser {
  QX_ROOT_CLASS(TqxParserClass)

 public:
  TqxBaseParser(TqxBaseScanner* scanner, TastSyntaxProvider* provider);
  TqxBaseParser(const TqxBaseParser&) = delete;
  TqxBaseParser& operator=(const TqxBaseParser&) = delete;
  virtual ~TqxBaseParser();
  // A parser is made for every parse: its memory comes from the per-thread recycled
  // blocks of the syntax tree.
  static void* operator new(std::size_t Size);
  static void operator delete(void* Block, std::size_t Size) noexcept;

  // The parse entries: each way calculation advances `ways` over its production, each
  // building operation replays the chosen way (after UnrollWay and one GetWayNode for
  // the root) and returns the tree.
  virtual void ParseSelectWayCalc(TqxWayList& ways) = 0;
  virtual std::unique_ptr<TSQLSelectStatement> ParseSelect() = 0;
  virtual void ParseObjectNameWayCalc(TqxWayList& ways) = 0;
  virtual std::unique_ptr<TSQLDatabaseObject> ParseObjectName() = 0;
  virtual void ParseExpressionWayCalc(TqxWayList& ways) = 0;
  virtual std::unique_ptr<TSQLExpressionItem> ParseExpression() = 0;
  virtual void ParseSelectItemWayCalc(TqxWayList& ways) = 0;
  virtual std::unique_ptr<TSQLSelectItem> ParseSelectItem() = 0;
  virtual void ParseLogicalExpressionWayCalc(TqxWayList& ways) = 0;
  virtual std::unique_ptr<TSQLExpressionItem> ParseLogicalExpression() = 0;
  // The tree of a SELECT statement made straight from the tokens, without a way
  // calculation, for the texts whose first reading the tokens ahead settle; null for the
  // others, which then take the two passes. A dialect need not offer it.
  virtual std::unique_ptr<TSQLSelectStatement> ParseSelectDirect();

  // The next token of the replay (the end token past the end).
  const TqxToken& Get() {
    ++tokenIndex;
    t = &scanner->GetToken(tokenIndex);
    return *t;
  }
  // The next way point of the replayed way; reading past its end raises EqxError.
  const TqxWayPoint* GetWayNode() {
    if (nextDecision_ == endDecision_) [[unlikely]]
      WayOverrun();
    const auto index = static_cast<std::size_t>(nextDecision_++ - firstDecision_);
    if (wayFirst_ == nullptr) [[unlikely]]
      return RunWayNode(index);
    return wayFirst_[index];
  }
  // The decision of the next way point (GetWayNode()->decision).
  std::int32_t NextDecision() {
    if (nextDecision_ == endDecision_) [[unlikely]]
      WayOverrun();
    return *nextDecision_++;
  }
  // Makes the path from the root to `leaf` the way to replay and resets the replay.
  void UnrollWay(const TqxWayPoint* leaf);

  // A new way point in this parser's arena (the root when `parent` is null).
  TqxWayPoint* NewWayPoint(TqxWayPoint* parent, std::int32_t decision = 0) {
    return arena_.New(parent, decision);
  }

  // Way-calculation operations. The next token of a way is the one after its leaf's
  // tokenIndex.
  void AddWayNode(TqxWayList& ways, std::int32_t decision);
  void ListAddWithWayNode(TqxWayList& dest, const TqxWayList& src, std::int32_t decision);
  // Every way takes one token; a way whose token is not of `kind` is removed from the
  // tree and the list, and maxErrIndex rises to that token's index.
  void Expect(TqxWayList& ways, std::int32_t kind) {
    if (ways.size() != 1) {
      ExpectEach(ways, kind);
      return;
    }
    TqxWayPoint* w = ways.front();
    if (KindAt(++w->tokenIndex) == kind)
      return;
    RaiseMaxErr(w->tokenIndex);
    w->RemoveFromParent();
    ways.clear();
  }
  bool CheckLAToken(TqxWayList& ways, std::int32_t kind);
  bool CheckLAToken(TqxWayList& ways, const std::int32_t* kinds, std::int32_t high);
  bool CheckLANotToken(TqxWayList& ways, std::int32_t kind);
  bool CheckLANotToken(TqxWayList& ways, const std::int32_t* kinds, std::int32_t high);
  bool CheckLANotIn(TqxWayList& ways, const std::vector<std::string>& words);
  static bool IsIntInArray(std::int32_t value, const std::int32_t* array, std::int32_t high);

  TqxBaseScanner* GetScanner() const { return scanner; }
  TastSyntaxProvider* GetProvider() const { return provider; }
  // The way being replayed, root first.
  std::span<const TqxWayPoint* const> GetWay() const;
  // Index of the way point that GetWayNode gave last (-1 before the first).
  std::int32_t GetWayIndex() const {
    return static_cast<std::int32_t>(nextDecision_ - firstDecision_) - 1;
  }
  // A run counts with a point per decision.
  std::size_t GetWayPointCount() const {
    return arena_.Size() + (runLeaf_ != nullptr ? runDecisions_.size() - 2 : 0);
  }

  // The largest token index at which some way missed an expected token.
  std::int32_t maxErrIndex = 0;

 protected:
  // Kind of the token after `tokenIndex` (the end token's kind past the end).
  std::int32_t NextKind(std::int32_t index) const {
    return static_cast<std::uint32_t>(index + 1) < static_cast<std::uint32_t>(tokenCount_)
               ? kinds_[static_cast<std::size_t>(index + 1)]
               : tkEof;
  }
  std::int32_t KindAt(std::int32_t index) const { return NextKind(index - 1); }
  // The kinds of all tokens followed by kKindPadding end kinds, so that a look a few
  // tokens past the end needs no bounds test.
  static constexpr std::size_t kKindPadding = 8;
  const std::int32_t* PaddedKinds() const { return kinds_.data(); }
  std::int32_t TokenCount() const { return tokenCount_; }
  void RaiseMaxErr(std::int32_t index) {
    if (index > maxErrIndex)
      maxErrIndex = index;
  }
  // A way read in one go (the direct reading) is kept as its decisions instead of a
  // chain of way points: BeginRun starts it below `start`, the decisions are appended to
  // runPending_, and EndRun makes the leaf that stands for it, at token `tokenIndex`.
  // Below a root, the leaf is one point and the decisions are replayed from the list
  // (the parser keeps the last such run); elsewhere the chain of points is made.
  // Takes the thread's spare way buffers, which a parser takes only when it calculates
  // ways (a text built directly needs none).
  void TakeSpareBuffers();
  void BeginRun(const TqxWayPoint* start) {
    runPending_.clear();
    runPending_.push_back(start->decision);
  }
  TqxWayPoint* EndRun(TqxWayPoint* start, std::int32_t tokenIndex);
  std::vector<std::int32_t> runPending_;  // the start's decision first

  TqxBaseScanner* scanner;
  TastSyntaxProvider* provider;
  std::int32_t tokenIndex = -1;
  const TqxToken* t = nullptr;
  // Storage of the replayed way: UnrollWay fills it from the back, so the way (root
  // first) is the last wayLength_ entries, starting at wayFirst_ (null while a run is
  // replayed: GetWay and GetWayNode then make its points on demand).
  mutable std::vector<const TqxWayPoint*> wayBuffer_;
  const TqxWayPoint* const* wayFirst_ = nullptr;
  std::uint32_t wayLength_ = 0;
  // The run kept: its decisions (the root's first), root and leaf; the decisions of the
  // run being replayed.
  std::vector<std::int32_t> runDecisions_;
  const TqxWayPoint* runRoot_ = nullptr;
  const TqxWayPoint* runLeaf_ = nullptr;
  const std::int32_t* replayRun_ = nullptr;
  // The decisions of the replayed way, root first, and the next one to read.
  std::vector<std::int32_t> wayDecisions_;
  const std::int32_t* firstDecision_ = nullptr;
  const std::int32_t* nextDecision_ = nullptr;
  const std::int32_t* endDecision_ = nullptr;

 private:
  [[noreturn]] static void WayOverrun();
  const TqxWayPoint* RunWayNode(std::size_t index);
  // The points of the run, root first, in wayBuffer_ (made once, in runArena_).
  void MakeRunPoints() const;
  mutable TqxWayArena runArena_;
  mutable std::vector<const TqxWayPoint*> runMade_;  // empty until made
  void ExpectEach(TqxWayList& ways, std::int32_t kind);
  TqxWayArena arena_;
  // Token kinds by index, for the way calculation's many look-ahead tests.
  std::vector<std::int32_t> kinds_;
  std::int32_t tokenCount_ = 0;
};

}  // namespace qorvex
