#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "qorvex/core/metaclass.h"
#include "qorvex/scanner/buffer.h"
#include "qorvex/scanner/token.h"
#include "qorvex/sql_export.h"

namespace qorvex {

class TqxBaseScanner;

// Class reference of scanners: a dialect names its scanner class and the syntax
// provider creates it by class.
using TqxScannerClass = TqxClassOf<TqxBaseScanner>;

// A set of 8-bit characters; characters outside 0..255 are never members.
class QORVEX_SQL_EXPORT TqxCharSet {
 public:
  constexpr void Clear() noexcept { bits_[0] = bits_[1] = bits_[2] = bits_[3] = 0; }
  constexpr void Include(std::int32_t c) noexcept {
    if (c >= 0 && c < 256)
      bits_[c >> 6] |= std::uint64_t{1} << (c & 63);
  }
  constexpr void Exclude(std::int32_t c) noexcept {
    if (c >= 0 && c < 256)
      bits_[c >> 6] &= ~(std::uint64_t{1} << (c & 63));
  }
  constexpr bool Contains(std::int32_t c) const noexcept {
    return c >= 0 && c < 256 && ((bits_[c >> 6] >> (c & 63)) & 1) != 0;
  }

 private:
  std::uint64_t bits_[4] = {0, 0, 0, 0};
};

// Byte classes of a dialect's scanner: bit flags per byte value; index 256 (end of
// input) belongs to no class.
using TqxByteClasses = std::array<std::uint8_t, 257>;

// The dialect-independent half of scanning: reads characters from a TqxBuffer with
// line-break normalisation and line/column counting, and turns the whole text into a
// token list before parsing starts. A dialect derives from it and supplies the token
// recogniser (NextToken), the keyword check (CheckLiteral) and its ignore set
// (InitInternal).
//
// Characters: a valid UTF-8 sequence is one character (for positions and columns);
// any other byte is a character of its own. Decisions see `ch_` folded to ASCII lower
// case; a multi-byte character appears as its lead byte (128..255), which no dialect
// rule accepts outside quotes.
class QORVEX_SQL_EXPORT TqxBaseScanner {
  QX_ROOT_CLASS(TqxScannerClass)

 public:
  static constexpr std::int32_t kEndOfInput = TqxBuffer::kEndOfInput;

  TqxBaseScanner() = default;
  TqxBaseScanner(const TqxBaseScanner&) = delete;
  TqxBaseScanner& operator=(const TqxBaseScanner&) = delete;
  virtual ~TqxBaseScanner();
  // A scanner is made for every parse: its memory comes from the per-thread recycled
  // blocks of the syntax tree.
  static void* operator new(std::size_t Size);
  static void operator delete(void* Block, std::size_t Size) noexcept;

  // Scans the whole text and appends its tokens, the end token ("EOF") last. The
  // existing list is not cleared: a scanner serves one text. The scanner keeps a copy of
  // the text, which the tokens' texts view, so `text` need not outlive the call.
  void Init(std::string_view text);

  // Scans the whole text like Init, but instead of keeping the tokens hands them to
  // `sink` a chunk at a time (the end token last), so that memory stays one chunk however
  // long the text is. The text is read in place: the tokens' texts view `text`. The
  // scanner holds no tokens afterwards.
  using TokenSink = void (*)(void* context, const TqxToken* tokens, std::int32_t count);
  void ScanInBatches(std::string_view text, TokenSink sink, void* context);

  // The token at `index`; any index out of range, negative too, gives the last token,
  // which is the end token.
  const TqxToken& GetToken(std::int32_t index) const noexcept {
    if (index < 0 || index >= count_)
      return LastToken();
    return chunks_[static_cast<std::size_t>(index) >> kChunkShift][index & (kChunkSize - 1)];
  }
  std::int32_t GetTokenCount() const noexcept { return count_; }
  // The first tokens as one array: GetToken(i) is FirstTokens()[i] for every i below
  // both GetTokenCount() and kChunkSize.
  const TqxToken* FirstTokens() const noexcept {
    return chunks_.empty() ? nullptr : chunks_.front();
  }
  // Writes the kinds of all GetTokenCount() tokens to `out`, in order.
  void CopyKinds(std::int32_t* out) const noexcept {
    std::int32_t left = count_;
    for (const TqxToken* chunk : chunks_) {
      const std::int32_t n = left < kChunkSize ? left : kChunkSize;
      for (std::int32_t i = 0; i < n; ++i)
        *out++ = chunk[i].kind;
      left -= n;
    }
  }

