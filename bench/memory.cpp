// Peak heap of a parse: this program replaces the global operator new and delete to keep
// the bytes in use and their high-water mark, and reports, per parse, how far the mark
// rises above what was in use before it. (A program of its own, so that the counting
// slows no other benchmark.)
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "qorvex/ast/query.h"
#include "qorvex/syntax/sql92_syntax_provider.h"

namespace {

std::atomic<std::size_t> inUse{0};
std::atomic<std::size_t> highWater{0};

void* Counted(void* block) {
  if (block == nullptr)
    throw std::bad_alloc();
  const std::size_t now = inUse += malloc_usable_size(block);
  std::size_t high = highWater.load(std::memory_order_relaxed);
  while (now > high && !highWater.compare_exchange_weak(high, now)) {
  }
  return block;
}
void Uncounted(void* block) noexcept {
  if (block != nullptr) {
    inUse -= malloc_usable_size(block);
    std::free(block);
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return Counted(std::malloc(size));
}
void* operator new(std::size_t size, std::align_val_t align) {
  return Counted(std::aligned_alloc(
      static_cast<std::size_t>(align),
      (size + static_cast<std::size_t>(align) - 1) & ~(static_cast<std::size_t>(align) - 1)));
}
void operator delete(void* block) noexcept {
  Uncounted(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Uncounted(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  Uncounted(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  Uncounted(block);
}

namespace {

std::string JoinOf(int tables) {
  std::string sql = "select * from t0";
  for (int i = 1; i < tables; ++i) {
    const std::string t = "t" + std::to_string(i);
    sql += (i % 3 == 0 ? " left join " : " inner join ") + t + " on " + t + ".id = t" +
           std::to_string(i - 1) + ".ref";
  }
  return sql;
}

// Heap bytes a parse of an n-table join needs at its peak (the tree it returns included),
// and the program's largest resident set so far.
void BM_JoinPeakHeap(benchmark::State& state) {
  const std::string sql = JoinOf(static_cast<int>(state.range(0)));
  qorvex::TastSQL92SyntaxProvider provider;
  std::size_t peak = 0;
  for (auto _ : state) {
    const std::size_t before = inUse.load();
    highWater = before;
    auto tree = provider.ParseSelect(sql);
    benchmark::DoNotOptimize(tree.get());
    peak = std::max(peak, highWater.load() - before);
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_heap_MB"] = static_cast<double>(peak) / (1 << 20);
  state.counters["maxrss_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
  state.counters["bytes"] = static_cast<double>(sql.size());
}
BENCHMARK(BM_JoinPeakHeap)->Arg(8)->Arg(64)->Arg(500)->Unit(benchmark::kMicrosecond);

}  // namespace
