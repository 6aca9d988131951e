#pragma once

#include <cstddef>

namespace qorvex {

// Memory for the many small objects of a syntax tree. A parse creates a node for nearly
// every token and a tree is freed as a whole, so the general heap sees bursts of small
// allocations and frees of a few sizes; here freed blocks are kept per thread in one list
// per 16-byte size class and handed out again first. Each list is capped, so memory beyond
// the cap goes back to the heap. A block freed on another thread than the one that made
// it simply joins that thread's list: all blocks come from ::operator new.
//
// Under AddressSanitizer every call goes straight to the heap, so that use after free is
// still found.
void* AllocateSmallBlock(std::size_t size);
void FreeSmallBlock(void* block, std::size_t size) noexcept;

}  // namespace qorvex
