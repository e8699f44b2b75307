// The descriptors of types and modules: how the runtime knows what a library declares.
//
// Threads: descriptors are constant data; safe from any thread.
#pragma once

#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Ptr.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/Attribute.h"

namespace Halvo {
class Node;
class String;
}  // namespace Halvo

namespace Zel {

class Value;

/// One value of an 8-bit enumeration.
struct EnumValue {
  U8 number;
  const char* name;
};

enum class TypeKind : U8 {
  enumeration,  ///< an 8-bit enumeration
  value,        ///< a copyable value
  node,         ///< a reference-counted class
  basic,        ///< a truth value, a number or a string
};

/// Makes an object of a type from what its constructor takes; the type's own arguments.
struct Constructor {
  static constexpr std::size_t maxParameters = 2;
  TypeRef parameters[maxParameters] = {};  ///< as many as there are, then null
};

/// What can be done with the values of a type, wherever they are kept. The operations that take a
/// `place` construct there: `size` bytes, aligned to `alignment`, that hold no value yet.
struct ValueOperations {
  std::size_t size;
  std::size_t alignment;
  /// From constructor arguments; throws ArgumentError when they do not fit.
  void (*construct)(void* place, std::span<const Value> arguments);
  void (*copy)(void* place, const void* from);
  /// Constructs the value at `place` and destroys it at `from`.
  void (*relocate)(void* place, void* from) noexcept;
  void (*destroy)(void* value) noexcept;
  bool (*isEq)(const void* a, const void* b);
  Halvo::String (*toText)(const void* value);
  /// From text that is a value to its end; throws ParseError.
  void (*fromText)(void* place, const Halvo::String& text);
  /// Null where the type has no hash.
  std::size_t (*hash)(const void* value);
};

/// A new object from constructor arguments; throws ArgumentError when they do not fit.
using NodeCreate = Halvo::Ptr<Halvo::Node> (*)(std::span<const Value> arguments);

/// What the runtime knows about one type. Constant data, made at compile time.
struct TypeDescriptor {
  const char* name;  ///< with its namespace: "VelmorTcam::CliFormat"
  TypeKind kind;
  const TypeDescriptor* base = nullptr;  ///< nodes: the described base class, null at the root
  AllocationTracker* tracker = nullptr;  ///< nodes: the class's own tracker
  std::span<const EnumValue> enumValues = {};  ///< enumerations: in ascending order of number
  /// Values and nodes: the class's own, in ascending order of number; its base's come before them.
  std::span<const Attribute> attributes = {};
  const ValueOperations* value = nullptr;  ///< values
  NodeCreate create = nullptr;             ///< nodes: null where they cannot be made generically
  Constructor constructor = {};            ///< values and nodes: what they are made from
};

/// Marks a type in an overload: a described type has a function
/// `const Zel::TypeDescriptor& typeDescriptor(Zel::TypeTag<T>) noexcept` in its own namespace.
template <class T>
struct TypeTag {};

template <class T>
concept Described = requires(TypeTag<T> tag) {
  { typeDescriptor(tag) } -> std::same_as<const TypeDescriptor&>;
};

/// The descriptor of T.
template <class T>
const TypeDescriptor& typeOf() noexcept {
  // cppcheck-suppress returnTempReference  // the descriptor is not the tag
  return typeDescriptor(TypeTag<T>{});
}

/// The types of one module, in a fixed order; a type's index is its place in it.
struct TypeModule {
  const char* name;
  std::span<const TypeDescriptor* const> types;
  /// Trackers that are no type's own: those of its collections' elements.
  std::span<AllocationTracker* const> trackers = {};
};

}  // namespace Zel

/// Declares that T, a class or value type of the namespace, is described.
#define ZEL_DECLARE_TYPE(EXPORT, T) \
  EXPORT const ::Zel::TypeDescriptor& typeDescriptor(::Zel::TypeTag<T>) noexcept
/// Defines that, in a source file.
#define ZEL_DEFINE_TYPE(T, DESCRIPTOR) \
  const ::Zel::TypeDescriptor& typeDescriptor(::Zel::TypeTag<T>) noexcept { return DESCRIPTOR; }
