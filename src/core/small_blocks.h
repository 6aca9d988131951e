#pragma once

#include <cstddef>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define QX_PLAIN_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_PLAIN_HEAP 1
#endif
#endif

namespace qorvex {

// Memory for the many small objects of a syntax tree. A parse creates a node for nearly
// every token and a tree is freed as a whole, so the general heap sees bursts of small
// allocations and frees of a few sizes; here freed blocks are kept per thread in one list
// per 16-byte size class and handed out again first. Each list is capped, so memory beyond
// the cap goes back to the heap. A block freed on another thread than the one that made
// it simply joins that thread's list: all blocks come from ::operator new.
//
// The common case (a block taken from or given back to a list) is inline, so that the
// library's own allocation sites pay no call for it; misses go to the out-of-line part.
//
// Under AddressSanitizer every call goes straight to the heap, so that use after free is
// still found.

#ifdef QX_PLAIN_HEAP

inline void* AllocateSmallBlock(std::size_t size) {
  return ::operator new(size);
}
inline void FreeSmallBlock(void* block, std::size_t) noexcept {
  ::operator delete(block);
}

#else

namespace small_blocks {

inline constexpr std::size_t kGranule = 16;
inline constexpr std::size_t kClasses = 32;                   // blocks up to 512 bytes
inline constexpr std::size_t kBudget = std::size_t{4} << 20;  // bytes kept per thread

struct FreeBlock {
  FreeBlock* next;
};

// Trivially destructible and constant-initialised, so that it is reached without a
// thread-local initialisation call and stays usable while other thread-local objects of
// the thread are destroyed. `room` is what may still be kept, in bytes: taking a block
// from a list gives room back, keeping one uses it up. The thread's drain empties the
// lists at thread exit and leaves no room, so that later blocks go back to the heap.
struct Lists {
  FreeBlock* head[kClasses];
  std::size_t room;
};
extern thread_local constinit Lists lists;

// The misses: a new block from the heap (size class `c`), a block (or null) given back
// to it.
void* AllocateFromHeap(std::size_t c);
void FreeToHeap(void* block) noexcept;

}  // namespace small_blocks

inline void* AllocateSmallBlock(std::size_t size) {
  using namespace small_blocks;
  const std::size_t c = (size - 1) / kGranule;
  if (c >= kClasses) [[unlikely]]
    return ::operator new(size);
  Lists& l = lists;
  if (FreeBlock* b = l.head[c]) [[likely]] {
    l.head[c] = b->next;
    l.room += (c + 1) * kGranule;
    return b;
  }
  return AllocateFromHeap(c);
}

inline void FreeSmallBlock(void* block, std::size_t size) noexcept {
  using namespace small_blocks;
  const std::size_t c = (size - 1) / kGranule;
  const std::size_t bytes = (c + 1) * kGranule;
  Lists& l = lists;
  if (c < kClasses && l.room >= bytes && block != nullptr) [[likely]] {
    auto* b = static_cast<FreeBlock*>(block);
    b->next = l.head[c];
    l.head[c] = b;
    l.room -= bytes;
    return;
  }
  FreeToHeap(block);
}

#endif

}  // namespace qorvex
