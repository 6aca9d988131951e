// The direct reading of the SQL-92 grammar: one way, taken decision by decision, for the
// texts whose first reading can be settled by looking a few tokens ahead.
//
// At every decision the reader takes the most preferred alternative that can still
// complete (an option taken before skipped, the earlier alternative first; repetitions go
// on while their first token follows, as no list of this grammar is followed by its own
// separator). An alternative is passed over only where the tokens show that it dies:
// its first token does not fit, or a token further on that every reading of it needs is
// missing. So when the reading arrives at the end of the text, no earlier way can be
// complete, and it is the first way, with the decisions the way calculation records.
// When the reader meets a text it cannot settle so (an alternative it took dies, a
// bracket that could open several constructs, an unusual name), it gives up and the way
// calculation works the text out from where the reader started. The reader records its
// decisions in a list, not as way points (see BeginRun).
#include <charconv>
#include <string>
#include <vector>

#include "parser/sql92_direct.h"
#include "parser/sql92_grammar.h"
#include "qorvex/parser/sql92_first_sets.h"
#include "qorvex/parser/sql92_parser.h"

namespace qorvex {

using namespace sql92first;
using namespace sql92grammar;
using namespace sql92direct;

class SQL92Parser::DirectReader {
 public:
  DirectReader(SQL92Parser& parser, std::int32_t tokenIndex)
      : p_(parser), kinds_(parser.PaddedKinds() + 1), at_(tokenIndex) {}

  // The last token consumed.
  std::int32_t At() const { return at_; }
  bool AtEnd() const { return Next() == tkEof; }

  void SelectStatement() {
    QueryExpression();
    Opt(Next() == tkKwOrder, [&] { OrderByClause(); });
  }
  void DbObject() {
    Name(kObjectQualifiers);
    if (kCannotFollowName.Has(Next()))
      throw DirectMiss{};
  }
  void SelectItem();
  void Expression();
  void ExpressionLogical();

 private:
  // ---- tokens and decisions
  // The reader consumes no end token, so it looks at most a few tokens past the end,
  // into the padding of the kinds.
  std::int32_t Next() const { return kinds_[at_]; }
  std::int32_t Ahead(std::int32_t n) const { return kinds_[at_ + n]; }
  void Mark(std::int32_t decision) { p_.runPending_.push_back(decision); }
  // The kind of the token after the run of name parts and points that follows.
  std::int32_t AfterNameRun() const {
    std::int32_t at = at_;
    while (kQualifier.Has(kinds_[at]))
      ++at;
    return kinds_[at];
  }
  void Expect(std::int32_t kind) {
    if (Next() != kind)
      throw DirectMiss{};
    ++at_;
  }
  // A choice among single tokens: the decision is the token's place in `kinds`.
  void TokenOf(const std::int32_t* kinds, std::int32_t count) {
    const std::int32_t kind = Next();
    for (std::int32_t i = 0; i < count; ++i) {
      if (kinds[i] == kind) {
        Mark(i);
        ++at_;
        return;
      }
    }
    throw DirectMiss{};
  }
  template <class F>
  void Opt(bool take, F&& part) {
    if (!take) {
      Mark(0);
      return;
    }
    Mark(1);
    part();
  }
  void OptToken(std::int32_t kind) {
    Opt(Next() == kind, [&] { ++at_; });
  }
  template <class F>
  void Iter(const TqxTokenSet& first, F&& part) {
    while (first.Has(Next())) {
      Mark(1);
      part();
    }
    Mark(0);
  }
  void Enter() {
    if (++depth_ > kDirectNesting)
      throw DirectMiss{};
  }
  void Leave() { --depth_; }
  // A further operand of an operator chain: like the way calculation, the chain goes one
  // level down for good (checked against the bound) and reads the operand one level
  // further down still.
  template <class F>
  void ChainOperand(F&& operand) {
    Enter();
    ++depth_;
    operand();
    --depth_;
  }

