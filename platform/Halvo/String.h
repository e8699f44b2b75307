// String: the text value that every formatter takes and returns.
#pragma once

#include <compare>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "VelmorPlatformExport.h"

namespace Halvo {

/// A string of bytes with value semantics.
///
/// A String may hold NUL bytes: only the size says where it ends. Equality and order compare the
/// bytes (as unsigned), then the size. To a user of c_str() the text ends at its first NUL. A NUL
/// always follows the text at data().
///
/// The object takes 64 bytes and has one of two layouts. Its last byte tells which:
///
///     inline   | text, at most 63 bytes, NUL-terminated ........... | 63 - size |
///     heap     | char* | size | capacity | unused ................. |   0xFF    |
///
/// In a full inline string the last byte is 63 - 63 = 0, which is also the terminator. The widest
/// cell of a table fits inline: only the whole row needs an allocation.
///
/// Throws std::bad_alloc when memory runs out and std::length_error beyond maxSize(). The string is
/// then unchanged.
///
/// Threads: different threads may use different strings at the same time, also copies of one
/// string, since strings share nothing. Several threads may read one string while no thread changes
/// it.
///
///     Halvo::String cell = "Drop";
///     cell += '|';
class VELMOR_PLATFORM_API String {
 public:
  using value_type = char;
  using size_type = std::size_t;
  using iterator = char*;
  using const_iterator = const char*;

  static constexpr std::size_t inlineCapacity = 63;
  /// At least this many bytes at data() may always be read, whatever the size: a heap buffer is
  /// never smaller. The bytes behind the terminator mean nothing.
  static constexpr std::size_t readableBytes = 64;
  static constexpr std::size_t npos = static_cast<std::size_t>(-1);

  String() noexcept { inlineSizeIs(0); }
  /// `text` must be NUL-terminated. Null stops the process.
  String(const char* text) {
    if (text != nullptr && __builtin_constant_p(std::strlen(text)) != 0 &&
        std::strlen(text) <= inlineCapacity) {
      // A literal: the compiler turns this into a few stores.
      inlineSizeIs(std::strlen(text));
      std::memcpy(inline_, text, std::strlen(text));
    } else {
      fromText(text);
    }
  }
  String(std::nullptr_t) = delete;
  String(const char* text, std::size_t size) {
    inlineSizeIs(0);
    if (size != 0) std::memcpy(appendUninitialized(size), text, size);
  }
  String(std::string_view text) : String(text.data(), text.size()) {}
  String(const std::string& text) : String(text.data(), text.size()) {}
  String(std::size_t count, char fill) {
    inlineSizeIs(0);
    std::memset(appendUninitialized(count), fill, count);
  }
  String(const String& other) {
    if (other.isInline()) {
      bitsFrom(other);
    } else {
      inlineSizeIs(0);
      append(other.heap_.data, other.heap_.size);
    }
  }
  String(String&& other) noexcept {
    bitsFrom(other);
    other.inlineSizeIs(0);
  }
  ~String() {
    if (!isInline()) heapRelease();
  }
  String& operator=(const String& other) {
    // One test for "both are inline": an iterator assigns its key here at every step.
    if ((lastByte() | other.lastByte()) != heapMark && this != &other) [[likely]] {
      // Copying the whole object takes a few moves; copying the text alone would call memcpy.
      bitsFrom(other);
    } else {
      assign(other.view());
    }
    return *this;
  }
  String& operator=(String&& other) noexcept {
    if (this != &other) {
      if (!isInline()) heapRelease();
      bitsFrom(other);
      other.inlineSizeIs(0);
    }
    return *this;
  }
  String& operator=(std::string_view text) {
    assign(text);
    return *this;
  }
  String& operator=(const char* text) { return *this = String(text); }

  std::size_t size() const noexcept {
    return isInline() ? inlineCapacity - lastByte() : heap_.size;
  }
  std::size_t length() const noexcept { return size(); }
  bool empty() const noexcept { return size() == 0; }
  std::size_t capacity() const noexcept { return isInline() ? inlineCapacity : heap_.capacity; }
  static constexpr std::size_t maxSize() noexcept { return npos / 4; }

  char* data() noexcept { return isInline() ? inline_ : heap_.data; }
  const char* data() const noexcept { return isInline() ? inline_ : heap_.data; }
  const char* c_str() const noexcept { return data(); }
  std::string_view view() const noexcept { return {data(), size()}; }
  operator std::string_view() const noexcept { return view(); }

  /// Not checked: `index` must be at most size(). The byte at size() is the NUL.
  char& operator[](std::size_t index) noexcept { return data()[index]; }
  char operator[](std::size_t index) const noexcept { return data()[index]; }
  char front() const noexcept { return data()[0]; }
  char back() const noexcept { return data()[size() - 1]; }
  iterator begin() noexcept { return data(); }
  iterator end() noexcept { return data() + size(); }
  const_iterator begin() const noexcept { return data(); }
  const_iterator end() const noexcept { return data() + size(); }

