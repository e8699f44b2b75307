#include "io/Complain.h"

#include <sys/uio.h>
#include <unistd.h>

#include <exception>
#include <iterator>
#include <new>

#include "io/OutputBuffer.h"

namespace tcamshow {
namespace {

iovec piece(std::string_view text) noexcept {
  return {const_cast<char*>(text.data()), text.size()};
}

}  // namespace

void complain(std::string_view message) noexcept {
  // Nobody is left to tell when this cannot be written.
  try {
    OutputBuffer error(STDERR_FILENO);
    error.write("tcamshow: ");
    error.write(message);
    error.write("\n");
    error.flush();
  } catch (const std::bad_alloc&) {
    // As it is, with no buffer: it may be the message that memory ran out.
    iovec const pieces[] = {piece("tcamshow: "), piece(message), piece("\n")};
    [[maybe_unused]] ssize_t const written =
        ::writev(STDERR_FILENO, pieces, static_cast<int>(std::size(pieces)));
  } catch (const std::exception&) {
  }
}

}  // namespace tcamshow
