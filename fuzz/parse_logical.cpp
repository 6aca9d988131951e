// Fuzzes the logical parse entry; see parse_common.h.
#include "parse_common.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return qorvex::fuzz::Run(data, size, qorvex::fuzz::Entry::kLogical);
}
