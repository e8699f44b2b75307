#include "Zel/Enum8.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>

#include "Zel/Assert.h"
#include "Zel/Error.h"
#include "Zel/LineText.h"

namespace Zel {

namespace {

constexpr const char* source = "platform/Zel/Enum8";
constexpr const char* descriptorFunction =
    "const Zel::TypeDescriptor& Zel::enum8Descriptor(const Zel::TypeModule&, std::size_t)";

const TypeDescriptor& enum8Descriptor(const TypeModule& module, std::size_t type) noexcept {
  assertThat(type < module.types.size(),
             {"type < module.types.size()", source, 0, descriptorFunction});
  const TypeDescriptor& descriptor = *module.types[type];
  assertThat(descriptor.kind == TypeKind::enumeration,
             {"descriptor.kind == TypeKind::enumeration", source, 0, descriptorFunction});
  return descriptor;
}

const EnumValue* findNumber(const TypeDescriptor& descriptor, U32 number) noexcept {
  auto const values = descriptor.enumValues;
  if (number < values.size() && values[number].number == number) return &values[number];
  auto const at = std::lower_bound(values.begin(), values.end(), number,
                                   [](const EnumValue& v, U32 n) { return v.number < n; });
  return at != values.end() && at->number == number ? &*at : nullptr;
}

bool isNamed(const EnumValue& value, std::string_view name) noexcept {
  // strncmp stops at the end of the value's own name; a NUL in `name` can then match no further.
  return std::strncmp(value.name, name.data(), name.size()) == 0 &&
         std::strlen(value.name) == name.size();
}

// Where a name was found last, by a hash of type and name. A hint that another name has overwritten
// costs that search only.
constexpr std::size_t hintCount = 1024;
constinit std::atomic<U8> hints[hintCount] = {};

std::size_t hintIndex(const TypeDescriptor& descriptor, std::string_view name) noexcept {
  constexpr U64 factor = 0x9E3779B97F4A7C15U;
  U64 hash = reinterpret_cast<std::uintptr_t>(&descriptor) ^ (name.size() * factor);
  const char* at = name.data();
  std::size_t left = name.size();
  for (; left >= 8; left -= 8, at += 8) {
    U64 word;
    std::memcpy(&word, at, 8);
    hash = (hash ^ word) * factor;
    hash ^= hash >> 32;
  }
  U64 tail = 0;
  if (left != 0) std::memcpy(&tail, at, left);
  hash = (hash ^ tail) * factor;
  return hash >> 54;
}
static_assert(hintCount == std::size_t{1} << (64 - 54));

const EnumValue* findName(const TypeDescriptor& descriptor, std::string_view name) noexcept {
  auto const values = descriptor.enumValues;
  if (name.empty()) return nullptr;
  std::atomic<U8>& hint = hints[hintIndex(descriptor, name)];
  std::size_t const hinted = hint.load(std::memory_order_relaxed);
  if (hinted < values.size() && isNamed(values[hinted], name)) [[likely]] {
    return &values[hinted];
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (isNamed(values[i], name)) {
      hint.store(static_cast<U8>(i), std::memory_order_relaxed);
      return &values[i];
    }
  }
  return nullptr;
}

U8 named(const TypeDescriptor& descriptor, std::string_view name) {
  const EnumValue* const value = findName(descriptor, name);
  if (value == nullptr) [[unlikely]] {
    throw ParseError(std::string(descriptor.name) + ": no value is named " +
                     quotedForMessage(name));
  }
  return value->number;
}

bool isIdentifierCharacter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

Halvo::String textOf(const TypeDescriptor& descriptor, U8 value) {
  if (const EnumValue* const found = findNumber(descriptor, value)) {
    return Halvo::String(found->name);
  }
  std::string_view const full(descriptor.name);
  std::size_t const colon = full.rfind(':');
  Halvo::String text(colon == std::string_view::npos ? full : full.substr(colon + 1));
  char number[3];
  auto const end = std::to_chars(std::begin(number), std::end(number), unsigned{value}).ptr;
  text += '(';
  text.append(number, static_cast<std::size_t>(end - number));
  text += ')';
  return text;
}

}  // namespace

U8 enum8FromNumber(const TypeModule& module, std::size_t type, U32 number) {
  const TypeDescriptor& descriptor = enum8Descriptor(module, type);
  if (findNumber(descriptor, number) == nullptr) [[unlikely]] {
    throw RangeError(std::string(descriptor.name) + ": no value has the number " +
                     std::to_string(number));
  }
  return static_cast<U8>(number);
}

U8 enum8FromName(const TypeModule& module, std::size_t type, std::string_view name) {
  return named(enum8Descriptor(module, type), name);
}

const char* enum8Name(const TypeModule& module, std::size_t type, U8 value) noexcept {
  const EnumValue* const found = findNumber(enum8Descriptor(module, type), value);
  return found == nullptr ? nullptr : found->name;
}

Halvo::String enum8StringValue(const TypeModule& module, std::size_t type, U8 value) {
  return textOf(enum8Descriptor(module, type), value);
}

std::ostream& enum8Write(std::ostream& out, const TypeModule& module, std::size_t type, U8 value) {
  const TypeDescriptor& descriptor = enum8Descriptor(module, type);
  if (const EnumValue* const found = findNumber(descriptor, value)) return out << found->name;
  return out << textOf(descriptor, value);
}

U8 enum8FromSequence(CharRange& in, const TypeModule& module, std::size_t type) {
  const TypeDescriptor& descriptor = enum8Descriptor(module, type);
  std::string_view const name = in.peekWhile(isIdentifierCharacter);
  if (name.empty()) [[unlikely]] {
    throw ParseError(std::string(descriptor.name) + ": expected a name at " +
                     quotedForMessage(in.view()));
  }
  U8 const value = named(descriptor, name);
  in.advance(name.size());
  return value;
}

}  // namespace Zel
