// The message of an error that a test provokes.
#pragma once

#include <string>

/// What the error of type E says that `f()` throws.
template <class E, class F>
std::string whatOf(F f) {
  try {
    f();
  } catch (const E& error) {
    return error.what();
  }
  return "nothing thrown";
}
