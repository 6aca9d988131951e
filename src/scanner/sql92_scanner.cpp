#include "qorvex/scanner/sql92_scanner.h"

#include <array>

namespace qorvex {

QX_DEFINE_CLASS(SQL92Scanner, TqxBaseScanner)

namespace {

// Start states, one per way a token can begin.
enum TStart : std::int16_t {
  __ = 0,  // no token starts here: error token of one character
  EF,      // end of input
  ID,      // letter or "_": identifier or keyword
  D1,      // digit 1..9
  D0,      // digit 0: number or hexadecimal literal
  PT,      // "." : decimal, ".*" or "."
  SQ,      // single quote: string literal
  DQ,      // double quote: quoted identifier
  LB,      // "[": bracketed identifier
  AT,      // "@": parameter
  LC,      // "{": escape literal
  LT,      // "<"
  GT,      // ">"
  EX,      // "!"
  SC,      // ";"
  CM,      // ","
  LP,      // "("
  RP,      // ")"
  ST,      // "*"
  EQ,      // "="
  PL,      // "+"
  MI,      // "-"
  SL,      // "/"
  PC,      // "%"
  TL,      // "~"
};

// Indexed by the folded character; upper-case letters never reach the table.
// clang-format off
constexpr std::array<std::int16_t, 257> kStart = {
//        0   1   2   3   4   5   6   7   8   9   A   B   C   D   E   F
/* 00 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* 10 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* 20 */ __, EX, DQ, __, __, PC, __, SQ, LP, RP, ST, PL, CM, MI, PT, SL,  //  !"#$%&'()*+,-./
/* 30 */ D0, D1, D1, D1, D1, D1, D1, D1, D1, D1, __, SC, LT, EQ, GT, __,  // 0123456789:;<=>?
/* 40 */ AT, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,  // @ABCDEFGHIJKLMNO
/* 50 */ __, __, __, __, __, __, __, __, __, __, __, LB, __, __, __, ID,  // PQRSTUVWXYZ[\]^_
/* 60 */ __, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID,  // `abcdefghijklmno
/* 70 */ ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, ID, LC, __, __, TL, __,  // pqrstuvwxyz{|}~
/* 80 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* 90 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* A0 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* B0 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* C0 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* D0 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* E0 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* F0 */ __, __, __, __, __, __, __, __, __, __, __, __, __, __, __, __,
/* end of input */ EF,
};
// clang-format on

constexpr std::array<TqxKeyword, 148> kKeywords = {{
    {"order", tkKwOrder},
    {"by", tkKwBy},
    {"asc", tkKwAsc},
    {"desc", tkKwDesc},
    {"union", tkKwUnion},
    {"except", tkKwExcept},
    {"intersect", tkKwIntersect},
    {"all", tkKwAll},
    {"where", tkKwWhere},
    {"having", tkKwHaving},
    {"select", tkKwSelect},
    {"distinct", tkKwDistinct},
    {"group", tkKwGroup},
    {"as", tkKwAs},
    {"from", tkKwFrom},
    {"cross", tkKwCross},
    {"join", tkKwJoin},
    {"inner", tkKwInner},
    {"left", tkKwLeft},
    {"right", tkKwRight},
    {"full", tkKwFull},
    {"outer", tkKwOuter},
    {"on", tkKwOn},
    {"or", tkKwOr},
    {"and", tkKwAnd},
    {"not", tkKwNot},
    {"is", tkKwIs},
    {"null", tkKwNull},
    {"like", tkKwLike},
    {"escape", tkKwEscape},
    {"between", tkKwBetween},
    {"in", tkKwIn},
    {"exists", tkKwExists},
    {"some", tkKwSome},
    {"any", tkKwAny},
    {"current_timestamp", tkKwCurrentTimestamp},
    {"current_user", tkKwCurrentUser},
    {"session_user", tkKwSessionUser},
    {"system_user", tkKwSystemUser},
    {"case", tkKwCase},
    {"when", tkKwWhen},
    {"then", tkKwThen},
    {"else", tkKwElse},
    {"end", tkKwEnd},
    {"bigint", tkKwBigint},
    {"int8", tkKwInt8},
    {"bigserial", tkKwBigserial},
    {"serial8", tkKwSerial8},
    {"bit", tkKwBit},
    {"varbit", tkKwVarbit},
    {"varchar", tkKwVarchar},
    {"character", tkKwCharacter},
    {"char", tkKwChar},
    {"interval", tkKwInterval},
    {"numeric", tkKwNumeric},
    {"decimal", tkKwDecimal},
    {"boolean", tkKwBoolean},
    {"bool", tkKwBool},
    {"box", tkKwBox},
    {"bytea", tkKwBytea},
    {"cidr", tkKwCidr},
    {"circle", tkKwCircle},
    {"date", tkKwDate},
    {"double", tkKwDouble},
    {"precision", tkKwPrecision},
    {"float8", tkKwFloat8},
    {"inet", tkKwInet},
    {"integer", tkKwInteger},
    {"int", tkKwInt},
    {"int4", tkKwInt4},
    {"line", tkKwLine},
    {"lseg", tkKwLseg},
    {"macaddr", tkKwMacaddr},
    {"money", tkKwMoney},
    {"path", tkKwPath},
    {"point", tkKwPoint},
    {"polygon", tkKwPolygon},
    {"real", tkKwReal},
    {"float4", tkKwFloat4},
    {"smallint", tkKwSmallint},
    {"int2", tkKwInt2},
    {"serial", tkKwSerial},
    {"serial4", tkKwSerial4},
    {"text", tkKwText},
    {"time", tkKwTime},
    {"timetz", tkKwTimetz},
    {"timestamp", tkKwTimestamp},
    {"timestamptz", tkKwTimestamptz},
    {"varying", tkKwVarying},
    {"without", tkKwWithout},
    {"zone", tkKwZone},
    {"with", tkKwWith},
    {"avg", tkKwAvg},
    {"max", tkKwMax},
    {"min", tkKwMin},
    {"sum", tkKwSum},
    {"count", tkKwCount},
    {"cast", tkKwCast},
    {"ada", tkKwAda},
    {"c", tkKwC},
    {"catalog_name", tkKwCatalogName},
    {"character_set_catalog", tkKwCharacterSetCatalog},
    {"character_set_name", tkKwCharacterSetName},
    {"character_set_schema", tkKwCharacterSetSchema},
    {"class_origin", tkKwClassOrigin},
    {"cobol", tkKwCobol},
    {"collation_catalog", tkKwCollationCatalog},
    {"collation_name", tkKwCollationName},
    {"collation_schema", tkKwCollationSchema},
    {"column_name", tkKwColumnName},
    {"command_function", tkKwCommandFunction},
    {"committed", tkKwCommitted},
    {"condition_number", tkKwConditionNumber},
    {"connection_name", tkKwConnectionName},
    {"constraint_catalog", tkKwConstraintCatalog},
    {"constraint_name", tkKwConstraintName},
    {"constraint_schema", tkKwConstraintSchema},
    {"cursor_name", tkKwCursorName},
    {"data", tkKwData},
    {"datetime_interval_code", tkKwDatetimeIntervalCode},
    {"datetime_interval_precision", tkKwDatetimeIntervalPrecision},
    {"dynamic_function", tkKwDynamicFunction},
    {"fortran", tkKwFortran},
    {"length", tkKwLength},
    {"message_length", tkKwMessageLength},
    {"message_octet_length", tkKwMessageOctetLength},
    {"message_text", tkKwMessageText},
    {"more", tkKwMore},
    {"mumps", tkKwMumps},
    {"name", tkKwName},
    {"nullable", tkKwNullable},
    {"number", tkKwNumber},
    {"pascal", tkKwPascal},
    {"pli", tkKwPli},
    {"repeatable", tkKwRepeatable},
    {"returned_length", tkKwReturnedLength},
    {"returned_octet_length", tkKwReturnedOctetLength},
    {"returned_sqlstate", tkKwReturnedSqlstate},
    {"row_count", tkKwRowCount},
    {"scale", tkKwScale},
    {"schema_name", tkKwSchemaName},
    {"serializable", tkKwSerializable},
    {"server_name", tkKwServerName},
    {"subclass_origin", tkKwSubclassOrigin},
    {"table_name", tkKwTableName},
    {"type", tkKwType},
    {"uncommitted", tkKwUncommitted},
    {"unnamed", tkKwUnnamed},
}};

constexpr std::size_t kMaxKeywordLength = 27;  // "datetime_interval_precision"

// The table is lower case, within kMaxKeywordLength, and free of duplicates.
constexpr bool KeywordTableIsSound() {
  std::size_t longest = 0;
  for (std::size_t i = 0; i < kKeywords.size(); ++i) {
    const std::string_view w = kKeywords[i].word;
    longest = w.size() > longest ? w.size() : longest;
    for (char c : w) {
      if (!((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'))
        return false;
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (kKeywords[j].word == w || kKeywords[j].kind == kKeywords[i].kind)
        return false;
    }
  }
  return longest == kMaxKeywordLength;
}
static_assert(KeywordTableIsSound());

constexpr char Fold(char c) noexcept {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c;
}

// A cheap hash of the folded word: its length and three of its letters.
constexpr std::uint32_t Hash(std::string_view s) noexcept {
  const std::size_t n = s.size();
  const auto at = [&](std::size_t i) { return static_cast<std::uint32_t>(Fold(s[i])); };
  return (static_cast<std::uint32_t>(n) * 0x9E3779B1u) ^ (at(0) * 0x85EBCA6Bu) ^
         (at(n - 1) * 0xC2B2AE35u) ^ (at(n / 2) * 0x27D4EB2Fu);
}

// Open-addressing index over the keyword table: slot -> table index + 1 (0 is empty).
// The table holds no duplicates, so finding the one equal entry is the same as trying
// the entries in order.
constexpr std::size_t kSlots = 1024;
constexpr std::size_t Slot(std::uint32_t hash) noexcept {
  return (hash >> 16) & (kSlots - 1);
}
constexpr std::array<std::uint8_t, kSlots> kKeywordIndex = [] {
  std::array<std::uint8_t, kSlots> index{};
  for (std::size_t i = 0; i < kKeywords.size(); ++i) {
    std::size_t h = Slot(Hash(kKeywords[i].word));
    while (index[h] != 0)
      h = (h + 1) & (kSlots - 1);
    index[h] = static_cast<std::uint8_t>(i + 1);
  }
  return index;
}();

constexpr bool IsDigit(std::int32_t c) noexcept {
  return c >= '0' && c <= '9';
}
constexpr bool IsLetter(std::int32_t c) noexcept {
  return c >= 'a' && c <= 'z';
}
constexpr bool IsNamePart(std::int32_t c) noexcept {
  return IsLetter(c) || IsDigit(c) || c == '_';
}
constexpr bool IsHexDigit(std::int32_t c) noexcept {
  return IsDigit(c) || (c >= 'a' && c <= 'f');
}
// The optional blank positions of an escape literal: tab, line break or space.
constexpr bool IsBlank(std::int32_t c) noexcept {
  return c == '\t' || c == 10 || c == 13 || c == ' ';
}

// Runs of ASCII characters that a token's loop passes over without a decision; see
// NextChWhile.
template <class Pred>
constexpr TqxCharSet AsciiSet(Pred pred) {
  TqxCharSet set;
  for (std::int32_t c = 0; c < 128; ++c) {
    const std::int32_t folded = (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c;
    if (c != 10 && c != 13 && pred(folded))
      set.Include(c);
  }
  return set;
}
constexpr TqxCharSet kNameRun = AsciiSet(IsNamePart);
constexpr TqxCharSet kDigitRun = AsciiSet(IsDigit);
constexpr TqxCharSet kHexRun = AsciiSet(IsHexDigit);
constexpr TqxCharSet kSingleQuotedRun = AsciiSet([](std::int32_t c) { return c != '\''; });
constexpr TqxCharSet kDoubleQuotedRun = AsciiSet([](std::int32_t c) { return c != '"'; });
constexpr TqxCharSet kBracketedRun = AsciiSet([](std::int32_t c) { return c != ']'; });

}  // namespace

std::span<const TqxKeyword> SQL92Scanner::Keywords() noexcept {
  return kKeywords;
}

std::int32_t SQL92Scanner::FindKeyword(std::string_view word) noexcept {
  const std::size_t n = word.size();
  if (n == 0 || n > kMaxKeywordLength)
    return 0;
  for (std::size_t h = Slot(Hash(word)); kKeywordIndex[h] != 0; h = (h + 1) & (kSlots - 1)) {
    const TqxKeyword& k = kKeywords[kKeywordIndex[h] - 1];
    if (k.word.size() != n)
      continue;
    std::size_t i = 0;
    while (i < n && Fold(word[i]) == k.word[i])
      ++i;
    if (i == n)
      return k.kind;
  }
  return 0;
}

void SQL92Scanner::InitInternal() {
  for (std::int32_t c = 1; c <= 32; ++c)
    ignore_.Include(c);
  blankRun_ = ignore_;
  blankRun_.Exclude(10);
  blankRun_.Exclude(13);
}

void SQL92Scanner::CheckLiteral(TqxToken& token) {
  if (std::int32_t kind = FindKeyword(token.val); kind != 0)
    token.kind = kind;
}

bool SQL92Scanner::Comment0() {
  const std::int32_t line0 = line_;
  const std::int32_t lineStart0 = lineStart_;
  NextCh();
  if (ch_ != '-') {
    // Not a comment: step back so that the first "-" is current again. The step is
    // counted in characters while the buffer counts bytes, so after earlier CR LF pairs
    // (or multi-byte characters) it lands early and the characters in between are
    // delivered again. Callers rely on exactly this.
    if (ch_ == 13) {
      line_ = line0;
      lineStart_ = lineStart0;
    }
    pos_ -= 2;
    buffer_.SetPos(pos_ + 1);
    NextCh();
    return false;
  }
  NextCh();
  // Only a LF directly followed by CR arrives as 10, so a comment ends there or runs to
  // the end of the text.
  while (ch_ != 10) {
    if (ch_ == kEndOfInput)
      return false;
    NextCh();
  }
  pendingEols_ = line_ - line0;
  NextCh();
  return true;
}

TqxToken SQL92Scanner::NextToken() {
  for (;;) {
    while (ignore_.Contains(ch_)) {
      if (ch_ == 10 || ch_ == 13)
        NextCh();
      else
        NextChWhile(blankRun_);
    }
    if (ch_ == '-' && Comment0())
      continue;  // the comment is skipped; scan what follows it
    break;
  }

  TqxToken t = StartToken();
  const std::int32_t begin = chByte_;
  const std::int32_t start = kStart[static_cast<std::size_t>(ch_)];
  NextCh();

  std::int32_t kind = tkError;
  switch (start) {
    case EF:
      kind = tkEof;
      break;

    case ID:
      NextChWhile(kNameRun);
      t.kind = tkIdentifier;
      t.val = TextFrom(begin);
      CheckLiteral(t);
      return t;

    case D0:
      if (ch_ == 'x') {
        NextCh();
        if (!IsHexDigit(ch_))
          break;
        NextChWhile(kHexRun);
        kind = tkHex;
        break;
      }
      [[fallthrough]];
    case D1:
      NextChWhile(kDigitRun);
      if (ch_ != '.') {
        kind = tkInteger;
        break;
      }
      NextCh();
      if (!IsDigit(ch_))
        break;
      [[fallthrough]];
    case PT:
      if (start == PT && !IsDigit(ch_)) {
        if (ch_ == '*') {
          NextCh();
          kind = tkDotStar;
        } else {
          kind = tkDot;
        }
        break;
      }
      // Fraction digits, at least one present; then the optional exponent.
      NextChWhile(kDigitRun);
      if (ch_ == 'e') {
        NextCh();
        if (ch_ == '+' || ch_ == '-')
          NextCh();
        if (!IsDigit(ch_))
          break;
        NextChWhile(kDigitRun);
      }
      kind = tkDecimal;
      break;

    case SQ:
    case DQ: {
      const std::int32_t quote = start == SQ ? '\'' : '"';
      const TqxCharSet& run = start == SQ ? kSingleQuotedRun : kDoubleQuotedRun;
      for (;;) {
        NextChWhile(run);
        if (ch_ == kEndOfInput)
          break;
        if (ch_ == quote) {
          NextCh();
          if (ch_ != quote) {
            kind = start == SQ ? tkString : tkQuotedIdentifier;
            break;
          }
        }
        NextCh();
      }
      break;
    }

    case LB:
      for (;;) {
        NextChWhile(kBracketedRun);
        if (ch_ == kEndOfInput)
          break;
        if (ch_ == ']') {
          NextCh();
          if (ch_ != '[') {
            kind = tkQuotedIdentifier;
            break;
          }
        }
        NextCh();
      }
      break;

    case AT:
      NextChWhile(kNameRun);
      kind = tkParameter;
      break;

    case LC: {
      if (IsBlank(ch_))
        NextCh();
      if (ch_ == 'd') {
        NextCh();
      } else if (ch_ == 't') {
        NextCh();
        if (ch_ == 's')
          NextCh();
      } else {
        break;
      }
      if (IsBlank(ch_))
        NextCh();
      if (ch_ == 'n')
        NextCh();
      if (ch_ != '\'')
        break;
      NextCh();
      bool closed = false;
      while (ch_ != kEndOfInput) {
        if (ch_ == '\'') {
          NextCh();
          if (ch_ != '\'') {
            closed = true;
            break;
          }
        }
        NextCh();
      }
      if (!closed)
        break;
      if (IsBlank(ch_))
        NextCh();
      if (ch_ != '}')
        break;
      NextCh();
      kind = tkEscape;
      break;
    }

    case LT:
      if (ch_ == '>') {
        NextCh();
        kind = tkNotEqual;
      } else if (ch_ == '=') {
        NextCh();
        kind = tkLessEqual;
      } else {
        kind = tkLess;
      }
      break;
    case GT:
      if (ch_ == '=') {
        NextCh();
        kind = tkGreaterEqual;
      } else {
        kind = tkGreater;
      }
      break;
    case EX:
      if (ch_ == '=')
        kind = tkBangEqual;
      else if (ch_ == '>')
        kind = tkBangGreater;
      else if (ch_ == '<')
        kind = tkBangLess;
      else
        break;
      NextCh();
      break;

    case SC:
      kind = tkSemicolon;
      break;
    case CM:
      kind = tkComma;
      break;
    case LP:
      kind = tkLParen;
      break;
    case RP:
      kind = tkRParen;
      break;
    case ST:
      kind = tkStar;
      break;
    case EQ:
      kind = tkEqual;
      break;
    case PL:
      kind = tkPlus;
      break;
    case MI:
      kind = tkMinus;
      break;
    case SL:
      kind = tkSlash;
      break;
    case PC:
      kind = tkPercent;
      break;
    case TL:
      kind = tkTilde;
      break;

    default:  // no token starts with this character
      break;
  }
  t.kind = kind;
  t.val = TextFrom(begin);
  return t;
}

}  // namespace qorvex