 protected:
  // Turns an identifier token into a keyword token when its text is a keyword.
  virtual void CheckLiteral(TqxToken& token) = 0;
  // Recognises one token starting at the current character.
  virtual TqxToken NextToken() = 0;
  // Fills the ignore set beyond the blank.
  virtual void InitInternal() = 0;
  // Appends the tokens of the whole text, the end token last. By default NextToken is
  // called for each; a dialect may override it to run its recogniser without a virtual
  // call per token.
  virtual void ScanTokens();

  // Appends the tokens that `make()` returns, each built right in its slot, up to and
  // including the end token.
  template <class Make>
  [[gnu::always_inline]] void AppendTokensUpToEnd(Make&& make) {
    // The list's end is kept in locals while scanning and stored back at the end, also
    // when `make` throws (the tokens built so far stay counted).
    TqxToken* slot = slot_;
    std::int32_t count = count_;
    try {
      for (;;) {
        if (slot == nullptr)
          slot = NewChunk();
        const TqxToken& t = *::new (slot) TqxToken(make());
        ++count;
        slot = (count & (kChunkSize - 1)) != 0 ? slot + 1 : nullptr;
        if (t.kind == tkEof)
          break;
      }
    } catch (...) {
      slot_ = slot;
      count_ = count;
      throw;
    }
    slot_ = slot;
    count_ = count;
  }

  // Advances to the next character: CR LF, a lone CR and a lone LF are each one line
  // break delivered as 13; a LF directly followed by CR stays 10 and the CR counts the
  // line. Like the LF of CR LF, a LF right after a lone LF is swallowed, so LF LF is one
  // line break.
  void NextCh() noexcept {
    const std::int32_t at = buffer_.GetPos();
    if (pendingEols_ == 0 && at < buffer_.GetLen()) {
      const unsigned char b = buffer_.Bytes()[at];
      const std::uint8_t folded = kPlainFold[b];
      if (folded != kNotPlain) {
        chByte_ = at;
        buffer_.MoveTo(at + 1);
        ++pos_;
        ch_ = folded;
        return;
      }
    }
    NextChSlow();
  }

  // `while (classes[ch_] & mask) NextCh();` with the characters after the current one
  // taken straight from the buffer. The classes in `mask` must hold no line break (10,
  // 13) and no byte above 127.
  [[gnu::always_inline]] void NextChWhile(const TqxByteClasses& classes,
                                          std::uint8_t mask) noexcept {
    if ((classes[static_cast<std::size_t>(ch_)] & mask) == 0)
      return;
    const std::int32_t from = buffer_.GetPos();
    const std::int32_t at = RunEnd(from, classes, mask);
    pos_ += at - from;
    buffer_.MoveTo(at);
    NextCh();
  }

  // `while (ch_ is blank or a line break) NextCh();` for a dialect that ignores line
  // breaks: runs of blanks (the classes in `blankMask`, which must hold no line break
  // and no byte above 127) and line breaks are passed over in one loop, with the lines
  // counted as NextCh counts them. The current character must be ignored already.
  void SkipBlanksAndLineBreaks(const TqxByteClasses& classes, std::uint8_t blankMask) noexcept {
    // Mostly one blank between two tokens: then the next character is plain ASCII.
    const std::int32_t at = buffer_.GetPos();
    if (pendingEols_ == 0 && at < buffer_.GetLen()) {
      const unsigned char b = buffer_.Bytes()[at];
      const std::uint8_t folded = kPlainFold[b];
      if ((classes[b] & blankMask) == 0 && folded != kNotPlain) {
        chByte_ = at;
        buffer_.MoveTo(at + 1);
        ++pos_;
        ch_ = folded;
        return;
      }
    }
    SkipBlanksAndLineBreaksSlow(classes, blankMask);
  }

  // NextCh followed by NextChWhile(classes, mask), for a current character that is a
  // member of `mask` (so a single ASCII byte).
  [[gnu::always_inline]] void NextChRun(const TqxByteClasses& classes, std::uint8_t mask) noexcept {
    const std::int32_t from = buffer_.GetPos();
    const std::int32_t at = RunEnd(from, classes, mask);
    pos_ += at - from;
    buffer_.MoveTo(at);
    NextCh();
  }

  // The end of the run of bytes in `mask` that starts at byte `at`.
  [[gnu::always_inline]] std::int32_t RunEnd(std::int32_t at, const TqxByteClasses& classes,
                                             std::uint8_t mask) const noexcept {
    const unsigned char* bytes = buffer_.Bytes();
    const std::int32_t end = buffer_.GetLen();
    // Four at a time while four bytes are left, then one at a time.
    for (; at + 4 <= end; at += 4) {
      if ((classes[bytes[at]] & mask) == 0)
        return at;
      if ((classes[bytes[at + 1]] & mask) == 0)
        return at + 1;
      if ((classes[bytes[at + 2]] & mask) == 0)
        return at + 2;
      if ((classes[bytes[at + 3]] & mask) == 0)
        return at + 3;
    }
    while (at < end && (classes[bytes[at]] & mask) != 0)
      ++at;
    return at;
  }

