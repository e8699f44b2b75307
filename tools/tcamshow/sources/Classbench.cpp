#include "sources/Classbench.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "io/LineReader.h"
#include "io/SafeText.h"
#include "io/Utf8.h"
#include "snapshot/AddressText.h"
#include "snapshot/Snapshot.h"
#include "sources/PortQualifiers.h"

namespace tcamshow {
namespace {

constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\t'; }

/// The blanks at the front of `text`, and how far a field goes. The searches of string_view call a
/// function for each character.
std::size_t blanksSize(std::string_view text) noexcept {
  std::size_t size = 0;
  while (size != text.size() && isBlank(text[size])) ++size;
  return size;
}
std::size_t fieldSize(std::string_view text) noexcept {
  std::size_t size = 0;
  while (size != text.size() && !isBlank(text[size])) ++size;
  return size;
}

/// The fields of one filter, taken from left to right; a fault throws the line's InputError.
class FilterReader {
 public:
  FilterReader(const LineReader& lines, std::string_view text) : lines_(lines), rest_(text) {}

  /// Fills what the filter matches; `entry` is at its defaults.
  void read(Entry& entry) {
    std::string_view source = field("source address");
    if (!source.starts_with('@')) fail("a filter begins with '@', not " + inQuotes(source));
    source.remove_prefix(1);
    Qualifier sourceQualifier;
    Qualifier destinationQualifier;
    bool const sourceIsIp6 = address("source address", source, sourceQualifier);
    bool const destinationIsIp6 =
        address("destination address", field("destination address"), destinationQualifier);
    if (sourceIsIp6 != destinationIsIp6) {
      fail("the source and destination addresses are of two families");
    }
    entry.table = sourceIsIp6 ? Table::ip6 : Table::ip;
    Range const sourcePorts = range("source ports");
    Range const destinationPorts = range("destination ports");
    Masked const protocol = masked("protocol", field("protocol"), 255);
    Masked flags;
    if (!atEnd()) flags = masked("flags", field("flags"), 65535);
    if (!atEnd()) fail("something follows the last field: " + inQuotes(rest_));

    sourceQualifier.type = sourceIsIp6 ? VelmorTcam::qualifierSrcIp6 : VelmorTcam::qualifierSrcIp;
    destinationQualifier.type =
        sourceIsIp6 ? VelmorTcam::qualifierDstIp6 : VelmorTcam::qualifierDstIp;
    if (matches(sourceQualifier)) entry.qualifiers.push_back(sourceQualifier);
    if (matches(destinationQualifier)) entry.qualifiers.push_back(destinationQualifier);
    if (protocol.mask != 0) {
      entry.qualifiers.push_back(
          wordQualifier(VelmorTcam::qualifierIpProtocol, protocol.value, protocol.mask));
    }
    addPorts(entry, VelmorTcam::qualifierL4SrcPort, VelmorTcam::rangeCheckerL4SrcPort,
             sourcePorts.low, sourcePorts.high);
    addPorts(entry, VelmorTcam::qualifierL4DstPort, VelmorTcam::rangeCheckerL4DstPort,
             destinationPorts.low, destinationPorts.high);
    if (flags.mask != 0) {
      addFlags(entry, protocol, flags, sourcePorts.isAll() && destinationPorts.isAll());
    }
  }

 private:
  struct Masked {
    std::uint32_t value = 0;
    std::uint32_t mask = 0;
  };
  struct Range {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    bool isAll() const noexcept { return low == 0 && high == largestPort; }
  };

  [[noreturn]] void fail(const std::string& message) const { lines_.fail(message); }

  bool atEnd() const noexcept { return blanksSize(rest_) == rest_.size(); }

  std::string_view field(std::string_view name) {
    rest_.remove_prefix(blanksSize(rest_));
    if (rest_.empty()) fail("the " + std::string(name) + " field is missing");
    std::string_view const result = rest_.substr(0, fieldSize(rest_));
    rest_.remove_prefix(result.size());
    return result;
  }

  std::uint32_t number(std::string_view name, std::string_view text, std::uint32_t largest) const {
    std::string_view digits = text;
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
      digits.remove_prefix(2);
      base = 16;
    }
    std::uint32_t result = 0;
    const char* const end = digits.data() + digits.size();
    auto const [at, error] = std::from_chars(digits.data(), end, result, base);
    if (digits.empty() || at != end || error == std::errc::invalid_argument) {
      fail(std::string(name) + ": " + inQuotes(text) + " is not a number");
    }
    if (error != std::errc() || result > largest) {
      fail(std::string(name) + ": " + shown(text) + " is more than " + std::to_string(largest));
    }
    return result;
  }

  /// The two parts of a field on both sides of its slash.
  struct Parts {
    std::string_view value;
    std::string_view mask;
  };
  Parts parts(std::string_view name, std::string_view text) const {
    std::size_t const slash = text.find('/');
    if (slash == text.npos) fail(std::string(name) + ": " + inQuotes(text) + " has no '/'");
    return {text.substr(0, slash), text.substr(slash + 1)};
  }

