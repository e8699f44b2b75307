// The message of an error that a test provokes.
#pragma once

#include <string>

/// The message of the error of type E that `f()` throws.
template <class E, class F>
std::string whatOf(F f) {
  try {
    f();
  } catch (const E& error) {
    return error.what();
  }
  return "nothing thrown";
}
