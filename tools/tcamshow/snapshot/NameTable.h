// A fixed set of names, looked up with one multiplication and one comparison.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "Zel/Base/Assert.h"

namespace tcamshow {

/// The names of a fixed list; no two are equal, and each has a slot of its own. The names' bytes
/// are not copied.
///
/// The hash reads only the size and the last eight bytes of a name. If two names of the list agree
/// in both, a constant list does not compile, and any other list stops the process.
///
///     constexpr NameTable stages({"lookup", "ingress", "egress"});
///     stages.find("egress")  // 2
///     stages.find("Egress")  // stages.none
template <std::size_t count>
class NameTable {
 public:
  static constexpr std::size_t none = count;

  constexpr explicit NameTable(const std::string_view (&names)[count]) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
      names_[i] = names[i];
      tails_[i] = tail(names[i]);
    }
    // Takes the first odd number that gives each name a slot of its own.
    multiplier_ = 0x9E3779B97F4A7C15U;
    for (int attempt = 0; !placed(); multiplier_ = multiplier_ * 0xD1342543DE82EF95U + 2) {
      if (++attempt == 10000) {
        Zel::assertionFailed({"two names agree in size and last eight bytes",
                              "tools/tcamshow/NameTable", 0,
                              "tcamshow::NameTable::NameTable(const std::string_view (&)[])"});
      }
    }
  }

  static constexpr std::size_t size() noexcept { return count; }
  constexpr std::string_view operator[](std::size_t index) const noexcept { return names_[index]; }

  /// The name's index in the list, or `none`.
  constexpr std::size_t find(std::string_view name) const noexcept {
    std::uint64_t const end = tail(name);
    std::size_t const index = slots_[slot(end, name.size())];
    if (index == none || names_[index].size() != name.size() || tails_[index] != end) return none;
    // The whole name, if it is short.
    if (name.size() <= sizeof end) return index;
    return names_[index].substr(0, name.size() - sizeof end) ==
                   name.substr(0, name.size() - sizeof end)
               ? index
               : none;
  }

 private:
  static constexpr int bits = std::bit_width(count * 4 - 1);
  using Index = std::uint8_t;
  static_assert(count > 0 && count < 255);

  static constexpr std::uint64_t tail(std::string_view name) noexcept {
    std::uint64_t word = 0;
    std::size_t const size = name.size();
    if (!std::is_constant_evaluated() && std::endian::native == std::endian::little && size >= 4) {
      if (size >= sizeof word) {
        std::memcpy(&word, name.data() + (size - sizeof word), sizeof word);
        return word;
      }
      // The two halves may overlap.
      std::uint32_t low = 0;
      std::uint32_t high = 0;
      std::memcpy(&low, name.data(), sizeof low);
      std::memcpy(&high, name.data() + (size - sizeof high), sizeof high);
      return low | std::uint64_t{high} << (size - sizeof high) * 8;
    }
    std::size_t const from = size < sizeof word ? 0 : size - sizeof word;
    for (std::size_t i = size; i-- > from;) {
      word = word << 8 | static_cast<unsigned char>(name[i]);
    }
    return word;
  }
  constexpr std::size_t slot(std::uint64_t end, std::size_t size) const noexcept {
    return static_cast<std::size_t>(((end ^ size << 56) * multiplier_) >> (64 - bits));
  }
  constexpr bool placed() noexcept {
    slots_.fill(static_cast<Index>(none));
    for (std::size_t i = 0; i < count; ++i) {
      Index& index = slots_[slot(tails_[i], names_[i].size())];
      if (index != none) return false;
      index = static_cast<Index>(i);
    }
    return true;
  }

  std::array<std::string_view, count> names_{};
  std::array<std::uint64_t, count> tails_{};
  std::array<Index, std::size_t{1} << bits> slots_{};
  std::uint64_t multiplier_ = 0;
};

}  // namespace tcamshow