  Masked masked(std::string_view name, std::string_view text, std::uint32_t largest) const {
    Parts const both = parts(name, text);
    return {number(name, both.value, largest),
            number(std::string(name) + " mask", both.mask, largest)};
  }

  /// Whether it is an IPv6 address.
  bool address(std::string_view name, std::string_view text, Qualifier& qualifier) const {
    Parts const both = parts(name, text);
    bool const isIp6 = both.value.find(':') != text.npos;
    if (isIp6 ? !ip6FromText(both.value, qualifier.ip6.value)
              : !ipFromText(both.value, qualifier.value)) {
      fail(std::string(name) + ": " + inQuotes(both.value) + " is not an address");
    }
    std::uint32_t const length = number(std::string(name) + " length", both.mask, isIp6 ? 128 : 32);
    if (isIp6) {
      qualifier.kind = QualifierKind::ip6;
      qualifier.ip6.mask = ip6Mask(length);
    } else {
      qualifier.kind = QualifierKind::ip;
      qualifier.mask = ipMask(length);
    }
    return isIp6;
  }

  static bool matches(const Qualifier& address) noexcept {
    return address.kind == QualifierKind::ip6 ? address.ip6.mask[0] != 0 : address.mask != 0;
  }

  Range range(std::string_view name) {
    Range result;
    result.low = number(name, field(name), largestPort);
    std::string_view const colon = field(name);
    if (colon != ":") fail(std::string(name) + ": ':' is expected, not " + inQuotes(colon));
    result.high = number(name, field(name), largestPort);
    if (result.low > result.high) {
      fail(std::string(name) + ": " + std::to_string(result.low) + " is more than " +
           std::to_string(result.high));
    }
    return result;
  }

  void addFlags(Entry& entry, const Masked& protocol, const Masked& flags, bool allPorts) const {
    if (protocol.mask != 255) fail("flags: they need a protocol whose mask is 255");
    switch (protocol.value) {
      case protocolTcp: {
        std::uint32_t const mask = flags.mask >> 8 & 0x3F;
        if (mask != 0) {
          entry.qualifiers.push_back(
              wordQualifier(VelmorTcam::qualifierTcpControl, flags.value >> 8 & mask, mask));
        }
        break;
      }
      case protocolIcmp:
      case protocolIcmp6:
        if (!allPorts) fail("flags: an ICMP filter cannot have both flags and ports");
        addIcmp(entry, flags.value, flags.mask);
        break;
      default:
        fail("flags: protocol " + std::to_string(protocol.value) + " has none");
    }
  }

  const LineReader& lines_;
  std::string_view rest_;
};

/// The filter's text without the sign that begins it, with one blank between its fields.
void describe(std::string_view filter, std::string& out) {
  out.clear();
  bool pending = false;
  for (char const c : filter.substr(filter.find('@') + 1)) {
    if (isBlank(c)) {
      pending = true;
      continue;
    }
    if (pending) out += ' ';
    pending = false;
    out += c;
  }
}

class ClassbenchSource final : public Source {
 public:
  ClassbenchSource(InputFile file, Complaints& complaints)
      : Source(complaints), lines_(std::move(file)) {}

  const std::string& fileName() const noexcept override { return lines_.fileName(); }
  std::uint64_t lineNumber() const noexcept override { return lines_.lineNumber(); }

  Item next() override {
    constexpr std::uint32_t largestPriority = std::numeric_limits<std::uint32_t>::max();
    constexpr std::uint32_t mostFilters = largestPriority / 10;
    std::string_view line;
    do {
      if (!lines_.next(line)) return Item::end;
      if (line.find('\0') != line.npos) lines_.fail("the line holds a NUL byte");
      // A filter has no other characters than ASCII's, so comments alone can be wrong here.
      if (line.starts_with('#') && findBadByte(line) != line.npos) {
        lines_.fail("the line is not valid UTF-8");
      }
      if (line.ends_with('\r')) line.remove_suffix(1);
    } while (line.starts_with('#') || blanksSize(line) == line.size());
    if (number_ == mostFilters) lines_.fail("too many filters: their sequence numbers end here");
    ++number_;
    entry_.clear();
    FilterReader(lines_, line).read(entry_);
    describe(line, description_);
    entry_.shadowId = number_;
    entry_.sequence = 10 * number_;
    entry_.priority = largestPriority - number_;
    entry_.description = description_;
    entry_.action = "permit";
    entry_.feature = "classbench";
    return Item::entry;
  }

 private:
  LineReader lines_;
  std::string description_;
  std::uint32_t number_ = 0;
};

}  // namespace

std::string_view classbenchRuledOut(std::string_view start) noexcept {
  while (!start.empty()) {
    std::string_view const line = start.substr(0, start.find('\n'));
    if (line.starts_with('@')) return "";
    if (!line.starts_with('#') && line.find_first_not_of(" \t\r") != line.npos) break;
    start.remove_prefix(std::min(line.size() + 1, start.size()));
  }
  return "its first line does not begin with @";
}

std::unique_ptr<Source> openClassbench(InputFile file, Complaints& complaints) {
  return std::make_unique<ClassbenchSource>(std::move(file), complaints);
}

}  // namespace tcamshow
