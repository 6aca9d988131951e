#include "core/small_blocks.h"

#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define QX_PLAIN_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_PLAIN_HEAP 1
#endif
#endif

namespace qorvex {

#ifdef QX_PLAIN_HEAP

void* AllocateSmallBlock(std::size_t size) {
  return ::operator new(size);
}
void FreeSmallBlock(void* block, std::size_t) noexcept {
  ::operator delete(block);
}

#else

namespace {

constexpr std::size_t kGranule = 16;
constexpr std::size_t kClasses = 32;                   // blocks up to 512 bytes
constexpr std::size_t kBudget = std::size_t{4} << 20;  // bytes kept per thread

struct FreeBlock {
  FreeBlock* next;
};

// Trivially destructible, so that it stays usable while other thread-local objects of
// the thread are destroyed; `Drain` empties it at thread exit and switches it off.
struct Lists {
  FreeBlock* head[kClasses];
  std::size_t kept;
  bool closed;
};
thread_local Lists lists;

struct Drain {
  bool armed = false;
  ~Drain() {
    lists.closed = true;
    for (FreeBlock*& head : lists.head) {
      while (FreeBlock* b = head) {
        head = b->next;
        ::operator delete(static_cast<void*>(b));
      }
    }
    lists.kept = 0;
  }
};
thread_local Drain drain;

}  // namespace

void* AllocateSmallBlock(std::size_t size) {
  const std::size_t c = (size - 1) / kGranule;
  if (c >= kClasses)
    return ::operator new(size);
  if (FreeBlock* b = lists.head[c]) {
    lists.head[c] = b->next;
    lists.kept -= (c + 1) * kGranule;
    return b;
  }
  drain.armed = true;  // registers the thread's drain with the first block it makes
  return ::operator new((c + 1) * kGranule);
}

void FreeSmallBlock(void* block, std::size_t size) noexcept {
  if (block == nullptr)
    return;
  const std::size_t c = (size - 1) / kGranule;
  if (c >= kClasses || lists.closed || lists.kept + (c + 1) * kGranule > kBudget) {
    ::operator delete(block);
    return;
  }
  auto* b = static_cast<FreeBlock*>(block);
  b->next = lists.head[c];
  lists.head[c] = b;
  lists.kept += (c + 1) * kGranule;
}

#endif

}  // namespace qorvex
