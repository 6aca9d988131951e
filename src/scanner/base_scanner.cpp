#include "qorvex/scanner/base_scanner.h"

#include "core/small_blocks.h"

#include <memory>
#include <new>

namespace qorvex {

QX_DEFINE_ABSTRACT_ROOT_CLASS(TqxBaseScanner)

namespace {

// Token chunks freed by one scan are kept for the next scan on the same thread, up to
// a bound, so that scanning many texts does not fault fresh pages in for every text.
class TqxChunkPool {
 public:
  static constexpr std::size_t kMaxKept = 256;  // chunks (about 14 MB of tokens)

  ~TqxChunkPool() {
    for (TqxToken* chunk : free_)
      alloc_.deallocate(chunk, TqxBaseScanner::kChunkSize);
  }
  TqxToken* Take() {
    if (free_.empty())
      return alloc_.allocate(TqxBaseScanner::kChunkSize);
    TqxToken* chunk = free_.back();
    free_.pop_back();
    return chunk;
  }
  void Give(TqxToken* chunk) {
    if (free_.size() < kMaxKept)
      free_.push_back(chunk);
    else
      alloc_.deallocate(chunk, TqxBaseScanner::kChunkSize);
  }

 private:
  std::allocator<TqxToken> alloc_;
  std::vector<TqxToken*> free_;
};

TqxChunkPool& ChunkPool() {
  static thread_local TqxChunkPool pool;
  return pool;
}

// The (empty) chunk list of the thread's last scanner, kept so that a scanner made for
// every parse does not allocate its list anew.
thread_local std::vector<TqxToken*> spareChunkList;
// Likewise the storage of the last scanner's copy of its text.
thread_local std::string spareText;
constexpr std::size_t kSpareTextLimit = std::size_t{1} << 16;

}  // namespace

void TqxBaseScanner::StartText(std::string_view text) {
  buffer_.Attach(text);
  pos_ = -1;
  utf8Tails_ = 0;
  line_ = 1;
  lineStart_ = 0;
  pendingEols_ = 0;
  stepBase_ = 0;
  statementStart_ = statementWise_;
  NextCh();
  ignore_.Clear();
  ignore_.Include(' ');
  InitInternal();
}

void TqxBaseScanner::ScanAttached(std::string_view text) {
  struct Detach {
    TqxBuffer& buffer;
    ~Detach() { buffer.Clear(); }
  } detach{buffer_};
  StartText(text);
  ScanTokens();
  if (count_ > 0 && sink_ == nullptr) {
    const std::int32_t last = count_ - 1;  // the end token
    chunks_[static_cast<std::size_t>(last) >> kChunkShift][last & (kChunkSize - 1)].val = "EOF";
  }
}

void TqxBaseScanner::Init(std::string_view text) {
  if (!text_.empty())
    earlierTexts_.push_back(std::move(text_));
  if (text_.empty() && spareText.capacity() > text_.capacity())
    text_.swap(spareText);
  text_.assign(text);
  ScanAttached(text_);
}

void TqxBaseScanner::ClearTokens() noexcept {
  TqxChunkPool& pool = ChunkPool();
  std::int32_t left = count_;
  for (std::size_t i = 0; i < chunks_.size(); ++i) {
    std::destroy_n(chunks_[i], left < kChunkSize ? left : kChunkSize);
    left = left > kChunkSize ? left - kChunkSize : 0;
    if (i > 0)
      pool.Give(chunks_[i]);
  }
  if (!chunks_.empty())
    chunks_.resize(1);
  count_ = 0;
  slot_ = chunks_.empty() ? nullptr : chunks_.front();
}

void TqxBaseScanner::ScanTokens() {
  AppendTokensUpToEnd([this] { return NextToken(); });
}

// Expects a scanner that holds no tokens yet: the only chunk is refilled from its start.
void TqxBaseScanner::ScanInBatches(std::string_view text, TokenSink sink, void* context) {
  sink_ = sink;
  sinkContext_ = context;
  flushed_ = count_;
  try {
    ScanAttached(text);
    if (count_ > flushed_)
      chunks_.back()[(count_ - 1) & (kChunkSize - 1)].val = "EOF";
  } catch (...) {
    sink_ = nullptr;
    FlushBatch(count_);
    throw;
  }
  FlushBatch(count_);
  sink_ = nullptr;
  for (TqxToken* chunk : chunks_)
    ChunkPool().Give(chunk);
  chunks_.clear();
  count_ = 0;
  slot_ = nullptr;
}

// The tokens from `flushed_` up to `count` lie in the last chunk from slot
// flushed_ % kChunkSize on.
void TqxBaseScanner::FlushBatch(std::int32_t count) {
  if (chunks_.empty() || count <= flushed_)
    return;
  TqxToken* first = chunks_.back() + (flushed_ & (kChunkSize - 1));
  const std::int32_t n = count - flushed_;
  flushed_ = count;
  struct Destroy {
    TqxToken* first;
    std::int32_t n;
    ~Destroy() { std::destroy_n(first, n); }
  } destroy{first, n};
  if (sink_ != nullptr)
    sink_(sinkContext_, first, n);
}

TqxToken* TqxBaseScanner::NewChunk() {
  if (sink_ != nullptr && !chunks_.empty()) {
    // Scanning in batches: the full chunk goes to the sink and is filled again.
    FlushBatch(flushed_ + kChunkSize);
    return chunks_.back();
  }
  if (chunks_.capacity() == 0)
    chunks_.swap(spareChunkList);
  chunks_.reserve(chunks_.size() + 1);
  chunks_.push_back(ChunkPool().Take());
  return chunks_.back();
}

void* TqxBaseScanner::operator new(std::size_t Size) {
  return AllocateSmallBlock(Size);
}

void TqxBaseScanner::operator delete(void* Block, std::size_t Size) noexcept {
  FreeSmallBlock(Block, Size);
}

TqxBaseScanner::~TqxBaseScanner() {
  TqxChunkPool& pool = ChunkPool();
  std::int32_t left = count_;
  for (TqxToken* chunk : chunks_) {
    std::destroy_n(chunk, left < kChunkSize ? left : kChunkSize);
    left -= kChunkSize;
    pool.Give(chunk);
  }
  if (spareChunkList.capacity() == 0 && chunks_.capacity() <= 64) {
    chunks_.clear();
    chunks_.swap(spareChunkList);
  }
  if (text_.capacity() > spareText.capacity() && text_.capacity() <= kSpareTextLimit) {
    text_.clear();
    text_.swap(spareText);
  }
}

const TqxToken& TqxBaseScanner::LastToken() const noexcept {
  if (count_ == 0) {
    static const TqxToken kNoText{tkEof, 0, 1, 1, "EOF", 0};
    return kNoText;
  }
  return GetToken(count_ - 1);
}

void TqxBaseScanner::NextChSlow() noexcept {
  if (pendingEols_ > 0) {
    ch_ = 13;
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
    if (ch_ >= 'A' && ch_ <= 'Z')
      ch_ += 'a' - 'A';
  } else if (ch_ != kEndOfInput) {
    SkipUtf8Tail();
  }
}

void TqxBaseScanner::SkipBlanksAndLineBreaksSlow(const TqxByteClasses& classes,
                                                 std::uint8_t blankMask) noexcept {
  // Pending line breaks are ignored characters too and move nothing but `chByte_`,
  // which the final NextCh sets.
  pendingEols_ = 0;
  const unsigned char* bytes = buffer_.Bytes();
  const std::int32_t end = buffer_.GetLen();
  std::int32_t at = buffer_.GetPos();
  std::int32_t pos = pos_;
  std::int32_t line = line_;
  std::int32_t lineStart = lineStart_;
  while (at < end) {
    const unsigned char b = bytes[at];
    if ((classes[b] & blankMask) != 0) {
      ++at;
      ++pos;
      continue;
    }
    if (b != 13 && b != 10)
      break;
    // The same decisions as NextCh: a LF followed by CR is an ordinary (ignored)
    // character; otherwise CR or LF is a line break that swallows one LF after it.
    ++at;
    ++pos;
    if (at < end) {
      const unsigned char next = bytes[at];
      if (b == 10 && next == 13)
        continue;
      if (next == 10)
        ++at;
    }
    ++line;
    lineStart = pos + 1;
  }
  pos_ = pos;
  line_ = line;
  lineStart_ = lineStart;
  buffer_.MoveTo(at);
  NextCh();
}

void TqxBaseScanner::SkipUtf8Tail() noexcept {
  const std::string_view text = buffer_.View();
  const auto at = [&](std::int32_t i) -> unsigned {
    return static_cast<std::size_t>(i) < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned lead = static_cast<unsigned>(ch_);
  // Length of the sequence and the range of its second byte (RFC 3629: no overlong
  // forms, no surrogates, nothing above U+10FFFF).
  int tail;
  unsigned lo = 0x80, hi = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    tail = 1;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    tail = 2;
    if (lead == 0xE0)
      lo = 0xA0;
    else if (lead == 0xED)
      hi = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    tail = 3;
    if (lead == 0xF0)
      lo = 0x90;
    else if (lead == 0xF4)
      hi = 0x8F;
  } else {
    return;
  }
  const std::int32_t next = buffer_.GetPos();
  const unsigned second = at(next);
  if (second < lo || second > hi)
    return;
  for (int i = 1; i < tail; ++i) {
    const unsigned b = at(next + i);
    if (b < 0x80 || b > 0xBF)
      return;
  }
  buffer_.SetPos(next + tail);
  utf8Tails_ += tail;
}

}  // namespace qorvex
