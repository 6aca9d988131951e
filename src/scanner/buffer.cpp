#include "qorvex/scanner/buffer.h"

#include <limits>

#include "qorvex/core/errors.h"

namespace qorvex {

// Positions past the end keep counting for a few characters, so leave head room.
static constexpr std::size_t kMaxTextLength = std::numeric_limits<std::int32_t>::max() - 1024;

void TqxBuffer::Fill(std::string_view text) {
  if (text.size() > kMaxTextLength)
    throw EqxError("SQL text is too long");
  copy_.assign(text);
  data_ = copy_.data();
  bufLen_ = static_cast<std::int32_t>(text.size());
  bufPos_ = 0;
}

void TqxBuffer::Attach(std::string_view text) {
  if (text.size() > kMaxTextLength)
    throw EqxError("SQL text is too long");
  copy_.clear();
  data_ = text.data() != nullptr ? text.data() : "";  // never null while attached
  bufLen_ = static_cast<std::int32_t>(text.size());
  bufPos_ = 0;
}

void TqxBuffer::Clear() noexcept {
  std::string().swap(copy_);
  data_ = nullptr;
  bufLen_ = 0;
  bufPos_ = 0;
}

std::string TqxBuffer::GetString(std::int32_t beg, std::int32_t end) const {
  auto clamp = [this](std::int32_t v) { return v < 0 ? 0 : (v > bufLen_ ? bufLen_ : v); };
  beg = clamp(beg);
  end = clamp(end);
  if (end <= beg)
    return {};
  return std::string(data_ + beg, static_cast<std::size_t>(end - beg));
}

}  // namespace qorvex
