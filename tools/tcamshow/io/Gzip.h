// Files that gzip has compressed (RFC 1952), read as what they hold.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace tcamshow {

/// Unpacks a stream of one or more gzip members, piece by piece. Memory: 64 KiB and the 40 KiB of
/// the unpacking itself, whatever the file holds.
class Gzip {
 public:
  /// Reads at most `size` bytes of the packed file; 0 at its end.
  using Read = std::function<std::size_t(char* buffer, std::size_t size)>;

  /// Whether a file that begins so is packed.
  static bool resembles(std::string_view start) noexcept { return start.starts_with("\x1F\x8B"); }

  /// `start` is what was read of the file already. Throws std::bad_alloc.
  explicit Gzip(std::string_view start);
  ~Gzip();
  Gzip(const Gzip&) = delete;
  Gzip& operator=(const Gzip&) = delete;

  /// Unpacks at most `size` bytes; 0 at the end. Throws std::runtime_error when the data is damaged
  /// or ends early.
  std::size_t read(char* buffer, std::size_t size, const Read& readPacked);

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace tcamshow
