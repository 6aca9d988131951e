#include "core/small_blocks.h"

#include <new>

namespace qorvex {

#ifndef QX_PLAIN_HEAP

namespace small_blocks {

thread_local constinit Lists lists{{}, kBudget};

namespace {

struct Drain {
  bool armed = false;
  ~Drain() {
    lists.room = 0;
    for (FreeBlock*& head : lists.head) {
      while (FreeBlock* b = head) {
        head = b->next;
        ::operator delete(static_cast<void*>(b));
      }
    }
  }
};
thread_local Drain drain;

}  // namespace

void* AllocateFromHeap(std::size_t c) {
  drain.armed = true;  // registers the thread's drain with the first block it makes
  return ::operator new((c + 1) * kGranule);
}

void FreeToHeap(void* block) noexcept {
  ::operator delete(block);
}

}  // namespace small_blocks

#endif

}  // namespace qorvex