  // ---- statement level
  void SubSelectStatement() { SelectStatement(); }
  void QueryExpression() {
    Enter();
    SubQueryExpression();
    Iter(kSetOperator, [&] {
      TokenOf(kSetOperatorKinds, 3);
      OptToken(tkKwAll);
      SubQueryExpression();
    });
    Leave();
  }
  void SubQueryExpression() {
    const std::int32_t kind = Next();
    if (kind == tkKwSelect) {
      Mark(0);
      SelectBlock();
    } else if (kind == tkLParen) {
      Mark(1);
      ++at_;
      QueryExpression();
      Expect(tkRParen);
    } else {
      throw DirectMiss{};
    }
  }
  void SelectBlock();
  void SelectList() {
    Opt(kSelectItem.Has(Next()), [&] {
      SelectItem();
      Iter(TqxTokenSet{tkComma}, [&] {
        ++at_;
        SelectItem();
      });
    });
  }
  void OptAs() { OptToken(tkKwAs); }
  void OptAlias() {
    Opt(kAsAlias.Has(Next()), [&] {
      OptAs();
      Alias();
    });
  }
  void Alias();
  void OrderByClause() {
    Expect(tkKwOrder);
    Expect(tkKwBy);
    OrderByItem();
    Iter(TqxTokenSet{tkComma}, [&] {
      ++at_;
      OrderByItem();
    });
  }
  void OrderByItem() {
    Expression();
    Opt(kOrderDirection.Has(Next()), [&] { TokenOf(kOrderDirectionKinds, 2); });
  }
  void GroupByList() {
    Expect(tkKwGroup);
    Expect(tkKwBy);
    ExpressionsList();
  }
  void TableSource() {
    Enter();
    SubTableSource();
    Iter(kJoinedTable, [&] { JoinedTable(); });
    Leave();
  }
  void SubTableSource();
  void JoinedTable();
  void SQLfunction() {
    Name(kObjectQualifiers);
    Expect(tkLParen);
    Opt(kExpression.Has(Next()), [&] { ExpressionsList(); });
    Expect(tkRParen);
  }
  // A name chain part.part...part, each token one part: the only reading of a name
  // that nothing can follow with a ".", as every shorter reading stands before one.
  void Name(int levels);
  void KeywordAsIdentifier() {
    Mark(Next() - kFirstNonReservedKeyword);
    ++at_;
  }
  void Identifier() { TokenOf(kIdentifierKinds, 2); }

  // ---- expressions
  void ExpressionsList() {
    Expression();
    Iter(TqxTokenSet{tkComma}, [&] {
      ++at_;
      Expression();
    });
  }
  void ExpressionAnd() {
    ExpressionNot();
    Iter(TqxTokenSet{tkKwAnd}, [&] {
      ++at_;
      ExpressionNot();
    });
  }
  void ExpressionNot();
  void ExpressionLogicalTerm();
  void Predicate();
  void ExpressionFactor() {
    ExpressionUnary();
    const std::int32_t depth = depth_;
    Iter(kFactorOperator, [&] {
      ChainOperand([&] {
        TokenOf(kFactorKinds, 3);
        ExpressionUnary();
      });
    });
    depth_ = depth;
  }
  void ExpressionUnary();
  void ExpressionTerm();
  void AggregateFunction();
  void CaseFunction();
  void CastFunction() {
    Expect(tkKwCast);
    Expect(tkLParen);
    Expression();
    Expect(tkKwAs);
    SQLType();
    Expect(tkRParen);
  }
  void SQLType();
  void SQLTypeBuiltIn();

