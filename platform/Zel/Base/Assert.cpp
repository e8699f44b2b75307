#include "Zel/Base/Assert.h"

#include <sys/uio.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace Zel {

namespace {

iovec piece(const char* text) { return {const_cast<char*>(text), std::strlen(text)}; }

}  // namespace

void assertionFailed(const AssertionSite& site) noexcept {
  char line[16] = {};
  std::to_chars(line, line + sizeof line - 1, site.line);
  // One writev: two threads that fail at the same time do not mix their lines.
  iovec const pieces[] = {piece("assertion failed: "),
                          piece(site.expression),
                          piece(" at "),
                          piece(site.source),
                          piece(":"),
                          piece(line),
                          piece(" in "),
                          piece(site.function),
                          piece("\n")};
  [[maybe_unused]] auto const written =
      ::writev(STDERR_FILENO, pieces, static_cast<int>(std::size(pieces)));
  std::abort();
}

}  // namespace Zel
