#include "Zel/Format/LineText.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace Zel {

void appendOneLine(Halvo::String& out, std::string_view text) {
  std::size_t clean = 0;  // where the bytes begin that were not yet appended
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto const c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c != 0x7F) [[likely]] {
      continue;
    }
    out.append(text.data() + clean, i - clean);
    clean = i + 1;
    switch (c) {
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default: {
        constexpr const char* digits = "0123456789abcdef";
        char const escape[] = {'\\', 'x', digits[c >> 4], digits[c & 15]};
        out.append(escape, sizeof escape);
      }
    }
  }
  if (clean < text.size()) out.append(text.data() + clean, text.size() - clean);
}

char* writeDecimal(char* out, U64 number) noexcept {
  char digits[maxDecimalSize];
  char* begin = std::end(digits);
  do {
    *--begin = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number != 0);
  auto const size = static_cast<std::size_t>(std::end(digits) - begin);
  std::memcpy(out, begin, size);
  return out + size;
}

void appendDecimal(Halvo::String& out, U64 number, std::size_t width) {
  char digits[maxDecimalSize];
  auto const size = static_cast<std::size_t>(writeDecimal(digits, number) - digits);
  if (size < width) out.append(width - size, '0');
  out.append(digits, size);
}

std::string quotedForMessage(std::string_view text) {
  constexpr std::size_t longest = 64;
  Halvo::String quoted("'");
  appendOneLine(quoted, text.substr(0, longest));
  quoted += '\'';
  if (text.size() > longest) quoted += "...";
  return quoted.str();
}

void writeToStandardError(std::string_view line) noexcept {
  while (!line.empty()) {
    auto const written = ::write(STDERR_FILENO, line.data(), line.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return;
    }
    line.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace Zel
