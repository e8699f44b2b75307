#include "io/KeyedHash.h"

#include <sys/auxv.h>
#include <sys/random.h>

#include <bit>
#include <cstring>

namespace tcamshow {
namespace {

struct Key {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
};

Key drawKey() noexcept {
  Key key;
  if (::getrandom(&key, sizeof key, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof key)) return key;
  // A kernel that has no randomness yet has still given some to the process.
  const auto* const given = reinterpret_cast<const void*>(::getauxval(AT_RANDOM));  // NOLINT
  if (given != nullptr) std::memcpy(&key, given, sizeof key);
  return key;
}

class SipHash {
 public:
  explicit SipHash(const Key& key) noexcept
      : v0_(key.low ^ 0x736F6D6570736575U),
        v1_(key.high ^ 0x646F72616E646F6DU),
        v2_(key.low ^ 0x6C7967656E657261U),
        v3_(key.high ^ 0x7465646279746573U) {}

  void add(std::uint64_t word) noexcept {
    v3_ ^= word;
    round();
    v0_ ^= word;
  }
  std::uint64_t result() noexcept {
    v2_ ^= 0xFF;
    for (int i = 0; i < 3; ++i) round();
    return v0_ ^ v1_ ^ v2_ ^ v3_;
  }

 private:
  void round() noexcept {
    v0_ += v1_;
    v2_ += v3_;
    v1_ = std::rotl(v1_, 13) ^ v0_;
    v3_ = std::rotl(v3_, 16) ^ v2_;
    v0_ = std::rotl(v0_, 32) + v3_;
    v2_ += v1_;
    v3_ = std::rotl(v3_, 21) ^ v0_;
    v1_ = std::rotl(v1_, 17) ^ v2_;
    v2_ = std::rotl(v2_, 32);
  }

  std::uint64_t v0_;
  std::uint64_t v1_;
  std::uint64_t v2_;
  std::uint64_t v3_;
};

const Key& processKey() noexcept {
  static const Key key = drawKey();
  return key;
}

std::uint64_t finish(SipHash hash, std::string_view bytes) noexcept {
  std::uint64_t const size = bytes.size();
  while (bytes.size() >= sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), sizeof word);
    hash.add(word);
    bytes.remove_prefix(sizeof word);
  }
  std::uint64_t last = 0;
  if (!bytes.empty()) std::memcpy(&last, bytes.data(), bytes.size());
  hash.add(last | size << 56);
  return hash.result();
}

}  // namespace

std::uint64_t keyedHash(std::string_view bytes) noexcept {
  return finish(SipHash(processKey()), bytes);
}

std::uint64_t keyedHash(std::uint64_t first, std::string_view bytes) noexcept {
  SipHash hash(processKey());
  hash.add(first);
  return finish(hash, bytes);
}

// Always of two words: their number need not be part of the hash.
std::uint64_t keyedHash(std::uint64_t first, std::uint64_t second) noexcept {
  SipHash hash(processKey());
  hash.add(first);
  hash.add(second);
  return hash.result();
}

}  // namespace tcamshow
