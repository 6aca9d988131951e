#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "qorvex/core/metaclass.h"
#include "qorvex/scanner/buffer.h"
#include "qorvex/scanner/token.h"

namespace qorvex {

class TqxBaseScanner;

// Class reference of scanners: a dialect names its scanner class and the syntax
// provider creates it by class.
using TqxScannerClass = TqxClassOf<TqxBaseScanner>;

// A set of 8-bit characters; characters outside 0..255 are never members.
class TqxCharSet {
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
class TqxBaseScanner {
  QX_ROOT_CLASS(TqxScannerClass)

 public:
  static constexpr std::int32_t kEndOfInput = TqxBuffer::kEndOfInput;

  TqxBaseScanner() = default;
  TqxBaseScanner(const TqxBaseScanner&) = delete;
  TqxBaseScanner& operator=(const TqxBaseScanner&) = delete;
  virtual ~TqxBaseScanner();

  // Scans the whole text and appends its tokens, the end token ("EOF") last. The
  // existing list is not cleared: a scanner serves one text.
  void Init(std::string_view text);

  // The token at `index`; any index out of range, negative too, gives the last token,
  // which is the end token.
  const TqxToken& GetToken(std::int32_t index) const noexcept {
    if (index < 0 || index >= count_)
      return LastToken();
    return chunks_[static_cast<std::size_t>(index) >> kChunkShift][index & (kChunkSize - 1)];
  }
  std::int32_t GetTokenCount() const noexcept { return count_; }

 protected:
  // Turns an identifier token into a keyword token when its text is a keyword.
  virtual void CheckLiteral(TqxToken& token) = 0;
  // Recognises one token starting at the current character.
  virtual TqxToken NextToken() = 0;
  // Fills the ignore set beyond the blank.
  virtual void InitInternal() = 0;

  // Advances to the next character: CR LF, a lone CR and a lone LF are each one line
  // break delivered as 13; a LF directly followed by CR stays 10 and the CR counts the
  // line. Like the LF of CR LF, a LF right after a lone LF is swallowed, so LF LF is one
  // line break.
  void NextCh() noexcept {
    if (pendingEols_ > 0) {
      ch_ = 13;
      origCh_ = 13;
      --pendingEols_;
      chByte_ = buffer_.GetPos();
      return;
    }
    chByte_ = buffer_.GetPos();
    ch_ = buffer_.Read();
    ++pos_;
    if (ch_ < 0x80) {
      if (ch_ == 10 && buffer_.Peek() != 13)
        ch_ = 13;
      if (ch_ == 13) {
        if (buffer_.Peek() == 10)
          buffer_.Read();
        ++line_;
        lineStart_ = pos_ + 1;
      }
      origCh_ = static_cast<char>(ch_);
      if (ch_ >= 'A' && ch_ <= 'Z')
        ch_ += 'a' - 'A';
    } else if (ch_ != kEndOfInput) {
      origCh_ = static_cast<char>(ch_);
      SkipUtf8Tail();
    } else {
      origCh_ = 0;
    }
  }

  // `while (run.Contains(ch_)) NextCh();` with the characters after the current one
  // taken straight from the buffer. `run` must hold no line break (10, 13), no byte
  // above 127, and each letter in both cases.
  [[gnu::always_inline]] void NextChWhile(const TqxCharSet& run) noexcept {
    if (!run.Contains(ch_))
      return;
    const std::string_view text = buffer_.View();
    const std::int32_t from = buffer_.GetPos();
    const auto end = static_cast<std::int32_t>(text.size());
    std::int32_t at = from;
    while (at < end && run.Contains(static_cast<unsigned char>(text[static_cast<std::size_t>(at)])))
      ++at;
    pos_ += at - from;
    buffer_.SetPos(at);
    NextCh();
  }

  // The input bytes from `beginByte` up to the current character (not included): the
  // text of a token that started at `beginByte`.
  std::string_view TextFrom(std::int32_t beginByte) const noexcept {
    std::string_view all = buffer_.View();
    if (beginByte < 0)
      beginByte = 0;
    if (beginByte > chByte_)
      return {};
    return all.substr(static_cast<std::size_t>(beginByte),
                      static_cast<std::size_t>(chByte_ - beginByte));
  }

  // A token with the position, column and line of the current character.
  TqxToken StartToken() const {
    TqxToken t;
    t.pos = pos_;
    t.col = pos_ - lineStart_ + 1;
    t.line = line_;
    t.offset = chByte_;
    return t;
  }

  TqxBuffer buffer_;
  std::int32_t ch_ = kEndOfInput;  // current character folded; 256 is end of input
  char origCh_ = 0;                // current character's first byte as written
  std::int32_t chByte_ = 0;        // byte offset of the current character
  std::int32_t pos_ = -1;          // index of `ch_` counted in characters
  std::int32_t line_ = 1;
  std::int32_t lineStart_ = 0;  // position of the first character of the line
  std::int32_t pendingEols_ = 0;
  TqxCharSet ignore_;

 public:
  // Tokens live in fixed-size chunks: one allocation per chunk, stable addresses, and
  // indexing in constant time.
  static constexpr std::int32_t kChunkShift = 10;
  static constexpr std::int32_t kChunkSize = 1 << kChunkShift;

 private:
  const TqxToken& LastToken() const noexcept;

  // After a lead byte: consumes the continuation bytes of a valid UTF-8 sequence, so
  // the sequence is one character. Invalid or truncated sequences leave the byte alone.
  void SkipUtf8Tail() noexcept;

  std::vector<TqxToken*> chunks_;  // the token list: raw storage, `count_` constructed
  std::int32_t count_ = 0;
};

}  // namespace qorvex
