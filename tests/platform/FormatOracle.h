// The C library's output, to compare with.
#pragma once

#include <cstdio>
#include <string>

#include "Halvo/String.h"

/// The C library's text for a format. The format need not be a constant and may have flags without
/// effect.
template <class... Args>
[[gnu::noinline]] Halvo::String printed(const char* format, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
  int const size = std::snprintf(nullptr, 0, format, args...);
  if (size < 0) return "the C library refuses it";
  std::string text(static_cast<std::size_t>(size) + 1, '\0');
  std::snprintf(text.data(), text.size(), format, args...);
#pragma GCC diagnostic pop
  text.pop_back();
  return Halvo::String(text);
}
