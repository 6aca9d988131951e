#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "qorvex/sql_export.h"

namespace qorvex {

// The whole SQL text in memory as bytes, read one byte at a time by the scanner.
// Reading past the end yields 256 and does not move.
class QORVEX_SQL_EXPORT TqxBuffer {
 public:
  static constexpr std::int32_t kEndOfInput = 256;

  TqxBuffer() = default;
  TqxBuffer(const TqxBuffer&) = delete;
  TqxBuffer& operator=(const TqxBuffer&) = delete;

  // Takes a copy of `text` and moves to its start. Throws EqxError when the text does
  // not fit 32-bit positions.
  void Fill(std::string_view text);
  // Like Fill, but reads `text` in place: the caller keeps it alive and unchanged until
  // Clear or the next Fill/Attach. Bytes() is never null afterwards.
  void Attach(std::string_view text);
  // Drops the text (and its copy, if any); the buffer is empty again.
  void Clear() noexcept;

  // The byte at the reading position (0..255), advancing by one; 256 at the end.
  std::int32_t Read() noexcept {
    if (bufPos_ < bufLen_)
      return static_cast<unsigned char>(data_[bufPos_++]);
    return kEndOfInput;
  }
  // Like Read, without moving.
  std::int32_t Peek() const noexcept {
    if (bufPos_ < bufLen_)
      return static_cast<unsigned char>(data_[bufPos_]);
    return kEndOfInput;
  }

  // The bytes from `beg` up to, not including, `end` (both clamped to the text). The
  // reading position is unchanged.
  std::string GetString(std::int32_t beg, std::int32_t end) const;

  // Moves the reading position, clamped to 0 .. GetLen().
  void SetPos(std::int32_t value) noexcept {
    if (value < 0)
      value = 0;
    else if (value > bufLen_)
      value = bufLen_;
    bufPos_ = value;
  }
  // SetPos for a value known to lie in 0 .. GetLen().
  void MoveTo(std::int32_t value) noexcept { bufPos_ = value; }
  std::int32_t GetPos() const noexcept { return bufPos_; }
  std::int32_t GetLen() const noexcept { return bufLen_; }

  // The whole text, for slicing token texts.
  std::string_view View() const noexcept { return {data_, static_cast<std::size_t>(bufLen_)}; }
  // The first byte of the text; GetLen() bytes are readable from here.
  const unsigned char* Bytes() const noexcept {
    return reinterpret_cast<const unsigned char*>(data_);
  }

 private:
  std::string copy_;            // the text when filled by copy
  const char* data_ = nullptr;  // the text: copy_ or the attached caller's text
  std::int32_t bufLen_ = 0;
  std::int32_t bufPos_ = 0;
};

}  // namespace qorvex