  /// Makes room for `capacity` bytes in all. Never shrinks.
  void reserve(std::size_t capacity);
  /// Frees memory that the text does not need.
  void shrinkToFit();
  /// Cuts the text to `size` bytes, or extends it to `size` bytes with `fill`.
  void resize(std::size_t size, char fill = '\0');
  void clear() noexcept { sizeIs(0); }
  /// Removes the last `count` bytes. `count` must be at most size().
  void shrinkBy(std::size_t count) noexcept { sizeIs(size() - count); }
  /// Extends the string by `count` bytes and returns where they begin. The caller must write all of
  /// them before it reads the string. Every other way of growing comes through here.
  char* appendUninitialized(std::size_t count) {
    if (isInline()) {
      std::size_t const size = inlineCapacity - lastByte();
      if (count <= inlineCapacity - size) [[likely]] {
        inlineSizeIs(size + count);
        return inline_ + size;
      }
    }
    return appendSlow(count);
  }

  /// `text` may be a part of this string.
  String& append(const char* text, std::size_t size);
  String& append(std::string_view text) { return append(text.data(), text.size()); }
  String& append(std::size_t count, char fill) {
    std::memset(appendUninitialized(count), fill, count);
    return *this;
  }
  String& operator+=(std::string_view text) { return append(text); }
  String& operator+=(const String& text) { return append(text.view()); }
  String& operator+=(const char* text) { return append(std::string_view(text)); }
  String& operator+=(char c) {
    push_back(c);
    return *this;
  }
  void push_back(char c) { *appendUninitialized(1) = c; }
  void pop_back() noexcept { sizeIs(size() - 1); }
  /// `text` may be a part of this string.
  String& assign(std::string_view text);

  std::size_t find(std::string_view text, std::size_t from = 0) const noexcept {
    return view().find(text, from);
  }
  std::size_t find(char c, std::size_t from = 0) const noexcept { return view().find(c, from); }
  std::size_t rfind(char c) const noexcept { return view().rfind(c); }
  bool startsWith(std::string_view text) const noexcept { return view().starts_with(text); }
  bool endsWith(std::string_view text) const noexcept { return view().ends_with(text); }
  /// At most `count` bytes from `from` on. Throws std::out_of_range when from > size().
  String substr(std::size_t from, std::size_t count = npos) const {
    return String(view().substr(from, count));
  }
  std::string str() const { return std::string(view()); }

  void swap(String& other) noexcept;
  friend void swap(String& a, String& b) noexcept { a.swap(b); }

  friend bool operator==(const String& a, const String& b) noexcept { return a.view() == b.view(); }
  friend bool operator==(const String& a, std::string_view b) noexcept { return a.view() == b; }
  friend bool operator==(const String& a, const char* b) noexcept {
    return a.view() == std::string_view(b);
  }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.view() <=> b.view();
  }
  friend String operator+(String a, std::string_view b) { return std::move(a += b); }
  friend String operator+(String a, const String& b) { return std::move(a += b); }
  friend String operator+(String a, const char* b) { return std::move(a += b); }
  friend String operator+(const char* a, const String& b) { return String(a) + b.view(); }

 private:
  struct Heap {
    char* data;
    std::size_t size;
    std::size_t capacity;  // without the terminator
  };
  static constexpr unsigned char heapMark = 0xFF;

  unsigned char lastByte() const noexcept {
    return static_cast<unsigned char>(inline_[inlineCapacity]);
  }
  bool isInline() const noexcept { return lastByte() != heapMark; }
  void inlineSizeIs(std::size_t size) noexcept {
    inline_[inlineCapacity] = static_cast<char>(inlineCapacity - size);
    inline_[size] = '\0';
  }
  void sizeIs(std::size_t size) noexcept {
    if (isInline()) {
      inlineSizeIs(size);
    } else {
      heap_.size = size;
      heap_.data[size] = '\0';
    }
  }
  void bitsFrom(const String& other) noexcept {
    std::memcpy(inline_, other.inline_, sizeof inline_);
  }
  void fromText(const char* text);
  char* appendSlow(std::size_t count);
  void heapRelease() noexcept;

  union {
    char inline_[inlineCapacity + 1];
    Heap heap_;
  };
};

static_assert(sizeof(String) == 64);

VELMOR_PLATFORM_API std::ostream& operator<<(std::ostream& out, const String& text);

}  // namespace Halvo

namespace Zel {
using Halvo::String;
}

template <>
struct std::hash<Halvo::String> {
  std::size_t operator()(const Halvo::String& text) const noexcept {
    return std::hash<std::string_view>{}(text.view());
  }
};
