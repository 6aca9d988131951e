#pragma once

#include <string>

#include "qorvex/core/errors.h"

namespace qorvex::test {

// The message of the EqxError that `operation` throws, or "no error".
template <class F>
std::string ErrorOf(F&& operation) {
  try {
    operation();
  } catch (const EqxError& e) {
    return e.what();
  }
  return "no error";
}

}  // namespace qorvex::test
