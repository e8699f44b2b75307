#include "snapshot/JsonSyntax.h"

#include <charconv>
#include <cstdint>
#include <vector>

#include "io/Utf8.h"

namespace tcamshow {
namespace {

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Reads a value from its beginning up to its first fault. Each part returns false at a fault, with
/// `at_` on it.
class Scanner {
 public:
  Scanner(std::string_view text, std::string_view whole, std::size_t deepest)
      : text_(text), whole_(whole), deepest_(deepest) {}

  JsonFault fault() {
    JsonFault found;
    if (document()) return found;
    found.byte = at_ + 1;
    found.what = what();
    for (std::string_view const key : keys_) {
      if (key.data() == nullptr) continue;
      if (found.hasMember) found.member += '.';
      found.hasMember = true;
      found.member += key;
    }
    return found;
  }

 private:
  std::string what() const {
    if (!what_.empty()) return std::string(what_);
    if (at_ == text_.size()) {
      return "not valid JSON: the " + std::string(whole_) + " does not end where the object does";
    }
    if (isObject_.size() == deepest_ && (front() == '{' || front() == '[')) {
      return "nested deeper than " + std::to_string(deepest_) + " values";
    }
    bool const isCharacter = frontCharacter(text_.substr(at_)).size != 0;
    return isCharacter ? "not valid JSON" : "not valid UTF-8";
  }

  char front() const noexcept { return at_ < text_.size() ? text_[at_] : '\0'; }
  bool skip(char c) noexcept {
    if (at_ == text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }
  void skipSpace() noexcept {
    while (front() == ' ' || front() == '\t' || front() == '\r' || front() == '\n') ++at_;
  }

  bool document() {
    for (;;) {
      bool isWhole = false;
      if (!valueBegin(isWhole)) return false;
      if (!isWhole) continue;
      if (!valueEnd()) return false;
      if (!isObject_.empty()) continue;
      if (at_ == text_.size()) return true;
      what_ = "not valid JSON: something follows the object";
      return false;
    }
  }

  /// Reads a whole value, or the beginning of an object or array up to its first value.
  bool valueBegin(bool& isWhole) {
    skipSpace();
    isWhole = true;
    switch (front()) {
      case '{':
      case '[': {
        if (isObject_.size() == deepest_) return false;
        bool const isObject = front() == '{';
        ++at_;
        skipSpace();
        if (skip(isObject ? '}' : ']')) return true;
        isObject_.push_back(isObject);
        if (isObject) keys_.emplace_back();
        isWhole = false;
        return !isObject || key();
      }
      case '"':
        return string();
      case 't':
        return word("true");
      case 'f':
        return word("false");
      case 'n':
        return word("null");
      default:
        return number();
    }
  }

  /// Reads the text after a value: the ends of the objects and arrays that end there, and a comma.
  bool valueEnd() {
    for (skipSpace(); !isObject_.empty(); skipSpace()) {
      bool const isObject = isObject_.back();
      if (skip(',')) return !isObject || key();
      if (!skip(isObject ? '}' : ']')) return false;
      isObject_.pop_back();
      if (isObject) keys_.pop_back();
    }
    return true;
  }

  bool key() {
    skipSpace();
    std::size_t const from = at_ + 1;
    if (front() != '"' || !string()) return false;
    keys_.back() = text_.substr(from, at_ - 1 - from);
    skipSpace();
    return skip(':');
  }

  bool string() {
    std::size_t const opening = at_++;
    while (at_ < text_.size()) {
      if (skip('"')) return true;
      if (static_cast<unsigned char>(front()) < 0x20) {
        what_ = "not valid JSON: a control character stands in a string";
        return false;
      }
      if (front() == '\\') {
        if (!escape()) {
          what_ = "not valid JSON: a bad escape stands in a string";
          return false;
        }
        continue;
      }
      std::size_t const size = frontCharacter(text_.substr(at_)).size;
      if (size == 0) return false;
      at_ += size;
    }
    at_ = opening;
    what_ = "not valid JSON: a string does not end";
    return false;
  }

  bool escape() {
    std::string_view const rest = text_.substr(at_ + 1);
    if (rest.empty()) {
      ++at_;
      return true;  // the string does not end, which is told as that
    }
    if (rest.front() != 'u') {
      if (std::string_view("\"\\/bfnrt").find(rest.front()) == std::string_view::npos) return false;
      at_ += 2;
      return true;
    }
    std::uint32_t const high = unit(rest);
    bool const isPair = (high & 0xFC00U) == 0xD800;
    if (high == noUnit || (high & 0xFC00U) == 0xDC00) return false;
    // The second half of a surrogate pair stands behind the first.
    if (isPair && (rest.substr(5, 1) != "\\" || (unit(rest.substr(6)) & 0xFC00U) != 0xDC00)) {
      return false;
    }
    at_ += isPair ? 12 : 6;
    return true;
  }
  static constexpr std::uint32_t noUnit = 0x10000;
  /// The number of `u` and four hexadecimal digits at the front; noUnit where they are not there.
  static std::uint32_t unit(std::string_view text) noexcept {
    std::uint32_t number = 0;
    if (text.size() < 5 || text[0] != 'u') return noUnit;
    char const* const end = text.data() + 5;
    return std::from_chars(text.data() + 1, end, number, 16).ptr == end ? number : noUnit;
  }

  bool word(std::string_view expected) noexcept {
    if (!text_.substr(at_).starts_with(expected)) return false;
    at_ += expected.size();
    return true;
  }

  bool digits() noexcept {
    if (!isDigit(front())) return false;
    while (isDigit(front())) ++at_;
    return true;
  }
  bool number() noexcept {
    skip('-');
    if (!skip('0') && !digits()) return false;
    if (skip('.') && !digits()) return false;
    if (!skip('e') && !skip('E')) return true;
    if (!skip('+')) skip('-');
    return digits();
  }

  std::string_view text_;
  std::string_view what_;  // where the place alone does not tell
  std::string_view whole_;
  std::size_t deepest_;
  std::size_t at_ = 0;
  // The open objects and arrays, outermost first; the key that is being read of each that is an
  // object, none where data() is null.
  std::vector<bool> isObject_;
  std::vector<std::string_view> keys_;
};

}  // namespace

JsonFault findJsonFault(std::string_view text, std::string_view whole, std::size_t deepest) {
  return Scanner(text, whole, deepest).fault();
}

}  // namespace tcamshow
