#include "Halvo/String.h"

#include <algorithm>
#include <new>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "Zel/Base/Assert.h"

namespace Halvo {

namespace {

constexpr Zel::AssertionSite nullText{"text != nullptr", "platform/Halvo/String", 0,
                                      "Halvo::String::String(const char*)"};

char* allocate(std::size_t capacity) { return static_cast<char*>(::operator new(capacity + 1)); }

}  // namespace

void String::fromText(const char* text) {
  Zel::assertThat(text != nullptr, nullText);
  inlineSizeIs(0);
  // cppcheck-suppress nullPointerRedundantCheck  // the assertion does not return
  std::size_t const size = std::strlen(text);
  // cppcheck-suppress nullPointerRedundantCheck  // the assertion does not return
  std::memcpy(appendUninitialized(size), text, size);
}

// NOLINTNEXTLINE(readability-make-member-function-const): it frees the text
void String::heapRelease() noexcept { ::operator delete(heap_.data); }

char* String::appendSlow(std::size_t count) {
  std::size_t const size = this->size();
  if (count > maxSize() - size) throw std::length_error("Halvo::String: too long");
  if (count > capacity() - size) {
    // Grows by half, so that each of many small appends has a constant cost. The first heap buffer
    // is exact: most strings that no longer fit inline are built in one piece.
    reserve(isInline() ? size + count : std::max(size + count, size + size / 2));
  }
  sizeIs(size + count);
  return data() + size;
}

void String::reserve(std::size_t capacity) {
  if (capacity <= this->capacity()) return;
  if (capacity > maxSize()) throw std::length_error("Halvo::String: too long");
  char* const data = allocate(capacity);
  std::size_t const size = this->size();
  std::memcpy(data, this->data(), size + 1);
  if (!isInline()) heapRelease();
  heap_ = {data, size, capacity};
  inline_[inlineCapacity] = static_cast<char>(heapMark);
}

void String::shrinkToFit() {
  if (isInline() || heap_.size == heap_.capacity) return;
  String exact(view());
  swap(exact);
}

void String::resize(std::size_t size, char fill) {
  std::size_t const before = this->size();
  if (size <= before) {
    sizeIs(size);
  } else {
    append(size - before, fill);
  }
}

String& String::append(const char* text, std::size_t size) {
  if (size == 0) return *this;
  std::size_t const before = this->size();
  char* const old = data();
  // If `text` is a part of this string, growing may move it.
  bool const own = !std::less<>{}(text, static_cast<const char*>(old)) &&
                   !std::less<>{}(static_cast<const char*>(old) + before, text);
  std::size_t const offset = own ? static_cast<std::size_t>(text - old) : 0;
  char* const tail = appendUninitialized(size);
  std::memmove(tail, own ? data() + offset : text, size);
  return *this;
}

String& String::assign(std::string_view text) {
  if (text.size() <= capacity()) {
    // memmove: `text` may be a part of this string.
    if (!text.empty()) std::memmove(data(), text.data(), text.size());
    sizeIs(text.size());
  } else {
    String copy(text);
    swap(copy);
  }
  return *this;
}

void String::swap(String& other) noexcept {
  String kept(std::move(other));
  other = std::move(*this);
  *this = std::move(kept);
}

std::ostream& operator<<(std::ostream& out, const String& text) { return out << text.view(); }

}  // namespace Halvo
