#pragma once

#include <cstdint>
#include <initializer_list>

#include "qorvex/sql_export.h"

namespace qorvex {

// A set of token kinds (0 to 191) as a bit table, for the first-token tests of the way
// calculation.
class QORVEX_SQL_EXPORT TqxTokenSet {
 public:
  constexpr TqxTokenSet() = default;
  constexpr TqxTokenSet(std::initializer_list<std::int32_t> kinds) {
    for (std::int32_t k : kinds)
      Include(k);
  }
  static constexpr TqxTokenSet Range(std::int32_t first, std::int32_t last) {
    TqxTokenSet s;
    for (std::int32_t k = first; k <= last; ++k)
      s.Include(k);
    return s;
  }

  constexpr void Include(std::int32_t kind) {
    if (kind >= 0 && kind < kSize)
      bits_[kind >> 6] |= std::uint64_t{1} << (kind & 63);
  }
  constexpr bool Has(std::int32_t kind) const {
    return static_cast<std::uint32_t>(kind) < static_cast<std::uint32_t>(kSize) &&
           ((bits_[kind >> 6] >> (kind & 63)) & 1) != 0;
  }
  constexpr bool Empty() const { return (bits_[0] | bits_[1] | bits_[2]) == 0; }
  constexpr int Count() const {
    int n = 0;
    for (std::int32_t k = 0; k < kSize; ++k)
      n += Has(k) ? 1 : 0;
    return n;
  }

  friend constexpr TqxTokenSet operator|(TqxTokenSet a, const TqxTokenSet& b) {
    for (int i = 0; i < 3; ++i)
      a.bits_[i] |= b.bits_[i];
    return a;
  }
  friend constexpr TqxTokenSet operator&(TqxTokenSet a, const TqxTokenSet& b) {
    for (int i = 0; i < 3; ++i)
      a.bits_[i] &= b.bits_[i];
    return a;
  }
  friend constexpr bool operator==(const TqxTokenSet& a, const TqxTokenSet& b) {
    return a.bits_[0] == b.bits_[0] && a.bits_[1] == b.bits_[1] && a.bits_[2] == b.bits_[2];
  }

  static constexpr std::int32_t kSize = 192;

 private:
  std::uint64_t bits_[3] = {0, 0, 0};
};

}  // namespace qorvex
