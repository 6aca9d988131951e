#include "qorvex/scanner/sql92_scanner.h"

#include <array>
#include <bit>
#include <cstring>
#include <typeinfo>

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

// The table is lower case, starts each word with a letter, is within kMaxKeywordLength, and free of
// duplicates.
constexpr bool KeywordTableIsSound() {
  std::size_t longest = 0;
  for (std::size_t i = 0; i < kKeywords.size(); ++i) {
    const std::string_view w = kKeywords[i].word;
    longest = w.size() > longest ? w.size() : longest;
    if (w.empty() || w[0] < 'a' || w[0] > 'z')
      return false;  // the lookup buckets by first letter
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

// ASCII folded to lower case, indexed by byte.
constexpr std::array<char, 256> kLower = [] {
  std::array<char, 256> table{};
  for (int b = 0; b < 256; ++b)
    table[b] = static_cast<char>(b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b);
  return table;
}();

// Keyword lookup: the keywords grouped by length and first letter. Bucket
// (length, letter) holds kByBucket[kBucketStart[i] .. kBucketStart[i + 1]) with
// i = length * 26 + (letter - 'a'); within a bucket the table order is kept.
constexpr std::size_t kBuckets = (kMaxKeywordLength + 1) * 26;
constexpr std::size_t BucketOf(std::size_t length, char first) noexcept {
  return length * 26 + static_cast<std::size_t>(first - 'a');
}
constexpr std::array<std::uint8_t, kBuckets + 1> kBucketStart = [] {
  std::array<std::uint8_t, kBuckets + 1> start{};
  for (const TqxKeyword& k : kKeywords)
    ++start[BucketOf(k.word.size(), k.word[0]) + 1];
  for (std::size_t i = 1; i <= kBuckets; ++i)
    start[i] = static_cast<std::uint8_t>(start[i] + start[i - 1]);
  return start;
}();
constexpr std::array<std::uint8_t, kKeywords.size()> kByBucket = [] {
  std::array<std::uint8_t, kKeywords.size()> order{};
  std::array<std::uint8_t, kBuckets + 1> next = kBucketStart;
  for (std::size_t i = 0; i < kKeywords.size(); ++i)
    order[next[BucketOf(kKeywords[i].word.size(), kKeywords[i].word[0])]++] =
        static_cast<std::uint8_t>(i);
  return order;
}();
static_assert(kBucketStart[kBuckets] == kKeywords.size());

// The scanner's keyword check: a perfect hash over the keywords' first eight bytes and
// length, so that a name costs one multiplication, one table read and one comparison.
// Words are little-endian 64-bit loads with bit 0x20 set in every byte, zero beyond the
// end. Setting bit 0x20 folds letters and keeps digits and "_" apart from every other
// name character, so for a word of name characters equal words mean equal keywords
// (letter case ignored).
constexpr std::size_t kKeywordWords = (kMaxKeywordLength + 7) / 8;
constexpr std::uint64_t kCaseBits = 0x2020202020202020u;
struct TPackedKeyword {
  std::uint64_t words[kKeywordWords];
  std::uint32_t length;
  std::int32_t kind;
};
constexpr std::array<TPackedKeyword, kKeywords.size()> kPacked = [] {
  std::array<TPackedKeyword, kKeywords.size()> packed{};
  for (std::size_t k = 0; k < kKeywords.size(); ++k) {
    const std::string_view w = kKeywords[k].word;
    for (std::size_t i = 0; i < w.size(); ++i)
      packed[k].words[i / 8] |= std::uint64_t{static_cast<unsigned char>(w[i]) | 0x20u}
                                << (8 * (i % 8));
    packed[k].length = static_cast<std::uint32_t>(w.size());
    packed[k].kind = kKeywords[k].kind;
  }
  return packed;
}();

constexpr unsigned kHashBits = 13;
constexpr std::uint8_t kNoKeyword = 0xFF;
static_assert(kKeywords.size() < kNoKeyword);
constexpr std::size_t HashSlot(std::uint64_t first, std::size_t n, std::uint64_t multiplier) {
  return static_cast<std::size_t>(((first ^ (std::uint64_t{n} << 59)) * multiplier) >>
                                  (64 - kHashBits));
}
// The first multiplier of a fixed sequence of odd numbers that gives every keyword a slot
// of its own (found at compile time).
constexpr std::uint64_t kHashMultiplier = [] {
  std::uint64_t m = 0x9E3779B97F4A7C15u;
  for (int tries = 0; tries < 1000; ++tries) {
    std::array<bool, std::size_t{1} << kHashBits> used{};
    bool clash = false;
    for (const TPackedKeyword& k : kPacked) {
      const std::size_t slot = HashSlot(k.words[0], k.length, m);
      clash = clash || used[slot];
      used[slot] = true;
    }
    if (!clash)
      return m;
    m = (m * 6364136223846793005u + 1442695040888963407u) | 1u;
  }
  return std::uint64_t{0};
}();
static_assert(kHashMultiplier != 0, "no multiplier separates the keywords");
constexpr std::array<std::uint8_t, std::size_t{1} << kHashBits> kKeywordSlots = [] {
  std::array<std::uint8_t, std::size_t{1} << kHashBits> slots{};
  for (std::uint8_t& slot : slots)
    slot = kNoKeyword;
  for (std::size_t k = 0; k < kPacked.size(); ++k)
    slots[HashSlot(kPacked[k].words[0], kPacked[k].length, kHashMultiplier)] =
        static_cast<std::uint8_t>(k);
  return slots;
}();

// The keyword kind of a word of `n` name characters (letters, digits, "_") at `word`,
// where at least `avail` bytes from `word` on may be read; 0 when it is no keyword.
[[gnu::always_inline]] inline std::int32_t FindNameKeyword(const unsigned char* word, std::size_t n,
                                                           std::size_t avail) noexcept {
  if constexpr (std::endian::native != std::endian::little)
    return SQL92Scanner::FindKeyword({reinterpret_cast<const char*>(word), n});
  if (n > kMaxKeywordLength)
    return 0;
  if (avail < ((n + 7) & ~std::size_t{7})) [[unlikely]]
    return SQL92Scanner::FindKeyword({reinterpret_cast<const char*>(word), n});
  std::uint64_t first;
  std::memcpy(&first, word, 8);
  first |= kCaseBits;
  if (n < 8)
    first &= ~std::uint64_t{0} >> (64 - 8 * n);
  const std::uint8_t k = kKeywordSlots[HashSlot(first, n, kHashMultiplier)];
  if (k == kNoKeyword)
    return 0;
  const TPackedKeyword& keyword = kPacked[k];
  if (keyword.length != n || keyword.words[0] != first)
    return 0;
  for (std::size_t i = 1; 8 * i < n; ++i) {
    std::uint64_t w;
    std::memcpy(&w, word + 8 * i, 8);
    w |= kCaseBits;
    if (n < 8 * (i + 1))
      w &= ~std::uint64_t{0} >> (64 - 8 * (n - 8 * i));
    if (w != keyword.words[i])
      return 0;
  }
  return keyword.kind;
}

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
// Characters skipped between tokens: the control characters and the blank.
constexpr bool IsIgnored(std::int32_t c) noexcept {
  return c >= 1 && c <= 32;
}

// Byte classes: runs of ASCII characters that a token's loop passes over without a
// decision (see NextChWhile), and the blanks between tokens other than line breaks.
enum : std::uint8_t {
  kNameRun = 1,
  kDigitRun = 2,
  kHexRun = 4,
  kSingleQuotedRun = 8,
  kDoubleQuotedRun = 16,
  kBracketedRun = 32,
  kBlankRun = 64,
  kIgnoredChar = 128,  // all ignored characters, line breaks included; no run
};
constexpr TqxByteClasses kClasses = [] {
  TqxByteClasses classes{};
  for (std::int32_t c = 0; c < 128; ++c) {
    if (c == 10 || c == 13) {
      classes[static_cast<std::size_t>(c)] = kIgnoredChar;
      continue;
    }
    const std::int32_t folded = (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c;
    std::uint8_t bits = 0;
    bits |= IsNamePart(folded) ? kNameRun : 0;
    bits |= IsDigit(folded) ? kDigitRun : 0;
    bits |= IsHexDigit(folded) ? kHexRun : 0;
    bits |= folded != '\'' ? kSingleQuotedRun : 0;
    bits |= folded != '"' ? kDoubleQuotedRun : 0;
    bits |= folded != ']' ? kBracketedRun : 0;
    bits |= IsIgnored(folded) ? kBlankRun | kIgnoredChar : 0;
    classes[static_cast<std::size_t>(c)] = bits;
  }
  return classes;
}();

constexpr TqxCharSet kIgnored = [] {
  TqxCharSet set;
  for (std::int32_t c = 0; c < 256; ++c) {
    if (IsIgnored(c))
      set.Include(c);
  }
  return set;
}();

}  // namespace

std::span<const TqxKeyword> SQL92Scanner::Keywords() noexcept {
  return kKeywords;
}

std::int32_t SQL92Scanner::FindKeyword(std::string_view word) noexcept {
  const std::size_t n = word.size();
  if (n == 0 || n > kMaxKeywordLength)
    return 0;
  const char first = kLower[static_cast<unsigned char>(word[0])];
  if (!IsLetter(first))
    return 0;
  const std::size_t bucket = BucketOf(n, first);
  for (std::size_t at = kBucketStart[bucket]; at < kBucketStart[bucket + 1]; ++at) {
    const TqxKeyword& k = kKeywords[kByBucket[at]];
    std::size_t i = 1;
    while (i < n && kLower[static_cast<unsigned char>(word[i])] == k.word[i])
      ++i;
    if (i == n)
      return k.kind;
  }
  return 0;
}

void SQL92Scanner::InitInternal() {
  ignore_ = kIgnored;
  // A derived dialect may override NextToken or CheckLiteral: it is scanned through
  // them. This class itself scans in one inlined loop.
  ownScan_ = typeid(*this) == typeid(SQL92Scanner);
}

void SQL92Scanner::CheckLiteral(TqxToken& token) {
  if (std::int32_t kind = FindKeyword(token.val); kind != 0)
    token.kind = kind;
}

bool SQL92Scanner::Comment0() {
  const std::int32_t line0 = line_;
  const std::int32_t lineStart0 = lineStart_;
  const std::int32_t tails0 = utf8Tails_;
  NextCh();
  if (ch_ != '-') {
    // Not a comment: step back to the "-". The step goes to the "-"'s position counted
    // in bytes with every swallowed LF (of a CR LF or LF LF break) left out, so after
    // such breaks it lands early and the characters in between are delivered again:
    // callers rely on exactly this. A multi-byte character counts with all its bytes
    // here, so that it moves nothing.
    if (ch_ == 13) {
      line_ = line0;
      lineStart_ = lineStart0;
    }
    pos_ -= 2;
    utf8Tails_ = tails0;
    buffer_.SetPos(pos_ + 1 + tails0 + stepBase_);
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
  return Scan();
}

void SQL92Scanner::BeginStatements(std::string_view script) {
  ClearTokens();
  statementWise_ = true;
  statementsDone_ = false;
  StartText(script);
}

bool SQL92Scanner::ScanStatement() {
  ClearTokens();
  if (statementsDone_ || buffer_.Bytes() == nullptr) {
    buffer_.Clear();
    return false;
  }
  bool any = false;
  AppendTokensUpToEnd([this, &any] {
    for (;;) {
      TqxToken t = ownScan_ ? Scan() : NextToken();
      if (t.kind == tkSemicolon) {
        if (!any)
          continue;  // an empty statement
        t.kind = tkEof;
      } else if (t.kind == tkEof) {
        statementsDone_ = true;
      } else {
        any = true;
        return t;
      }
      t.val = "EOF";
      return t;
    }
  });
  if (!any) {
    ClearTokens();
    buffer_.Clear();
    return false;
  }
  return true;
}

void SQL92Scanner::ScanTokens() {
  if (!ownScan_) {
    TqxBaseScanner::ScanTokens();
    return;
  }
  // The fast reading relies on the NUL byte that ends the scanner's own copy of a text;
  // statement-wise scanning has the general recogniser mark each statement's start.
  if (statementWise_ || !ScanningOwnCopy()) {
    AppendTokensUpToEnd([this] { return Scan(); });
    return;
  }

  // The tokens most texts are made of (names, keywords, integers, strings without
  // doubled quotes, "." and the operators but "-") and the blanks and line breaks before
  // them are read with the state in locals: `q` is the current character's byte, `skew`
  // the bytes before it less the characters (the swallowed LFs). Anything else (and the
  // end) goes to Scan with the state stored back; the tokens are exactly Scan's.
  const unsigned char* const bytes = buffer_.Bytes();
  const std::int32_t len = buffer_.GetLen();
  bool fast = false;
  std::int32_t q = 0;
  std::int32_t skew = 0;
  std::int32_t line = 0;
  std::int32_t lineStart = 0;
  // The current character must be plain ASCII read at chByte_ (not a line break that
  // NextCh has already counted, not the end), with no line break pending.
  const auto enter = [&] {
    fast = pendingEols_ == 0 && ch_ < 128 && ch_ != 10 && ch_ != 13;
    q = chByte_;
    skew = q - pos_;
    line = line_;
    lineStart = lineStart_;
  };
  // Stores the state back with the character at byte `at` the current one.
  const auto leave = [&](std::int32_t at) {
    fast = false;
    line_ = line;
    lineStart_ = lineStart;
    const std::uint8_t folded = at < len ? kPlainFold[bytes[at]] : kNotPlain;
    if (folded != kNotPlain) {
      chByte_ = at;
      pos_ = at - skew;
      ch_ = folded;
      buffer_.MoveTo(at + 1);
    } else {
      pos_ = at - skew - 1;
      buffer_.MoveTo(at);
      NextCh();
    }
  };
  enter();
  AppendTokensUpToEnd([&]() __attribute__((always_inline))->TqxToken {
    if (fast) {
      // Blanks and line breaks, counted as NextCh counts them: CR, LF and CR LF are one
      // break each, and so is LF LF (the second LF swallowed).
      unsigned char b = bytes[q];
      for (;;) {
        if ((kClasses[b] & kBlankRun) != 0) {
          b = bytes[++q];
          continue;
        }
        if (b != 10 && b != 13)
          break;
        const unsigned char next = bytes[q + 1];
        if (b == 10 && next == 13)
          break;  // a LF before a CR is an ordinary character: Scan reads it
        lineStart = q - skew + 1;
        ++line;
        ++q;
        if (next == 10) {
          ++q;
          ++skew;
        }
        b = bytes[q];
      }
      const std::int32_t begin = q;
      std::int32_t kind = tkError;
      if (q < len) {
        switch (kStart[b]) {
          case ID: {
            do
              ++q;
            while ((kClasses[bytes[q]] & kNameRun) != 0);
            const std::int32_t keyword =
                FindNameKeyword(bytes + begin, static_cast<std::size_t>(q - begin),
                                static_cast<std::size_t>(len - begin));
            kind = keyword != 0 ? keyword : tkIdentifier;
            break;
          }
          case D0:
            if ((bytes[q + 1] | 0x20) == 'x')
              break;
            [[fallthrough]];
          case D1:
            do
              ++q;
            while ((kClasses[bytes[q]] & kDigitRun) != 0);
            if (bytes[q] == '.')
              q = begin;  // a decimal
            else
              kind = tkInteger;
            break;
          case SQ: {
            std::int32_t e = q + 1;
            while (e < len && (kClasses[bytes[e]] & kSingleQuotedRun) != 0)
              ++e;
            // Not a line break, a byte above 127, a doubled quote or the end inside.
            if (e < len && bytes[e] == '\'' && bytes[e + 1] != '\'') {
              q = e + 1;
              kind = tkString;
            }
            break;
          }
          case PT: {
            const unsigned char next = bytes[q + 1];
            if (next >= '0' && next <= '9')
              break;
            kind = next == '*' ? tkDotStar : tkDot;
            q += next == '*' ? 2 : 1;
            break;
          }
          case LT: {
            const unsigned char next = bytes[q + 1];
            kind = next == '>' ? tkNotEqual : next == '=' ? tkLessEqual : tkLess;
            q += kind == tkLess ? 1 : 2;
            break;
          }
          case GT:
            kind = bytes[q + 1] == '=' ? tkGreaterEqual : tkGreater;
            q += kind == tkGreater ? 1 : 2;
            break;
          case SC:
            kind = tkSemicolon;
            ++q;
            break;
          case CM:
            kind = tkComma;
            ++q;
            break;
          case LP:
            kind = tkLParen;
            ++q;
            break;
          case RP:
            kind = tkRParen;
            ++q;
            break;
          case ST:
            kind = tkStar;
            ++q;
            break;
          case EQ:
            kind = tkEqual;
            ++q;
            break;
          case PL:
            kind = tkPlus;
            ++q;
            break;
          case SL:
            kind = tkSlash;
            ++q;
            break;
          case PC:
            kind = tkPercent;
            ++q;
            break;
          case TL:
            kind = tkTilde;
            ++q;
            break;
          default:  // "-" (a comment?), quoted names, parameters, escapes, "!", errors
            break;
        }
      }
      if (kind != tkError) {
        const std::int32_t pos = begin - skew;
        return TqxToken{kind,
                        pos,
                        pos - lineStart + 1,
                        line,
                        std::string_view(reinterpret_cast<const char*>(bytes) + begin,
                                         static_cast<std::size_t>(q - begin)),
                        begin};
      }
      leave(begin);
    }
    TqxToken token = Scan();
    enter();
    return token;
  });
}

[[gnu::always_inline]] inline TqxToken SQL92Scanner::Scan() {
  for (;;) {
    // kIgnoredChar is the ignore set InitInternal installs, as a byte class.
    if ((kClasses[static_cast<std::size_t>(ch_)] & kIgnoredChar) != 0)
      SkipBlanksAndLineBreaks(kClasses, kBlankRun);
    if (statementStart_) [[unlikely]] {
      // A statement's first character: its step backs are counted from here.
      stepBase_ = chByte_ - pos_ - utf8Tails_;
      if (ch_ == '-' && Comment0())
        continue;
      statementStart_ = false;
      break;
    }
    if (ch_ == '-' && Comment0())
      continue;  // the comment is skipped; scan what follows it
    break;
  }

  const std::int32_t pos = pos_;
  const std::int32_t col = pos_ - lineStart_ + 1;
  const std::int32_t line = line_;
  const std::int32_t begin = chByte_;
  const std::int32_t start = kStart[static_cast<std::size_t>(ch_)];
  std::int32_t kind = tkError;
  if (start == ID) {
    // Letters, digits and "_" are single bytes: the name is one run from its first
    // character on.
    NextChRun(kClasses, kNameRun);
    kind = tkIdentifier;
  } else {
    NextCh();
    switch (start) {
      case EF:
        kind = tkEof;
        break;

      case D0:
        if (ch_ == 'x') {
          NextCh();
          if (!IsHexDigit(ch_))
            break;
          NextChWhile(kClasses, kHexRun);
          kind = tkHex;
          break;
        }
        [[fallthrough]];
      case D1:
        NextChWhile(kClasses, kDigitRun);
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
        NextChWhile(kClasses, kDigitRun);
        if (ch_ == 'e') {
          NextCh();
          if (ch_ == '+' || ch_ == '-')
            NextCh();
          if (!IsDigit(ch_))
            break;
          NextChWhile(kClasses, kDigitRun);
        }
        kind = tkDecimal;
        break;

      case SQ:
      case DQ: {
        const std::int32_t quote = start == SQ ? '\'' : '"';
        const std::uint8_t run = start == SQ ? kSingleQuotedRun : kDoubleQuotedRun;
        for (;;) {
          NextChWhile(kClasses, run);
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
          NextChWhile(kClasses, kBracketedRun);
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
        NextChWhile(kClasses, kNameRun);
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
        statementStart_ = statementWise_;
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
  }
  // The token's text: its bytes up to the current character, which has moved on from
  // the token's start (a step back in Comment0 happens before a token starts).
  const std::string_view text(buffer_.View().data() + begin,
                              static_cast<std::size_t>(chByte_ - begin));
  if (kind == tkIdentifier && ownScan_) {
    // What CheckLiteral does, straight from the input.
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const auto avail = static_cast<std::size_t>(buffer_.GetLen() - begin);
    if (const std::int32_t keyword = FindNameKeyword(bytes, text.size(), avail); keyword != 0)
      kind = keyword;
  }
  if (kind == tkIdentifier && !ownScan_) {
    TqxToken token{kind, pos, col, line, text, begin};
    CheckLiteral(token);
    return token;
  }
  return TqxToken{kind, pos, col, line, text, begin};
}

}  // namespace qorvex