  // The current character's first byte as written (before folding; 13 for a line break
  // delivered from LF, 0 at the end).
  char OrigCh() const noexcept {
    if (ch_ == kEndOfInput)
      return 0;
    if (ch_ == 10 || ch_ == 13)
      return static_cast<char>(ch_);
    return static_cast<char>(buffer_.Bytes()[chByte_]);
  }

  // The fields NextCh writes (the buffer's position, `ch_`, `chByte_`, `pos_`) are kept
  // apart: when adjacent, the compiler packs their stores into vector moves that cost
  // more than the plain stores.
  TqxBuffer buffer_;
  std::int32_t line_ = 1;
  std::int32_t ch_ = kEndOfInput;  // current character folded; 256 is end of input
  std::int32_t lineStart_ = 0;     // position of the first character of the line
  std::int32_t chByte_ = 0;        // byte offset of the current character
  std::int32_t pendingEols_ = 0;
  std::int32_t pos_ = -1;  // index of `ch_` counted in characters
  // Continuation bytes of multi-byte characters read so far: `pos_` plus this counts
  // bytes (less swallowed LFs), the measure of the comment check's step back.
  std::int32_t utf8Tails_ = 0;
  TqxCharSet ignore_;
  // Statement-wise scanning of a script: every statement (what follows a ";" token) is
  // scanned as a text of its own would be. The comment check's step back is then counted
  // from the statement's first character: `stepBase_` is that character's byte offset
  // less its position and the continuation bytes before it (0 for a whole text).
  bool statementWise_ = false;
  bool statementStart_ = false;  // the next token begins a statement
  std::int32_t stepBase_ = 0;

  // ASCII folded to lower case, indexed by byte; kNotPlain for 10, 13 and bytes above
  // 127, which NextChSlow handles.
  static constexpr std::uint8_t kNotPlain = 0xFF;
  static constexpr std::array<std::uint8_t, 256> kPlainFold = [] {
    std::array<std::uint8_t, 256> table{};
    for (int b = 0; b < 256; ++b) {
      if (b >= 128 || b == 10 || b == 13)
        table[b] = kNotPlain;
      else
        table[b] = static_cast<std::uint8_t>(b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b);
    }
    return table;
  }();

  // Attaches `text` (read in place) and reads its first character.
  void StartText(std::string_view text);
  // Whether the text being scanned is the scanner's own copy, which a NUL byte ends.
  bool ScanningOwnCopy() const noexcept {
    return text_.data() != nullptr &&
           buffer_.Bytes() == reinterpret_cast<const unsigned char*>(text_.data());
  }
  // Scans `text`, read in place, and appends its tokens up to the end token.
  void ScanAttached(std::string_view text);
  // Destroys the tokens held; the first chunk is kept for the next ones.
  void ClearTokens() noexcept;

 public:
  // Tokens live in fixed-size chunks: one allocation per chunk, stable addresses, and
  // indexing in constant time.
  static constexpr std::int32_t kChunkShift = 10;
  static constexpr std::int32_t kChunkSize = 1 << kChunkShift;

 private:
  const TqxToken& LastToken() const noexcept;
  // A fresh chunk appended to the token list; its first slot.
  TqxToken* NewChunk();

  void SkipBlanksAndLineBreaksSlow(const TqxByteClasses& classes, std::uint8_t blankMask) noexcept;

  // NextCh for a pending line break, a line break, a byte above 127 and the end.
  void NextChSlow() noexcept;

  // After a lead byte: consumes the continuation bytes of a valid UTF-8 sequence, so
  // the sequence is one character. Invalid or truncated sequences leave the byte alone.
  void SkipUtf8Tail() noexcept;

  // Hands the tokens of the current chunk not yet handed over to the sink and destroys them.
  void FlushBatch(std::int32_t count);
  TokenSink sink_ = nullptr;  // set while ScanInBatches runs
  void* sinkContext_ = nullptr;
  std::int32_t flushed_ = 0;  // tokens handed to the sink so far

  // The copies of the texts given to Init, which the tokens view: mostly one; a further
  // Init keeps the earlier ones, as their tokens stay in the list.
  std::string text_;
  std::vector<std::string> earlierTexts_;

  std::vector<TqxToken*> chunks_;  // the token list: raw storage, `count_` constructed
  std::int32_t count_ = 0;
  TqxToken* slot_ = nullptr;  // where the next token goes; null when a chunk is full
};

}  // namespace qorvex