  SQL92Parser& p_;
  const std::int32_t* kinds_;  // kinds_[i] is the kind of the token after index i
  std::int32_t at_;            // the last token consumed
  std::int32_t depth_ = 0;
  // Index of the matching ")" for each "(", worked out when first needed.
  std::vector<std::int32_t> match_;
};

// A SELECT block: selectClause [ fromClause ] [ "where" expressionLogical ]
//                   [ groupByList ] [ "having" expressionLogical ]
void SQL92Parser::DirectReader::SelectBlock() {
  Expect(tkKwSelect);
  Opt(kSelectMode.Has(Next()), [&] { TokenOf(kSelectModeKinds, 2); });
  SelectList();
  Opt(Next() == tkKwFrom, [&] {
    ++at_;
    Opt(kTableSource.Has(Next()), [&] { TableSource(); });
  });
  Opt(Next() == tkKwWhere, [&] {
    ++at_;
    ExpressionLogical();
  });
  Opt(Next() == tkKwGroup, [&] { GroupByList(); });
  Opt(Next() == tkKwHaving, [&] {
    ++at_;
    ExpressionLogical();
  });
}

// selectItem: "*" | alias2 "=" expression | dbObject ".*" | expression [ [ "as" ] alias1 ]
// The alias of the second form is one token, so "=" must follow it; the name chain of the
// third must end before ".*".
void SQL92Parser::DirectReader::SelectItem() {
  const std::int32_t kind = Next();
  if (kind == tkStar) {
    Mark(0);
    ++at_;
  } else if (kSelectItemAliasEquals.Has(kind) && Ahead(1) == tkEqual) {
    Mark(1);
    Alias();
    Expect(tkEqual);
    Expression();
  } else if (kSelectItemAllColumns.Has(kind) && AfterNameRun() == tkDotStar) {
    Mark(2);
    Name(kObjectQualifiers);
    Expect(tkDotStar);
  } else if (kSelectItemExpression.Has(kind)) {
    Mark(3);
    Expression();
    OptAlias();
  } else {
    throw DirectMiss{};
  }
}

// alias1, alias2: identifier | string literal | keywordAsIdentifier
void SQL92Parser::DirectReader::Alias() {
  const std::int32_t kind = Next();
  if (kIdentifier.Has(kind)) {
    Mark(0);
    Identifier();
  } else if (kind == tkString) {
    Mark(1);
    ++at_;
  } else if (kKeywordAsIdentifier.Has(kind)) {
    Mark(2);
    KeywordAsIdentifier();
  } else {
    throw DirectMiss{};
  }
}

// subTableSource: "(" ( tableSource ")" | subSelectStatement ")" [ "as" ] alias1
//                       [ "(" alias1 { "," alias1 } ")" ] )
//               | SQLfunction [ [ "as" ] alias1 ] | dbObject [ [ "as" ] alias1 ]
// A function needs "(" after its name chain.
void SQL92Parser::DirectReader::SubTableSource() {
  const std::int32_t kind = Next();
  if (kind == tkLParen) {
    Mark(0);
    ++at_;
    const std::int32_t inner = Next();
    if (kTableSource.Has(inner)) {
      Mark(0);
      TableSource();
      Expect(tkRParen);
    } else if (kSubSelectStatement.Has(inner)) {
      Mark(1);
      SubSelectStatement();
      Expect(tkRParen);
      OptAs();
      Alias();
      Opt(Next() == tkLParen, [&] {
        ++at_;
        Alias();
        Iter(TqxTokenSet{tkComma}, [&] {
          ++at_;
          Alias();
        });
        Expect(tkRParen);
      });
    } else {
      throw DirectMiss{};
    }
  } else if (kDbObject.Has(kind)) {
    if (AfterNameRun() == tkLParen) {
      Mark(1);
      SQLfunction();
    } else {
      Mark(2);
      DbObject();
    }
    OptAlias();
  } else {
    throw DirectMiss{};
  }
}

// joinedTable: "," subTableSource | "cross" "join" subTableSource
//            | [ "inner" | ( "left" | "right" | "full" ) [ "outer" ] ] "join"
//              ( subTableSource | tableSourceInner ) "on" expressionLogical
// A join whose right side is itself a join (tableSourceInner) is left to the way
// calculation: the reader takes the first alternative and misses at its "on".
void SQL92Parser::DirectReader::JoinedTable() {
  const std::int32_t kind = Next();
  if (kind == tkComma) {
    Mark(0);
    ++at_;
    SubTableSource();
  } else if (kind == tkKwCross) {
    Mark(1);
    ++at_;
    Expect(tkKwJoin);
    SubTableSource();
  } else {
    Mark(2);
    Opt(kJoinKindWord.Has(kind), [&] {
      if (kind == tkKwInner) {
        Mark(0);
        ++at_;
      } else {
        Mark(1);
        TokenOf(kOuterJoinKinds, 3);
        OptToken(tkKwOuter);
      }
    });
    Expect(tkKwJoin);
    if (!kSubTableSource.Has(Next()))
      throw DirectMiss{};
    Mark(0);
    SubTableSource();
    Expect(tkKwOn);
    ExpressionLogical();
  }
}

// The last part of the name chain part.part...part starting at token `first`, each part
// one token standing for one name; -1 when a part is anything else.
std::int32_t SQL92Parser::NameChainEnd(std::int32_t first) const {
  // A dot is never the end token, so the padded kinds are read only up to one past it.
  const std::int32_t* kinds = PaddedKinds();
  std::int32_t last = first;
  for (;;) {
    const std::int32_t kind = kinds[last];
    if (!kNamePart.Has(kind) || (kind == tkQuotedIdentifier && NameParts(last - 1, last) != 1))
      return -1;
    if (kinds[last + 1] != tkDot)
      return last;
    last += 2;
  }
}

void SQL92Parser::DirectReader::Name(int levels) {
  const std::int32_t first = at_ + 1;
  const std::int32_t last = p_.NameChainEnd(first);
  if (last < 0)
    throw DirectMiss{};
  const std::int32_t groups = (last - first) / 2;
  if (groups > levels)
    throw DirectMiss{};
  for (std::int32_t l = 0; l < groups; ++l)
    Mark(1);
  if (groups < levels)
    Mark(0);
  for (std::int32_t at = first; at <= last; at += 2) {
    const std::int32_t kind = kinds_[at - 1];
    if (at != last)
      Mark(1);  // a written qualifying part
    const bool keyword = !kIdentifier.Has(kind);
    Mark(keyword ? 1 : 0);
    Mark(keyword ? kind - kFirstNonReservedKeyword : (kind == tkQuotedIdentifier ? 1 : 0));
    at_ = at == last ? at : at + 1;  // the part, and its "."
  }
}

// ---- logical expressions -------------------------------------------------------------

void SQL92Parser::DirectReader::ExpressionLogical() {
  Enter();
  ExpressionAnd();
  Iter(TqxTokenSet{tkKwOr}, [&] {
    ++at_;
    ExpressionAnd();
  });
  Leave();
}

// expressionNot: "not" expressionNot | expressionLogicalTerm
void SQL92Parser::DirectReader::ExpressionNot() {
  const std::int32_t kind = Next();
  if (kind == tkKwNot) {
    Mark(0);
    Enter();
    ++at_;
    ExpressionNot();
    Leave();
  } else if (kExpressionLogicalTerm.Has(kind)) {
    Mark(1);
    ExpressionLogicalTerm();
  } else {
    throw DirectMiss{};
  }
}

// expressionLogicalTerm: "(" expressionLogical ")" | [ expression ] predicate
//                      | "exists" "(" subSelectStatement ")"
void SQL92Parser::DirectReader::ExpressionLogicalTerm() {
  const std::int32_t kind = Next();
  if (kind == tkLParen && p_.BracketsHoldCondition(at_ + 1, match_)) {
    Mark(0);
    ++at_;
    ExpressionLogical();
    Expect(tkRParen);
  } else if (kLogicalPredicate.Has(kind)) {
    Mark(1);
    Opt(kExpression.Has(kind), [&] { Expression(); });
    Predicate();
  } else if (kind == tkKwExists) {
    Mark(2);
    ++at_;
    Expect(tkLParen);
    SubSelectStatement();
    Expect(tkRParen);
  } else {
    throw DirectMiss{};
  }
}

// A bracket at token `open` holds a condition when a condition starts inside it and a
// token that may follow a condition follows its matching ")"; otherwise it opens the value
// expression of a predicate, as in "(a + b) > c". `match` keeps the matching ")" of every
// "(", worked out when first needed.
bool SQL92Parser::BracketsHoldCondition(std::int32_t open, std::vector<std::int32_t>& match) const {
  if (!kExpressionLogical.Has(NextKind(open)))
    return false;
  if (match.empty()) {
    const std::int32_t count = TokenCount();
    match.assign(static_cast<std::size_t>(count), -1);
    std::vector<std::int32_t> opened;
    for (std::int32_t i = 0; i < count; ++i) {
      const std::int32_t kind = KindAt(i);
      if (kind == tkLParen) {
        opened.push_back(i);
      } else if (kind == tkRParen && !opened.empty()) {
        match[static_cast<std::size_t>(opened.back())] = i;
        opened.pop_back();
      }
    }
  }
  const std::int32_t close = match[static_cast<std::size_t>(open)];
  return close >= 0 && kFollowCondition.Has(NextKind(close));
}

// predicate: comparisonOperator ( expression | expressionCompWithSet )
//          | "is" [ "not" ] "null"
//          | [ "not" ] "like" expression [ "escape" expression ]
//          | [ "not" ] "between" expression "and" expression
//          | [ "not" ] "in" "(" ( subSelectStatement | expressionsList ) ")"
void SQL92Parser::DirectReader::Predicate() {
  const std::int32_t kind = Next();
  if (kComparisonOperator.Has(kind)) {
    Mark(0);
    TokenOf(kComparisonKinds, 9);
    const std::int32_t right = Next();
    if (kExpression.Has(right)) {
      Mark(0);
      Expression();
    } else if (kExpressionCompWithSet.Has(right)) {
      Mark(1);
      TokenOf(kSetQuantifierKinds, 3);
      Expect(tkLParen);
      SubSelectStatement();
      Expect(tkRParen);
    } else {
      throw DirectMiss{};
    }
    return;
  }
  if (kind == tkKwIs) {
    Mark(1);
    ++at_;
    OptToken(tkKwNot);
    Expect(tkKwNull);
    return;
  }
  const std::int32_t word = kind == tkKwNot ? Ahead(1) : kind;
  if (word == tkKwLike) {
    Mark(2);
    OptToken(tkKwNot);
    ++at_;
    Expression();
    Opt(Next() == tkKwEscape, [&] {
      ++at_;
      Expression();
    });
  } else if (word == tkKwBetween) {
    Mark(3);
    OptToken(tkKwNot);
    ++at_;
    Expression();
    Expect(tkKwAnd);
    Expression();
  } else if (word == tkKwIn) {
    Mark(4);
    OptToken(tkKwNot);
    ++at_;
    Expect(tkLParen);
    const std::int32_t inner = Next();
    if (kSubSelectStatement.Has(inner)) {
      Mark(0);
      SubSelectStatement();
    } else if (kExpressionsList.Has(inner)) {
      Mark(1);
      ExpressionsList();
    } else {
      throw DirectMiss{};
    }
    Expect(tkRParen);
  } else {
    throw DirectMiss{};
  }
}

// ---- value expressions ---------------------------------------------------------------

// expression: expressionAdd; expressionAdd: expressionFactor { ( "+" | "-" ) expressionFactor }
// Every further operand of a chain nests one level deeper, as in the way calculation.
void SQL92Parser::DirectReader::Expression() {
  Enter();
  ExpressionFactor();
  const std::int32_t depth = depth_;
  Iter(kAddOperator, [&] {
    ChainOperand([&] {
      TokenOf(kAddKinds, 2);
      ExpressionFactor();
    });
  });
  depth_ = depth;
  Leave();
}

// expressionUnary: ( "-" | "+" | "~" ) expressionUnary | expressionTerm
void SQL92Parser::DirectReader::ExpressionUnary() {
  const std::int32_t kind = Next();
  if (kUnaryOperator.Has(kind)) {
    Mark(0);
    Enter();
    TokenOf(kUnaryKinds, 3);
    ExpressionUnary();
    Leave();
  } else {
    Mark(1);
    ExpressionTerm();
  }
}

// expressionTerm: "(" expression ")" | constant | dbColumn | SQLAggregateFunction
//               | SQLfunction | "(" subSelectStatement ")" | caseFunction
//               | castFunction | parameterlessFunction
// A bracket holds an expression unless a query starts in it; a name chain followed by
// "(" is a function (no column is followed by a bracket).
void SQL92Parser::DirectReader::ExpressionTerm() {
  const std::int32_t kind = Next();
  if (kind == tkLParen) {
    const std::int32_t inner = Ahead(1);
    if (kExpression.Has(inner)) {
      Mark(0);
      ++at_;
      Expression();
    } else if (kSubSelectStatement.Has(inner)) {
      Mark(5);
      ++at_;
      SubSelectStatement();
    } else {
      throw DirectMiss{};
    }
    Expect(tkRParen);
  } else if (kConstant.Has(kind)) {
    Mark(1);
    TokenOf(kConstantKinds, 6);
  } else if (kDbColumn.Has(kind)) {
    if (AfterNameRun() == tkLParen) {
      Mark(4);
      SQLfunction();
    } else {
      Mark(2);
      Name(kColumnQualifiers);
      if (kCannotFollowColumn.Has(Next()))
        throw DirectMiss{};
    }
  } else if (kAggregate.Has(kind)) {
    Mark(3);
    AggregateFunction();
  } else if (kind == tkKwCase) {
    Mark(6);
    CaseFunction();
  } else if (kind == tkKwCast) {
    Mark(7);
    CastFunction();
  } else if (kParameterlessFunction.Has(kind)) {
    Mark(8);
    Mark(kind - tkKwCurrentTimestamp);
    ++at_;
  } else {
    throw DirectMiss{};
  }
}

// SQLAggregateFunction:
//     ( "avg" | "max" | "min" | "sum" ) "(" [ "all" | "distinct" ] expression ")"
//   | "count" "(" ( "*" | [ "all" | "distinct" ] expression ) ")"
void SQL92Parser::DirectReader::AggregateFunction() {
  auto mode = [&] { Opt(kSelectMode.Has(Next()), [&] { TokenOf(kSelectModeKinds, 2); }); };
  if (Next() != tkKwCount) {
    Mark(0);
    TokenOf(kOneParamAggregateKinds, 4);
    Expect(tkLParen);
    mode();
    Expression();
  } else {
    Mark(1);
    ++at_;
    Expect(tkLParen);
    const std::int32_t kind = Next();
    if (kind == tkStar) {
      Mark(0);
      ++at_;
    } else if (kSelectMode.Has(kind) || kExpression.Has(kind)) {
      Mark(1);
      mode();
      Expression();
    } else {
      throw DirectMiss{};
    }
  }
  Expect(tkRParen);
}

// caseFunction: "case" ( expression "when" expression "then" expression { ... }
//                      | "when" expressionLogical "then" expression { ... } )
//               [ "else" expression ] "end"
void SQL92Parser::DirectReader::CaseFunction() {
  ++at_;
  if (kExpression.Has(Next())) {
    Mark(0);
    Expression();
    auto item = [&] {
      Expect(tkKwWhen);
      Expression();
      Expect(tkKwThen);
      Expression();
    };
    item();
    Iter(TqxTokenSet{tkKwWhen}, item);
  } else if (Next() == tkKwWhen) {
    Mark(1);
    auto item = [&] {
      Expect(tkKwWhen);
      ExpressionLogical();
      Expect(tkKwThen);
      Expression();
    };
    item();
    Iter(TqxTokenSet{tkKwWhen}, item);
  } else {
    throw DirectMiss{};
  }
  Opt(Next() == tkKwElse, [&] {
    ++at_;
    Expression();
  });
  Expect(tkKwEnd);
}

// SQLType: SQLTypeUser | built-in type; SQLTypeUser: [ identifier "." ] identifier.
// A type stands only in CAST, before its ")".
void SQL92Parser::DirectReader::SQLType() {
  const std::int32_t kind = Next();
  if (kSQLTypeUser.Has(kind)) {
    Mark(0);
    const std::int32_t start = at_;
    Opt(Ahead(1) == tkDot, [&] {
      Identifier();
      ++at_;
    });
    Identifier();
    if (p_.NameParts(start, at_) > 2)
      throw DirectMiss{};
  } else if (kSQLTypeBuiltIn.Has(kind)) {
    Mark(1);
    SQLTypeBuiltIn();
  } else {
    throw DirectMiss{};
  }
}

// A one-word type (decision 0) or the first form with arguments (decisions 1 to 16) whose
// tokens are all there and followed by ")".
void SQL92Parser::DirectReader::SQLTypeBuiltIn() {
  const std::int32_t kind = Next();
  if (kSQLType1word.Has(kind)) {
    const bool twoWords = kind == tkKwDouble;
    if (!twoWords || Ahead(1) == tkKwPrecision) {
      if (Ahead(twoWords ? 2 : 1) == tkRParen) {
        Mark(0);
        TokenOf(kType1WordKinds, kType1WordCount);
        if (twoWords)
          ++at_;
        return;
      }
    }
  }
  std::int32_t end = 0;
  const std::int32_t form = p_.TypeFormAfter(at_, end);
  if (form < 0)
    throw DirectMiss{};
  Mark(form + 1);
  at_ = end;
}

std::int32_t SQL92Parser::TypeFormAfter(std::int32_t tokenIndex, std::int32_t& end) const {
  for (std::int32_t i = 0; i < kTypeFormCount; ++i) {
    const TypeForm& form = kTypeForms[i];
    std::int32_t at = tokenIndex;
    auto next = [&](std::int32_t k) { return NextKind(at++) == k; };
    bool fits = next(form.words[0]) && (form.words[1] == 0 || next(form.words[1])) &&
                next(tkLParen) && SizeAt(at + 1);
    ++at;
    if (fits && form.scale) {
      fits = next(tkComma) && SizeAt(at + 1);
      ++at;
    }
    fits = fits && next(tkRParen);
    if (fits && form.zone != 0)
      fits = next(form.zone) && next(tkKwTime) && next(tkKwZone);
    if (fits && NextKind(at) == tkRParen) {
      end = at;
      return i;
    }
  }
  return -1;
}

// An integer literal that fits a type size.
bool SQL92Parser::SizeAt(std::int32_t tokenIndex) const {
  if (KindAt(tokenIndex) != tkInteger)
    return false;
  const std::string_view text = scanner->GetToken(tokenIndex).val;
  std::int32_t value = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && end == text.data() + text.size();
}

// ---- the entry -------------------------------------------------------------------------

bool SQL92Parser::ReadDirect(TqxWayList& ways, DirectEntry entry) {
  TqxWayPoint* start = ways.front();
  BeginRun(start);
  DirectReader reader(*this, start->tokenIndex);
  try {
    switch (entry) {
      case DirectEntry::kSelect:
        reader.SelectStatement();
        break;
      case DirectEntry::kObject:
        reader.DbObject();
        break;
      case DirectEntry::kExpression:
        reader.Expression();
        break;
      case DirectEntry::kItem:
        reader.SelectItem();
        break;
      case DirectEntry::kLogical:
        reader.ExpressionLogical();
        break;
    }
    if (reader.AtEnd()) {
      ways.front() = EndRun(start, reader.At());
      return true;
    }
  } catch (const DirectMiss&) {
  }
  // The reading made no way points: the way calculation starts from `start` as it was.
  return false;
}

}  // namespace qorvex
