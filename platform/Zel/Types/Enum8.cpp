#include "Zel/Types/Enum8.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>

#include "Zel/Base/Assert.h"
#include "Zel/Base/Error.h"
#include "Zel/Format/LineText.h"

namespace Zel {

namespace {

constexpr const char* source = "platform/Zel/Enum8";
constexpr const char* descriptorFunction =
    "const Zel::TypeDescriptor& Zel::enum8Descriptor(const Zel::TypeModule&, std::size_t)";

constexpr const char* ofDescriptorFunction =
    "const Zel::TypeDescriptor& Zel::enum8Descriptor(const Zel::TypeDescriptor&)";

const TypeDescriptor& enum8Descriptor(const TypeDescriptor& type) noexcept {
  assertThat(type.kind == TypeKind::enumeration,
             {"type.kind == TypeKind::enumeration", source, 0, ofDescriptorFunction});
  return type;
}

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

// `name` holds no NUL. So strncmp compares no further than the end of the value's name, and where
// the texts are equal the byte behind may be read.
bool isNamed(const EnumValue& value, std::string_view name) noexcept {
  return std::strncmp(value.name, name.data(), name.size()) == 0 && value.name[name.size()] == '\0';
}

// Where a name was last found, by a hash of type and name. A hint that another name has overwritten
// only costs a search.
constexpr unsigned hintBits = 10;
constinit std::atomic<U8> hints[1U << hintBits] = {};

U64 loadWord(const char* at) noexcept {
  U64 word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

std::size_t hintIndex(const TypeDescriptor& descriptor, std::string_view name) noexcept {
  constexpr U64 factor = 0x9E3779B97F4A7C15U;
  U64 hash = reinterpret_cast<std::uintptr_t>(&descriptor) + name.size();
  const char* at = name.data();
  if (name.size() < 8) {
    for (char const c : name) hash = hash * 31 + static_cast<unsigned char>(c);
  } else {
    const char* const last = at + name.size() - 8;
    for (; at < last; at += 8) hash = (std::rotl(hash, 23) ^ loadWord(at)) * factor;
    hash = std::rotl(hash, 23) ^ loadWord(last);  // overlaps the previous word
  }
  return hash * factor >> (64 - hintBits);
}

const EnumValue* findName(const TypeDescriptor& descriptor, std::string_view name) noexcept {
  auto const values = descriptor.enumValues;
  if (name.empty() || std::memchr(name.data(), '\0', name.size()) != nullptr) return nullptr;
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
  text += '(';
  appendDecimal(text, value);
  text += ')';
  return text;
}

}  // namespace

U8 enum8FromNumber(const TypeModule& module, std::size_t type, U32 number) {
  const TypeDescriptor& descriptor = enum8Descriptor(module, type);
  if (findNumber(descriptor, number) == nullptr) [[unlikely]] {
    char digits[maxDecimalSize];
    throw RangeError(std::string(descriptor.name) + ": no value has the number " +
                     std::string(digits, writeDecimal(digits, number)));
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

U8 enum8FromName(const TypeDescriptor& type, std::string_view name) {
  return named(enum8Descriptor(type), name);
}

Halvo::String enum8StringValue(const TypeDescriptor& type, U8 value) {
  return textOf(enum8Descriptor(type), value);
}

}  // namespace Zel
